#include "OrvaneSyncApp/Controllers/SlateController.h"

#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "Platform/OnQueue.h"

#include <algorithm>
#include <exception>

namespace orvane {

SlateController::SlateController(OpenWork& work, SmartAudioCaches& caches,
                                 std::shared_ptr<SlateDetector> detector)
    : work_(work), caches_(caches),
      detector_(detector ? std::move(detector) : SlateDetector::ofThisMachine()),
      shown_(platform::Throttle<SmartAudioProgress>::create(
          work.environment.mainThread, work.environment.clock, platform::progressInterval,
          [this](SmartAudioProgress latest) {
              progress_ = std::move(latest);
              work_.notify(ImportField::slates);
          })),
      queue_(platform::SerialQueue::create("slates")) {}

SlateController::~SlateController() { shown_->close(); }

platform::Task SlateController::detectSlate(const UUID& groupID) { return start({groupID}); }

platform::Task SlateController::detectSlates() {
    std::vector<UUID> clips;
    for (const SyncGroup& group : work_.syncGroups()) clips.push_back(group.id);
    return start(std::move(clips));
}

platform::Task SlateController::start(std::vector<UUID> clips) {
    work_.notices.assertOnMainThread();
    return work_.runOnClips(search(work_.weak(this), std::move(clips)));
}

platform::Task SlateController::search(std::weak_ptr<SlateController> weak, std::vector<UUID> clips) {
    auto self = weak.lock();
    ++self->searches_;
    self.reset();
    const platform::Task each = searchEach(weak, std::move(clips));
    std::exception_ptr ended;
    try {
        co_await each;
    } catch (...) {
        ended = std::current_exception();
    }
    self = weak.lock();
    if (self && --self->searches_ == 0) {
        self->shown_->drop();
        self->progress_ = {};
        self->work_.notify(ImportField::slates);
    }
    self.reset();
    if (ended) std::rethrow_exception(ended);
}

platform::Task SlateController::searchEach(std::weak_ptr<SlateController> weak, std::vector<UUID> clips) {
    struct Searched {
        SlateResult result;
        std::optional<FileURL> unread;
    };
    const double total = static_cast<double>(clips.size());
    for (std::size_t i = 0; i < clips.size(); ++i) {
        auto self = weak.lock();
        if (!self) co_return;
        const SyncGroup* group = self->work_.syncGroups().find(clips[i]);
        if (group == nullptr) continue;
        const SlateInput input = SlateInput::of(*group);
        const SmartAudioProgress begun{"Looking for the slate of " + group->video.filename,
                                       static_cast<int>(i) + 1, static_cast<int>(clips.size()),
                                       static_cast<double>(i) / total};
        self->shown_->post(begun);
        auto searching = platform::onQueue(
            *self->queue_, self->work_.environment.mainThread,
            [detector = self->detector_, input, begun, total,
             shown = std::weak_ptr(self->shown_)](const std::stop_token& stop) {
                const auto report = [&](double share) {
                    SmartAudioProgress progress = begun;
                    progress.fraction += share / total;
                    if (const auto own = shown.lock()) own->post(std::move(progress));
                };
                Searched searched;
                searched.result = detector->detect(input.video, input.audio, report, stop, &searched.unread);
                return searched;
            });
        self.reset();
        Searched searched = co_await searching;
        self = weak.lock();
        if (!self) co_return;
        // If the clip has other files in the meantime, the result is not for it.
        group = self->work_.syncGroups().find(clips[i]);
        if (group == nullptr || !input.isOf(*group)) continue;
        auto& state = self->caches_.state;
        if (searched.unread) {
            state.slatesUnread.insert_or_assign(clips[i], *std::move(searched.unread));
            state.slateResults.try_emplace(clips[i], std::move(searched.result));
            self->caches_.slateInputs.try_emplace(clips[i], input);
        } else {
            state.slatesUnread.erase(clips[i]);
            state.slateResults.insert_or_assign(clips[i], std::move(searched.result));
            self->caches_.slateInputs.insert_or_assign(clips[i], input);
        }
        self->work_.notify(ImportField::slates);
    }
}

const SlateResult* SlateController::result(const UUID& groupID) const {
    const auto found = caches_.state.slateResults.find(groupID);
    return found == caches_.state.slateResults.end() ? nullptr : &found->second;
}

std::optional<std::string> SlateController::problem(const UUID& groupID) const {
    const auto found = caches_.state.slatesUnread.find(groupID);
    if (found == caches_.state.slatesUnread.end()) return std::nullopt;
    return "'" + found->second.path +
           "' could not be read, and what was found before stays; connect its disk and search again";
}

std::optional<SlateProposal> SlateController::proposal(const UUID& groupID) const {
    const SyncGroup* group = work_.syncGroups().find(groupID);
    const SlateResult* slate = result(groupID);
    if (group == nullptr || slate == nullptr) return std::nullopt;
    const platform::SettingsStore& store = *work_.environment.settings;
    return slateProposal(*group, *slate,
                         {store.get(settings::clipNamingSource), store.get(settings::customNamingPattern),
                          store.get(settings::namingSeparator)});
}

std::vector<std::pair<UUID, SlateProposal>> SlateController::proposals() const {
    std::vector<std::pair<UUID, SlateProposal>> all;
    for (const SyncGroup& group : work_.syncGroups())
        if (auto one = proposal(group.id)) all.emplace_back(group.id, *std::move(one));
    return all;
}

void SlateController::acceptSlate(const UUID& groupID) {
    if (const auto offered = proposal(groupID)) accept(undoSteps::acceptSlate, {{groupID, *offered}});
}

void SlateController::acceptSlates() { accept(undoSteps::acceptSlates, proposals()); }

void SlateController::accept(const UndoStep& step,
                             const std::vector<std::pair<UUID, SlateProposal>>& proposals) {
    if (proposals.empty()) return;
    work_.withUndo(step, [&] {
        for (const auto& [id, proposal] : proposals)
            work_.edit(id, [&, &offered = proposal](SyncGroup& group) { orvane::accept(offered, group); });
    });
}

} // namespace orvane
