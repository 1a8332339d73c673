#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "OrvaneSyncCore/Services/Matching/ClipRate.h"
#include "OrvaneSyncCore/Services/Naming/OffspeedNaming.h"
#include "OrvaneSyncCore/Utilities/RateText.h"
#include "Platform/Stop.h"
#include "Timecode/ExactRate.h"

#include <array>
#include <charconv>

namespace orvane::FCPXMLExporter {

using namespace fcpxml;

namespace {

constexpr std::string_view metadataSource = "OrvaneSync";

MetadataItem editableItem(std::string_view key, std::string value, std::string_view displayName) {
    MetadataItem item;
    item.key = key;
    item.value = std::move(value);
    item.editable = true;
    item.displayName = displayName;
    item.source = metadataSource;
    return item;
}

/// The fewest digits that give the same number again, with a decimal point: "120.0", "119.88".
std::string shortestDecimal(double value) {
    std::array<char, 400> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed).ptr;
    std::string text(digits.data(), end);
    return text.find('.') == std::string::npos ? text + ".0" : text;
}

/// The value of a keyword element is a list separated by commas; this value is a single keyword.
void addSingleKeyword(std::vector<MarkerItem>& markers, std::string value) {
    std::erase(value, ',');
    markers.emplace_back(Keyword{std::move(value)});
}

const std::string& nameWithoutTag(const ExportRun& run, const SyncGroup& group) {
    const auto name = run.clipNames.find(group.id);
    return name == run.clipNames.end() ? group.clipName : name->second;
}

SyncClip wrapped(AssetClip clip) {
    SyncClip wrapper;
    wrapper.offset = clip.offset;
    wrapper.name = clip.name;
    wrapper.start = clip.start;
    wrapper.duration = clip.duration.value_or(Time::zero());
    wrapper.format = IDREF{std::string(altFormatID)};
    wrapper.tcFormat = clip.tcFormat;
    wrapper.item = std::move(clip);
    return wrapper;
}

/// If events are split by scene, a variant without an event of its own is put into the event of its scene.
void placeVariant(ExportRun& run, XMLElement* item, const SyncGroup& group, bool separateEvent,
                  std::vector<XMLElement*>& ownItems) {
    if (run.settings.get(settings::splitEventsByScene) && !separateEvent)
        run.placeElement(item, &group);
    else
        ownItems.push_back(item);
}

/// The length in whole sensor frames, limited to what the clip's asset holds. The asset's length is counted
/// at the clip's rate.
Time nativeDuration(const MediaAsset& video, double rate, const ExportSettings& settings) {
    const auto asset = durationTime(video.shownSeconds(), clipRate(video, settings));
    const auto own = durationTime(video.shownSeconds(), rate);
    if (!asset || !own) return fallbackDuration(rate);
    return std::min(*own, asset->toFrame(frameDurationTime(rate), FrameSampling::floor));
}

/// The number in the file from which the exact rate was derived; the rate itself if there is none.
double statedRate(const MediaAsset& video, double rate) {
    // A rate that rounds to 0 cannot count frames, but time-lapse clips state such a rate.
    const double sensor = video.sensorFrameRate.value_or(0);
    if (sensor > 0 && (sensor < 1 || exactRateValue(sensor) == rate)) return sensor;
    return video.frameRate && exactRateValue(*video.frameRate) == rate ? *video.frameRate : rate;
}

} // namespace

std::optional<TimeMap> buildTimeMap(const SyncGroup& group, double projectFPS) {
    const MediaAsset& video = group.video;
    if (!video.isOffspeed() || video.sourceRateDomain() != SourceRateDomain::sensorRate) return std::nullopt;
    auto real = video.realDurationSeconds();
    if (!real || !(*real > 0)) return std::nullopt;
    if (video.pictureSeconds) *real *= *video.pictureSeconds / *video.durationSeconds;
    const double fps = usableRate(projectFPS);
    const auto value = durationTime(real, fps);
    const auto time = durationTime(video.slowMotionFactor() * *real, fps);
    if (!value || !time) return std::nullopt;

    constexpr auto linear = Timept::InterpolationType::linear;
    TimeMap map;
    map.points.push_back({Time::zero(), Time::zero(), linear});
    map.points.push_back({*time, *value, linear});
    return map;
}

