#include "OrvaneSyncApp/ViewModels/Review/FullscreenManager.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Persistence/ScreenSettings.h"

#include <algorithm>
#include <utility>

namespace orvane {

std::string screenLabel(const Screen& screen) {
    return screen.localizedName + ", " + std::to_string(static_cast<int>(screen.width)) + "×" +
           std::to_string(static_cast<int>(screen.height)) + (screen.isMain ? " (Main)" : "");
}

FullscreenManager::FullscreenManager(std::shared_ptr<VideoEngine> engine,
                                     std::shared_ptr<platform::SettingsStore> settings)
    : engine_(std::move(engine)), settings_(std::move(settings)) {}

int FullscreenManager::preferredScreen() const { return settings_->get(screenSettings::preferredScreen); }

void FullscreenManager::setPreferredScreen(int index) {
    settings_->set(screenSettings::preferredScreen, index);
    if (isShowing()) show();
}

void FullscreenManager::toggleFullscreen() {
    if (engine_->player() == nullptr) return;
    isShowing() ? hide() : show();
}

void FullscreenManager::show() {
    const std::vector<Screen> screens = desktop.screens ? desktop.screens() : std::vector<Screen>();
    if (screens.empty() || !desktop.open) return;
    currentScreenIndex_ = static_cast<std::size_t>(
        std::clamp<std::ptrdiff_t>(preferredScreen(), 0, static_cast<std::ptrdiff_t>(screens.size()) - 1));
    window_.reset();
    window_ = desktop.open(currentScreenIndex_);
    changed_.notify();
}

void FullscreenManager::hide() {
    if (!isShowing()) return;
    window_.reset();
    changed_.notify();
}

bool FullscreenManager::handle(const KeyEvent& event) {
    using Code = Shortcut::KeyCode;
    if (!isShowing() || !event.isDown) return false;
    const bool isBare = event.modifiers == ModifierSet::none;
    if (isLeftBy(event)) {
        hide();
        return true;
    }
    const bool isArrow = event.keyCode == Code::arrowLeft || event.keyCode == Code::arrowRight;
    if (isArrow && (isBare || event.modifiers == ModifierSet::shift)) {
        const int frames = isBare ? 1 : 5;
        engine_->stepFrames(event.keyCode == Code::arrowRight ? frames : -frames,
                            settings_->get(settings::playbackAudioScrubbing));
        return true;
    }
    constexpr std::array transport{Code::space, Code::k, Code::j, Code::l};
    if (!isBare || std::ranges::find(transport, event.keyCode) == transport.end()) return false;
    if (event.isRepeat) return true; // a held key acts once
    if (event.keyCode == Code::j)
        engine_->pressJ();
    else if (event.keyCode == Code::l)
        engine_->pressL();
    else
        engine_->playPause();
    return true;
}

bool FullscreenManager::isLeftBy(const KeyEvent& event) {
    const auto& typed = event.charactersIgnoringModifiers;
    return event.isDown && event.modifiers == ModifierSet::none &&
           (event.keyCode == Shortcut::KeyCode::escape || typed == "f" || typed == "F");
}

double FullscreenManager::hintOpacity(double seconds) {
    constexpr double opacity = 0.6, shownSeconds = 3, fadeSeconds = 1;
    return opacity * std::clamp(1 - (seconds - shownSeconds) / fadeSeconds, 0.0, 1.0);
}

} // namespace orvane
