#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Services/Takes/TakeDecisions.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using Groups = std::vector<SyncGroup>;
constexpr auto namingSource = GroupNaming::Source::sceneTake;

/// The work as plain lists, changed by the plainest code that does what each operation promises. Every
/// snapshot is a whole copy.
struct Model {
    struct Step {
        std::string name;
        Groups before;
        std::vector<WildTrack> wild;
    };
    Groups groups;
    std::vector<WildTrack> wild;
    std::vector<Step> undoable, redoable;
    std::string lastName;
    double now = 0, lastTime = -1e9; // seconds

    /// What the work says; matching again draws new ids for the same matches.
    std::string text() const {
        JSON::Array list;
        for (const SyncGroup& group : groups) {
            list.push_back(toJSON(group));
            for (auto& [key, value] : *list.back().members())
                if (key == "audioMatches")
                    for (JSON& match : *value.elements()) match.remove("id");
        }
        return JSON(list).dump() + toJSONArray(wild).dump();
    }
    void change(const UndoStep& step, const std::function<void()>& how) {
        Model before = *this;
        how();
        if (text() == before.text()) {
            groups = before.groups;
            wild = before.wild;
            return;
        }
        if (step.coalescingWindow <= 0 || step.actionName != lastName ||
            now - lastTime >= step.coalescingWindow) {
            lastName = step.actionName;
            undoable.push_back({lastName, before.groups, before.wild});
            if (undoable.size() > 50) undoable.erase(undoable.begin());
            redoable.clear();
        }
        lastTime = now;
    }
    void travel(std::vector<Step>& from, std::vector<Step>& to) {
        if (from.empty()) return;
        const Step step = from.back();
        from.pop_back();
        lastTime = -1e9;
        to.push_back({step.name, groups, wild});
        const Model before = *this;
        groups = step.before;
        wild.clear();
        for (const WildTrack& old : step.wild) {
            const auto own = std::ranges::find(before.wild, old.id, &WildTrack::id);
            if (own != before.wild.end() && !isUsed(old.id)) wild.push_back(*own);
            if (own == before.wild.end() && !isUsed(old.id) && before.isUsed(old.id)) wild.push_back(old);
        }
        for (const WildTrack& own : before.wild)
            if (!isUsed(own.id) && std::ranges::find(step.wild, own.id, &WildTrack::id) == step.wild.end())
                wild.push_back(own);
    }

    SyncGroup* find(const UUID& id) {
        const auto found = std::ranges::find(groups, id, &SyncGroup::id);
        return found == groups.end() ? nullptr : &*found;
    }
    bool isUsed(const UUID& audio) const {
        return std::ranges::any_of(groups, [&](const SyncGroup& group) {
            return std::ranges::any_of(group.audioMatches,
                                       [&](const AudioMatch& match) { return match.audio->id == audio; });
        });
    }
    void release(const MediaAsset& audio) {
        if (!isUsed(audio.id) && std::ranges::find(wild, audio.id, &WildTrack::id) == wild.end())
            wild.emplace_back(audio);
    }
    void settle(const std::vector<AudioMatch>& released) {
        std::erase_if(wild, [&](const WildTrack& track) { return isUsed(track.id); });
        for (const AudioMatch& match : released) release(*match.audio);
    }
    std::vector<MediaAsset> pool() const {
        std::vector<MediaAsset> result;
        const auto add = [&](const MediaAsset& audio) {
            if (std::ranges::find(result, audio) == result.end()) result.push_back(audio);
        };
        for (const SyncGroup& group : groups)
            for (const AudioMatch& match : group.audioMatches) add(*match.audio);
        for (const WildTrack& track : wild) add(track.audio);
        std::ranges::sort(result, {}, [](const MediaAsset& audio) { return audio.url.path; });
        return result;
    }

