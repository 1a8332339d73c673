#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/CalibrationPanel.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

class QTableWidget;

namespace orvane::views {

/// Measuring what the effects of Final Cut Pro do, step by step.
class CalibrationPage : public SettingsPage {
  public:
    CalibrationPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    /// Looks at what lies on the disk.
    void open() override;

  private:
    QWidget* makeBuilding();
    QWidget* makeMeasuring();
    QWidget* makeResults();
    void show();
    void showRows(const CalibrationPanel& panel);
    void showSteps();
    void build();
    void measure();
    void reveal();
    void run(std::string_view id, JSON arguments = {}, Desktop::Done done = {});

    Remark* problem_;        ///< of building
    Remark* measureProblem_; ///< of measuring and saving
    Remark* gaps_;           ///< what the results lack
    bool isMeasureAsked_ = false;
    QLabel* progress_;
    design::Choice* matrix_;
    QPushButton* build_;
    QPushButton* reveal_;
    QLabel* source_;
    QLabel* steps_;
    QLineEdit* folder_;
    QPushButton* measure_;
    QLabel* saved_;
    QTableWidget* results_;
    QPushButton* save_;
    platform::Subscription observation_;
};

} // namespace orvane::views
