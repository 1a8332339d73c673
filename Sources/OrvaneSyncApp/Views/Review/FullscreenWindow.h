#pragma once

#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"

#include <QWidget>

#include <functional>

namespace orvane::views {

/// The picture of a player on a screen of its own, without a frame, with a hint that goes by itself.
class FullscreenWindow : public QWidget {
  public:
    /// `name`: of the camera, for the hint.
    FullscreenWindow(std::shared_ptr<VideoEngine> engine, const QRect& screen, const QString& name);

    /// The screens of the machine, and what opens a window on one of them. `name` is asked when it opens.
    static FullscreenManager::Desktop desktop(std::shared_ptr<VideoEngine> engine,
                                              std::function<QString()> name);
    static bool isOne(const QWidget* window);

  private:
    class Hint;
    class Handle;
};

} // namespace orvane::views
