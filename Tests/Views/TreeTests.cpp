#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Gallery.h"
#include "Views/AllWindows.h"

#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QTreeView>

#include <algorithm>
#include <map>

namespace orvane::views {

namespace {

/// Rules for every window, checked in all that is shown of it.
class Tree {
  public:
    explicit Tree(QWidget& top) : top_(top), image_(top.grab().toImage()) {
        for (QWidget* one : top.findChildren<QWidget*>())
            if (one->isVisible() && one->window() == &top && !one->visibleRegion().isEmpty()) shown_ << one;
    }
    void check() const {
        for (const QWidget* one : shown_) {
            SCOPED_TRACE((top_.windowTitle() + " " + one->metaObject()->className() + " " +
                          one->objectName() + " " + textOf(*one) + one->accessibleName())
                             .toStdString());
            EXPECT_FALSE(isCut(*one));
            EXPECT_FALSE(takesFocusUnnamed(*one));
            expectReadable(*one);
            expectApart(*one);
        }
        expectThemeAlone();
    }

  private:
    static QString textOf(const QWidget& widget) {
        if (const auto* label = qobject_cast<const QLabel*>(&widget)) return label->text();
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) return button->text();
        return {};
    }
    /// A label with several lines must have the height that it needs.
    static bool isCut(const QWidget& widget) {
        if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
            if (!label->pixmap().isNull() || label->text().isEmpty()) return false;
            if (label->wordWrap()) return label->height() < label->heightForWidth(label->width()) - 2;
            return label->width() < label->sizeHint().width() - 1;
        }
        if (const auto* button = qobject_cast<const QPushButton*>(&widget))
            return !button->text().isEmpty() && button->width() < button->minimumSizeHint().width() - 1;
        if (const auto* choice = qobject_cast<const QComboBox*>(&widget))
            return choice->height() < choice->fontMetrics().height() + 6;
        if (const auto* header = qobject_cast<const QHeaderView*>(&widget)) {
            for (int i = 0; header->orientation() == Qt::Horizontal && i < header->count(); ++i)
                if (!header->isSectionHidden(i) &&
                    header->sectionSize(i) < header->fontMetrics().horizontalAdvance(
                                                 header->model()->headerData(i, Qt::Horizontal).toString()))
                    return true;
        }
        return false;
    }
    static bool takesFocusUnnamed(const QWidget& widget) {
        if (qobject_cast<const QAbstractSpinBox*>(widget.parentWidget()) != nullptr)
            return false; // the spin box has the name
        if (widget.focusPolicy() == Qt::NoFocus || !widget.accessibleName().isEmpty()) return false;
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget))
            return button->text().isEmpty();
        return widget.inherits("QLineEdit") || widget.inherits("QComboBox") ||
               widget.inherits("QAbstractSpinBox") || widget.inherits("QSlider") ||
               widget.inherits("QPlainTextEdit") || widget.inherits("QAbstractItemView");
    }
    QRect placeOf(const QWidget& widget) const { return {widget.mapTo(&top_, QPoint(0, 0)), widget.size()}; }
    /// The most frequent colour below a text is its background, and the colour that differs most from that is
    /// the text's.
    void expectReadable(const QWidget& widget) const {
        const QString text = textOf(widget);
        if (!widget.isEnabled() || text.trimmed().isEmpty() || widget.height() < 8) return;
        const auto* label = qobject_cast<const QLabel*>(&widget);
        if (label != nullptr && !label->pixmap().isNull()) return;
        const QRect place = widget.visibleRegion().boundingRect().translated(placeOf(widget).topLeft());
        std::map<QRgb, int> counts;
        for (int y = place.top(); y <= place.bottom(); ++y)
            for (int x = place.left(); x <= place.right(); ++x)
                if (image_.valid(x, y)) ++counts[image_.pixel(x, y)];
        if (counts.size() < 2) return;
        const QColor ground =
            std::ranges::max_element(counts, {}, [](const auto& one) { return one.second; })->first;
        double best = 0;
        for (const auto& [colour, count] : counts)
            best = std::max(best, design::contrast(ground, QColor(colour)));
        constexpr double least = 4.5;
        EXPECT_GE(best, least) << ground.name().toStdString();
    }
    /// Controls in one place of a layout do not overlap.
    void expectApart(const QWidget& widget) const {
        if (!qobject_cast<const QAbstractButton*>(&widget) && !qobject_cast<const QLabel*>(&widget)) return;
        for (const QWidget* other : shown_) {
            if (other == &widget || other->parentWidget() != widget.parentWidget()) continue;
            if (!qobject_cast<const QAbstractButton*>(other) && !qobject_cast<const QLabel*>(other)) continue;
            EXPECT_FALSE(widget.geometry().adjusted(1, 1, -1, -1).intersects(other->geometry()))
                << "over " << textOf(*other).toStdString();
        }
    }
    /// Every colour on a twentieth of the window or more is one of the theme's.
    void expectThemeAlone() const {
        const design::Colours& all = design::colours();
        const QColor theme[] = {all.window, all.panel, all.raised,   all.hovered,   all.line,
                                all.text,   all.facts, all.selected, all.onSelected};
        std::map<QRgb, int> counts;
        for (int y = 0; y < image_.height(); ++y)
            for (int x = 0; x < image_.width(); ++x) ++counts[image_.pixel(x, y)];
        for (const auto& [colour, count] : counts)
            if (count > image_.width() * image_.height() / 20) {
                EXPECT_TRUE(std::ranges::any_of(
                    theme, [rgb = colour](const QColor& one) { return one.rgb() == rgb; }))
                    << top_.windowTitle().toStdString() << " " << QColor(colour).name().toStdString();
            }
    }

    QWidget& top_;
    const QImage image_;
    QList<QWidget*> shown_;
};

class TreeTest : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(TreeTest, NothingIsCutUnnamedUnreadableOrOutsideTheTheme) {
    test::AllWindows windows(QString::fromLatin1(GetParam()));
    Tree(windows.window()).check(); // the start
    windows.scan();
    windows.openSheets();
    for (QWidget* top : windows.tops()) Tree(*top).check();
}
INSTANTIATE_TEST_SUITE_P(Languages, TreeTest, testing::Values("en", "de"));

TEST(GalleryTest, KeepsTheSame) {
    installLanguage(test::application(), QStringLiteral("en"));
    const std::unique_ptr<QWidget> gallery(makeGallery());
    gallery->show();
    QCoreApplication::processEvents();
    Tree(*gallery).check();
}

} // namespace orvane::views
