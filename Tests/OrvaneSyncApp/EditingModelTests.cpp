#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncApp/Controllers/UndoSteps.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

namespace orvane {
namespace {

/// A full copy of the work in its written form.
struct Snapshot {
    explicit Snapshot(const OpenWork& work) {
        for (const SyncGroup& group : work.syncGroups()) {
            JSON json = toJSON(group);
            clips.emplace_back(group.id, json.dump());
            for (auto& [key, value] : *json.members())
                if (key == "audioMatches")
                    for (JSON& match : *value.elements()) match.remove("id");
            said += json.dump();
            for (const AudioMatch& match : group.audioMatches) used.insert(match.audio->id);
        }
        for (const WildTrack& track : work.wildTracks()) wild[track.id] = toJSON(track).dump();
    }
    bool saysSame(const Snapshot& other) const { return said == other.said && wild == other.wild; }

    std::vector<std::pair<UUID, std::string>> clips;
    std::string said; ///< without the ids of matches, because matching again makes new ones
    std::set<UUID> used;
    std::map<UUID, std::string> wild; ///< with their names and approvals
};

/// The undo steps in the simplest possible implementation.
struct Steps {
    struct Step {
        std::string name;
        Snapshot work;
    };
    std::vector<Step> undoable, redoable;
    std::string lastName;
    double now = 0, lastTime = -1e9; // seconds

    void add(const UndoStep& step, const Snapshot& before) {
        if (step.coalescingWindow <= 0 || step.actionName != lastName ||
            now - lastTime >= step.coalescingWindow) {
            lastName = step.actionName;
            undoable.push_back({lastName, before});
            if (undoable.size() > 50) undoable.erase(undoable.begin());
            redoable.clear();
        }
        lastTime = now;
    }
    /// Moves one step and returns the work as it must be after that.
    Snapshot travel(std::vector<Step>& from, std::vector<Step>& to, const Snapshot& present) {
        if (from.empty()) return present;
        Step step = std::move(from.back());
        from.pop_back();
        lastTime = -1e9;
        to.push_back({step.name, present});
        for (auto& [id, track] : step.work.wild) // names and approvals are not part of a step
            if (const auto own = present.wild.find(id); own != present.wild.end()) track = own->second;
        return step.work;
    }
    UndoState state() const {
        const auto name = [](const std::vector<Step>& steps) {
            return steps.empty() ? std::nullopt : std::optional(steps.back().name);
        };
        return {!undoable.empty(), !redoable.empty(), name(undoable), name(redoable)};
    }
};

/// The elements that an operation may change.
enum class Reach { clip, unlockedClip, manyClips, wildTrack };

struct Edit {
    UndoStep step;
    Reach reach;
    std::function<void(ImportController&, UUID)> run;
};

/// Random sequences of all operations of the editor: undo and redo restore exactly the earlier state, no
/// sound is lost, no other clip is changed, and what is derived from the clips equals that of a controller
/// that has just opened them. Single operations are tested by `EditingTest`.
class EditingModelTest : public test::ControllerTest {
  protected:
    void SetUp() override {
        const char* starts[] = {"10:00:00:00", "10:00:30:00", "10:02:00:00", "10:02:20:00", "",
                                "11:00:00:00"};
        std::vector<MediaAsset> videos;
        for (int i = 0; i < 6; ++i) {
            MediaAsset audio = test::audio("S" + std::to_string(i) + ".wav", starts[i]);
            audio.channelCount = 7;
            sounds_.push_back(i == 3 ? audio
                                     : test::slated(audio, i < 2 ? "1" : "2", std::to_string(1 + i % 3)));
            videos.push_back(test::video("A00" + std::to_string(i) + ".mov", starts[i]));
        }
        videos[0].projectFrameRate = videos[1].projectFrameRate = 24;
        videos[2].projectFrameRate = 25;
        const auto matched = SyncEngine().match(videos, {sounds_[0], sounds_[1], sounds_[2], sounds_[3]});
        for (const SyncGroup& group : matched) ids_.push_back(group.id);
        ids_.push_back(UUID::random()); // belongs to no clip
        controller_->openStoredWork({{}, {}, matched});
    }

    int draw(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }
    std::vector<Edit> edits();
    void edit();
    void travel(bool isBack);
    void expectDerivedAnew();

