#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Services/Export/ExportResources.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr double leastSecondsApart = 0.2; // a smaller difference is a small correction or a camera's own
                                          // delay

/// The start of the clip on the axis of the angles: its own start, moved by as much as a corrected rate moves
/// the start of the picture. Absent for a clip without a start.
std::optional<Time> startOnAxis(const CameraClip& camera, const ExportSettings& settings) {
    const auto& corrected = settings.matchRules.timecodeRate;
    if (!corrected || !camera.clip.start) return camera.clip.start;
    const MediaAsset& video = camera.group->video;
    const double fps = clipRate(video, settings);
    const auto read = correctedPictureStartTime(video, fps, corrected), own = pictureStartTime(video, fps);
    return read && own ? *camera.clip.start + (*read - *own) : *camera.clip.start;
}

/// The start and end of each angle. If the cameras have different rates, angles start on whole frames of the
/// enclosing clip: a camera that began between two of its frames starts at the later one, and shows there
/// what it recorded at that moment.
class AngleGrid {
  public:
    AngleGrid(const std::vector<CameraClip>& cameras, const ExportSettings& settings) {
        const auto rate = [&](const CameraClip& camera) { return clipRate(camera.group->video, settings); };
        if (std::ranges::adjacent_find(cameras, std::ranges::not_equal_to(), rate) != cameras.end())
            frame_ = frameDurationTime(settings.frameRate);
        std::optional<Time> first;
        for (const CameraClip& camera : cameras) {
            const auto start = startOnAxis(camera, settings);
            if (start && (!first || *start < *first)) first = start;
        }
        if (first) earliest_ = atOrAfter(*first);
    }

    const Time& earliest() const { return earliest_; }
    /// Whether the camera recorded for at least one whole frame of the grid.
    bool shows(const SyncClip& clip, const std::optional<Time>& start) const {
        return !frame_ || !start || !clip.duration || Time::zero() < seen(clip, *start);
    }
    /// Cuts off what the camera recorded before its first whole frame, and returns the delay to the start of
    /// the first camera. Only for a camera for which `shows` is true.
    Time place(SyncClip& clip, const std::optional<Time>& start) const {
        if (!start) return Time::zero();
        const Time begin = atOrAfter(*start);
        if (frame_ && clip.duration) {
            clip.duration = seen(clip, *start);
            *clip.start += begin - *start;
        }
        return begin - earliest_;
    }

  private:
    Time atOrAfter(const Time& time) const {
        if (!frame_) return time;
        const Time frame = time.toFrame(*frame_, FrameSampling::floor);
        return frame < time ? frame + *frame_ : frame;
    }
    Time seen(const SyncClip& clip, const Time& start) const {
        return (*clip.duration - (atOrAfter(start) - start)).toFrame(*frame_, FrameSampling::floor);
    }
    std::optional<Time> frame_; ///< absent if all cameras have one rate: their times are whole frames
    Time earliest_ = Time::zero();
};

/// `delay`: the time from the start of the first camera to the start of this one.
MCAngle angle(CameraClip camera, std::string name, const Time& delay, const Time& earliest) {
    MCAngle angle;
    angle.angleID = angleID(name);
    angle.name = std::move(name);
    camera.clip.offset = delay;
    if (*camera.clip.offset > Time::zero()) {
        Gap gap;
        gap.offset = Time::zero();
        gap.start = earliest;
        gap.duration = camera.clip.offset;
        angle.items.emplace_back(std::move(gap));
    }
    angle.items.emplace_back(std::move(camera.clip));
    return angle;
}

std::string joinedName(const std::vector<CameraClip>& cameras, const NamesByGroup& clipNames) {
    std::vector<std::string> names;
    for (const CameraClip& camera : cameras) {
        const auto name = clipNames.find(camera.group->id);
        names.push_back(name == clipNames.end() ? camera.group->clipName : name->second);
    }
    return platform::text::joined(names, " + ");
}

} // namespace

