#pragma once

#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

#include <vector>

namespace orvane::views {

/// The list of roles: one line for each track, in the colour of its channel, edited in place and moved up and
/// down.
class RolesPage : public SettingsPage {
  public:
    RolesPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    void refresh() override;

  private:
    struct Line {
        QLineEdit* name;
        QPushButton* up;
        QPushButton* down;
        QPushButton* reset;
        Remark* remark;
    };
    QWidget* makeLine(std::size_t track);
    void rename(std::size_t track);
    void move(std::size_t track, int by);
    void setRole(std::size_t track, JSON value);

    std::vector<Line> lines_;
    Remark* shared_ = nullptr;
};

} // namespace orvane::views
