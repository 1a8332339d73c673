#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncCore/Services/Shortcuts/KeyboardMonitor.h"
#include "Platform/Listeners.h"
#include "Platform/SettingsStore.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// A screen of the machine.
struct Screen {
    std::string localizedName;
    double width = 0; ///< points
    double height = 0;
    bool isMain = false;
};
/// As in menus: "Studio Display, 2560×1440 (Main)".
std::string screenLabel(const Screen& screen);

/// Shows the picture of a player on a screen of its own while it continues to play. Interface thread.
class FullscreenManager {
  public:
    /// A frameless window that covers a screen, black around the picture, above all other windows. Destroying
    /// it closes the window.
    class Window {
      public:
        virtual ~Window() = default;
    };
    /// Opens the windows. Without it there are no screens.
    struct Desktop {
        std::function<std::vector<Screen>()> screens;
        std::function<std::unique_ptr<Window>(std::size_t screenIndex)> open;
    };
    FullscreenManager(std::shared_ptr<VideoEngine> engine, std::shared_ptr<platform::SettingsStore> settings);

    Desktop desktop;

    bool isShowing() const { return window_ != nullptr; }
    std::size_t currentScreenIndex() const { return currentScreenIndex_; }
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

    /// Needs a loaded clip. Opens on the preferred screen; if that does not exist, on the last one.
    void toggleFullscreen();
    void hide();
    int preferredScreen() const;
    /// Moves the window there if it is open.
    void setPreferredScreen(int index);

    /// Handles a key of the window. Returns whether it was handled; other keys are passed to the screen that
    /// plays.
    bool handle(const KeyEvent& event);
    /// Whether the key press closes the window.
    static bool isLeftBy(const KeyEvent& event);

    static constexpr std::string_view hint =
        "ESC or F to exit · Space play/pause · ←/→ one frame · J/K/L shuttle";
    static constexpr double hintPoints = 14, hintInset = 20;
    /// Falls from 0.6 to 0, by the seconds since the window opened.
    static double hintOpacity(double seconds);

  private:
    void show();

    const std::shared_ptr<VideoEngine> engine_;
    const std::shared_ptr<platform::SettingsStore> settings_;
    platform::Listeners<> changed_;
    std::unique_ptr<Window> window_;
    std::size_t currentScreenIndex_ = 0;
};

} // namespace orvane