    std::mt19937 random_;
    std::vector<MediaAsset> sounds_;
    std::vector<UUID> ids_;
    Steps steps_;
    platform::Task underWay_ = platform::Task::ended(); ///< a change that takes time
};

/// Each operation with its random arguments.
std::vector<Edit> EditingModelTest::edits() {
    using C = ImportController;
    const int value = draw(7) - 3;
    const auto at = static_cast<std::size_t>(draw(3));
    const double start = draw(40) / 4.0,
                 rate = std::array{-1.0, 0.0, 24.0, 24.3, 25.4, 40.0, 120.0}[value + 3];
    const double length = std::array{-2.0, 0.09, 0.11, 1.0, 3.5, 8.0}[draw(6)];
    const MediaAsset audio = sounds_[static_cast<std::size_t>(draw(6))];
    const auto flag = [](const UndoStep& step, void (ClipEditing::*operation)(UUID),
                         Reach reach = Reach::clip) {
        return Edit{step, reach, [=](C& c, UUID id) { (c.clips().*operation)(id); }};
    };
    const auto ofRecordings = [](const UndoStep& step, void (RecordingEditing::*operation)(UUID)) {
        return Edit{step, Reach::unlockedClip, [=](C& c, UUID id) { (c.recordings().*operation)(id); }};
    };
    const auto ofClip = [](const UndoStep& step, auto run) { return Edit{step, Reach::clip, run}; };
    return {
        ofClip(undoSteps::adjustAudioOffset,
               [=](C& c, UUID id) { c.clips().adjustAudioOffset(id, value / 25.0); }),
        ofClip(undoSteps::setAudioAnchor,
               [=](C& c, UUID id) {
                   c.clips().setAudioAnchor(id, value < 0 ? std::nullopt : std::optional<double>(value));
               }),
        flag(undoSteps::resetAudioOffset, &ClipEditing::resetAudioOffset),
        flag(undoSteps::toggleApproved, &ClipEditing::toggleApproved),
        flag(undoSteps::toggleLocked, &ClipEditing::toggleLocked),
        flag(undoSteps::toggleMOS, &ClipEditing::toggleMOS),
        flag(undoSteps::togglePickup, &ClipEditing::togglePickup),
        flag(undoSteps::toggleExcludedFromExport, &ClipEditing::toggleExcludedFromExport),
        flag(undoSteps::toggleExcludedFromMulticam, &ClipEditing::toggleExcludedFromMulticam),
        flag(undoSteps::resetClipToAutoSync, &ClipEditing::resetClipToAutoSync),
        flag(undoSteps::markScenePickupFromHere, &ClipEditing::markScenePickupFromHere, Reach::manyClips),
        ofClip(undoSteps::setManualClipName,
               [=](C& c, UUID id) { c.clips().setManualClipName(id, value < 0 ? " \n" : " Hero\t"); }),
        ofClip(undoSteps::setSyncMethod,
               [](C& c, UUID id) { c.clips().setSyncMethod(id, SyncMethod::clap); }),
        ofClip(undoSteps::setGenerateNativeMOS,
               [=](C& c, UUID id) { c.clips().setGenerateNativeMOS(id, value > 0); }),
        ofClip(undoSteps::setGenerateProjectRateClip,
               [=](C& c, UUID id) { c.clips().setGenerateProjectRateClip(id, value > 0); }),
        ofClip(undoSteps::setMasterGain,
               [=](C& c, UUID id) { c.tracks().setMasterGain(id, value, value > 0); }),
        ofClip(undoSteps::addBlockOverride,
               [=](C& c, UUID id) {
                   try {
                       c.tracks().addBlockOverride(id, start, start + length, value + 4);
                   } catch (const OutOfRange&) { // the clip is shorter, or has no sound
                   }
               }),
        ofClip(undoSteps::removeBlockOverride,
               [=](C& c, UUID id) {
                   const SyncGroup* group = c.work().syncGroups().find(id);
                   const bool isThere = group != nullptr && at < group->manualBlockOverrides.size();
                   c.tracks().removeBlockOverride(id, isThere ? group->manualBlockOverrides[at].id : UUID{});
               }),
        {undoSteps::setManualSensorFrameRate, Reach::unlockedClip,
         [=](C& c, UUID id) {
             c.clips().setManualSensorFrameRate(id, at == 0 ? std::nullopt : std::optional(rate));
         }},
        {undoSteps::lockAllInCluster, Reach::manyClips,
         [](C& c, UUID id) { c.clips().lockAllInCluster(id, GroupNaming::Source::sceneTake, std::nullopt); }},
        {undoSteps::attachAudioToGroup, Reach::unlockedClip,
         [=](C& c, UUID id) { c.recordings().attachAudioToGroup(id, audio); }},
        {undoSteps::removeAudioMatch, Reach::unlockedClip,
         [=](C& c, UUID id) {
             const SyncGroup* group = c.work().syncGroups().find(id);
             const bool isThere = group != nullptr && at < group->audioMatches.size();
             c.recordings().removeAudioMatch(id, isThere ? group->audioMatches[at].id : UUID{});
         }},
        ofRecordings(undoSteps::confirmAmbiguousMatch, &RecordingEditing::confirmAmbiguousMatch),
        ofRecordings(undoSteps::removeVideoFromSync, &RecordingEditing::removeVideoFromSync),
        ofClip(undoSteps::resyncClip, [this](C& c, UUID id) { underWay_ = c.recordings().resyncClip(id); }),
        {undoSteps::resyncAllClips, Reach::manyClips,
         [this](C& c, UUID) { underWay_ = c.recordings().resyncAllClips(); }},
        {undoSteps::toggleWildTrackApproved, Reach::wildTrack,
         [=](C& c, UUID) { c.recordings().toggleWildTrackApproved(audio.id); }},
        {undoSteps::renameWildTrack, Reach::wildTrack,
         [=](C& c, UUID) { c.recordings().renameWildTrack(audio.id, value < 0 ? "" : "Birds"); }},
    };
}

void EditingModelTest::edit() {
    const auto all = edits();
    const Edit& one = all[static_cast<std::size_t>(draw(static_cast<int>(all.size())))];
    const UUID id = ids_[static_cast<std::size_t>(draw(static_cast<int>(ids_.size())))];
    SCOPED_TRACE(one.step.actionName);
    const OpenWork& work = controller_->work();
    const SyncGroup* clip = work.syncGroups().find(id);
    const bool mayChange = one.reach == Reach::clip || (clip != nullptr && !clip->isLocked);
    const Snapshot before(work);
    controller_->withUndo(one.step, [&] { one.run(*controller_, id); });
    finish(underWay_);
    const Snapshot after(work);
    if (after.saysSame(before)) {
        ASSERT_EQ(after.clips, before.clips) << "no step";
    } else {
        steps_.add(one.step, before);
    }

    const std::map<UUID, std::string> left(after.clips.begin(), after.clips.end());
    for (const auto& [clipID, text] : before.clips)
        if (one.reach != Reach::manyClips && (clipID != id || !mayChange || one.reach == Reach::wildTrack)) {
            ASSERT_EQ(left.contains(clipID) ? left.at(clipID) : "", text) << "another clip, or a locked one";
        }
    for (const auto& [track, text] : before.wild) {
        const auto same = after.wild.find(track);
        ASSERT_TRUE(same != after.wild.end() || after.used.contains(track)) << "a wild track got lost";
        if (one.reach != Reach::wildTrack && same != after.wild.end()) {
            ASSERT_EQ(same->second, text);
        }
    }
    for (const UUID& sound : before.used)
        ASSERT_TRUE(after.used.contains(sound) || after.wild.contains(sound)) << "a recording got lost";
    for (const auto& [track, text] : after.wild)
        ASSERT_FALSE(after.used.contains(track)) << "a wild track that a clip uses: " << text;
}

void EditingModelTest::travel(bool isBack) {
    const Snapshot present(controller_->work());
    const Snapshot expected = isBack ? steps_.travel(steps_.undoable, steps_.redoable, present)
                                     : steps_.travel(steps_.redoable, steps_.undoable, present);
    isBack ? controller_->undo() : controller_->redo();
    const Snapshot now(controller_->work());
    ASSERT_EQ(now.clips, expected.clips);
    ASSERT_EQ(now.wild, expected.wild);
}

/// What is kept while clips change equals what another controller makes from them.
void EditingModelTest::expectDerivedAnew() {
    const OpenWork& work = controller_->work();
    const auto& names = work.displayNames();
    finish(controller_->derivedDoubts().derive());
    if (draw(8) > 0) return;
    const auto other = make();
    other->openStoredWork({{}, {}, work.syncGroups(), work.wildTracks()});
    ASSERT_EQ(names, other->work().displayNames());
    finish(other->derivedDoubts().derive());
    ASSERT_EQ(controller_->doubts(), other->doubts());
    ASSERT_EQ(std::pair(work.matchedCount(), work.mosCount()),
              std::pair(other->work().matchedCount(), other->work().mosCount()));
}

TEST_F(EditingModelTest, anyCourseOfEditsGoesBackAndForthWithoutLoss) {
    const unsigned seed = test::randomSeed();
    random_.seed(seed);
    constexpr int length = 600;
    for (int i = 0; i < length; ++i) {
        SCOPED_TRACE("seed " + std::to_string(seed) + ", change " + std::to_string(i));
        const int kind = draw(20);
        if (kind < 5)
            travel(kind < 3);
        else if (kind == 5 && draw(10) == 0)
            controller_->clips().resetAllClipsToAutoSync(); // no step
        else
            edit();
        if (HasFatalFailure()) return;
        ASSERT_EQ(controller_->work().undoState(), steps_.state());
        expectDerivedAnew();
        if (HasFatalFailure()) return;
        constexpr int pauses[] = {0, 0, 250, 499, 500, 1001}; // ms
        const int pause = pauses[draw(std::size(pauses))];
        mainThread_->advance(std::chrono::milliseconds(pause));
        steps_.now += pause / 1000.0;
    }
}

} // namespace
} // namespace orvane
