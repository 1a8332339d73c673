#pragma once

#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"

#include <QWidget>

namespace orvane::views {

/// The picture of a player on a screen of its own, without a frame, with a hint that goes by itself.
class FullscreenWindow : public QWidget {
  public:
    FullscreenWindow(std::shared_ptr<VideoEngine> engine, const QRect& screen);

    /// The screens of the machine, and what opens a window on one of them.
    static FullscreenManager::Desktop desktop(std::shared_ptr<VideoEngine> engine);
    static bool isOne(const QWidget* window);

  private:
    class Hint;
    class Handle;
};

} // namespace orvane::views
