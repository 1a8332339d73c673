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
/// As menus list it: "Studio Display, 2560×1440 (Main)".
std::string screenLabel(const Screen& screen);

/// Sends the picture of a player to a screen of its own; it goes on playing. Interface thread.
class FullscreenManager {
  public:
    /// A window without a frame that covers a screen, black around the picture, above all others. Destroying
    /// it closes it.
    class Window {
      public:
        virtual ~Window() = default;
    };
    /// What opens windows. Without it there are no screens.
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

    /// Needs a loaded clip. Opens on the preferred screen, or the last one that there is.
    void toggleFullscreen();
    void hide();
    int preferredScreen() const;
    /// Moves the window there where one shows.
    void setPreferredScreen(int index);

    /// A key of the window. Whether the event is used up: those that it does not have are the screen's.
    bool handle(const KeyEvent& event);
    /// Whether the key press closes the window.
    static bool isLeftBy(const KeyEvent& event);

    static constexpr std::string_view hint =
        "ESC or F to exit · Space play/pause · ←/→ one frame · J/K/L shuttle";
    static constexpr double hintPoints = 14, hintInset = 20;
    /// From 0.6 down to 0, by the seconds since the window opened.
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
