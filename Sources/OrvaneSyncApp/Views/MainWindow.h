#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Sheets/SheetMenus.h"

#include <QMainWindow>

#include <optional>
#include <utility>
#include <vector>

class QAction;
class QSplitter;
class QStackedWidget;

namespace orvane::design {
class Banner;
}

namespace orvane::views {

class ResultsView;
class ScanningView;
class SessionsPanel;
class StartView;

/// The window: sessions at the left, beside them the screen that the state of the work asks for. Menus and
/// tools run commands of the table.
class MainWindow : public QMainWindow {
  public:
    explicit MainWindow(Desktop& desktop);
    ~MainWindow() override;

    /// Sets the folders and scans them.
    void scanFolders(const QStringList& paths);
    void openProject(const QString& path);
    /// One project, or folders.
    void openPaths(const QStringList& paths);
    ResultsView& results() { return *results_; }
    Desktop& desktop() { return desktop_; }
    bool isScanning() const { return scan_.has_value(); }

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void makeMenus();
    void makeTools();
    /// A row of the table in a menu.
    QAction* addCommand(QMenu* menu, std::string_view id, const QKeySequence& key = {}, JSON arguments = {});
    QAction* addClipCommand(QMenu* menu, std::string_view id, const QKeySequence& key = {});
    void startScan();
    void showPage();
    void updateActions();
    void updateStatus();
    void chooseAndRun(std::string_view id, const QString& caption, const QString& filter, bool isSaved);
    void restorePlaces();

    Desktop& desktop_;
    SessionsPanel* sessions_;
    StartView* start_;
    ScanningView* scanning_;
    ResultsView* results_;
    QStackedWidget* pages_;
    QSplitter* splitter_;
    design::Banner* banner_;
    std::optional<platform::Task> scan_;
    bool wantsStart_ = false; ///< the user asked for another scan over open work
    std::vector<std::pair<QAction*, std::string_view>> commandActions_;
    std::vector<std::pair<QAction*, std::string_view>> clipActions_;
    SheetActions sheetActions_{};
    QAction* undo_ = nullptr;
    QAction* redo_ = nullptr;
    QAction* export_ = nullptr;
    QAction* rename_ = nullptr;
    platform::Subscription workObservation_;
    platform::Subscription sessionObservation_;
    bool isUpdateScheduled_ = false;
};

} // namespace orvane::views
