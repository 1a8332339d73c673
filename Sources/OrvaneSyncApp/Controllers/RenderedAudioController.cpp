#include "OrvaneSyncApp/Controllers/RenderedAudioController.h"

#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/RenderedAudio/VoiceIsolationProcessor.h"
#include "OrvaneSyncCore/Services/SmartAudio/MasterGain.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Platform/OnQueue.h"

#include <exception>
#include <stop_token>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace orvane {

namespace {

using Store = std::shared_ptr<const RenderedAudioStore>;

constexpr double percent = 100;

TakeSound soundOf(const SyncGroup& group) { return {group, takeOf(group, assumedChannels)}; }

std::string phaseOf(std::string_view verb, const SyncGroup& group) {
    return std::string(verb) + filesText(group, takeOf(group, assumedChannels), FileNames());
}

template <class Map>
const typename Map::mapped_type* findIn(const Map& map, const UUID& id) {
    const auto found = map.find(id);
    return found == map.end() ? nullptr : &found->second;
}

} // namespace

RenderedAudioController::RenderedAudioController(OpenWork& work, SmartAudioCaches& caches)
    : work_(work), caches_(caches),
      shown_(platform::Throttle<SmartAudioProgress>::create(
          work.environment.mainThread, work.environment.clock, platform::progressInterval,
          [this](const SmartAudioProgress& latest) {
              if (underWay_ == 0) return;
              caches_.state.rendering = latest;
              work_.notify(ImportField::smartAudioProgress);
          })),
      mixdowns_(platform::SerialQueue::create("mixdown")),
      previews_(platform::SerialQueue::create("voice isolation")) {}

RenderedAudioController::~RenderedAudioController() { shown_->close(); }

RenderProgress RenderedAudioController::report(std::string phase) {
    return [shown = std::weak_ptr(shown_), phase = std::move(phase)](double share) {
        if (const auto own = shown.lock()) own->post({phase, 1, 1, share});
    };
}

/// Renders on the queue. If it fails, the result is empty; only ReadFailed is passed on.
platform::Task RenderedAudioController::render(Weak weak, platform::SerialQueue* queue, std::string phase,
                                               Rendering rendering, Rendered result) {
    auto self = weak.lock();
    if (!self || !self->work_.environment.renderedAudio) co_return;
    ++self->underWay_;
    auto waiting =
        platform::onQueue(*queue, self->work_.environment.mainThread,
                          [rendering = std::move(rendering), progress = self->report(std::move(phase))](
                              const std::stop_token& stop) -> std::optional<RenderResult> {
                              try {
                                  return rendering(progress, stop);
                              } catch (const ReadFailed&) {
                                  throw;
                              } catch (const std::exception&) {
                                  return std::nullopt; // such as a recording that cannot be opened
                              }
                          });
    self.reset();
    std::exception_ptr raised;
    try {
        *result = co_await waiting;
    } catch (...) {
        raised = std::current_exception();
    }
    if (self = weak.lock(); self && --self->underWay_ == 0) {
        self->shown_->flush();
        self->caches_.state.rendering = {};
    }
    if (raised) std::rethrow_exception(raised);
}

/// One kind of file rendered for a clip; one file of a kind is rendered at a time.
template <class Input>
struct RenderedAudioController::Kind {
    const std::unique_ptr<platform::SerialQueue> RenderedAudioController::*queue;
    std::string_view phase; ///< shown before the clip's name in the progress
    /// What should be rendered at the moment; absent: nothing.
    std::optional<Input> (RenderedAudioController::*inputOf)(const SyncGroup&) const;
    std::optional<RenderResult> (*make)(const Store&, const Input&, const RenderProgress&,
                                        const std::stop_token&); ///< called on the queue
    std::unordered_map<UUID, FileURL> SmartAudioState::*urls;
    void (RenderedAudioController::*isMade)(const UUID&, Input) = nullptr;
};

