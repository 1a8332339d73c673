#include "OrvaneDesignKit/Controls.h"

#include <QAction>
#include <QButtonGroup>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace orvane::design {

namespace {

constexpr int glyphSide = 16;
constexpr int emptyGlyphSide = 56;
constexpr int widestText = 560;

QPixmap glyphPixmap(Glyph glyph, int side, const QColor& colour, double ratio) {
    QPixmap pixmap(QSize(side, side) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    draw(painter, glyph, QRectF(0, 0, side, side), colour);
    return pixmap;
}

} // namespace

namespace {

/// Return presses the focused button, as Space does, and not the main button of its sheet.
class PressedByReturn : public QPushButton {
  public:
    using QPushButton::QPushButton;

  protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
            click();
        else
            QPushButton::keyPressEvent(event);
    }
};

} // namespace

QPushButton* button(const QString& text, Weight weight) {
    QPushButton* made = new PressedByReturn(text);
    made->setIconSize({text.isEmpty() ? glyphSide : glyphSide + space::tight, glyphSide});
    made->setCursor(Qt::PointingHandCursor);
    if (weight == Weight::primary) made->setProperty("primary", true);
    if (weight == Weight::quiet) made->setProperty("quiet", true);
    made->setAutoDefault(false);
    return made;
}

QPushButton* button(const QString& text, Glyph glyph, Weight weight) {
    QPushButton* made = button(text, weight);
    made->setIcon(icon(glyph));
    if (text.isEmpty()) made->setProperty("iconOnly", true);
    return made;
}

void setPrimary(QPushButton* button, bool isPrimary) {
    button->setProperty("primary", isPrimary);
    button->style()->unpolish(button);
    button->style()->polish(button);
}

QLabel* title(const QString& text) {
    auto* made = new QLabel(text);
    made->setFont(titleFont());
    return made;
}

QLabel* label(const QString& text) {
    auto* made = new QLabel(text);
    made->setWordWrap(true);
    return made;
}

QLabel* facts(const QString& text) {
    QLabel* made = label(text);
    made->setFont(factsFont());
    made->setProperty("facts", true);
    return made;
}

QLineEdit* field(const QString& accessibleName, const QString& placeholder) {
    auto* made = new QLineEdit;
    made->setAccessibleName(accessibleName);
    made->setPlaceholderText(placeholder);
    return made;
}

QLineEdit* searchField(const QString& accessibleName, const QString& placeholder) {
    QLineEdit* made = field(accessibleName, placeholder);
    made->addAction(icon(Glyph::search), QLineEdit::LeadingPosition);
    made->setClearButtonEnabled(true);
    return made;
}

namespace {

/// Shows a choice's whole text as a tooltip when the control is too narrow for it.
class TipOfChoice : public QObject {
  public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::ToolTip) return false;
        auto* choice = static_cast<Choice*>(watched);
        if (choice->fontMetrics().horizontalAdvance(choice->currentText()) <= roomForText(*choice))
            return false;
        const QString help = choice->toolTip().isEmpty() ? QString() : QLatin1Char('\n') + choice->toolTip();
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), choice->currentText() + help,
                           choice);
        return true;
    }
    static int roomForText(const QComboBox& choice) {
        QStyleOptionComboBox option;
        option.initFrom(&choice);
        return choice.style()
                   ->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &choice)
                   .width() -
               space::small;
    }
};

} // namespace

Choice::Choice(QWidget* parent) : IgnoresWheel<QComboBox>(parent) {
    installEventFilter(new TipOfChoice(this));
}

void Choice::paintEvent(QPaintEvent* event) {
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QString fitted =
        fontMetrics().elidedText(option.currentText, Qt::ElideRight, TipOfChoice::roomForText(*this));
    if (fitted == option.currentText) {
        QComboBox::paintEvent(event);
    } else {
        option.currentText = fitted;
        QStylePainter painter(this);
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }
    QPainter painter(this);
    draw(painter, Glyph::unfolded,
         QRectF(width() - glyphSide - space::small, (height() - glyphSide) / 2.0, glyphSide, glyphSide),
         isEnabled() ? colours().facts : colours().disabled);
}

ToolRow::ToolRow(const QString& name, QWidget* parent) : QToolBar(name, parent) {
    setMovable(false);
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
}

