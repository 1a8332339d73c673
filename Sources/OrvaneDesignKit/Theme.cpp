#include "OrvaneDesignKit/Theme.h"

#include "OrvaneDesignKit/Icons.h"

#include <QApplication>
#include <QEvent>
#include <QFontDatabase>
#include <QPainter>
#include <QPalette>
#include <QPen>
#include <QProxyStyle>
#include <QStyleFactory>
#include <QStyleOption>
#include <QWidget>

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane::design {

namespace {

constexpr int textPixels = 14;
constexpr int factsPixels = 12;
constexpr int titlePixels = 20;

QFont sized(QFont font, int pixels) {
    font.setPixelSize(pixels);
    return font;
}

/// `@name` is replaced by a colour.
QString filledIn(QString sheet) {
    const Colours& all = colours();
    const std::array<std::pair<const char*, QColor>, 14> names{{{"@window", all.window},
                                                                {"@panel", all.panel},
                                                                {"@raised", all.raised},
                                                                {"@hovered", all.hovered},
                                                                {"@line", all.line},
                                                                {"@text", all.text},
                                                                {"@facts", all.facts},
                                                                {"@disabled", all.disabled},
                                                                {"@selected", all.selected},
                                                                {"@onSelected", all.onSelected},
                                                                {"@focus", all.focus},
                                                                {"@matched", all.matched},
                                                                {"@doubtful", all.doubtful},
                                                                {"@missing", all.missing}}};
    // Longer names first, as one name may begin with another.
    auto ordered = names;
    std::ranges::sort(ordered,
                      [](const auto& a, const auto& b) { return qstrlen(a.first) > qstrlen(b.first); });
    for (const auto& [name, value] : ordered) sheet.replace(QLatin1String(name), value.name());
    return sheet;
}

constexpr const char* styleSheet = R"(
QMainWindow, QDialog { background: @window; }
QToolTip { background: @raised; color: @text; border: 1px solid @line; padding: 4px; }
QMenuBar { background: @panel; color: @text; }
QMenuBar::item { background: transparent; padding: 4px 10px; }
QMenuBar::item:selected, QMenu::item:selected { background: @selected; color: @onSelected; }
QMenu { background: @panel; color: @text; border: 1px solid @line; padding: 4px 0; }
QMenu::item { padding: 5px 28px 5px 20px; }
QMenu::icon { padding-left: 10px; }
QMenu::item:disabled { color: @disabled; }
QMenu::separator { height: 1px; background: @line; margin: 4px 8px; }
QToolBar { background: @panel; border: 0; border-bottom: 1px solid @line; spacing: 4px; padding: 4px 8px; }
QToolButton { color: @text; background: transparent; border: 1px solid transparent; border-radius: 4px; padding: 5px 8px; }
QToolButton:hover { background: @hovered; }
QToolButton:checked { background: @selected; color: @onSelected; }
QToolButton:disabled { color: @disabled; }
QPushButton { color: @text; background: @raised; border: 1px solid @line; border-radius: 5px; padding: 6px 14px; }
QPushButton:hover { background: @hovered; }
QPushButton:pressed, QPushButton:checked { background: @selected; color: @onSelected; border-color: @selected; }
QPushButton[primary="true"] { background: @selected; color: @onSelected; border-color: @selected; }
QPushButton[primary="true"]:disabled, QPushButton:disabled { color: @disabled; background: @panel; border-color: @line; }
QPushButton[quiet="true"] { background: transparent; border-color: transparent; text-align: left; }
QPushButton[iconOnly="true"] { padding: 6px; }
QPushButton[compact="true"] { padding: 0px 6px; }
QPushButton[quiet="true"]:hover { background: @hovered; }
QPushButton:focus, QToolButton:focus, QLineEdit:focus, QComboBox:focus, QAbstractItemView:focus, QCheckBox:focus { border: 1px solid @focus; outline: 0; }
QLineEdit, QPlainTextEdit, QComboBox, QSpinBox, QDoubleSpinBox { color: @text; background: @raised; border: 1px solid @line; border-radius: 5px; padding: 5px 8px; selection-background-color: @selected; selection-color: @onSelected; }
QLineEdit:disabled, QComboBox:disabled { color: @disabled; background: @panel; }
QComboBox::drop-down { border: 0; width: 26px; }
QComboBox QAbstractItemView { background: @panel; color: @text; border: 1px solid @line; selection-background-color: @selected; selection-color: @onSelected; }
QCheckBox { color: @text; spacing: 8px; border: 1px solid transparent; padding: 2px; }
QCheckBox:disabled { color: @disabled; }
QAbstractItemView { background: @window; color: @text; border: 1px solid transparent; alternate-background-color: @window; selection-background-color: @selected; selection-color: @onSelected; }
QTreeView::item { padding: 4px 0; }
QAbstractItemView QLineEdit { padding: 0 4px; border-radius: 0; }
QHeaderView { background: @panel; }
QHeaderView::section { background: @panel; color: @facts; border: 0; border-right: 1px solid @line; border-bottom: 1px solid @line; padding: 5px 8px; }
QTreeView QHeaderView::section { padding: 5px 3px; }
QProgressBar { background: @raised; border: 0; border-radius: 4px; max-height: 8px; }
QProgressBar::chunk { background: @selected; border-radius: 4px; }
QSlider::groove:horizontal { background: @line; height: 4px; border-radius: 2px; }
QSlider::sub-page:horizontal { background: @selected; border-radius: 2px; }
QSlider::handle:horizontal { background: @facts; width: 14px; margin: -5px 0; border-radius: 7px; }
QSlider::handle:horizontal:hover, QSlider::handle:horizontal:focus { background: @text; }
QScrollBar:vertical { background: @window; width: 12px; margin: 0; }
QScrollBar:horizontal { background: @window; height: 12px; margin: 0; }
QScrollBar::handle { background: @hovered; border-radius: 4px; min-height: 30px; min-width: 30px; margin: 2px; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QSplitter::handle { background: @line; }
QSplitter::handle:horizontal { width: 1px; }
QSplitter::handle:vertical { height: 1px; }
QTabBar::tab { color: @facts; background: transparent; padding: 8px 14px; border-bottom: 2px solid transparent; }
QTabBar::tab:selected { color: @text; border-bottom-color: @selected; }
QTabWidget::pane { border: 0; border-top: 1px solid @line; }
QFrame[panel="true"] { background: @panel; border: 1px solid @line; border-radius: 8px; }
QFrame[banner="true"] { background: @panel; border: 1px solid @line; border-radius: 6px; }
QFrame[dropping="true"] { border: 2px solid @focus; }
QLabel { color: @text; background: transparent; }
QLabel[facts="true"] { color: @facts; }
QTreeView[columns="true"]::item { padding: 4px 5px; }
QTreeView[columns="true"] QHeaderView::section { padding: 5px 8px; }
QStatusBar QToolButton { padding: 0 8px; }
QStatusBar { background: @panel; color: @facts; border-top: 1px solid @line; }
)";

/// Draws what a style sheet can draw only with image files.
class ThemeStyle : public QProxyStyle {
  public:
    ThemeStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override {
        if (element == PE_IndicatorCheckBox || element == PE_IndicatorItemViewItemCheck)
            return drawCheck(*option, *painter);
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* answer) const override {
        // Green and red marks are reserved for how certain a match is.
        if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
        return QProxyStyle::styleHint(hint, option, widget, answer);
    }
    QIcon standardIcon(StandardPixmap what, const QStyleOption* option,
                       const QWidget* widget) const override {
        // Qt reads its own icons from files, which loads all image readers, and they are drawn for light
        // windows.
        switch (what) {
        case SP_LineEditClearButton:
            return icon(Glyph::cross);
        case SP_ToolBarHorizontalExtensionButton:
            return icon(Glyph::folded);
        case SP_ToolBarVerticalExtensionButton:
            return icon(Glyph::unfolded);
        default:
            return QProxyStyle::standardIcon(what, option, widget);
        }
    }

  private:
    static void drawCheck(const QStyleOption& option, QPainter& painter) {
        const Colours& all = colours();
        const bool isOn = option.state.testFlag(State_On);
        const bool isEnabled = option.state.testFlag(State_Enabled);
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(isEnabled ? all.facts : all.line, 1));
        painter.setBrush(isOn && isEnabled ? all.selected : all.raised);
        const QRectF box = QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.drawRoundedRect(box, 3, 3);
        painter.restore();
        if (isOn) draw(painter, Glyph::check, box.adjusted(1, 1, -1, -1), all.onSelected);
    }
};

/// Sets the sheet on every window before it is sized and shown; its child widgets inherit it. A style sheet
/// of the application would be applied again to each widget whenever it is moved into another one.
class SheetForWindows : public QObject {
  public:
    SheetForWindows(QString sheet, QObject* parent) : QObject(parent), sheet_(std::move(sheet)) {}
    bool eventFilter(QObject* watched, QEvent* event) override {
        const bool isBeforeSize = event->type() == QEvent::Polish;
        if (!isBeforeSize && event->type() != QEvent::Show) return false;
        auto* window = qobject_cast<QWidget*>(watched);
        if (window == nullptr || window->parentWidget() != nullptr || !window->styleSheet().isEmpty())
            return false;
        // A widget that is asked for its size before it is placed in a window is not a window.
        if (isBeforeSize && !window->inherits("QMainWindow") && !window->inherits("QDialog")) return false;
        window->setStyleSheet(sheet_);
        return false;
    }

  private:
    const QString sheet_;
};

} // namespace

