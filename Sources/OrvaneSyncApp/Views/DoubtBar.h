#pragma once

#include "OrvaneDesignKit/FoldedText.h"
#include "OrvaneSyncApp/ViewModels/Results/ResultsViewModel.h"
#include "OrvaneSyncApp/Views/Desktop.h"

#include <QFrame>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace orvane::views {

/// What a cure that needs no scan has done: how many clips it changed, and which it left without sound.
/// `before`: the clips before it; `answer`: that of its command.
QString doneText(Desktop& desktop, const CureStep& step, const SyncGroupList& before, const JSON& answer);

/// The doubts about the work, one at a time, with buttons for their cures. Hidden if there is no doubt.
class DoubtBar : public QFrame {
  public:
    explicit DoubtBar(Desktop& desktop, QWidget* parent = nullptr);
    void show(std::vector<ResultsViewModel::Doubt> doubts);

    std::function<void(const std::vector<UUID>&)> whenClipsWanted;
    /// Called when the button that had the focus is removed.
    std::function<void()> whenFocusLost;
    /// Called when a cure is complete.
    std::function<void()> whenCured;

  private:
    void showOne();
    void cure(const CureStep& step);

    Desktop& desktop_;
    std::vector<ResultsViewModel::Doubt> doubts_;
    std::size_t shown_ = 0;
    design::FoldedText* text_;
    QLabel* position_;
    QPushButton* clips_;
    QPushButton* previous_;
    QPushButton* next_;
    QHBoxLayout* buttons_;
    std::vector<QPushButton*> steps_;
};

} // namespace orvane::views
