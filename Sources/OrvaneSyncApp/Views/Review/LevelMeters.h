#pragma once

#include "OrvaneSyncApp/Controllers/AudioLevelProvider.h"
#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncApp/ViewModels/Review/PeakHold.h"

#include <QWidget>

#include <functional>
#include <vector>

namespace orvane::views {

/// One bar for each channel that is heard beside a scale in dBFS, its recent peak, and a mark on a channel
/// that reached full scale; a click removes the marks. It measures while sound plays and shortly after.
class LevelMeters : public QWidget {
  public:
    LevelMeters(const std::shared_ptr<platform::MainThread>& mainThread, std::shared_ptr<VideoEngine> engine,
                QWidget* parent = nullptr);
    QSize sizeHint() const override;
    void clear();
    /// The levels of the recording's channels at the playhead: shown while a mix of them plays, which has
    /// fewer channels. Empty without a recording.
    std::function<std::vector<platform::ChannelPeak>()> levelsOfRecording;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void follow(VideoEngineField field);
    void measure();
    /// Gets the levels of the moment, and smooths those that the player does not measure.
    std::vector<platform::ChannelPeak> measured(const platform::Player& player);
    int channelsOf(const platform::Player& player) const;
    int scaleWidth() const;
    int channelAt(int x) const;
    double pitch() const;    ///< from bar to bar
    double firstBar() const; ///< left edge of the bars, which are centred

    const std::shared_ptr<VideoEngine> engine_;
    const std::shared_ptr<AudioLevelProvider> provider_;
    PeakHold held_;
    std::vector<PeakHold::Channel> painted_;
    std::vector<ChannelLevel> levels_;      ///< as painted
    std::vector<ChannelLevel> ofRecording_; ///< smoothed; empty while the recording itself is played
    int channels_ = 0;
    /// The largest channel count that the clip in view has had, for which room is kept: a preview with one
    /// channel, played instead of the recording, does not move the picture.
    int widest_ = 0;
    bool isNewClip_ = true;
    int restUpdates_ = 0; ///< since the sound stopped
    platform::Subscription ofEngine_, ofLevels_;
};

} // namespace orvane::views