    void lock(SyncGroup& group) {
        if (group.isLocked) return;
        group.isLocked = true;
        group.lockedAtAudioAnchor = group.audioAnchorOffsetInAudioSeconds;
        group.lockedAtPictureAnchor = group.pictureClapAnchorSeconds;
        group.lockedAtManualOffset = group.manualAudioOffsetSeconds;
    }
    void unlock(SyncGroup& group) {
        group.isLocked = false;
        group.lockedAtAudioAnchor = group.lockedAtPictureAnchor = group.lockedAtManualOffset = std::nullopt;
    }
    void attach(SyncGroup& group, const MediaAsset& audio) {
        if (group.isLocked) return;
        for (const AudioMatch& match : group.audioMatches)
            if (match.audio->id == audio.id) return confirm(group);
        std::erase_if(wild, [&](const WildTrack& track) { return track.id == audio.id; });
        const auto a = SyncEngine::tcRange(group.video), b = SyncEngine::tcRange(audio);
        AudioMatch match(audio, 0, 0);
        if (a && b) {
            match.syncOffsetSeconds = b->startSeconds - a->startSeconds;
            match.overlapDurationSeconds = std::max(0.0, std::min(a->endSeconds, b->endSeconds) -
                                                             std::max(a->startSeconds, b->startSeconds));
        }
        const SyncGroup before = group;
        group.audioMatches.push_back(match);
        group.matchStatus = MatchStatus::manual();
        carryDecisions(group, before);
    }
    void detach(SyncGroup& group, std::size_t at) {
        if (group.isLocked || at >= group.audioMatches.size()) return;
        const SyncGroup before = group;
        const MediaAsset audio = group.audioMatches[at].audio;
        group.audioMatches.erase(group.audioMatches.begin() + static_cast<std::ptrdiff_t>(at));
        const int left = static_cast<int>(group.audioMatches.size());
        group.matchStatus = left == 0   ? MatchStatus::unmatched()
                            : left == 1 ? MatchStatus::manual()
                                        : MatchStatus::ambiguous(left);
        carryDecisions(group, before);
        release(audio);
    }
    void confirm(SyncGroup& group) {
        if (!group.isLocked && group.matchStatus.kind == MatchStatus::Kind::ambiguous)
            group.matchStatus = MatchStatus::manual();
    }
    void removeVideo(const UUID& id) {
        if (find(id)->isLocked) return;
        const std::vector<AudioMatch> matches = find(id)->audioMatches;
        std::erase_if(groups, [&](const SyncGroup& group) { return group.id == id; });
        for (const AudioMatch& match : matches) release(*match.audio);
    }
    void resync(SyncGroup& group) {
        if (pool().empty()) return;
        const SyncGroup before = group;
        const auto result = SyncEngine().match({group.video}, pool());
        group.audioMatches = result.front().audioMatches;
        group.matchStatus = result.front().matchStatus;
        carryDecisions(group, before);
        settle(before.audioMatches);
    }
    void resyncAll() {
        const auto audio = pool();
        if (audio.empty()) return;
        std::vector<AudioMatch> released;
        for (const SyncGroup& group : groups)
            released.insert(released.end(), group.audioMatches.begin(), group.audioMatches.end());
        std::vector<MediaAsset> videos;
        for (const SyncGroup& group : groups) videos.push_back(group.video);
        for (const SyncGroup& result : SyncEngine().match(videos, audio))
            for (SyncGroup& group : groups)
                if (group.video.url == result.video.url) {
                    const SyncGroup before = group;
                    group.audioMatches = result.audioMatches;
                    group.matchStatus = result.matchStatus;
                    carryDecisions(group, before);
                    if (saySame(group, before)) group = before;
                }
        settle(released);
    }
    void reset(SyncGroup& group, bool everything) {
        group.manualActiveTracks.clear();
        group.tracksManuallyEdited.reset();
        group.manualAudioOffsetSeconds = 0;
        group.audioAnchorOffsetInAudioSeconds = group.pictureClapAnchorSeconds = std::nullopt;
        unlock(group);
        group.isApproved = false;
        if (!everything) return;
        group.manualBlockOverrides.clear();
        group.algorithmExcludedTracks.clear();
    }
    void override(SyncGroup& group, double a, double b, int track) {
        const double low = std::min(a, b), high = std::max(a, b);
        if (high - low < 0.1 || low < 0 || group.audioMatches.empty()) return;
        std::vector<BlockOverride> result;
        for (const BlockOverride& old : group.manualBlockOverrides) {
            const bool apart = old.endSeconds <= low || high <= old.startSeconds;
            if (apart) result.push_back(old);
            if (!apart && old.startSeconds < low)
                result.push_back({old.id, old.startSeconds, low, old.trackIndex});
            if (!apart && high < old.endSeconds)
                result.push_back({UUID::random(), high, old.endSeconds, old.trackIndex});
        }
        result.push_back({UUID::random(), low, high, track});
        std::ranges::stable_sort(result, {}, &BlockOverride::startSeconds);
        group.manualBlockOverrides = result;
    }
    void setRate(SyncGroup& group, std::optional<double> fps) {
        if (group.isLocked) return;
        std::map<double, int> votes;
        for (const SyncGroup& other : groups)
            if (other.id != group.id && other.video.projectFrameRate) ++votes[*other.video.projectFrameRate];
        double inferred = 24;
        int most = 0;
        for (const SyncGroup& other : groups) { // of equal counts the first in the list
            const double rate = other.video.projectFrameRate.value_or(0);
            if (other.id == group.id || rate == 0 || votes[rate] <= most) continue;
            most = votes[rate];
            inferred = rate;
        }
        MediaAsset& video = group.video;
        video.sensorFrameRate = fps;
        if (!fps) {
            video.projectFrameRate.reset();
            video.offspeedConfidence = OffspeedConfidence::suspectedUnconfirmed(1);
            return;
        }
        const double project = *(video.projectFrameRate = video.projectFrameRate.value_or(inferred));
        const bool differs = std::max(*fps, project) / std::min(*fps, project) - 1 > 0.02;
        video.offspeedConfidence = OffspeedConfidence::confirmed(*fps > 0 && differs, *fps / project);
    }
    void pickups(const SyncGroup& from) {
        const auto takeOf = [](const SyncGroup& group) {
            return group.audioMatches.empty() || !group.primaryAudio()->ixmlData
                       ? 0
                       : std::stoi(*group.primaryAudio()->ixmlData->take);
        };
        const int take = takeOf(from);
        if (take == 0) return;
        for (SyncGroup& group : groups)
            if (takeOf(group) >= take &&
                group.primaryAudio()->ixmlData->scene == from.primaryAudio()->ixmlData->scene)
                group.isPickup = true;
    }
    void lockCluster(const SyncGroup& of) {
        const std::string name = GroupNaming::baseName(of, namingSource, std::nullopt, "-");
        for (SyncGroup& group : groups)
            if (GroupNaming::baseName(group, namingSource, std::nullopt, "-") == name) lock(group);
    }
};

