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

/// Plays the cameras of a take as one: an engine each, one shared time axis, one start, and the sound of one
/// camera. A moment of shared time lies in a member's video at shared time + the member's offset: shared time
/// is a place in the sound that they have in common. Interface thread.
class ClusterEngineBag {
  public:
    using MakeEngine = std::function<std::shared_ptr<VideoEngine>()>;
    explicit ClusterEngineBag(MakeEngine makeEngine) : makeEngine_(std::move(makeEngine)) {}

    const std::map<UUID, std::shared_ptr<VideoEngine>>& engines() const { return engines_; }
    const std::optional<UUID>& audioSourceMemberID() const { return audioSourceMemberID_; }
    /// The members in order, each with what it is called.
    const std::vector<std::pair<UUID, std::string>>& memberLabels() const { return memberLabels_; }
    const std::map<UUID, double>& memberSyncOffsets() const { return memberSyncOffsets_; } ///< seconds
    bool isPlaying() const;
    /// By which the others go: the camera that is heard, or else the first that can be played.
    std::optional<UUID> leaderID() const;
    /// Calls back when members, labels or the camera that is heard are others; engines notify their own
    /// changes.
    platform::Subscription onChange(std::function<void()> callback) {
        return changed_.add(std::move(callback));
    }

    /// Each member is at its clap. The task ends when all are loaded.
    platform::Task load(const std::vector<SyncGroup>& members);
    /// A member's sound, or where it lies, may be another; its waveform moves with it.
    void follow(const SyncGroup& member);
    /// The camera's sound alone is heard.
    void setAudioSource(std::optional<UUID> memberID);
    const std::shared_ptr<VideoEngine>& engineFor(const UUID& memberID);

    void playAll();
    void pauseAll();
    void togglePlay() { isPlaying() ? pauseAll() : playAll(); }
    /// All take the speed that the press gives the leader.
    void pressJ() { press(false); }
    void pressL() { press(true); }
    void stepForwardAll(bool playBlip) { stepAll(1, playBlip); }
    void stepBackwardAll(bool playBlip) { stepAll(-1, playBlip); }
    void stepAll(int frames, bool playBlip);
    /// Shared time. Stops all.
    void seekAll(double toSeconds);
    /// Ends when the picture of each member's newest seek is shown.
    platform::Task shown() const;
    void cleanup();

  private:
    static platform::Task allOf(std::vector<platform::Task> tasks);
    /// Takes the labels of all members and the engines of those that are leaving out of the bag, and ends
    /// these engines.
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
    std::map<UUID, std::optional<TakeSound>> waveformSounds_; ///< of the newest loads
    platform::Listeners<> changed_;
};

} // namespace orvane
