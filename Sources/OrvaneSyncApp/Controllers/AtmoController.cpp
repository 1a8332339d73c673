#include "OrvaneSyncApp/Controllers/AtmoController.h"

#include "OrvaneSyncApp/Controllers/WorkInputs.h"
#include "OrvaneSyncCore/Models/Settings/Sound.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"
#include "Platform/OnQueue.h"
#include "Platform/SHA256.h"

#include <algorithm>
#include <exception>
#include <set>
#include <utility>

namespace orvane {

namespace {

/// Depends only on the folders, so it is the same in every run.
std::string folderOfWork(const std::vector<FileURL>& folders) {
    constexpr std::size_t digits = 16;
    platform::SHA256 hash;
    for (const FileURL& folder : folders) hash.add(folder.path + '\0');
    return AppStorageHelper::atmoDirectory() + "/" + platform::hexadecimal(hash.digest()).substr(0, digits);
}

/// The scene as a part of a file name.
std::string sceneNameOf(std::string scene) {
    std::ranges::replace_if(
        scene, [](char c) { return c == '/' || c == '\\'; }, '-');
    return scene;
}

} // namespace

AtmoController::AtmoController(OpenWork& work)
    : work_(work), shown_(platform::Throttle<SmartAudioProgress>::create(
                       work.environment.mainThread, work.environment.clock, platform::progressInterval,
                       [this](const SmartAudioProgress& latest) {
                           state_.progress = latest;
                           work_.notify(ImportField::atmo);
                       })),
      queue_(platform::SerialQueue::create("room tone")) {}

AtmoController::~AtmoController() { shown_->close(); }

platform::Task AtmoController::scanAtmoCandidates() {
    work_.notices.assertOnMainThread();
    std::map<std::string, std::set<FileURL>> found;
    for (const SyncGroup& group : work_.syncGroups()) {
        if (!group.matchStatus.isSettled()) continue;
        for (const AudioMatch& match : group.audioMatches) found[sceneKey(group)].insert(match.audio->url);
    }
    std::map<std::string, std::vector<FileURL>> files;
    for (const auto& [scene, urls] : found) files[scene].assign(urls.begin(), urls.end());
    return work_.runOnClips(scan(work_.weak(this), std::move(files)));
}

platform::Task AtmoController::scan(Weak weak, std::map<std::string, std::vector<FileURL>> files) {
    Candidates candidates;
    int current = 0;
    std::exception_ptr stopped;
    for (const auto& [scene, urls] : files) {
        auto self = weak.lock();
        if (!self) co_return;
        SmartAudioProgress before{"Listening for room tone of scene " + scene, ++current,
                                  static_cast<int>(files.size()), 0};
        auto scanning = platform::onQueue(
            *self->queue_, self->work_.environment.mainThread,
            [urls = urls, before, shown = std::weak_ptr(self->shown_)](const std::stop_token& stop) {
                const auto report = [&](double share) {
                    SmartAudioProgress now = before;
                    now.fraction = (now.current - 1 + share) / now.total;
                    if (const auto own = shown.lock()) own->post(std::move(now));
                };
                return QuietAmbientGenerator().scanCandidates(urls, report, stop);
            });
        self.reset();
        try {
            auto ofScene = co_await scanning;
            std::ranges::stable_sort(ofScene, std::greater<>(), &AtmoCandidate::durationSeconds);
            candidates[scene] = std::move(ofScene);
        } catch (const platform::Stopped&) {
            stopped = std::current_exception();
            break;
        }
    }
    if (const auto self = weak.lock()) {
        self->shown_->flush();
        self->state_.progress = {};
        if (!stopped) self->candidates_ = std::move(candidates);
        self->work_.notify(ImportField::atmo);
    }
    if (stopped) std::rethrow_exception(stopped);
}

platform::Task AtmoController::buildAtmo(Order order, std::shared_ptr<AtmoResult> result) {
    work_.notices.assertOnMainThread();
    return work_.runOnClips(build(work_.weak(this), std::move(order), std::move(result)));
}

platform::Task AtmoController::build(Weak weak, Order order, std::shared_ptr<AtmoResult> result) {
    auto self = weak.lock();
    const bool isApproved =
        order.isApproved.value_or(self->work_.environment.settings->get(settings::atmoIncludeInExport));
    ++self->building_;
    self->state_.isGenerating = true;
    self->work_.notify(ImportField::atmo);
    auto stitching = platform::onQueue(
        *self->queue_, self->work_.environment.mainThread,
        [order, folders = self->work_.folders(),
         inputs = inputsOfClips(self->work_)](const std::stop_token& stop) {
            QuietAmbientGenerator::Output output{sceneNameOf(order.scene), "", order.audioRole};
            if (order.outputDirectory) {
                output.directory = platform::files::standardized(*order.outputDirectory);
                const auto guard = std::make_shared<OutputGuard>(OutputKind::rendering, inputs());
                output.decide = [guard](const std::string& path) { return guard->decide(path); };
            } else {
                output.directory = folderOfWork(folders);
            }
            return QuietAmbientGenerator().stitchCandidates(order.candidates, order.targetDuration, output,
                                                            stop);
        });
    self.reset();
    std::exception_ptr raised;
    try {
        *result = co_await stitching;
    } catch (...) {
        raised = std::current_exception();
    }
    if (self = weak.lock(); self) {
        self->state_.isGenerating = --self->building_ > 0;
        self->work_.notify(ImportField::atmo);
        if (!raised) self->adopt(*result, isApproved);
    }
    if (raised) std::rethrow_exception(raised);
}

/// In the place of the scene's earlier room tone.
void AtmoController::adopt(const AtmoResult& result, bool isApproved) {
    MediaAsset audio(result.audioURL, AssetKind::audio);
    audio.durationSeconds = result.durationSeconds;
    audio.channelCount = 1;
    audio.sampleRate = result.sampleRate;
    WildTrack track(std::move(audio));
    track.isApproved = isApproved;
    const std::string stem = QuietAmbientGenerator::fileNameStem(result.sceneName);
    work_.changeWildTracks([&](std::vector<WildTrack>& tracks) {
        std::erase_if(tracks, [&](const WildTrack& one) { return one.audio.filename.starts_with(stem); });
        tracks.push_back(std::move(track));
    });
}

} // namespace orvane