/// Ids that are drawn on the way differ between the two: each is told by when it first appeared.
class Text {
  public:
    std::string operator()(const JSON& json) {
        const std::string text = json.dump();
        constexpr std::size_t length = 36, dash = 9; // of an id, and behind a quotation mark
        std::string result;
        for (std::size_t at = 0; at < text.size(); ++at) {
            result += text[at];
            if (text[at] != '"' || at + length >= text.size() || text[at + dash] != '-') continue;
            const std::string id = text.substr(at + 1, length);
            if (!UUID::fromText(id)) continue;
            result += "#" + std::to_string(numbers_.try_emplace(id, numbers_.size()).first->second);
            at += length;
        }
        return result;
    }

  private:
    std::map<std::string, std::size_t> numbers_;
};

/// One change in both worlds.
struct Change {
    UndoStep step;
    std::function<void(ImportController&)> real;
    std::function<void(Model&)> model; ///< only called while the clip is there
};

class EditingModelTest : public test::ControllerTest {
  protected:
    void SetUp() override {
        const char* starts[] = {"10:00:00:00", "10:00:30:00", "10:02:00:00", "10:02:20:00", "",
                                "11:00:00:00"};
        for (int i = 0; i < 6; ++i) {
            MediaAsset audio = test::audio("S" + std::to_string(i) + ".wav", starts[i]);
            audio.channelCount = 7;
            sounds_.push_back(i == 3 ? audio
                                     : test::slated(audio, i < 2 ? "1" : "2", std::to_string(1 + i % 3)));
        }
        std::vector<MediaAsset> videos;
        for (int i = 0; i < 6; ++i)
            videos.push_back(test::video("A00" + std::to_string(i) + ".mov", starts[i]));
        videos[0].projectFrameRate = videos[1].projectFrameRate = 24;
        videos[2].projectFrameRate = 25;
        const auto matched = SyncEngine().match(videos, {sounds_[0], sounds_[1], sounds_[2], sounds_[3]});
        model_.groups.assign(matched.begin(), matched.end());
        model_.groups[1].pictureClapAnchorSeconds = 3;
        for (const SyncGroup& group : model_.groups) ids_.push_back(group.id);
        ids_.push_back(UUID::random()); // nobody's
        controller_->openStoredWork({{}, {}, SyncGroupList(model_.groups)});
    }

