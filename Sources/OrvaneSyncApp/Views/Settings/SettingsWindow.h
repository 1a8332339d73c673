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
/// and programs are shown, and a search finds rows in all tabs.
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
    std::vector<SettingsPage*> settingsPages_;
    std::vector<SettingPage> pageOrder_;
    std::vector<bool> isOpened_;
    /// Work posted by another thread holds it weakly, to find out whether the window still exists.
    std::shared_ptr<bool> isRefreshScheduled_ = std::make_shared<bool>(false);
    platform::Subscription observation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
