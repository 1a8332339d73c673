#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Inspector/KeyOverview.h"
#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"

#include <QWidget>

#include <functional>
#include <vector>

namespace orvane::views {

/// The picture of a player on a screen of its own, without a frame, with a hint that goes by itself. The keys
/// of the menus act in it, and "?" shows all.
class FullscreenWindow : public QWidget {
  public:
    /// What the picture belongs to.
    struct Of {
        QWidget& screen;               ///< that plays; outlives the window, as does all below
        std::function<QString()> name; ///< of the camera, for the hint, which comes again with another
        std::function<std::vector<KeyGroup>()> keys; ///< what each does at this moment
        ImportController& work;                      ///< whose clips the name may change with
    };
    FullscreenWindow(const std::shared_ptr<VideoEngine>& engine, const QRect& screen, const Of& of);

    /// The screens of the machine, and what opens a window on one of them.
    static FullscreenManager::Desktop desktop(std::shared_ptr<VideoEngine> engine, Of of);
    static bool isOne(const QWidget* window);

  private:
    class Hint;
    class Handle;

    platform::Subscription ofEngine_, ofWork_;
};

} // namespace orvane::views
