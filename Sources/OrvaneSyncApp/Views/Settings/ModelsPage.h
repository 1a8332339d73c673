#pragma once

#include "OrvaneSyncApp/ViewModels/Settings/ModelRows.h"
#include "OrvaneSyncApp/Views/Settings/Remark.h"
#include "OrvaneSyncApp/Views/Settings/SettingsPage.h"

#include <vector>

class QProgressBar;
class QTimer;
class QVBoxLayout;

namespace orvane::views {

/// The optional models with their downloads, and the features that work without one.
class ModelsPage : public SettingsPage {
  public:
    ModelsPage(Desktop& desktop, const SettingsModel& model, const SettingTab& tab);
    void open() override;

  private:
    struct Line {
        design::Badge* state;
        Remark* problem;
        QProgressBar* progress;
        QPushButton* download;
        QPushButton* cancel;
        QPushButton* remove;
    };
    void look();
    void show(const ModelList& list);
    void makeLines(const ModelList& list);
    QWidget* makeLine(const ModelRow& row);
    void run(std::string_view id, const std::string& model);

    QVBoxLayout* rows_;
    QVBoxLayout* features_;
    QLabel* diskUsage_;
    design::Badge* stems_;
    QLabel* stemsProblem_;
    Remark* problem_;
    std::vector<Line> lines_;
    QTimer* timer_; ///< runs while a model is being downloaded
};

} // namespace orvane::views
