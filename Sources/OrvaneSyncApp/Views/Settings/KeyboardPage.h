#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/ShortcutRows.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"
#include "OrvaneSyncCore/Services/Shortcuts/ShortcutRecorder.h"

#include <memory>
#include <vector>

class QKeyEvent;

namespace orvane::views {

/// The keys of the actions, recorded by pressing them; conflicts between actions and their cure; profiles,
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
    /// Marks the profile in force as changed if the keys differ from it.
    void compare();
    /// The title of the main window's menu entry with this key, which no action can change; empty: none.
    QString menuEntryWith(const Shortcut& shortcut) const;
    void record(ShortcutAction action);
    void endRecording();
    void bind(ShortcutAction action, const std::string& key);
    void settle(ShortcutAction action);
    /// Runs a command on the keys; if it is refused, the reason is shown above the table.
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
    std::vector<QWidget*> headings_; ///< one for each category
    std::vector<Line> lines_;
    platform::Subscription observation_;
};

} // namespace orvane::views
