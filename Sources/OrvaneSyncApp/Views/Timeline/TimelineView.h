#pragma once

#include "OrvaneSyncApp/Views/Desktop.h"
#include "OrvaneSyncApp/Views/Review/AfterPicture.h"

#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

class QLabel;
class QPushButton;
class QScrollBar;
class QStackedLayout;
class QTimer;

namespace orvane {
struct TimelineRows;
}

namespace orvane::views {

class TimelineCanvas;
class TrackHeader;

/// The timeline of the clip in view, and the gestures on it: ruler, pictures, sound, one row for each
/// channel, ranges and blocks, further recordings. It follows the notices of the work, the waveform and the
/// player.
class TimelineView : public QWidget {
  public:
    TimelineView(Desktop& desktop, std::shared_ptr<ReviewViewModel> review, QWidget* parent = nullptr);

    TimelineCanvas& canvas() { return *canvas_; }
    TrackHeader& header() { return *header_; }

  private:
    QWidget* makeTools();
    QWidget* makeRows();
    void follow();
    /// Schedules one update. `rows`: the rows have changed, not only the zoom.
    void changed(bool rows);
    void refresh();
    void showPictures();
    void buildRows(const SyncGroup& clip);
    void moveRows(const SyncGroup& clip);
    void showSummary();
    void runSmartAudio();
    void showZoom();
    void showSound();
    void scrollRows(double points);
    void showPosition();
    void runWhilePlaying();

    Desktop& desktop_;
    const std::shared_ptr<ReviewViewModel> review_;
    QStackedLayout* pages_;
    QLabel* summary_;
    QPushButton* analyse_;
    TrackHeader* header_;
    TimelineCanvas* canvas_;
    QScrollBar* across_;
    QScrollBar* down_;
    QTimer* playing_; ///< at the rate of the screen, while something plays
    std::shared_ptr<const TimelineRows> rows_;
    std::optional<UUID> shown_;
    bool areRowsStale_ = true;
    bool wasVideoMissing_ = false; ///< for the clip in view
    AfterPicture later_;
    std::vector<platform::Subscription> following_;
};

} // namespace orvane::views