std::string offspeedRateKeywordValue(const SyncGroup& group) {
    const double rate = group.video.sensorFrameRate.value_or(group.video.frameRate.value_or(0));
    return "Offspeed " + rateText(rate) + "fps";
}

void addOffspeedKeywords(std::vector<MarkerItem>& markers, const SyncGroup& group, std::string_view kind,
                         const ExportSettings& settings) {
    if (!settings.get(settings::offspeedAutoKeyword) || !group.video.isOffspeed()) return;
    addSingleKeyword(markers, "Offspeed");
    addSingleKeyword(markers, offspeedRateKeywordValue(group));
    if (!kind.empty()) addSingleKeyword(markers, std::string(kind));
}

AssetClip buildNativeMOSClip(const SyncGroup& group, const std::string& videoAssetID,
                             const std::string& fcpName, const ExportSettings& settings) {
    const MediaAsset& video = group.video;
    const double rate = usableRate(video.sensorFrameRate, video.frameRate);
    const double saidRate = statedRate(video, rate);
    AssetClip clip;
    clip.ref = {videoAssetID};
    clip.name = OffspeedNaming::resolveNativeMOSName(
        fcpName, group.nativeMOSNameSuffix.value_or(settings.get(settings::nativeMOSSuffix)), saidRate);
    clip.start = pictureStartTime(video, clipRate(video, settings)).value_or(Time::zero());
    clip.offset = clip.start;
    clip.duration = nativeDuration(video, rate, settings);
    clip.tcFormat = TcFormat::ndf; // sensors do not count in drop-frame
    clip.videoRole = VideoRole{{"video"}};
    addOffspeedKeywords(clip.markers, group, "Native MOS", settings);
    clip.metadata =
        Metadata{{editableItem("com.orvanelabs.offspeed.sourceFps", shortestDecimal(saidRate), "Source FPS"),
                  editableItem("com.orvanelabs.offspeed.isNativeMOS", "true", "Native MOS Clip"),
                  editableItem("com.orvanelabs.offspeed.parentSyncClip", fcpName, "Parent Sync Clip")}};
    return clip;
}

void addNativeMOSClips(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    for (const SyncGroup& group : run.groups) {
        platform::throwIfStopped(run.stop);
        if (!group.video.isOffspeed()) continue;
        if (!group.generateNativeMOSClip && !settings.get(settings::generateNativeMOS)) continue;
        const auto resources = run.resourcesByGroup.find(group.id);
        if (resources == run.resourcesByGroup.end()) continue;
        AssetClip clip =
            buildNativeMOSClip(group, resources->second.videoAssetID, nameWithoutTag(run, group), settings);
        XMLElement* const item = settings.get(settings::wrapNativeMOSInSyncClip)
                                     ? run.maker.make(wrapped(std::move(clip)))
                                     : run.maker.make(clip);
        placeVariant(run, item, group, settings.get(settings::nativeMOSSeparateEvent), run.nativeMOSItems);
        ++run.result.nativeRateCount;
    }
}

void addProjectRateClips(ExportRun& run) {
    const ExportSettings& settings = run.settings;
    for (const SyncGroup& group : run.groups) {
        platform::throwIfStopped(run.stop);
        if (!group.video.isOffspeed()) continue;
        if (!group.shouldGenerateProjectRateClip() && !settings.get(settings::generateProjectRate)) continue;
        const auto resources = run.resourcesByGroup.find(group.id);
        if (resources == run.resourcesByGroup.end()) continue;
        const auto clip =
            buildProjectRateSyncClip(group, resources->second, nameWithoutTag(run, group), settings);
        if (!clip) continue;
        placeVariant(run, run.maker.make(*clip), group, settings.get(settings::projectRateSeparateEvent),
                     run.projectRateItems);
        ++run.result.projectRateCount;
    }
}

} // namespace orvane::FCPXMLExporter
