#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QWidget>

#include <string>
#include <vector>

namespace orvane::views {

class Remark;

/// The switcher of presets: puts one in place, for the open session's folder too; saves, renames and deletes.
/// Says behind the name of the chosen one that the settings in force are others.
class PresetBar : public QWidget {
  public:
    explicit PresetBar(Desktop& desktop, QWidget* parent = nullptr);

  private:
    void list();
    void show();
    /// The settings in force with those of the chosen preset.
    void compare();
    void apply(const QString& name);
    void applied(const std::string& name);
    /// Asks for a name below the list: of a new preset, or for the chosen one.
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
    std::string active_; ///< applied last without a folder, before this start too
    bool isRename_ = false;
    bool isComparing_ = false;
    bool isCompareAsked_ = false; ///< again, as something changed meanwhile
    platform::Subscription observation_;
    platform::Subscription settingsObservation_;
};

} // namespace orvane::views