const Colours& colours() {
    static const Colours all;
    return all;
}

QColor colour(Signal signal) {
    switch (signal) {
    case Signal::matched:
        return colours().matched;
    case Signal::doubtful:
        return colours().doubtful;
    case Signal::missing:
        return colours().missing;
    case Signal::none:
        break;
    }
    return colours().facts;
}

QColor channelColour(int index) {
    // The second half is darker, so that sixteen channels can be distinguished.
    static const std::array<QColor, 16> palette{
        QColor(0x6f, 0xb6, 0xf2), QColor(0xf2, 0xb1, 0x5c), QColor(0x7f, 0xd1, 0x8b),
        QColor(0xe5, 0x8f, 0xc4), QColor(0xb6, 0xa0, 0xf0), QColor(0x68, 0xcf, 0xcb),
        QColor(0xde, 0xd2, 0x6a), QColor(0xef, 0x96, 0x80), QColor(0x4f, 0x95, 0xe8),
        QColor(0xd9, 0x8a, 0x2b), QColor(0x4f, 0xae, 0x5f), QColor(0xd0, 0x66, 0xa6),
        QColor(0x95, 0x79, 0xe6), QColor(0x3f, 0xa9, 0xa5), QColor(0xb9, 0xa9, 0x3a),
        QColor(0xd9, 0x6a, 0x58)};
    return palette[static_cast<std::size_t>(std::max(index, 0)) % palette.size()];
}