    int draw(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

    template <class Real, class Change_>
    Change onClip(const UndoStep& step, Real real, Change_ change) {
        const UUID id = ids_[static_cast<std::size_t>(draw(static_cast<int>(ids_.size())))];
        return {step, [=](ImportController& controller) { real(controller, id); },
                [=](Model& model) {
                    if (SyncGroup* group = model.find(id)) change(model, *group);
                }};
    }
    template <class Change_>
    Change flag(const UndoStep& step, void (ClipEditing::*operation)(UUID), Change_ change) {
        return onClip(
            step, [=](ImportController& controller, const UUID& id) { (controller.clips().*operation)(id); },
            [=](Model& model, SyncGroup& group) { change(model, group); });
    }
    template <class Change_>
    Change flag(const UndoStep& step, void (RecordingEditing::*operation)(UUID), Change_ change) {
        return onClip(
            step,
            [=](ImportController& controller, const UUID& id) { (controller.recordings().*operation)(id); },
            [=](Model& model, SyncGroup& group) { change(model, group); });
    }
    Change decision();
    Change structure();
    Change wildTrack();
    void compare(const std::string& trace);

    std::mt19937 random_;
    std::vector<MediaAsset> sounds_;
    std::vector<UUID> ids_;
    Model model_;
    Text realText_, modelText_;
    platform::Task underWay_ = platform::Task::ended(); ///< of a change that takes a while
};

Change EditingModelTest::decision() {
    using C = ImportController;
    using G = SyncGroup;
    const int value = draw(7) - 3;
    switch (draw(18)) {
    case 0:
    case 1:
        return onClip(
            undoSteps::adjustAudioOffset,
            [=](C& c, const UUID& id) { c.clips().adjustAudioOffset(id, value / 25.0); },
            [=](Model&, G& g) { g.manualAudioOffsetSeconds += value / 25.0; });
    case 2: {
        const auto anchor = value < 0 ? std::nullopt : std::optional<double>(value);
        return onClip(
            undoSteps::setAudioAnchor, [=](C& c, const UUID& id) { c.clips().setAudioAnchor(id, anchor); },
            [=](Model&, G& g) { g.audioAnchorOffsetInAudioSeconds = anchor; });
    }
    case 3:
        return flag(undoSteps::resetAudioOffset, &ClipEditing::resetAudioOffset,
                    [](Model&, G& g) { g.manualAudioOffsetSeconds = 0; });
    case 4:
        return flag(undoSteps::toggleApproved, &ClipEditing::toggleApproved,
                    [](Model&, G& g) { g.isApproved = !g.isApproved; });
    case 5:
        return flag(undoSteps::toggleLocked, &ClipEditing::toggleLocked,
                    [](Model& m, G& g) { g.isLocked ? m.unlock(g) : m.lock(g); });
    case 6:
        return flag(undoSteps::toggleMOS, &ClipEditing::toggleMOS, [](Model&, G& g) {
            if (!g.audioMatches.empty()) return;
            g.matchStatus =
                g.matchStatus.kind == MatchStatus::Kind::mos ? MatchStatus::unmatched() : MatchStatus::mos();
        });
    case 7:
        return flag(undoSteps::togglePickup, &ClipEditing::togglePickup,
                    [](Model&, G& g) { g.isPickup = !g.isPickup; });
    case 8:
        return flag(undoSteps::toggleExcludedFromExport, &ClipEditing::toggleExcludedFromExport,
                    [](Model&, G& g) { g.isExcludedFromExport = !g.isExcludedFromExport; });
    case 9:
        return flag(undoSteps::toggleExcludedFromMulticam, &ClipEditing::toggleExcludedFromMulticam,
                    [](Model&, G& g) {
                        g.isExcludedFromMulticamFlag = !g.isExcludedFromMulticamFlag.value_or(false);
                    });
    case 10:
        return onClip(
            undoSteps::setManualClipName,
            [=](C& c, const UUID& id) { c.clips().setManualClipName(id, value < 0 ? " \n" : " Hero\t"); },
            [=](Model&, G& g) { g.manualClipName = value < 0 ? std::nullopt : std::optional("Hero"); });
    case 11:
        return onClip(
            undoSteps::setSyncMethod,
            [](C& c, const UUID& id) { c.clips().setSyncMethod(id, SyncMethod::clap); },
            [](Model&, G& g) { g.syncMethod = SyncMethod::clap; });
    case 12:
        return onClip(
            undoSteps::setGenerateNativeMOS,
            [=](C& c, const UUID& id) { c.clips().setGenerateNativeMOS(id, value > 0); },
            [=](Model&, G& g) { g.generateNativeMOSClip = value > 0; });
    case 13:
        return onClip(
            undoSteps::setGenerateProjectRateClip,
            [=](C& c, const UUID& id) { c.clips().setGenerateProjectRateClip(id, value > 0); },
            [=](Model&, G& g) { g.generateProjectRateClipFlag = value > 0; });
    case 14:
        return onClip(
            undoSteps::setMasterGain,
            [=](C& c, const UUID& id) { c.tracks().setMasterGain(id, value, value > 0); },
            [=](Model&, G& g) {
                g.masterGainDB = value;
                g.masterGainAuto = value > 0;
            });
    case 15: {
        constexpr double lengths[] = {-2, 0.09, 0.11, 1, 3.5, 8};
        const double start = draw(40) / 4.0, end = start + lengths[draw(6)];
        return onClip(
            undoSteps::addBlockOverride,
            [=](C& c, const UUID& id) {
                try {
                    c.tracks().addBlockOverride(id, start, end, value + 4);
                } catch (const OutOfRange&) {
                }
            },
            [=](Model& m, G& g) { m.override(g, start, end, value + 4); });
    }
    case 16: {
        const auto at = static_cast<std::size_t>(draw(3));
        return onClip(
            undoSteps::removeBlockOverride,
            [=](C& c, const UUID& id) {
                const SyncGroup* group = c.work().syncGroups().find(id);
                const bool isThere = group != nullptr && at < group->manualBlockOverrides.size();
                c.tracks().removeBlockOverride(id, isThere ? group->manualBlockOverrides[at].id : UUID{});
            },
            [=](Model&, G& g) {
                auto& all = g.manualBlockOverrides;
                if (at < all.size()) all.erase(all.begin() + static_cast<std::ptrdiff_t>(at));
            });
    }
    default: {
        const double rates[] = {-1, 0, 24, 24.3, 25.4, 40, 120};
        const auto fps = draw(8) == 0 ? std::nullopt : std::optional(rates[value + 3]);
        return onClip(
            undoSteps::setManualSensorFrameRate,
            [=](C& c, const UUID& id) { c.clips().setManualSensorFrameRate(id, fps); },
            [=](Model& m, G& g) { m.setRate(g, fps); });
    }
    }
}

Change EditingModelTest::structure() {
    using C = ImportController;
    using G = SyncGroup;
    const auto at = static_cast<std::size_t>(draw(3));
    switch (draw(10)) {
    case 0:
    case 1:
    case 2: {
        const MediaAsset audio = sounds_[static_cast<std::size_t>(draw(6))];
        return onClip(
            undoSteps::attachAudioToGroup,
            [=](C& c, const UUID& id) { c.recordings().attachAudioToGroup(id, audio); },
            [=](Model& m, G& g) { m.attach(g, audio); });
    }
    case 3:
    case 4:
        return onClip(
            undoSteps::removeAudioMatch,
            [=](C& c, const UUID& id) {
                const SyncGroup* group = c.work().syncGroups().find(id);
                const bool isThere = group != nullptr && at < group->audioMatches.size();
                c.recordings().removeAudioMatch(id, isThere ? group->audioMatches[at].id : UUID{});
            },
            [=](Model& m, G& g) { m.detach(g, at); });
    case 5:
        return flag(undoSteps::confirmAmbiguousMatch, &RecordingEditing::confirmAmbiguousMatch,
                    [](Model& m, G& g) { m.confirm(g); });
    case 6:
        return at > 0 ? onClip(
                            undoSteps::resyncClip,
                            [this](C& c, const UUID& id) { underWay_ = c.recordings().resyncClip(id); },
                            [](Model& m, G& g) { m.resync(g); })
                      : flag(undoSteps::removeVideoFromSync, &RecordingEditing::removeVideoFromSync,
                             [](Model& m, G& g) { m.removeVideo(g.id); });
    case 7:
        return {undoSteps::resyncAllClips, [this](C& c) { underWay_ = c.recordings().resyncAllClips(); },
                [](Model& m) { m.resyncAll(); }};
    case 8:
        return at > 0 ? flag(undoSteps::resetClipToAutoSync, &ClipEditing::resetClipToAutoSync,
                             [](Model& m, G& g) { m.reset(g, true); })
                      : flag(undoSteps::markScenePickupFromHere, &ClipEditing::markScenePickupFromHere,
                             [](Model& m, G& g) { m.pickups(g); });
    default:
        return onClip(
            undoSteps::lockAllInCluster,
            [](C& c, const UUID& id) { c.clips().lockAllInCluster(id, namingSource, std::nullopt); },
            [](Model& m, G& g) { m.lockCluster(g); });
    }
}

/// Names and approvals stay when a step is taken back.
Change EditingModelTest::wildTrack() {
    const UUID id = sounds_[static_cast<std::size_t>(draw(6))].id;
    const std::string name = draw(2) == 0 ? "" : "Birds";
    const auto change = [id](auto what) {
        return [=](Model& model) {
            for (WildTrack& track : model.wild)
                if (track.id == id) what(track);
        };
    };
    if (draw(2) == 0)
        return {undoSteps::toggleWildTrackApproved,
                [=](ImportController& controller) { controller.recordings().toggleWildTrackApproved(id); },
                change([](WildTrack& track) { track.isApproved = !track.isApproved; })};
    return {undoSteps::renameWildTrack,
            [=](ImportController& controller) { controller.recordings().renameWildTrack(id, name); },
            change([=](WildTrack& track) { track.customName = WildTrack(track.audio, name).customName; })};
}

void EditingModelTest::compare(const std::string& trace) {
    ASSERT_EQ(realText_(toJSONArray(controller_->work().syncGroups())),
              modelText_(toJSONArray(model_.groups)))
        << trace;
    ASSERT_EQ(realText_(toJSONArray(controller_->work().wildTracks())), modelText_(toJSONArray(model_.wild)))
        << trace;
    const auto name = [](const std::vector<Model::Step>& steps) {
        return steps.empty() ? std::nullopt : std::optional(steps.back().name);
    };
    const UndoState expected{!model_.undoable.empty(), !model_.redoable.empty(), name(model_.undoable),
                             name(model_.redoable)};
    ASSERT_EQ(controller_->work().undoState(), expected) << trace;
    // What is kept although clips change is what another controller makes of them.
    const OpenWork& work = controller_->work();
    const auto& names = work.displayNames();
    finish(controller_->derivedDoubts().derive());
    if (draw(8) > 0) return;
    const auto other = make();
    other->openStoredWork({{}, {}, work.syncGroups(), work.wildTracks()});
    ASSERT_EQ(names, other->work().displayNames()) << trace;
    finish(other->derivedDoubts().derive());
    ASSERT_EQ(controller_->doubts(), other->doubts()) << trace;
    ASSERT_EQ(std::pair(work.matchedCount(), work.mosCount()),
              std::pair(other->work().matchedCount(), other->work().mosCount()))
        << trace;
}

TEST_F(EditingModelTest, anyCourseOfEditsAndUndosIsThatOfTheModel) {
    const unsigned seed = test::randomSeed();
    random_.seed(seed);
    constexpr int length = 600;
    for (int i = 0; i < length; ++i) {
        const std::string trace = "seed " + std::to_string(seed) + ", change " + std::to_string(i);
        const int kind = draw(20);
        std::string what;
        if (kind < 3) {
            what = "undo";
            controller_->undo();
            model_.travel(model_.undoable, model_.redoable);
        } else if (kind < 5) {
            what = "redo";
            controller_->redo();
            model_.travel(model_.redoable, model_.undoable);
        } else if (kind == 5 && draw(10) == 0) {
            what = "reset all";
            controller_->clips().resetAllClipsToAutoSync();
            for (SyncGroup& group : model_.groups) model_.reset(group, false);
        } else {
            const Change change = kind < 14 ? decision() : kind < 19 ? structure() : wildTrack();
            what = change.step.actionName;
            controller_->withUndo(change.step, [&] { change.real(*controller_); });
            finish(underWay_);
            model_.change(change.step, [&] { change.model(model_); });
        }
        compare(trace + ": " + what);
        if (HasFatalFailure()) return;
        constexpr int pauses[] = {0, 0, 250, 499, 500, 1001}; // ms
        const int pause = pauses[draw(std::size(pauses))];
        mainThread_->advance(std::chrono::milliseconds(pause));
        model_.now += pause / 1000.0;
    }
}

} // namespace
} // namespace orvane
