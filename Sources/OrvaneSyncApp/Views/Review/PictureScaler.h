#pragma once

#include "Platform/MainThread.h"

#include <QImage>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace orvane::views {

/// Brings pictures to the size on the screen, on a thread of its own and one at a time: while it is at one,
/// of those that are asked for only the newest waits. Interface thread.
class PictureScaler {
  public:
    /// `done` is called with each picture that is ready.
    explicit PictureScaler(std::function<void(QImage)> done);

    /// `size`: pixels of the screen.
    void scale(QImage picture, QSize size);
    bool isScaling() const { return isScaling_; }

  private:
    void begin(QImage picture, QSize size);

    const std::function<void(QImage)> done_;
    bool isScaling_ = false;
    std::optional<std::pair<QImage, QSize>> next_;
    const std::shared_ptr<platform::MainThread> mainThread_; ///< what it has posted goes with it
    const std::unique_ptr<platform::SerialQueue> queue_;     ///< ends first
};

} // namespace orvane::views
