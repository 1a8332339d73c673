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

/// Every setting in its tab, changed at once, without a button to agree. Shows what other windows and other
/// programs change, and finds a row by its words over all tabs.
class SettingsWindow : public QDialog {
  public:
    explicit SettingsWindow(Desktop& desktop, QWidget* parent = nullptr);
    ~SettingsWindow() override;

    int tabCount() const;
    void showTab(int index);
    void showTab(SettingPage page);
    QLineEdit* search() { return search_; }

  protected:
    /// Escape takes the words of the search away first.
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void listen();
    void refreshSoon();
    void showMatching();
    /// `step`: 1 to the next tab in view, -1 to the one before; round the ends.
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
    /// Work that another thread hands over finds out by it that the window has gone.
    std::shared_ptr<bool> isRefreshScheduled_ = std::make_shared<bool>(false);
    platform::Subscription observation_;
    platform::Subscription workObservation_;
};

} // namespace orvane::views
