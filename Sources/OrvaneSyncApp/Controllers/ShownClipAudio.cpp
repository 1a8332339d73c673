#include "OrvaneSyncApp/Controllers/ShownClipAudio.h"

#include <utility>

namespace orvane {

namespace {

template <class Map>
std::optional<typename Map::mapped_type> entry(const Map& map, const UUID& id) {
    const auto found = map.find(id);
    return found == map.end() ? std::nullopt : std::optional(found->second);
}

} // namespace

ShownClipAudio::ShownClipAudio(std::shared_ptr<ImportController> controller,
                               const std::shared_ptr<platform::MainThread>& mainThread,
                               const std::shared_ptr<platform::SettingsStore>& settings, Play setMixdownAudio)
    : controller_(std::move(controller)), play_(std::move(setMixdownAudio)),
      self_(std::make_shared<ShownClipAudio*>(this)),
      ofWork_(controller_->onChange([this](ImportField field) {
          if (field == ImportField::smartAudio) followEntries();
      })),
      // Settings change on any thread.
      ofSettings_(settings->onChange([weak = std::weak_ptr(self_), mainThread](const std::string&) {
          mainThread->post([weak] {
              if (const auto self = weak.lock()) (*self)->followSettings();
          });
      })) {}

ShownClipAudio::~ShownClipAudio() = default;

void ShownClipAudio::show(std::optional<UUID> groupID, bool renders) {
    shown_ = groupID;
    renders_ = renders;
    entries_ = entries();
    refresh();
}

ShownClipAudio::Entries ShownClipAudio::entries() const {
    if (!shown_) return {};
    const SmartAudioState& state = std::as_const(*controller_).smartAudio().state();
    return {entry(state.mixdownURLs, *shown_), entry(state.viProcessedURLs, *shown_),
            entry(state.soloMonitorTracks, *shown_), entry(state.soloMonitorURLs, *shown_)};
}

void ShownClipAudio::followEntries() {
    if (Entries latest = entries(); latest != entries_) {
        entries_ = std::move(latest);
        refresh();
    }
}

void ShownClipAudio::followSettings() {
    if (heard_ != std::as_const(*controller_).smartAudio().rendered().heardSettings()) refresh();
}

void ShownClipAudio::refresh() {
    if (preview_) preview_->requestStop();
    preview_.reset();
    if (!shown_) return;
    RenderedAudioController& rendered = controller_->smartAudio().rendered();
    heard_ = rendered.heardSettings();
    play_(rendered.currentAudioURL(*shown_));
    if (renders_) preview_ = rendered.runVoiceIsolationForGroup(*shown_);
}

} // namespace orvane
