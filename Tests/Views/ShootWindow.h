#pragma once

#include "MediaFactory/SmallShoot.h"
#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/MainWindow.h"
#include "OrvaneSyncApp/Views/QtMainThread.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Views/Application.h"

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <memory>
#include <string_view>

namespace orvane::test {

/// The program's window with a small shoot, and with its own settings and sessions.
class ShootWindow {
  public:
    ShootWindow() {
        application();
        registerStandardDefaults(*settings_);
        makeSmallShoot(folder_.path("shoot"));
        begin();
    }

    /// Starts the program's window, with the same sessions.
    void begin() {
        window_.reset();
        views::Desktop::Dependencies dependencies;
        dependencies.mainThread = views::qtMainThread();
        dependencies.settings = settings_;
        dependencies.sessionsDir = folder_.path("sessions");
        desktop_ = std::make_unique<views::Desktop>(std::move(dependencies));
        window_ = std::make_unique<views::MainWindow>(*desktop_);
        window_->show();
        QCoreApplication::processEvents();
    }

    /// `shoot`: the name of a folder that contains a shoot.
    void scan(std::string_view shoot = "shoot") {
        const QString place = views::text(folder_.path(std::string(shoot)));
        window_->scanFolders({place + "/camera", place + "/sound"});
        ASSERT_TRUE(waitUntil([&] { return !window_->isScanning(); }));
        QCoreApplication::processEvents();
    }
    const OpenWork& work() { return desktop_->controller().work(); }
    const SyncGroup& clip(std::string_view cameraFile) {
        for (const SyncGroup& group : work().syncGroups())
            if (group.video.filename.starts_with(cameraFile)) return group;
        throw std::logic_error("no such clip");
    }
    QTableView& table() { return *window_->results().table(); }
    QString cell(int row, int column) { return table().model()->index(row, column).data().toString(); }
    /// The banner of the screen; empty if none is shown.
    QString bannerText() {
        for (const auto* one : window_->centralWidget()->findChildren<QFrame*>())
            if (const auto* banner = dynamic_cast<const design::Banner*>(one); banner && banner->isVisible())
                return banner->text();
        return {};
    }
    /// The row in the list; below 0 if there is none.
    int rowOf(const QString& cameraFile) {
        for (int row = 0; row < table().model()->rowCount(); ++row)
            if (cell(row, 1).startsWith(cameraFile)) return row;
        return -1;
    }
    /// The dialog that is open.
    QDialog& sheet() {
        for (auto* one : window_->findChildren<QDialog*>())
            if (one->isVisible()) return *one;
        throw std::logic_error("no sheet is open");
    }
    static void type(QWidget& in, const QString& field, const QString& words) {
        for (auto* one : in.findChildren<QWidget*>())
            if (one->accessibleName() == field) return QTest::keyClicks(one, words);
        FAIL() << "no field " << field.toStdString();
    }
    static QPushButton* button(QWidget& in, const QString& name) {
        for (auto* one : in.findChildren<QPushButton*>())
            if (one->text() == name && one->isVisible()) return one;
        return nullptr;
    }
    static void press(QWidget& in, const QString& name) {
        QPushButton* const found = button(in, name);
        ASSERT_NE(found, nullptr) << "no button " << name.toStdString();
        QTest::mouseClick(found, Qt::LeftButton);
    }

  protected:
    TemporaryDirectory folder_;
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    std::unique_ptr<views::Desktop> desktop_;
    std::unique_ptr<views::MainWindow> window_;
};

} // namespace orvane::test
