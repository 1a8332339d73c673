#pragma once

#include "OrvaneSyncApp/Controllers/VideoEngine.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/Listeners.h"
#include "Platform/Task.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

/// Plays the cameras of a take together: one engine for each, one shared time axis, one start, and the sound
/// of one camera. Shared time is a position in the sound that all have in common. Position in a member's
/// video = shared time + the member's offset. Interface thread.
class ClusterEngineBag {
  public:
    using MakeEngine = std::function<std::shared_ptr<VideoEngine>()>;
    explicit ClusterEngineBag(MakeEngine makeEngine) : makeEngine_(std::move(makeEngine)) {}

    const std::map<UUID, std::shared_ptr<VideoEngine>>& engines() const { return engines_; }
    const std::optional<UUID>& audioSourceMemberID() const { return audioSourceMemberID_; }
    /// The members in order, each with its label.
    const std::vector<std::pair<UUID, std::string>>& memberLabels() const { return memberLabels_; }
    const std::map<UUID, double>& memberSyncOffsets() const { return memberSyncOffsets_; } ///< seconds
    bool isPlaying() const;
    /// The camera whose speed and position the others follow: the one that is heard, otherwise the first that
    /// can be played.
    std::optional<UUID> leaderID() const;
    /// Calls back when the members, their labels or the camera that is heard change; engines notify their own
    /// changes.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

    /// Loads each member at its clap. The task ends when all are loaded.
    platform::Task load(const std::vector<SyncGroup>& members);
    /// Moves the members that were loaded and not moved by the user to their claps.
    void goToClaps(const std::vector<SyncGroup>& members);
    /// To be called when a member's sound or the sound's position may have changed; its waveform moves with
    /// it.
    void follow(const SyncGroup& member);
    /// Only this camera's sound is heard.
    void setAudioSource(std::optional<UUID> memberID);
    const std::shared_ptr<VideoEngine>& engineFor(const UUID& memberID);

    void playAll();
    void pauseAll();
    void togglePlay() { isPlaying() ? pauseAll() : playAll(); }
    /// All members take the speed that the key press gives the leader.
    void pressJ() { press(false); }
    void pressL() { press(true); }
    void stepForwardAll(bool playBlip) { stepAll(1, playBlip); }
    void stepBackwardAll(bool playBlip) { stepAll(-1, playBlip); }
    void stepAll(int frames, bool playBlip);
    /// In shared time. Pauses all members.
    void seekAll(double toSeconds);
    /// Ends when each member shows the picture of its newest seek.
    platform::Task shown() const;
    void cleanup();

  private:
    static platform::Task allOf(std::vector<platform::Task> tasks);
    /// Removes the labels of all members, and removes and unloads the engines of the members for which
    /// `isLeaving` is true.
    void leave(const std::function<bool(const UUID&)>& isLeaving);
    double offsetOf(const UUID& memberID) const;
    void routeAudio();
    void press(bool isForward);
    void showWaveform(const UUID& memberID, const std::optional<TakeSound>& sound);

    const MakeEngine makeEngine_;
    std::map<UUID, std::shared_ptr<VideoEngine>> engines_;
    std::optional<UUID> audioSourceMemberID_;
    std::vector<std::pair<UUID, std::string>> memberLabels_;
    std::map<UUID, double> memberSyncOffsets_;
    std::map<UUID, std::optional<TakeSound>> waveformSounds_; ///< of each member's newest load
    platform::Listeners<> changed_;
};

} // namespace orvane
