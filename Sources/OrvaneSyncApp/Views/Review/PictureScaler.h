#pragma once

#include "Platform/MainThread.h"

#include <QImage>
#include <QSize>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace orvane::views {

/// Scales pictures to their size on the screen, on a thread of its own, one at a time. While one is scaled,
/// only the newest request waits. Interface thread.
class PictureScaler {
  public:
    /// `done` is called with each scaled picture.
    explicit PictureScaler(std::function<void(QImage)> done);

    /// `size`: pixels of the screen.
    void scale(QImage picture, QSize size);
    bool isScaling() const { return isScaling_; }

  private:
    void begin(QImage picture, QSize size);

    const std::function<void(QImage)> done_;
    bool isScaling_ = false;
    std::optional<std::pair<QImage, QSize>> next_;
    const std::shared_ptr<platform::MainThread> mainThread_; ///< drops what it has posted
    const std::unique_ptr<platform::SerialQueue> queue_;     ///< destroyed first
};

} // namespace orvane::views
