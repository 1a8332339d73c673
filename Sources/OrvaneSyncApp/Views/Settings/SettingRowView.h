#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"

#include <QWidget>

#include <functional>

class QGridLayout;

namespace orvane::views {

/// One setting: what it is, its control, the way back to its default, and below it what is wrong with its
/// value or why the last one was refused. A change is stored at once.
class SettingRowView : public QWidget {
  public:
    /// The row outlives the view.
    SettingRowView(Desktop& desktop, const SettingsModel& model, const SettingRow& row,
                   QWidget* parent = nullptr);

    const SettingRow& row() const { return row_; }
    /// Shows what the store holds; leaves a text alone that is being typed.
    void refresh();

  private:
    QWidget* makeControl();
    QWidget* makeToggle();
    QWidget* makeChoice();
    QWidget* makeNumber();
    QWidget* makeAmount();
    QWidget* makeLine();
    QWidget* makePattern();
    QWidget* makeFile();
    void place(QGridLayout& grid);
    void store(JSON value);
    void showRemark();

    Desktop& desktop_;
    const SettingsModel& model_;
    const SettingRow& row_;
    QString refusal_;
    /// Puts a value into the control without storing it.
    std::function<void(const JSON& value)> put_;
    QWidget* control_; ///< made when what it fills stands
    QPushButton* reset_;
    Remark* remark_;
};

} // namespace orvane::views
