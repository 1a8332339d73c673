#pragma once

#include "OrvaneDesignKit/Controls.h"
#include "OrvaneSyncApp/ViewModels/Settings/SettingsModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QDialog>

#include <memory>
#include <vector>

class QListWidget;
class QStackedWidget;

namespace orvane::views {

class SettingsPage;

/// All settings in tabs. A change has effect at once, without a button to confirm. Changes by other windows
/// and programs are shown, and a search finds rows in all tabs. Each page is made in a piece of work of its
/// own: the first one when the window is made, the others after it, or when they are shown.
class SettingsWindow : public QDialog {
  public:
    explicit SettingsWindow(Desktop& desktop, QWidget* parent = nullptr);
    ~SettingsWindow() override;

    int tabCount() const;
    void showTab(int index);
    void showTab(SettingPage page);
    QLineEdit* search() { return search_; }

  protected:
    /// Escape first clears the search, then closes the window.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    struct Tab {
        const SettingTab* described;
        SettingsPage* page = nullptr; ///< null until it is made
        bool isOpened = false;
    };
    SettingsPage& pageOf(Tab& tab);
    /// Makes the pages that are still missing, one after the other.
    void makePagesLater();
    void listen();
    void refreshSoon();
    void showMatching();
    /// `step`: 1 for the next visible tab, -1 for the previous one; after the last tab comes the first.
    void goToTab(int step);

    Desktop& desktop_;
    const SettingsModel model_;
    QLineEdit* search_;
    QListWidget* tabs_;
    QStackedWidget* pages_;
    design::EmptyState* nothing_;
    std::vector<Tab> settingTabs_; ///< by row of the list
    /// Work posted by another thread holds it weakly, to find out whether the window still exists.
    std::shared_ptr<bool> isRefreshScheduled_ = std::make_shared<bool>(false);
    platform::Subscription observation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