std::string resolveMulticamCodec(MulticamCodec requested, const std::vector<const MediaAsset*>& sources) {
    if (requested != MulticamCodec::automatic) return std::string(rawValue(requested));
    struct Count {
        std::string code;
        int sources;
    };
    std::vector<Count> counts;
    for (const MediaAsset* source : sources) {
        if (!source->videoCodecFourCC) continue;
        std::string code = platform::text::lowercased(*source->videoCodecFourCC);
        const auto known = std::ranges::find(counts, code, &Count::code);
        if (known == counts.end())
            counts.push_back({std::move(code), 1});
        else
            ++known->sources;
    }
    static constexpr std::array<std::pair<std::string_view, MulticamCodec>, 9> codecs{{
        {"ap4h", MulticamCodec::proRes4444},
        {"ap4x", MulticamCodec::proRes4444},
        {"apch", MulticamCodec::proRes422HQ},
        {"apcn", MulticamCodec::proRes422},
        {"apcs", MulticamCodec::proRes422LT},
        {"apco", MulticamCodec::proRes422Proxy},
        {"avc1", MulticamCodec::h264},
        {"hvc1", MulticamCodec::h264},
        {"hev1", MulticamCodec::h264},
    }};
    const auto most = std::ranges::max_element(counts, {}, &Count::sources); // the first of equal ones
    const auto codec = std::ranges::find(codecs, most == counts.end() ? "" : most->code,
                                         &std::pair<std::string_view, MulticamCodec>::first);
    return std::string(rawValue(codec == codecs.end() ? MulticamCodec::proRes422LT : codec->second));
}

std::optional<BuiltMulticam> buildMulticam(std::vector<CameraClip> cameras, const std::string& altFormat,
                                           const NamesByGroup& clipNames, const ExportSettings& settings,
                                           ResourceList& resources) {
    if (cameras.size() < fewestCameras) return std::nullopt;
    const MediaAsset& firstVideo = cameras.front().group->video;
    const AngleGrid grid(cameras, settings);
    const Time& earliest = grid.earliest();
    Time total = Time::zero();
    std::vector<Time> delays;
    std::vector<const MediaAsset*> videos;
    for (CameraClip& camera : cameras) {
        delays.push_back(grid.place(camera.clip, startOnAxis(camera, settings)));
        total = std::max(total, delays.back() + camera.clip.duration.value_or(Time::zero()));
        videos.push_back(&camera.group->video);
    }

    Multicam multicam;
    multicam.format = IDREF{altFormat};
    multicam.tcStart = earliest;
    // If the timecode does not state its rate, the file's own rate decides.
    multicam.tcFormat = tcFormat(firstVideo, firstVideo.timecodeFrameRate
                                                 ? clipRate(firstVideo, settings)
                                                 : usableRate(firstVideo.frameRate, settings.frameRate));
    multicam.renderFormat = resolveMulticamCodec(settings.get(settings::multicamCodec), videos);

    BuiltMulticam built;
    built.media.id = {resources.nextID()};
    built.media.name = joinedName(cameras, clipNames);
    multicam.angles.reserve(cameras.size());
    std::vector<std::string> names = cameraNames(videos);
    for (CameraClip& camera : cameras) {
        const std::size_t place = multicam.angles.size();
        multicam.angles.push_back(angle(std::move(camera), std::move(names[place]), delays[place], earliest));
    }
    built.clip.sources.emplace_back().angleID = multicam.angles.front().angleID;
    built.media.item = std::move(multicam);
    built.clip.ref = {built.media.id.value};
    built.clip.name = built.media.name;
    built.clip.start = earliest;
    built.clip.duration = total;
    return built;
}

std::optional<UUID> multicamBucketGroupID(const std::vector<const SyncGroup*>& groups,
                                          const NamesByGroup& sceneBucketByGroupID, bool splitEnabled,
                                          std::vector<std::string>& warnings) {
    if (!splitEnabled) return std::nullopt;
    struct Bucket {
        const std::string* name;
        UUID first; ///< the earliest angle of the bucket
        int angles;
    };
    std::vector<Bucket> buckets;
    for (const SyncGroup* group : groups) {
        const auto found = sceneBucketByGroupID.find(group->id);
        if (found == sceneBucketByGroupID.end()) continue;
        const auto known = std::ranges::find_if(
            buckets, [&](const Bucket& bucket) { return *bucket.name == found->second; });
        if (known == buckets.end())
            buckets.push_back({&found->second, group->id, 1});
        else
            ++known->angles;
    }
    if (buckets.empty()) return std::nullopt;
    if (buckets.size() > 1) {
        std::vector<std::string> names;
        names.reserve(buckets.size());
        for (const Bucket& bucket : buckets) names.push_back(*bucket.name);
        std::ranges::sort(names);
        FileNames files;
        for (const SyncGroup* group : groups) files.add(group->video);
        std::vector<std::string> filenames;
        filenames.reserve(groups.size());
        for (const SyncGroup* group : groups) filenames.push_back(files.of(group->video));
        warnings.push_back("Multicam angles span different scenes (" + platform::text::joined(names, ", ") +
                           "): " + platform::text::joined(filenames, ", ") +
                           " — placed in the first angle's scene event.");
    }
    return std::ranges::max_element(buckets, {}, &Bucket::angles)->first; // the first of equal ones
}

