#include "OrvaneSyncApp/ViewModels/Results/ShootOrder.h"

#include "OrvaneSyncCore/Services/Matching/Recordings.h"
#include "OrvaneSyncCore/Services/Naming/GroupNaming.h"
#include "OrvaneSyncCore/Utilities/Day.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <list>
#include <map>
#include <optional>
#include <ranges>
#include <string>
#include <unordered_map>
#include <utility>

namespace orvane {

namespace {

/// The camera of a clip: the letter in its name; otherwise the letter of the first clip in its folder that
/// has one; otherwise the folder.
class CameraOfClip {
  public:
    explicit CameraOfClip(const SyncGroupList& clips) {
        for (const SyncGroup& clip : clips)
            if (auto letter = GroupNaming::cameraLetter(clip.video))
                letters_.emplace(folderPath(clip.video), *std::move(letter));
    }
    std::string operator()(const SyncGroup& clip) const {
        if (auto own = GroupNaming::cameraLetter(clip.video)) return *std::move(own);
        std::string folder(folderPath(clip.video));
        const auto found = letters_.find(folder);
        return found == letters_.end() ? folder : found->second;
    }

  private:
    std::unordered_map<std::string, std::string> letters_; ///< by folder
};

/// Takes the clips in the order of the list and places each row when its first clip is reached.
class RowsByShoot {
  public:
    RowsByShoot(const std::vector<ClipsOfRow>& rows, const SyncGroupList& clips)
        : rows_(rows), clips_(clips), places_(rows.size(), order_.end()), starts_(rows.size()) {
        std::unordered_map<const SyncGroup*, std::size_t> rowOfClip;
        for (std::size_t row = 0; row < rows.size(); ++row)
            for (const SyncGroup* clip : rows[row]) rowOfClip.emplace(clip, row);
        std::vector<const Clips*> owners(rows.size()); // the camera of each row's first clip
        const CameraOfClip cameraOf(clips);
        for (std::size_t i = 0; i < clips.size(); ++i) {
            const std::size_t row = rowOfClip.at(clips.element(i).get());
            Clips& camera = cameras_[cameraOf(clips[i])];
            camera.push_back({i, row, std::nullopt});
            if (owners[row] == nullptr) owners[row] = &camera;
        }
        for (auto& [name, camera] : cameras_) {
            sortByStart(camera);
            std::optional<std::size_t> shared;
            for (Clip& clip : std::views::reverse(camera)) {
                clip.nextShared = shared;
                if (owners[clip.row] != &camera) shared = clip.row;
            }
        }
    }

    const std::list<std::size_t>& order() {
        std::vector<std::pair<const Clips*, std::size_t>> places(clips_.size());
        for (const auto& [name, camera] : cameras_)
            for (std::size_t i = 0; i < camera.size(); ++i) places[camera[i].position] = {&camera, i};
        for (const auto& [camera, index] : places)
            if (!isPositioned((*camera)[index].row)) position(*camera, index);
        return order_;
    }

  private:
    struct Clip {
        std::size_t position; ///< in the list
        std::size_t row;
        /// The first later row of this camera that also has a clip of another camera.
        std::optional<std::size_t> nextShared;
    };
    using Clips = std::vector<Clip>; ///< of one camera
    using Place = std::list<std::size_t>::iterator;

    /// Sorts by day and time if every clip with a start has a known day; clips without a start stay after
    /// their predecessors.
    void sortByStart(Clips& camera) {
        std::vector<std::pair<double, std::size_t>> order; // seconds, and the place among these
        double latest = 0;
        for (std::size_t i = 0; i < camera.size(); ++i) {
            if (const auto& place = start(camera[i].row)) {
                const auto day = place->knownDay();
                if (!day) return;
                latest = static_cast<double>(*day) * secondsADay + place->range.startSeconds;
            }
            order.emplace_back(latest, i);
        }
        if (std::ranges::is_sorted(order)) return;
        std::ranges::sort(order);
        Clips sorted;
        for (std::size_t i = 0; i < order.size(); ++i) {
            sorted.push_back(camera[order[i].second]);
            sorted.back().position = camera[i].position;
        }
        camera = std::move(sorted);
    }

    bool isPositioned(std::size_t row) { return places_[row] != order_.end(); }

    void position(const Clips& camera, std::size_t index) {
        const std::size_t row = camera[index].row;
        const auto& next = camera[index].nextShared;
        const Place limit = next ? places_[*next] : order_.end(); // placed already
        Place at = limit;
        if (index > 0) {
            at = std::next(places_[camera[index - 1].row]);
            while (at != order_.end() && at != limit && start(row) && !isLater(*at, row)) ++at;
        } else if (limit != order_.end()) {
            while (at != order_.begin() && isLater(*std::prev(at), row)) --at;
        }
        places_[row] = order_.insert(at, row);
    }

    /// Whether both starts are known and the first row's is the later one.
    bool isLater(std::size_t row, std::size_t than) {
        const auto &a = start(row), &b = start(than);
        if (!a || !b) return false;
        const double seconds = a->range.startSeconds - b->range.startSeconds;
        const auto dayOfA = a->knownDay(), dayOfB = b->knownDay();
        if (dayOfA && dayOfB) return seconds + static_cast<double>(*dayOfA - *dayOfB) * secondsADay > 0;
        // With an unknown day, the shorter distance around the clock counts.
        return std::remainder(seconds, secondsADay) > 0;
    }

    const std::optional<FilePlace>& start(std::size_t row) {
        if (!dates_) {
            dates_.emplace(MatchRules::neighbours());
            for (const SyncGroup& clip : clips_) dates_->learn(clip.video);
        }
        auto& known = starts_[row];
        if (!known) known = dates_->of(rows_[row].front()->video);
        return *known;
    }

    const std::vector<ClipsOfRow>& rows_;
    const SyncGroupList& clips_;
    std::list<std::size_t> order_;
    std::vector<Place> places_; ///< of each row in the order; the end for a row that is not placed yet
    std::map<std::string, Clips> cameras_;
    std::optional<Places> dates_; ///< made when the first row's start is needed
    std::vector<std::optional<std::optional<FilePlace>>> starts_;
};

} // namespace

std::vector<std::size_t> shootOrder(const std::vector<ClipsOfRow>& rows, const SyncGroupList& clips) {
    RowsByShoot shoot(rows, clips);
    const auto& order = shoot.order();
    return {order.begin(), order.end()};
}

} // namespace orvane
