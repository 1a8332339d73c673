#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/ShortcutRows.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutRecorder.h"

#include <memory>
#include <vector>

class QKeyEvent;

namespace orvane::views {

/// The key of each action, recorded by pressing it; keys that several actions have, and their cure; profiles,
/// import and export.
class KeyboardPage : public SettingsPage {
  public:
    KeyboardPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    bool showMatching(const QString& words) override;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    struct Line {
        ShortcutAction action;
        QWidget* whole;
        QPushButton* key;
        QPushButton* clear;
        QPushButton* reset;
        Remark* conflict;
        QPushButton* settle;
    };
    QWidget* makeProfiles();
    QWidget* makeActions();
    QWidget* makeLine(const ShortcutRow& row);
    void showBindings();
    void showProfiles();
    /// Says of the profile in force where the keys are others than it holds.
    void compare();
    /// Of the main window, with a key that is no action's: its title, empty without one.
    QString menuEntryWith(const Shortcut& shortcut) const;
    void record(ShortcutAction action);
    void endRecording();
    void bind(ShortcutAction action, const std::string& key);
    void settle(ShortcutAction action);
    /// Runs a command on the keys; what it refuses stands above the table.
    void run(std::string_view id, JSON arguments = {});
    void runOnProfile(std::string_view id, const QString& name);
    void askForReset();

    const std::shared_ptr<ShortcutCenter> center_;
    ShortcutRecorder recorder_;
    design::Banner* banner_;
    design::Choice* profiles_;
    QLineEdit* profileName_;
    QPushButton* deleteProfile_;
    QWidget* profileSection_;
    QWidget* actionSection_;
    std::vector<QWidget*> headings_; ///< one a category
    std::vector<Line> lines_;
    platform::Subscription observation_;
};

} // namespace orvane::views
