#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"

#include <QWidget>

#include <functional>
#include <vector>

namespace orvane::views {

/// The picture of a player in a frameless window on a whole screen, with a hint that disappears after some
/// seconds. The keys of the menus work in it, and "?" shows all keys.
class FullscreenWindow : public QWidget {
  public:
    /// The objects that the picture belongs to.
    struct Of {
        QWidget& screen;               ///< plays the picture; like the members below, it outlives the window
        std::function<QString()> name; ///< of the camera, for the hint, which is shown again when it changes
        std::function<std::vector<KeyGroup>()> keys; ///< what each key does at this moment
        ImportController& work;                      ///< the name may change with its clips
    };
    FullscreenWindow(const std::shared_ptr<VideoEngine>& engine, const QRect& screen, const Of& of);

    /// The screens of the machine, and a function that opens a window on one of them.
    static FullscreenManager::Desktop desktop(std::shared_ptr<VideoEngine> engine, Of of);
    static bool isOne(const QWidget* window);

  private:
    class Hint;
    class Handle;

    platform::Subscription ofEngine_, ofWork_;
};

} // namespace orvane::views