void ToolRow::add(QAction* action, const QString& word, int rank) {
    action->setIconText(QLatin1Char(' ') + word);
    addAction(action);
    byRank_.emplace(rank, action);
}

void ToolRow::resizeEvent(QResizeEvent* event) {
    QToolBar::resizeEvent(event);
    if (event->size().width() != event->oldSize().width()) fit();
}

void ToolRow::fit() {
    for (const auto& [rank, action] : byRank_) action->setPriority(QAction::NormalPriority);
    // A tool of low priority shows only its icon.
    for (const auto& [rank, action] : byRank_) {
        if (layout()->sizeHint().width() <= width()) return;
        action->setPriority(QAction::LowPriority);
    }
}

Badge::Badge(Signal signal, const QString& text, QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    show(signal, text);
}

void Badge::show(Signal signal, const QString& text) {
    signal_ = signal;
    text_ = text;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize Badge::sizeHint() const {
    const QFontMetrics metrics(font());
    return {glyphSide + space::tight + metrics.horizontalAdvance(text_) + space::tight,
            std::max(metrics.height(), glyphSide) + space::tight};
}

int Badge::paint(QPainter& painter, const QRect& within, Signal signal, const QString& text,
                 const QColor& textColour) {
    int x = within.left();
    if (signal != Signal::none) {
        const QRectF square(x, within.center().y() - glyphSide / 2.0 + 0.5, glyphSide, glyphSide);
        // Signal colours are hard to see on a selection.
        draw(painter, glyph(signal), square,
             textColour == colours().onSelected ? textColour : colour(signal));
        x += glyphSide + space::tight;
    }
    painter.setPen(textColour);
    const QRect rest(x, within.top(), within.right() - x, within.height());
    const QString shown = painter.fontMetrics().elidedText(text, Qt::ElideRight, rest.width());
    painter.drawText(rest, Qt::AlignVCenter | Qt::AlignLeft, shown);
    return x + painter.fontMetrics().horizontalAdvance(shown) - within.left();
}

void Badge::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint(painter, rect(), signal_, text_, colours().text);
}

Banner::Banner(QWidget* parent)
    : QFrame(parent), glyph_(new QLabel), text_(label({})), action_(button({}, Weight::normal)),
      other_(button({}, Weight::normal)) {
    setProperty("banner", true);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(space::medium, space::small, space::small, space::small);
    row->setSpacing(space::small);
    row->addWidget(glyph_);
    row->addWidget(text_, 1);
    row->addWidget(action_);
    row->addWidget(other_);
    auto* close = button({}, Glyph::cross, Weight::quiet);
    close->setAccessibleName(QObject::tr("Dismiss"));
    close->setToolTip(QObject::tr("Dismiss"));
    row->addWidget(close);
    connect(action_, &QPushButton::clicked, this, [this] {
        if (const auto run = shown_.action) run();
    });
    connect(other_, &QPushButton::clicked, this, [this] {
        if (const auto run = shown_.otherAction) run();
    });
    connect(close, &QPushButton::clicked, this, [this] { showEarlier(); });
    setVisible(false);
}

void Banner::show(Signal signal, const QString& text, const QString& buttonText, std::function<void()> action,
                  const QString& otherText, std::function<void()> otherAction) {
    if (text.isEmpty()) return clear();
    std::erase_if(earlier_, [&](const Message& one) { return one.text == text; });
    if (shown_.isKept && shown_.text != text) earlier_.push_back(shown_);
    present({signal, text, buttonText, otherText, std::move(action), std::move(otherAction)});
}

void Banner::present(Message message) {
    shown_ = std::move(message);
    glyph_->setVisible(shown_.signal != Signal::none);
    if (shown_.signal != Signal::none)
        glyph_->setPixmap(glyphPixmap(glyph(shown_.signal), glyphSide + space::tight, colour(shown_.signal),
                                      devicePixelRatioF()));
    text_->setText(shown_.text);
    action_->setText(shown_.actionText);
    action_->setVisible(!shown_.actionText.isEmpty());
    other_->setText(shown_.otherText);
    other_->setVisible(!shown_.otherText.isEmpty());
    setAccessibleName(shown_.text);
    setVisible(!shown_.text.isEmpty());
}

