#pragma once

#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <functional>
#include <optional>
#include <vector>

class QSplitter;

namespace orvane::views {

class InspectorView;
class KeyOverlay;
class OutlineView;
class PictureView;
class ReviewActions;
class StepsBar;
class TimelineView;

/// The clip in view: the list of clips at the left, its picture above its timeline, and at the right its
/// facts and the decisions about it.
class ReviewView : public WorkScreen {
  public:
    /// `leave`: back to the list of results.
    ReviewView(Desktop& desktop, ReviewActions& actions, std::function<void()> leave,
               QWidget* parent = nullptr);
    ~ReviewView() override;

    /// Opens the clip at its clap. Does nothing for a clip that does not exist.
    void open(const UUID& groupID);
    const std::optional<UUID>& clip() const { return desktop_.players().review()->groupID(); }
    /// Called when another clip is in view.
    std::function<void()> whenMoved;
    /// The user wants to see all cameras of a take.
    std::function<void(const std::vector<UUID>& cameras)> openTake;
    OutlineView& outline() { return *outline_; }
    std::vector<UUID> clips() const override;
    QLineEdit* search() const override;
    KeyOverlay* keyOverlay() const override { return keys_; }
    bool handleFullscreen(const KeyEvent& event) override;
    void leave() override;
    void savePlaces() const;
    PictureView& picture() { return *picture_; }

  private:
    void go(int step);

    Desktop& desktop_;
    QSplitter* columns_;
    QSplitter* rows_;
    OutlineView* outline_;
    StepsBar* steps_;
    PictureView* picture_;
    TimelineView* timeline_;
    InspectorView* inspector_;
    KeyOverlay* keys_;
    platform::Subscription ofReview_;
};

} // namespace orvane::views