namespace {

/// Removes the cameras without a whole frame in the enclosing clip, if rates differ: a clip that is shorter
/// than a frame of it could only be placed at a wrong time.
void leaveOutUnseen(std::vector<CameraClip>& cameras, ExportRun& run) {
    const AngleGrid grid(cameras, run.settings);
    std::erase_if(cameras, [&](const CameraClip& camera) {
        if (grid.shows(camera.clip, startOnAxis(camera, run.settings))) return false;
        run.warn("Not in the multicam clip (shorter than a frame of it): ", *camera.group);
        return true;
    });
}

/// Angles are placed by timecode. If two cameras share a recording and its position under one of them was
/// changed by hand, the pictures of the two differ by as much.
class MovedAngles {
  public:
    void add(const std::vector<const SyncGroup*>& cluster) {
        std::vector<const SyncGroup*> angles;
        std::ranges::copy_if(cluster, std::back_inserter(angles),
                             [](const SyncGroup* angle) { return angle->primaryAudio() != nullptr; });
        // Compared with an angle that was not moved by hand, otherwise with the first.
        std::ranges::stable_sort(angles, {},
                                 [](const SyncGroup* angle) { return angle->manualAudioOffsetSeconds != 0; });
        for (const SyncGroup* angle : angles) {
            const auto other = std::ranges::find_if(angles, [&](const SyncGroup* one) {
                return one->primaryAudio()->url == angle->primaryAudio()->url;
            });
            const double apart =
                std::abs(angle->manualAudioOffsetSeconds - (*other)->manualAudioOffsetSeconds);
            if (apart < leastSecondsApart) continue;
            if (++count_ > 1) continue;
            first_ = angle;
            firstApart_ = apart;
        }
    }
    void warn(ExportRun& run) const {
        if (count_ == 0) return;
        run.warn("A multicam clip places its cameras by timecode. The picture of a camera whose sound was "
                 "moved by "
                 "hand does not fit the other cameras; move it there in the editing program: ",
                 *first_,
                 platform::text::formatted(" by %.1f s", firstApart_) +
                     (count_ > 1 ? " and " + std::to_string(count_ - 1) + " more" : ""));
    }

  private:
    const SyncGroup* first_ = nullptr;
    double firstApart_ = 0;
    int count_ = 0;
};

/// Cameras that rolled together by their sound, moved by hand, and not by their timecode: they are in no
/// multicam clip.
class ApartByTimecode {
  public:
    explicit ApartByTimecode(const std::vector<const SyncGroup*>& groups) {
        for (const SyncGroup* group : groups)
            if (group->primaryAudio() != nullptr && group->video.durationSeconds &&
                !group->isExcludedFromMulticam())
                bySound_[group->primaryAudio()->url.path].push_back(group);
    }
    void add(const SyncGroup& group) {
        if (std::abs(group.manualAudioOffsetSeconds) < leastSecondsApart || group.primaryAudio() == nullptr)
            return;
        const auto known = bySound_.find(group.primaryAudio()->url.path);
        if (known == bySound_.end()) return;
        const auto other = std::ranges::find_if(known->second, [&](const SyncGroup* one) {
            return one != &group && secondsTogether(*one, group) >= leastSecondsTogether;
        });
        if (other == known->second.end() || std::ranges::find(known->second, &group) == known->second.end() ||
            ++count_ > 1)
            return;
        first_ = &group;
        other_ = *other;
    }
    void warn(ExportRun& run) const {
        if (count_ == 0) return;
        FileNames names;
        for (const SyncGroup* one : {first_, other_}) names.add(one->video);
        run.warn(
            "A camera whose sound was moved by hand to the moment of another camera is not in a multicam "
            "clip with it, because multicam clips go by timecode; make that one in the editing program: ",
            *first_,
            " with " + names.of(other_->video) +
                (count_ > 1 ? " and " + std::to_string(count_ - 1) + " more" : ""));
    }