// Queried from the system once, because lists ask for each cell.
QFont textFont() {
    static const QFont font = sized(QFontDatabase::systemFont(QFontDatabase::GeneralFont), textPixels);
    return font;
}
QFont factsFont() {
    static const QFont font = sized(QFontDatabase::systemFont(QFontDatabase::GeneralFont), factsPixels);
    return font;
}
QFont titleFont() {
    static const QFont font = [] {
        QFont made = sized(QFontDatabase::systemFont(QFontDatabase::GeneralFont), titlePixels);
        made.setWeight(QFont::DemiBold);
        return made;
    }();
    return font;
}
QFont timecodeFont() {
    static const QFont font = sized(QFontDatabase::systemFont(QFontDatabase::FixedFont), textPixels);
    return font;
}

void applyTheme(QApplication& application) {
    application.setStyle(new ThemeStyle);
    const Colours& all = colours();
    QPalette palette(all.text, all.raised, all.hovered, all.window, all.line, all.text, all.onSelected,
                     all.window, all.window);
    palette.setColor(QPalette::AlternateBase, all.panel);
    palette.setColor(QPalette::Highlight, all.selected);
    palette.setColor(QPalette::HighlightedText, all.onSelected);
    palette.setColor(QPalette::PlaceholderText, all.facts);
    palette.setColor(QPalette::ToolTipBase, all.raised);
    palette.setColor(QPalette::ToolTipText, all.text);
    palette.setColor(QPalette::Link, all.focus);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, all.disabled);
    application.setPalette(palette);
    application.setFont(textFont());
    auto* sheet = new SheetForWindows(filledIn(QString::fromLatin1(styleSheet)), &application);
    application.installEventFilter(sheet);
}

double contrast(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& colour) {
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
               0.0722 * linear(colour.blueF());
    };
    const double first = luminance(a);
    const double second = luminance(b);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

} // namespace orvane::design
