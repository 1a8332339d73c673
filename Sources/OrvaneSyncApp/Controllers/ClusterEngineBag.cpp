#include "OrvaneSyncApp/Controllers/ClusterEngineBag.h"

#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Services/Takes/ClipSound.h"
#include "OrvaneSyncCore/Services/Waveform/WaveformReduction.h"

#include <algorithm>
#include <chrono>

namespace orvane {

using platform::MediaTime;

namespace {

/// The time until playback starts, so that the calls reach every player before.
constexpr std::chrono::milliseconds lead{50};

std::string labelOf(const SyncGroup& member) {
    const auto letter = GroupNaming::cameraLetter(member.video);
    return letter ? "Cam " + *letter : member.video.filename;
}

/// The clip time at which the member opens: its clap, otherwise the moment at which another member claps.
std::optional<double> openingOf(const SyncGroup& member, const std::vector<SyncGroup>& members) {
    if (const auto own = member.resolvedClapPointSeconds()) return own;
    for (const SyncGroup& other : members)
        if (const auto clap = other.resolvedClapPointSeconds())
            return std::max(*clap - ClipSound(other).offsetSeconds + ClipSound(member).offsetSeconds, 0.0);
    return std::nullopt;
}

/// Waits for the load, then sets the clip's timecode.
platform::Task withTimecode(platform::Task loading, std::shared_ptr<VideoEngine> engine,
                            std::optional<std::string> stated, std::optional<TimecodeFrameRate> rate) {
    co_await loading;
    engine->setStartTimecode(stated, rate);
}

} // namespace

platform::Task ClusterEngineBag::allOf(std::vector<platform::Task> tasks) {
    for (const platform::Task& task : tasks) co_await task;
}

platform::Task ClusterEngineBag::load(const std::vector<SyncGroup>& members) {
    const auto isMember = [&](const UUID& id) {
        return std::ranges::find(members, id, &SyncGroup::id) != members.end();
    };
    leave([&](const UUID& id) { return !isMember(id); });
    std::vector<platform::Task> loading;
    for (const SyncGroup& member : members) {
        const ClipSound sound(member);
        memberSyncOffsets_[member.id] = sound.offsetSeconds;
        memberLabels_.emplace_back(member.id, labelOf(member));
        const auto& engine = engineFor(member.id);
        loading.push_back(withTimecode(
            engine->loadClip(member.video.url, sound.take, sound.offsetSeconds, openingOf(member, members),
                             {member.video.durationSeconds.value_or(0), member.video.frameRate.value_or(0)}),
            engine, member.video.startTimecodeString, member.video.timecodeFrameRate));
        showWaveform(member.id, sound.take);
    }
    if (!audioSourceMemberID_ || !isMember(*audioSourceMemberID_))
        audioSourceMemberID_ = members.empty() ? std::nullopt : std::optional(members.front().id);
    routeAudio();
    changed_.notify();
    return allOf(std::move(loading));
}

void ClusterEngineBag::goToClaps(const std::vector<SyncGroup>& members) {
    for (const SyncGroup& member : members)
        if (const auto clap = openingOf(member, members)) engineFor(member.id)->correctInitialSeek(*clap);
}

void ClusterEngineBag::leave(const std::function<bool(const UUID&)>& isLeaving) {
    std::vector<std::shared_ptr<VideoEngine>> leaving;
    std::erase_if(engines_, [&](const auto& entry) {
        if (!isLeaving(entry.first)) return false;
        leaving.push_back(entry.second);
        return true;
    });
    memberLabels_.clear();
    memberSyncOffsets_.clear();
    waveformSounds_.clear();
    // Last, as an engine notifies its end, and listeners look up the engine of each label.
    for (const auto& engine : leaving) engine->cleanup();
}

const std::shared_ptr<VideoEngine>& ClusterEngineBag::engineFor(const UUID& memberID) {
    auto& engine = engines_[memberID];
    if (!engine) engine = makeEngine_();
    return engine;
}

void ClusterEngineBag::showWaveform(const UUID& memberID, const std::optional<TakeSound>& sound) {
    const auto& waveform = engineFor(memberID)->waveform();
    const auto [shown, isFirst] = waveformSounds_.try_emplace(memberID, sound);
    if (!waveform || (!isFirst && shown->second == sound)) return;
    shown->second = sound;
    waveform->reset();
    if (sound) waveform->load(*sound, WaveformReduction::reviewBins, true);
}

void ClusterEngineBag::setAudioSource(std::optional<UUID> memberID) {
    audioSourceMemberID_ = memberID;
    routeAudio();
    changed_.notify();
}

void ClusterEngineBag::routeAudio() {
    for (const auto& [id, engine] : engines_) engine->setVolume(id == audioSourceMemberID_ ? 1 : 0);
}

void ClusterEngineBag::follow(const SyncGroup& member) {
    const auto found = memberSyncOffsets_.find(member.id);
    if (found == memberSyncOffsets_.end()) return;
    const ClipSound sound(member);
    found->second = sound.offsetSeconds;
    engineFor(member.id)->setAudio(sound.take);
    engineFor(member.id)->setSyncOffsetSeconds(sound.offsetSeconds);
    showWaveform(member.id, sound.take);
}

double ClusterEngineBag::offsetOf(const UUID& memberID) const {
    const auto found = memberSyncOffsets_.find(memberID);
    return found == memberSyncOffsets_.end() ? 0 : found->second;
}

bool ClusterEngineBag::isPlaying() const {
    return std::ranges::any_of(engines_,
                               [](const auto& entry) { return entry.second->transport().isPlaying; });
}

std::optional<UUID> ClusterEngineBag::leaderID() const {
    std::optional<UUID> leader;
    for (const auto& [id, label] : memberLabels_)
        if (engines_.at(id)->player() != nullptr && (!leader || id == audioSourceMemberID_)) leader = id;
    return leader;
}

void ClusterEngineBag::playAll() {
    const auto id = leaderID();
    if (!id) return;
    const VideoEngine& leader = *engines_.at(*id);
    const MediaTime end = leader.transport().duration;
    const bool isAtEnd = end > MediaTime() && leader.position() >= end; // playing then begins at the start
    const MediaTime shared =
        (isAtEnd ? MediaTime() : leader.position()) - MediaTime::fromSeconds(offsetOf(*id));
    const auto start = leader.player()->hostTime() + lead;
    for (const auto& [member, engine] : engines_)
        engine->play(shared + MediaTime::fromSeconds(offsetOf(member)), start);
    routeAudio();
}

void ClusterEngineBag::pauseAll() {
    for (const auto& [id, engine] : engines_) engine->pause(true);
}

void ClusterEngineBag::press(bool isForward) {
    const auto leader = leaderID();
    if (!leader) return;
    const ShuttleSpeed speed = engines_.at(*leader)->speed().after(isForward);
    for (const auto& [id, engine] : engines_) engine->shuttle(speed);
}

void ClusterEngineBag::stepAll(int frames, bool playBlip) {
    for (const auto& [id, engine] : engines_) engine->stepFrames(frames, playBlip);
}

void ClusterEngineBag::seekAll(double toSeconds) {
    for (const auto& [id, engine] : engines_) {
        engine->pause(true);
        engine->seek(MediaTime::fromSeconds(toSeconds) + MediaTime::fromSeconds(offsetOf(id)));
    }
}

platform::Task ClusterEngineBag::shown() const {
    std::vector<platform::Task> showing;
    for (const auto& [id, engine] : engines_) showing.push_back(engine->shown());
    return allOf(std::move(showing));
}

void ClusterEngineBag::cleanup() {
    leave([](const UUID&) { return true; });
    audioSourceMemberID_.reset();
    changed_.notify();
}

} // namespace orvane
