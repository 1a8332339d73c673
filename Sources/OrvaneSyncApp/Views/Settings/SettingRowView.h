#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"

#include <QWidget>

#include <functional>

class QGridLayout;

namespace orvane::views {

/// One setting: its label, its control, and a button that resets it to the default. Below it is shown what is
/// wrong with the value, or why the last value was refused. A change is stored at once.
class SettingRowView : public QWidget {
  public:
    /// The row outlives the view.
    SettingRowView(Desktop& desktop, const SettingsModel& model, const SettingRow& row,
                   QWidget* parent = nullptr);

    const SettingRow& row() const { return row_; }
    /// Shows the stored value; does not change a text that is being typed.
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
    QWidget* control_; ///< declared after `put_`, which is set while it is made
    QPushButton* reset_;
    Remark* remark_;
};

} // namespace orvane::views