void Banner::showEarlier() {
    Message next;
    if (!earlier_.empty()) {
        next = std::move(earlier_.back());
        earlier_.pop_back();
    }
    present(std::move(next));
}

void Banner::keep() { shown_.isKept = !shown_.text.isEmpty(); }

void Banner::clear() {
    if (!shown_.isKept) showEarlier();
}

void Banner::remove(const QString& text) {
    std::erase_if(earlier_, [&](const Message& one) { return one.text == text; });
    if (shown_.text == text) showEarlier();
}

void Banner::clearAll() {
    earlier_.clear();
    present({});
}

void Banner::focusButton() {
    if (!action_->isHidden()) action_->setFocus(Qt::OtherFocusReason);
}

EmptyState::EmptyState(Glyph glyph, const QString& title, const QString& text, QWidget* parent)
    : QWidget(parent), picture_(new QLabel), title_(design::title(title)), text_(label(text)),
      layout_(new QVBoxLayout(this)) {
    picture_->setPixmap(glyphPixmap(glyph, emptyGlyphSide, colours().facts, devicePixelRatioF()));
    picture_->setAlignment(Qt::AlignCenter);
    title_->setAlignment(Qt::AlignCenter);
    text_->setAlignment(Qt::AlignCenter);
    text_->setMaximumWidth(widestText);
    text_->setProperty("facts", true);
    layout_->setSpacing(space::medium);
    layout_->addStretch(1);
    layout_->addWidget(picture_, 0, Qt::AlignHCenter);
    layout_->addWidget(title_, 0, Qt::AlignHCenter);
    // Between stretches rather than aligned: an aligned label would get the height for another width.
    auto* row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(text_, 8);
    row->addStretch(1);
    layout_->addLayout(row);
    layout_->addStretch(2);
}

void EmptyState::setTexts(const QString& title, const QString& text) {
    title_->setText(title);
    text_->setText(text);
    fit();
}

void EmptyState::fit() {
    const int ofPicture = picture_->isHidden() ? picture_->sizeHint().height() + layout_->spacing() : 0;
    picture_->setVisible(layout_->totalHeightForWidth(width()) + ofPicture <= height());
}

void EmptyState::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fit();
}

void EmptyState::add(QWidget* control) {
    layout_->insertWidget(layout_->count() - 1, control, 0, Qt::AlignHCenter);
}

SegmentedChoice::SegmentedChoice(const QString& accessibleName, const std::vector<QString>& choices,
                                 std::function<void(int)> chosen, QWidget* parent)
    : QWidget(parent) {
    setAccessibleName(accessibleName);
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(2);
    auto* group = new QButtonGroup(this);
    for (const QString& choice : choices) {
        QPushButton* one = button(choice);
        one->setCheckable(true);
        group->addButton(one, static_cast<int>(buttons_.size()));
        buttons_.push_back(one);
        row->addWidget(one);
    }
    if (!buttons_.empty()) buttons_.front()->setChecked(true);
    connect(group, &QButtonGroup::idClicked, this, [call = std::move(chosen)](int index) { call(index); });
}

void SegmentedChoice::setText(int index, const QString& text) {
    buttons_.at(static_cast<std::size_t>(index))->setText(text);
}

void SegmentedChoice::setHint(int index, const QString& hint) {
    QPushButton* const one = buttons_.at(static_cast<std::size_t>(index));
    one->setToolTip(hint);
    one->setAccessibleDescription(hint);
}

void SegmentedChoice::choose(int index) { buttons_.at(static_cast<std::size_t>(index))->setChecked(true); }

int SegmentedChoice::chosen() const {
    for (std::size_t i = 0; i < buttons_.size(); ++i)
        if (buttons_[i]->isChecked()) return static_cast<int>(i);
    return 0;
}

Section::Section(const QString& title, QWidget* parent) : QFrame(parent), layout_(new QVBoxLayout(this)) {
    setProperty("panel", true);
    layout_->setContentsMargins(space::medium, space::medium, space::medium, space::medium);
    layout_->setSpacing(space::small);
    QLabel* heading = label(title);
    QFont bold = textFont();
    bold.setWeight(QFont::DemiBold);
    heading->setFont(bold);
    layout_->addWidget(heading);
}

void Section::add(QWidget* control) { layout_->addWidget(control); }
void Section::add(QLayout* controls) { layout_->addLayout(controls); }

} // namespace orvane::design
