#pragma once

#include "OrvaneSyncApp/Views/WorkScreen.h"

#include <optional>
#include <vector>

class QSplitter;

namespace orvane::views {

class InspectorView;
class KeyOverlay;
class OutlineView;
class PictureMessages;
class PictureView;
class StepsBar;
class TimelineView;

/// The clip in view: the list of clips at the left, its picture above its timeline, and at the right its
/// facts and the decisions about it.
class ReviewView : public WorkScreen {
  public:
    ReviewView(Desktop& desktop, ScreenHost host);
    ~ReviewView() override;

    /// Opens the first of the clips at its clap. Does nothing for a clip that does not exist.
    void open(const std::vector<UUID>& clips) override;
    const std::optional<UUID>& clip() const { return desktop_.players().review()->groupID(); }
    bool isOpen() const override { return clip().has_value(); }
    bool isOfOneClip() const override { return true; }
    OutlineView& outline() { return *outline_; }
    std::vector<UUID> clips() const override;
    QLineEdit* search() const override;
    OutlineView* outlineBeside() const override { return outline_; }
    KeyOverlay* keyOverlay() const override { return keys_; }
    QBoxLayout* messages() const override;
    bool handleFullscreen(const KeyEvent& event) override;
    void leave() override;
    void savePlaces() override;
    PictureView& picture() { return *picture_; }

  private:
    void go(int step);

    QSplitter* columns_;
    QSplitter* rows_;
    PictureMessages* messages_;
    OutlineView* outline_;
    StepsBar* steps_;
    PictureView* picture_;
    TimelineView* timeline_;
    InspectorView* inspector_;
    KeyOverlay* keys_;
    platform::Subscription ofReview_;
};

} // namespace orvane::views
