#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <string>
#include <vector>

namespace orvane::views {

class Remark;

/// Chooses a preset, also for the open session's folder; saves, renames and deletes presets. If the settings
/// in force differ from the chosen preset, this is shown after its name.
class PresetBar : public QWidget {
  public:
    explicit PresetBar(Desktop& desktop, QWidget* parent = nullptr);

  private:
    void list();
    void show();
    /// Compares the settings in force with those of the chosen preset.
    void compare();
    void apply(const QString& name);
    void applied(const std::string& name);
    /// Shows the field for a name below the list, for a new preset or to rename the chosen one.
    void askForName(bool isRename);
    void takeName();
    void run(std::string_view id, JSON arguments, Desktop::Done done);
    QString chosen() const;

    Desktop& desktop_;
    design::Choice* presets_;
    QPushButton* rename_;
    QPushButton* delete_;
    QWidget* nameRow_;
    QLineEdit* name_;
    QPushButton* take_;
    Remark* problem_;
    std::vector<std::string> names_;
    std::string active_; ///< the preset applied last without a folder, also by an earlier run
    bool isRename_ = false;
    bool isComparing_ = false;
    bool isCompareAsked_ = false; ///< compare again, because something has changed
    platform::Subscription observation_;
    platform::Subscription settingsObservation_;
};

} // namespace orvane::views