/// If the input changes during the rendering, the new input is rendered instead, until it stays the same.
template <class Input>
platform::Task RenderedAudioController::renderLatest(Weak weak, UUID groupID, Kind<Input> kind, Input input,
                                                     Rendered result) {
    for (;;) {
        auto self = weak.lock();
        const SyncGroup* group = self ? self->work_.syncGroups().find(groupID) : nullptr;
        if (group == nullptr) co_return;
        const auto rendered = std::make_shared<std::optional<RenderResult>>();
        auto rendering = render(
            weak, ((*self).*kind.queue).get(), phaseOf(kind.phase, *group),
            [input, make = kind.make, store = self->work_.environment.renderedAudio](
                const RenderProgress& progress, const std::stop_token& stop) {
                return make(store, input, progress, stop);
            },
            rendered);
        self.reset();
        std::exception_ptr failed;
        try {
            co_await rendering;
        } catch (const ReadFailed&) {
            failed = std::current_exception();
        }
        self = weak.lock();
        group = self ? self->work_.syncGroups().find(groupID) : nullptr;
        auto latest = group == nullptr ? std::nullopt : ((*self).*kind.inputOf)(*group);
        if (!latest) co_return; // the clip does not exist any more, or nothing of it is to be rendered
        if (*latest != input) {
            input = std::move(*latest);
            continue;
        }
        auto& urls = self->caches_.state.*kind.urls;
        if (*rendered)
            urls.insert_or_assign(groupID, (*rendered)->url);
        else
            urls.erase(groupID);
        if (kind.isMade != nullptr) ((*self).*kind.isMade)(groupID, std::move(input));
        if (result) *result = *rendered;
        self->work_.notifySmartAudio({groupID});
        if (failed) std::rethrow_exception(failed);
        co_return;
    }
}

struct RenderedAudioController::BlocksInput {
    TakeSound sound;
    std::vector<BlockDecision> blocks;

    bool operator==(const BlocksInput&) const = default;
};

std::optional<RenderedAudioController::BlocksInput>
RenderedAudioController::blocksInput(const SyncGroup& group) const {
    const auto* analysis = findIn(caches_.state.results, group.id);
    if (group.isMOS() || analysis == nullptr || (*analysis)->blocks.empty()) return std::nullopt;
    return BlocksInput{soundOf(group), (*analysis)->blocks};
}

platform::Task RenderedAudioController::renderMixdown(const UUID& groupID, Rendered result) {
    work_.notices.assertOnMainThread();
    const SyncGroup* group = work_.syncGroups().find(groupID);
    auto input = group == nullptr ? std::nullopt : blocksInput(*group);
    if (!work_.environment.renderedAudio || !input) return platform::Task::ended();
    const Kind<BlocksInput> kind{&RenderedAudioController::mixdowns_, "Rendering what is heard of ",
                                 &RenderedAudioController::blocksInput,
                                 [](const Store& store, const BlocksInput& from,
                                    const RenderProgress& progress, const std::stop_token& stop) {
                                     return SmartAudioMixdownRenderer(store).render(
                                         from.sound, from.blocks, SmartAudioMixdownRenderer::usualRampSeconds,
                                         progress, stop);
                                 },
                                 &SmartAudioState::mixdownURLs};
    return start(renderLatest(work_.weak(this), groupID, kind, std::move(*input), std::move(result)));
}

platform::Task RenderedAudioController::toggleSoloMonitor(const UUID& groupID, int trackIndex) {
    work_.notices.assertOnMainThread();
    const auto* pending = findIn(soloWanted_, groupID);
    const auto* current = pending ? pending : findIn(caches_.state.soloMonitorTracks, groupID);
    if (current != nullptr && *current == trackIndex) {
        soloWanted_.erase(groupID);
        caches_.state.soloMonitorTracks.erase(groupID);
        caches_.state.soloMonitorURLs.erase(groupID);
        work_.notifySmartAudio({groupID});
        return platform::Task::ended();
    }
    const SyncGroup* group = work_.syncGroups().find(groupID);
    if (group == nullptr || group->isMOS()) return platform::Task::ended();
    soloWanted_.insert_or_assign(groupID, trackIndex);
    return start(renderSolo(work_.weak(this), groupID, trackIndex));
}

platform::Task RenderedAudioController::renderSolo(Weak weak, UUID groupID, int trackIndex) {
    auto self = weak.lock();
    const SyncGroup* group = self->work_.syncGroups().find(groupID);
    const TakeSound sound = soundOf(*group);
    const auto rendered = std::make_shared<std::optional<RenderResult>>();
    auto rendering = render(
        weak, self->mixdowns_.get(),
        phaseOf("Rendering track " + std::to_string(trackIndex) + " of ", *group),
        [sound, trackIndex, store = self->work_.environment.renderedAudio](const RenderProgress& progress,
                                                                           const std::stop_token& stop) {
            return SmartAudioMixdownRenderer(store).renderSolo(sound, trackIndex - 1, progress, stop);
        },
        rendered);
    self.reset();
    std::exception_ptr raised;
    try {
        co_await rendering;
    } catch (...) {
        raised = std::current_exception();
    }
    self = weak.lock();
    group = self ? self->work_.syncGroups().find(groupID) : nullptr;
    const auto* wanted = self ? findIn(self->soloWanted_, groupID) : nullptr;
    if (wanted == nullptr || *wanted != trackIndex) co_return; // the button was pressed again after this
    self->soloWanted_.erase(groupID);
    if (raised) std::rethrow_exception(raised);
    if (group == nullptr || !*rendered || soundOf(*group) != sound) co_return;
    self->caches_.state.soloMonitorTracks.insert_or_assign(groupID, trackIndex);
    self->caches_.state.soloMonitorURLs.insert_or_assign(groupID, (*rendered)->url);
    self->work_.notifySmartAudio({groupID});
}

