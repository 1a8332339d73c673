#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/CalibrationPanel.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

class QTableWidget;

namespace orvane::views {

/// Measures what the effects of Final Cut Pro do to a level, step by step.
class CalibrationPage : public SettingsPage {
  public:
    CalibrationPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    /// Reads the stored calibration.
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

    Remark* problem_;        ///< of the step that builds
    Remark* measureProblem_; ///< of the steps that measure and save
    Remark* gaps_;           ///< what is missing in the results
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
