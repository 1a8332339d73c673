#include "OrvaneDesignKit/Sheet.h"
#include "OrvaneSyncApp/Views/Inspector/InspectorSection.h"
#include "OrvaneSyncApp/Views/Timeline/TimelineCanvas.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "Views/ShootWindow.h"

#include <QAction>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QTextLayout>

#include <vector>

namespace orvane::views {

namespace {

using test::waitUntil;

/// Where messages of the window are shown, and their words.
class MessageTest : public testing::Test, protected test::ShootWindow {
  protected:
    QRect placeOf(const QWidget& part) const { return {part.mapTo(window_.get(), QPoint()), part.size()}; }
    /// The visible widgets of a class, by their place in the window.
    template <class Widget>
    std::vector<QRect> places() const {
        std::vector<QRect> found;
        for (const auto* one : window_->findChildren<QWidget*>())
            if (dynamic_cast<const Widget*>(one) != nullptr && one->isVisible())
                found.push_back(placeOf(*one));
        return found;
    }
    QWidget* toast() const {
        const auto all = window_->findChildren<QWidget*>(QStringLiteral("toast"), Qt::FindDirectChildrenOnly);
        return all.isEmpty() ? nullptr : all.last();
    }
    /// The visible banner; null if none is shown.
    const design::Banner* banner() const {
        for (const auto* one : window_->centralWidget()->findChildren<QFrame*>())
            if (const auto* found = dynamic_cast<const design::Banner*>(one); found && found->isVisible())
                return found;
        return nullptr;
    }
    /// Shows a banner and a brief message, and checks that both are over a picture only.
    void expectMessagesOverThePictures(const char* screen) {
        const QWidget* picture = nullptr;
        for (const auto* one : window_->findChildren<QWidget*>(QStringLiteral("toastPlace")))
            if (one->isVisible()) picture = one;
        ASSERT_NE(picture, nullptr) << screen;
        const QRect area = placeOf(*picture);
        desktop_->run("noSuchCommand");
        QCoreApplication::processEvents();
        ASSERT_NE(banner(), nullptr) << screen;
        EXPECT_EQ(placeOf(*picture), area) << screen;
        EXPECT_TRUE(area.contains(placeOf(*banner()).center())) << screen;
        desktop_->sayWhyNot(QStringLiteral("why"));
        ASSERT_NE(toast(), nullptr) << screen;
        EXPECT_TRUE(area.contains(placeOf(*toast()))) << screen;
        for (const QRect& one : places<TimelineCanvas>())
            EXPECT_FALSE(one.intersects(placeOf(*toast()))) << screen;
    }
};

} // namespace

TEST_F(MessageTest, MessagesMoveNoPictureAndCoverNoTimeline) {
    scan();
    window_->openReview(clip("A001C001").id);
    QCoreApplication::processEvents();
    const auto timeline = places<TimelineCanvas>();
    expectMessagesOverThePictures("review");
    EXPECT_EQ(places<TimelineCanvas>(), timeline);
    QTest::keyClick(window_.get(), Qt::Key_Escape);
    EXPECT_TRUE(toast()->isHidden()) << "it was about the other screen";
    QCoreApplication::processEvents();
    design::showToast(window_.get(), QStringLiteral("saved"));
    desktop_->run("noSuchCommand");
    ASSERT_NE(banner(), nullptr) << "on the list";
    EXPECT_TRUE(waitUntil([&] { return placeOf(*toast()).bottom() < placeOf(*banner()).top(); }))
        << "also above a banner that appears later";
}

TEST_F(MessageTest, OfTwoMessagesOneIsOverThePicture) {
    scan();
    window_->openReview(clip("B001C001").id);
    desktop_->controller().clips().adjustAudioOffset(clip("A001C001").id, 0.12);
    const auto* sibling = window_->findChild<QFrame*>(QStringLiteral("siblingBanner"));
    ASSERT_TRUE(waitUntil([&] { return sibling->isVisible(); }));
    EXPECT_EQ(button(*window_, "1 of 1"), nullptr);
    desktop_->run("noSuchCommand");
    for (const bool isSibling : {false, true}) {
        QCoreApplication::processEvents();
        EXPECT_EQ(sibling->isVisible(), isSibling);
        EXPECT_EQ(banner() == nullptr, isSibling);
        press(*window_, isSibling ? "2 of 2" : "1 of 2");
    }
    ASSERT_FALSE(sibling->isVisible());
    QTest::keyClick(window_.get(), Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_NEAR(clip("B001C001").manualAudioOffsetSeconds, 0.12, 1e-9)
        << "its key works behind the other one";
    EXPECT_TRUE(waitUntil([&] { return sibling->isHidden() && button(*window_, "1 of 2") == nullptr; }));
    EXPECT_NE(banner(), nullptr);
}

TEST_F(MessageTest, AnOfferThatNoMenuHasComesBackAfterLaterMessages) {
    scan();
    desktop_->runForClips("toggleLocked", {clip("A001C001").id});
    JSON removed = JSON::object();
    removed.set("groupID", clip("A001C003").id.text());
    desktop_->run("removeVideoFromSync", std::move(removed));
    desktop_->controller().scan().setCorrections({.soundOffset = "00:00:02:00"});
    scan();
    const QString offer = bannerText();
    ASSERT_TRUE(offer.contains("1 locked") && offer.contains("1 removed")) << offer.toStdString();
    folder_.write("report.csv", "Name,Scene\nA001C001,12\n");
    JSON report = JSON::object();
    report.set("path", folder_.path("report.csv"));
    desktop_->run("loadALE", std::move(report));
    ASSERT_TRUE(waitUntil([&] { return bannerText().startsWith("Report loaded: "); }));
    for (auto* one : window_->centralWidget()->findChildren<QPushButton*>())
        if (one->isVisible() && one->accessibleName() == "Dismiss") one->click();
    EXPECT_EQ(bannerText(), offer);
    press(*window_->centralWidget(), "Keep the Decisions");
    EXPECT_TRUE(waitUntil([&] { return bannerText().startsWith("All decisions were kept"); }))
        << bannerText().toStdString();
    EXPECT_EQ(work().syncGroups().size(), 3U) << "the removed clip stays removed";
}

TEST_F(MessageTest, ASingleClipThatWasMovedSinceItsLockIsLockedAgain) {
    scan();
    const UUID a = clip("A001C001").id, b = clip("B001C001").id;
    const auto isLocked = [&](const UUID& id) { return work().syncGroups().find(id)->isLocked; };
    QAction* entry = nullptr;
    for (auto* one : window_->findChildren<QAction*>())
        if (one->isCheckable() && one->text() == "Lock Current Clip") entry = one;
    ASSERT_NE(entry, nullptr);
    desktop_->runForClips("toggleLocked", {a, b});
    for (const UUID& id : {a, b}) desktop_->controller().clips().adjustAudioOffset(id, 0.04);
    window_->results().select({a});
    ASSERT_TRUE(waitUntil([&] { return entry->text() == "Lock at This Offset"; })) << "the list";
    entry->trigger();
    EXPECT_TRUE(isLocked(a));
    EXPECT_DOUBLE_EQ(*work().syncGroups().find(a)->lockedAtManualOffset, 0.04);
    EXPECT_TRUE(waitUntil([&] { return entry->text() == "Lock Current Clip"; }));
    entry->trigger();
    EXPECT_FALSE(isLocked(a)) << "at the offset of its lock";
    entry->trigger();
    desktop_->controller().clips().adjustAudioOffset(a, 0.04);
    desktop_->runForClips("toggleLocked", {a, b});
    EXPECT_FALSE(isLocked(a) || isLocked(b)) << "several clips";
    QAction* mark = nullptr;
    for (auto* one : window_->findChildren<QAction*>())
        if (one->isCheckable() && one->text() == "Mark Synced") mark = one;
    ASSERT_NE(mark, nullptr);
    for (const bool isMarked : {true, false}) {
        mark->trigger();
        EXPECT_TRUE(waitUntil([&] { return mark->isChecked() == isMarked; }));
        EXPECT_EQ(work().syncGroups().find(a)->isApproved, isMarked);
    }
}

TEST_F(MessageTest, TextsNameTheKeysOfTheUser) {
    const auto said = [] { return translatedSentence("Unlock sync to choose: ⟨lockCurrent⟩ first."); };
    EXPECT_EQ(said(), "Unlock sync to choose: Ctrl+L first.");
    auto& shortcuts = *desktop_->players().shortcuts();
    shortcuts.setBinding({"l", ModifierSet::option}, ShortcutAction::lockCurrent);
    ASSERT_TRUE(waitUntil([&] { return said().contains("Alt+L"); })) << said().toStdString();
    shortcuts.setBinding(Shortcut::unbound, ShortcutAction::lockCurrent);
    EXPECT_TRUE(waitUntil([&] { return said().contains("“Lock Current Clip” first"); }))
        << said().toStdString();
    EXPECT_EQ(translatedSentence("a ⟨name⟩ of a file"), "a ⟨name⟩ of a file");
    shortcuts.resetToDefaults();
    EXPECT_TRUE(waitUntil([&] { return said().contains("Ctrl+L"); }));
}

TEST(FileNameTest, AFileNameIsWholeBelowItsFolder) {
    test::application();
    const auto lines = [](std::string_view file, int columns) {
        QStringList found;
        for (const QString& part : breakableFile(file).split('\n')) {
            QTextLayout layout(part, QFontDatabase::systemFont(QFontDatabase::FixedFont));
            layout.beginLayout();
            for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
                line.setLineWidth(columns * QFontMetricsF(layout.font()).horizontalAdvance('x'));
                found << part.mid(line.textStart(), line.textLength()).remove(QChar(0x200b));
            }
            layout.endLayout();
        }
        return found;
    };
    const std::string file = "CARD_2/A001C001_1120_R1.mov";
    EXPECT_EQ(lines(file, 22), QStringList({"CARD_2/", "A001C001_1120_R1.mov"}));
    EXPECT_EQ(lines(file, 10), QStringList({"CARD_2/", "A001C001_", "1120_R1.", "mov"}));
    EXPECT_EQ(lines("A001C001.mov", 22), QStringList("A001C001.mov"));
}

} // namespace orvane::views