  private:
    /// Consecutive clips of one camera may overlap by less, if one was moved by hand.
    static constexpr double leastSecondsTogether = 1;
    /// By the place of the common recording under each.
    static double secondsTogether(const SyncGroup& a, const SyncGroup& b) {
        const auto start = [](const SyncGroup& one) {
            return -one.audioMatches.front().syncOffsetSeconds - one.manualAudioOffsetSeconds;
        };
        return std::min(start(a) + *a.video.durationSeconds, start(b) + *b.video.durationSeconds) -
               std::max(start(a), start(b));
    }
    std::unordered_map<std::string_view, std::vector<const SyncGroup*>> bySound_;
    const SyncGroup *first_ = nullptr, *other_ = nullptr;
    int count_ = 0;
};

/// Multicam clips whose cameras may be of two units.
class AnglesOfTwoUnits {
  public:
    void add(const SyncGroup& a, const SyncGroup& b) {
        if (++count_ > 1) return;
        first_ = &a;
        other_ = &b;
    }
    void warn(ExportRun& run) const {
        if (count_ == 0) return;
        FileNames sounds;
        for (const SyncGroup* angle : {first_, other_}) sounds.add(*angle->primaryAudio());
        FileNames cameras;
        for (const SyncGroup* angle : {first_, other_}) cameras.add(angle->video);
        run.warn(
            "Multicam angles with sound of different recorders may be of two units; exclude the clips of "
            "one unit from multicam where they filmed different scenes: ",
            *first_,
            " has " + sounds.of(*first_->primaryAudio()) + ", and " + cameras.of(other_->video) + " has " +
                sounds.of(*other_->primaryAudio()) +
                (count_ > 1 ? "; likewise in " + std::to_string(count_ - 1) + " more" : ""));
    }

  private:
    const SyncGroup *first_ = nullptr, *other_ = nullptr;
    int count_ = 0;
};

} // namespace

void addMulticamClips(ExportRun& run) {
    const std::vector<const SyncGroup*>& groups = run.syncClips;
    MovedAngles moved;
    AnglesOfTwoUnits ofTwoUnits;
    std::unordered_set<const SyncGroup*> inClusters;
    for (const MulticamCluster& cluster : multicamClusters(groups, run.settings.matchRules)) {
        platform::throwIfStopped(run.stop);
        std::vector<CameraClip> cameras;
        // Made again: to keep the records of all clips for those of a few is more.
        for (const std::size_t member : cluster.members) inClusters.insert(groups[member]);
        for (const std::size_t member : cluster.members)
            if (auto clip = run.syncClip(*groups[member]))
                cameras.push_back({groups[member], std::move(*clip)});
        leaveOutUnseen(cameras, run);
        std::vector<const SyncGroup*> angles;
        for (const CameraClip& camera : cameras) angles.push_back(camera.group);
        auto multicam = buildMulticam(std::move(cameras), std::string(altFormatID), run.clipNames,
                                      run.settings, run.resources);
        if (!multicam) continue;
        moved.add(angles);
        if (const auto& two = cluster.mayBeOfTwoUnits)
            ofTwoUnits.add(*groups[two->first], *groups[two->second]);
        run.resources.add(multicam->media);
        const auto bucket = multicamBucketGroupID(
            angles, run.sceneEventNames, run.settings.get(settings::splitEventsByScene), run.result.warnings);
        const auto scene = std::ranges::find_if(
            angles, [&](const SyncGroup* angle) { return bucket && angle->id == *bucket; });
        run.place(multicam->clip, scene == angles.end() ? nullptr : *scene);
        ++run.result.multicamCount;
    }
    ApartByTimecode apart(groups);
    for (const SyncGroup* group : groups)
        if (!inClusters.contains(group)) apart.add(*group);
    moved.warn(run);
    apart.warn(run);
    ofTwoUnits.warn(run);
}

} // namespace orvane::FCPXMLExporter
