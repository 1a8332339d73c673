#include "MediaFactory/SmallShoot.h"
#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncApp/Views/ResultsView.h"
#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/ExportSheet.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/Files.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Views/Application.h"

#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QStackedWidget>
#include <QTableView>
#include <QTest>

namespace orvane::views {

namespace {

using test::TemporaryDirectory;
using test::waitUntil;

class WindowTest : public testing::Test {
  protected:
    WindowTest() {
        test::application();
        registerStandardDefaults(*settings_);
        test::makeSmallShoot(folder_.path("shoot"));
        Desktop::Dependencies dependencies;
        dependencies.mainThread = qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        desktop_ = std::make_unique<Desktop>(std::move(dependencies));
        window_ = std::make_unique<MainWindow>(*desktop_);
        window_->show();
    }

    void scan() {
        window_->scanFolders({text(folder_.path("shoot/camera")), text(folder_.path("shoot/sound"))});
        ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
        QCoreApplication::processEvents();
    }

    QTableView& table() { return *window_->results().table(); }
    QString cell(int row, int column) { return table().model()->index(row, column).data().toString(); }
    int rowOf(const QString& cameraFile) {
        for (int row = 0; row < table().model()->rowCount(); ++row)
            if (cell(row, 1).startsWith(cameraFile)) return row;
        return -1;
    }
    const SyncGroup& clip(const QString& cameraFile) {
        const auto& groups = desktop_->controller().work().syncGroups();
        for (const SyncGroup& group : groups)
            if (text(group.video.filename).startsWith(cameraFile)) return group;
        throw std::logic_error("no such clip");
    }

    TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<MainWindow> window_;
};

} // namespace

TEST_F(WindowTest, ShowsScansAndDecidesByKeys) {
    auto* pages = window_->findChild<QStackedWidget*>();
    EXPECT_EQ(pages->currentIndex(), 0) << "folders are chosen first";
    scan();
    ASSERT_EQ(table().model()->rowCount(), 4);
    EXPECT_EQ(pages->currentIndex(), 2);

    // Two cameras of one recording stand together, and the first folds the other away.
    const int first = rowOf("A001C001");
    ASSERT_EQ(rowOf("B001C001"), first + 1);
    EXPECT_TRUE(cell(first, 5).contains("DAY1_T01.WAV"));
    const QRect name = table().visualRect(table().model()->index(first, 0));
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, name.topLeft() + QPoint(12, name.height() / 2));
    EXPECT_EQ(table().model()->rowCount(), 3);
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {}, name.topLeft() + QPoint(12, name.height() / 2));
    ASSERT_EQ(table().model()->rowCount(), 4);

    // Several clips at once are one step to take back.
    table().selectAll();
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    EXPECT_TRUE(clip("A001C001").isApproved && clip("A001C003").isApproved);
    EXPECT_EQ(window_->results().selectedClips().size(), 4U) << "the selection stays";
    QCoreApplication::processEvents(); // menus follow in the next turn of the loop
    QTest::keyClick(window_.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(clip("A001C001").isApproved || clip("A001C003").isApproved);

    // Search and filter show what they say.
    QTest::keyClicks(window_->results().search(), "t01 b001");
    EXPECT_EQ(table().model()->rowCount(), 1);
    window_->results().search()->clear();
    table().sortByColumn(1, Qt::DescendingOrder);
    EXPECT_LT(rowOf("A001C003"), rowOf("A001C001"));
}

TEST_F(WindowTest, AnotherShootGetsASessionOfItsOwn) {
    scan();
    table().selectAll();
    QTest::keyClick(window_.get(), Qt::Key_Return, Qt::ControlModifier);
    const auto first = desktop_->sessions().currentSessionId();
    ASSERT_TRUE(first);
    test::makeSmallShoot(folder_.path("other"));
    window_->scanFolders({text(folder_.path("other/camera")), text(folder_.path("other/sound"))});
    ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
    EXPECT_FALSE(clip("A001C001").isApproved);
    EXPECT_NE(desktop_->sessions().currentSessionId(), first);
    JSON arguments = JSON::object();
    arguments.set("sessionId", first->text());
    bool isOpen = false;
    desktop_->run("loadSession", std::move(arguments), [&](const JSON&) { isOpen = true; });
    ASSERT_TRUE(waitUntil([&] { return isOpen; }));
    EXPECT_TRUE(clip("A001C001").isApproved);
    EXPECT_TRUE(clip("A001C001").video.url.path.starts_with(folder_.path("shoot")));
}

TEST_F(WindowTest, ExportsAndRefusesToReplaceUnasked) {
    scan();
    const QString place = text(folder_.path("out.fcpxml"));
    ExportSheet sheet(*desktop_, window_.get());
    sheet.show();
    auto* document = sheet.findChildren<QLineEdit*>().back();
    ASSERT_EQ(document->accessibleName(), "Document");
    document->setText(place);
    const auto press = [&](const QString& name) {
        for (auto* button : sheet.findChildren<QPushButton*>())
            if (button->text() == name && button->isVisible())
                return QTest::mouseClick(button, Qt::LeftButton);
        FAIL() << "no button " << name.toStdString();
    };
    auto* outcome = static_cast<design::Banner*>(sheet.findChild<QFrame*>(QStringLiteral("outcome")));
    ASSERT_NE(outcome, nullptr);
    folder_.write("out.fcpxml", "somebody else's");
    press("Export");
    EXPECT_TRUE(outcome->text().contains("already"));
    EXPECT_EQ(folder_.read("out.fcpxml"), "somebody else's");
    press("Replace It");
    ASSERT_TRUE(waitUntil([&] { return outcome->text().startsWith("Written"); }))
        << outcome->text().toStdString();
    EXPECT_NE(folder_.read("out.fcpxml").find("<fcpxml"), std::string::npos);
}

TEST(ThemeTest, TextIsReadableOnEveryGround) {
    const design::Colours& all = design::colours();
    constexpr double least = 4.5;
    for (const QColor& ground : {all.window, all.panel, all.raised, all.hovered})
        for (const QColor& text : {all.text, all.facts, all.matched, all.doubtful, all.missing})
            EXPECT_GE(design::contrast(text, ground), least)
                << text.name().toStdString() << ground.name().toStdString();
    EXPECT_GE(design::contrast(all.onSelected, all.selected), least);
}

} // namespace orvane::views
