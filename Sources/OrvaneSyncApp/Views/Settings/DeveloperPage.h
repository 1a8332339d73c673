#pragma once

#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

class QTableWidget;

namespace orvane::views {

class SystemChecksView;

/// The caches with their sizes, and the state of each component that the program needs.
class DeveloperPage : public SettingsPage {
  public:
    DeveloperPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    void open() override;

  private:
    QWidget* makeCaches();
    QWidget* makeDiagnostics();
    void lookAtCaches();
    void clearCaches();

    QTableWidget* caches_;
    QLabel* cachesSum_;
    QPushButton* clear_;
    Remark* cacheProblem_;
    SystemChecksView* checks_;
};

} // namespace orvane::views
