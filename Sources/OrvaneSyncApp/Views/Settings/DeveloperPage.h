#pragma once

#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"
#include "Platform/MainThread.h"

#include <memory>
#include <stop_token>

class QTableWidget;

namespace orvane::views {

/// The caches with their sizes, and the state of each thing that the program stands on.
class DeveloperPage : public SettingsPage {
  public:
    DeveloperPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    ~DeveloperPage() override;
    void open() override;

  private:
    QWidget* makeCaches();
    QWidget* makeDiagnostics();
    void lookAtCaches();
    void clearCaches();
    void diagnose();
    void copyDiagnostics();

    QTableWidget* caches_;
    QLabel* cachesSum_;
    QPushButton* clear_;
    Remark* cacheProblem_;
    QTableWidget* checks_;
    QPushButton* again_;
    QPushButton* copy_;
    QLabel* progress_;
    std::stop_source stop_;
    std::unique_ptr<platform::SerialQueue> queue_;
};

} // namespace orvane::views
