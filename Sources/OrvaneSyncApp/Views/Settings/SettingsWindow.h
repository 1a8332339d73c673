#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QDialog>

namespace orvane::views {

/// Every setting of the catalogue under its heading, changed at once, without a button to agree.
class SettingsWindow : public QDialog {
  public:
    explicit SettingsWindow(Desktop& desktop, QWidget* parent = nullptr);

  private:
    QWidget* page(const std::vector<std::string_view>& headings);
    QWidget* control(const platform::SettingDescription& setting);
    void store(const platform::SettingDescription& setting, JSON value);
    JSON valueOf(const platform::SettingDescription& setting) const;

    Desktop& desktop_;
    design::Banner* refusal_;
};

} // namespace orvane::views