RenderedAudioController::HeardSettings RenderedAudioController::heardSettings() const {
    const platform::SettingsStore& settings = *work_.environment.settings;
    return {settings.get(settings::playbackAppliesSmartAudio),
            MasterGain::Target::fromUserDefaults(settings).preset};
}

std::optional<VoiceIsolationInput> RenderedAudioController::previewInput(const SyncGroup& group) const {
    const auto [areEffectsHeard, preset] = heardSettings();
    if (!areEffectsHeard) return std::nullopt;
    const SmartAudioState& state = caches_.state;
    VoiceIsolationInput input;
    const auto* solo = findIn(state.soloMonitorURLs, group.id);
    const auto* mixdown = findIn(state.mixdownURLs, group.id);
    if (solo != nullptr && state.soloMonitorTracks.contains(group.id))
        input.sound = *solo;
    else if (mixdown != nullptr)
        input.sound = *mixdown;
    else if (!group.isMOS())
        input.sound = soundOf(group);
    else
        return std::nullopt;
    input.settings = {preset.voiceIsolation / percent, preset.loudness / percent, preset.uniformity / percent,
                      group.masterGainDB};
    return input;
}

platform::Task RenderedAudioController::runVoiceIsolationForGroup(const UUID& groupID) {
    work_.notices.assertOnMainThread();
    const SyncGroup* group = work_.syncGroups().find(groupID);
    auto input = group == nullptr ? std::nullopt : previewInput(*group);
    SmartAudioState& state = caches_.state;
    if (!input) {
        caches_.lastVIInput.erase(groupID);
        if (state.viProcessedURLs.erase(groupID) > 0) work_.notifySmartAudio({groupID});
        return platform::Task::ended();
    }
    const auto* last = findIn(caches_.lastVIInput, groupID);
    if (last != nullptr && *last == *input && state.viProcessedURLs.contains(groupID))
        return platform::Task::ended();
    const Kind<VoiceIsolationInput> kind{&RenderedAudioController::previews_,
                                         "Rendering the preview of ",
                                         &RenderedAudioController::previewInput,
                                         [](const Store& store, const VoiceIsolationInput& from,
                                            const RenderProgress& progress, const std::stop_token& stop) {
                                             return VoiceIsolationProcessor(store).process(
                                                 from.sound, from.settings, progress, stop);
                                         },
                                         &SmartAudioState::viProcessedURLs,
                                         &RenderedAudioController::rememberPreview};
    return start(renderLatest(work_.weak(this), groupID, kind, std::move(*input), nullptr));
}

void RenderedAudioController::rememberPreview(const UUID& groupID, VoiceIsolationInput input) {
    caches_.lastVIInput.insert_or_assign(groupID, std::move(input));
}

std::optional<FileURL> RenderedAudioController::playbackAudioURL(const UUID& groupID) const {
    return audioURL(groupID, heardSettings().areEffectsHeard);
}

std::optional<FileURL> RenderedAudioController::currentAudioURL(const UUID& groupID) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const auto input = group == nullptr ? std::nullopt : previewInput(*group);
    const auto* made = findIn(caches_.lastVIInput, groupID);
    return audioURL(groupID, input && made != nullptr && *made == *input);
}

std::optional<FileURL> RenderedAudioController::audioURL(const UUID& groupID, bool withPreview) const {
    const SmartAudioState& state = caches_.state;
    const auto* preview = withPreview ? findIn(state.viProcessedURLs, groupID) : nullptr;
    if (preview != nullptr) return *preview;
    const auto* solo = findIn(state.soloMonitorURLs, groupID);
    if (solo != nullptr && state.soloMonitorTracks.contains(groupID)) return *solo;
    const auto* mixdown = findIn(state.mixdownURLs, groupID);
    return mixdown == nullptr ? std::nullopt : std::optional(*mixdown);
}

} // namespace orvane
