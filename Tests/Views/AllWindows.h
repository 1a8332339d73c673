#pragma once

#include "OrvaneSyncApp/Views/Settings/SettingsWindow.h"
#include "OrvaneSyncApp/Views/Sheets/Sheets.h"
#include "OrvaneSyncApp/Views/SystemChecksView.h"
#include "OrvaneSyncApp/Views/Translation.h"
#include "Views/ShootWindow.h"

namespace orvane::test {

/// Shows the windows in a language while this object exists.
class Spoken {
  public:
    explicit Spoken(const QString& language) { views::installLanguage(application(), language); }
    ~Spoken() { views::installLanguage(application(), QStringLiteral("en")); }
    Spoken(const Spoken&) = delete;
    Spoken& operator=(const Spoken&) = delete;
};

/// The window, every sheet and the settings, in one language and at their smallest width.
class AllWindows : Spoken, public ShootWindow {
  public:
    explicit AllWindows(const QString& language) : Spoken(language) {
        window_->resize(1024, 700);
        QCoreApplication::processEvents();
    }
    void openSheets() {
        views::showExport(*desktop_, window_.get());
        views::showBatchRenamer(*desktop_, window_.get());
        views::showAtmoBuilder(*desktop_, window_.get());
        views::showDiagnostics(*desktop_, window_.get());
        views::showFeedback(*desktop_, window_.get());
        views::showAbout(window_.get());
        settingsWindow_ = new views::SettingsWindow(*desktop_, window_.get());
        settingsWindow_->show();
        QCoreApplication::processEvents();
    }
    QList<QWidget*> tops() const {
        QList<QWidget*> all{window_.get()};
        for (QDialog* one : window_->findChildren<QDialog*>())
            if (one->isVisible()) all << one;
        return all;
    }
    views::MainWindow& window() { return *window_; }
    views::SettingsWindow& settingsWindow() { return *settingsWindow_; }

  private:
    views::SettingsWindow* settingsWindow_ = nullptr; ///< belongs to the window
};

} // namespace orvane::test
