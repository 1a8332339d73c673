#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"

#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Ingest/ContentMarks.h"
#include "OrvaneSyncCore/Services/Ingest/LTCDecoder.h"
#include "OrvaneSyncCore/Services/Ingest/StartSources.h"
#include "OrvaneSyncCore/Services/Ingest/TimecodeTrackReader.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Files.h"
#include "Platform/MainThread.h"
#include "Platform/MediaInspector.h"
#include "Platform/ReadErrorWatch.h"
#include "Platform/Stop.h"
#include "Platform/Text.h"
#include "Timecode/ExactRate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <mutex>
#include <string_view>
#include <thread>
#include <tuple>
#include <utility>

namespace orvane {

namespace {

using platform::MediaInspection;
using platform::MediaMetadataItem;
using platform::RandomAccessFile;

/// Makers use different names for the rates; a key that contains one of these names gives one.
constexpr std::array<std::string_view, 4> sensorRateWords{"sensorfps", "sensor_fps", "captureframerate",
                                                          "recordframerate"};
constexpr std::array<std::string_view, 4> projectRateWords{"projectfps", "project_fps", "masterfps",
                                                           "playbackframerate"};
constexpr double assumedSampleRate = 48000.0; // Hz

/// Rounded towards zero; absent if it cannot be the size of a picture.
std::optional<int> wholePixels(std::optional<double> pixels) {
    constexpr double most = std::numeric_limits<int>::max();
    if (!pixels || !(std::abs(*pixels) <= most)) return std::nullopt;
    return static_cast<int>(*pixels);
}

/// Cameras and programs without a timecode often state midnight as the start of a movie. A timecode on a
/// sound track is more reliable.
bool mayBeUnset(const MediaAsset& asset) {
    return asset.kind == AssetKind::video &&
           asset.startTimecodeString->find_first_of("123456789") == std::string::npos;
}

/// The duration of a movie is that of its longest track, often the sound. If the sound is longer than the
/// picture by a frame or more, the end of the picture's track is used. It is rounded to a whole frame if it
/// is near one, as it may be stated in thousandths of a second.
std::optional<double> pictureSeconds(const MediaInspection::VideoTrack& track, double movieSeconds) {
    constexpr double nearlyWhole = 0.1, nearlyOne = 0.999; // frames
    if (!track.endSeconds || !(track.nominalFrameRate.value_or(0) > 0)) return std::nullopt;
    const double rate = exactRateValue(*track.nominalFrameRate), frames = *track.endSeconds * rate;
    if (!((movieSeconds - *track.endSeconds) * rate >= nearlyOne)) return std::nullopt;
    const double whole = std::round(frames);
    return whole >= 1 && std::abs(frames - whole) < nearlyWhole ? whole / rate : *track.endSeconds;
}

void takeTracks(MediaAsset& asset, const MediaInspection& inspection) {
    asset.durationSeconds = inspection.durationSeconds;
    if (!inspection.videoTracks.empty()) {
        const auto& track = inspection.videoTracks.front();
        asset.width = wholePixels(track.width);
        asset.height = wholePixels(track.height);
        if (track.nominalFrameRate && *track.nominalFrameRate > 0)
            asset.frameRate = asset.sensorFrameRate = track.nominalFrameRate;
        asset.videoCodecFourCC = track.codecFourCC;
        if (asset.kind == AssetKind::video)
            asset.pictureSeconds = pictureSeconds(track, inspection.durationSeconds.value_or(0));
    }
    if (!inspection.audioTracks.empty()) {
        asset.channelCount = inspection.audioTracks.front().channelCount;
        asset.sampleRate = inspection.audioTracks.front().sampleRate;
    }
}

void takeCreationDate(MediaAsset& asset, const std::vector<MediaMetadataItem>& metadata) {
    const auto item = std::ranges::find_if(
        metadata, [](const MediaMetadataItem& one) { return one.commonKey == "creationDate" && one.string; });
    if (item == metadata.end()) return;
    asset.contentCreatedDate = dateFromISO8601(*item->string);
    asset.dateZoneMinutes = zoneMinutesFromISO8601(*item->string);
    if (!asset.contentCreatedDate) asset.contentCreatedDate = dateFromLocalISO8601(*item->string);
}

std::optional<double> numberOf(const MediaMetadataItem& item) {
    if (item.number) return std::isfinite(*item.number) ? item.number : std::nullopt;
    return item.string ? platform::text::decimalNumber(*item.string) : std::nullopt;
}

/// Takes the rates that the camera wrote as metadata, unless their ratio is not a finite number. Returns
/// whether the camera stated the project's rate.
bool takeVendorRates(MediaAsset& asset, const std::vector<MediaMetadataItem>& metadata) {
    bool confirmed = false;
    const auto earlier = std::pair(asset.sensorFrameRate, asset.projectFrameRate);
    for (const MediaMetadataItem& item : metadata) {
        const std::string key = platform::text::lowercased(item.key.empty() ? item.commonKey : item.key);
        const auto containsAny = [&key](const auto& words) {
            return std::ranges::any_of(words,
                                       [&key](auto word) { return key.find(word) != std::string::npos; });
        };
        const bool isSensorRate = containsAny(sensorRateWords), isProjectRate = containsAny(projectRateWords);
        if (!isSensorRate && !isProjectRate) continue;
        const auto rate = numberOf(item);
        if (!rate) continue;
        if (isSensorRate) asset.sensorFrameRate = rate;
        if (isProjectRate) asset.projectFrameRate = exactRateValue(*rate);
        confirmed = confirmed || isProjectRate;
    }
    if (!std::isfinite(OffspeedDetector::slowMotionFactor(asset.sensorFrameRate, asset.projectFrameRate)))
        std::tie(asset.sensorFrameRate, asset.projectFrameRate) = earlier;
    return confirmed;
}

std::optional<OffspeedConfidence> offspeedConfidence(const MediaAsset& asset, bool rateFromTimecodeTrack,
                                                     bool vendorConfirmed) {
    if (const auto confidence =
            OffspeedDetector::classify(asset.sensorFrameRate, asset.projectFrameRate, vendorConfirmed))
        return confidence;
    const bool hasNoRateSource = !rateFromTimecodeTrack && !vendorConfirmed && !asset.projectFrameRate &&
                                 asset.sensorFrameRate && *asset.sensorFrameRate > 0;
    if (!hasNoRateSource) return std::nullopt;
    return OffspeedConfidence::suspectedUnconfirmed(1.0);
}

/// For work so small that distributing single items would cost more than the work itself.
template <class Work>
void inBlocks(std::size_t count, std::size_t concurrency, const std::stop_token& stop, Work work) {
    constexpr std::size_t block = 32;
    const auto workOnBlock = [&](std::size_t which) {
        const std::size_t end = std::min(count, (which + 1) * block);
        for (std::size_t i = which * block; i < end; ++i) work(i);
    };
    platform::concurrently((count + block - 1) / block, concurrency, workOnBlock, stop);
}

bool mayHoldTimecodeTrack(std::string_view extension) {
    return extension == "mov" || extension == "mp4" || extension == "m4v";
}

/// The timecode rate that the recorder states.
std::optional<TimecodeFrameRate> recorderRate(const MediaAsset& asset) {
    return asset.ixmlData ? TimecodeUtils::timecodeFrameRateFromIXML(asset.ixmlData->timecodeRate)
                          : std::nullopt;
}

/// The rate of the recorder's timecode, or else of the picture.
std::optional<TimecodeFrameRate> statedRate(const MediaAsset& asset) {
    if (const auto rate = recorderRate(asset)) return rate;
    return asset.frameRate ? std::optional(TimecodeUtils::frameRate(exactRateValue(*asset.frameRate)))
                           : std::nullopt;
}

/// A file of the audio kind counts as sound whatever its header says.
bool mayHoldSound(const MediaAsset& asset) {
    return asset.kind == AssetKind::audio || asset.channelCount.value_or(0) > 0;
}

/// A recorder may write its header slightly too late, so a smaller missing part is not reported.
bool isWorthTelling(double heldShare, const MediaInspection& inspection) {
    constexpr double leastSeconds = 0.5;
    const double length = inspection.durationSeconds.value_or(0);
    const bool isSound = inspection.videoTracks.empty() && !inspection.audioTracks.empty();
    const double promised = isSound && heldShare > 0 ? length / heldShare : length;
    return !(promised > 0) || promised * (1 - heldShare) >= leastSeconds;
}

bool mayHoldBroadcastChunks(std::string_view extension) {
    return extension == "wav" || extension == "bwf" || extension == "aif" || extension == "aiff";
}

/// The count in samples of the file's own rate: a recorder with a speed change counts at another rate.
std::optional<std::uint64_t> samplesOf(const std::optional<IXMLReader::Timestamp>& timestamp,
                                       std::optional<double> sampleRate) {
    if (!timestamp) return std::nullopt;
    const double own = sampleRate.value_or(assumedSampleRate);
    const double samples =
        static_cast<double>(timestamp->samples) * own / timestamp->sampleRate.value_or(own);
    constexpr double most = 9.0e18;
    if (!(samples >= 1) || samples > most) return std::nullopt;
    return timestamp->sampleRate.value_or(own) == own ? timestamp->samples
                                                      : static_cast<std::uint64_t>(std::llround(samples));
}

/// The rate stated for a count that is the same in both chunks, if it differs clearly from the file's. A
/// recorder with a speed change counts at another rate as well, but only a thousandth from the file's.
std::optional<double> otherStampRate(std::optional<std::uint64_t> timeReference,
                                     const std::optional<IXMLReader::Timestamp>& timestamp,
                                     std::optional<double> sampleRate) {
    constexpr double least = 0.01;
    if (!timeReference || !timestamp || timestamp->samples != timeReference || !timestamp->sampleRate ||
        !(sampleRate.value_or(0) > 0) || std::abs(*timestamp->sampleRate / *sampleRate - 1) < least)
        return std::nullopt;
    return timestamp->sampleRate;
}

} // namespace

MediaProbeService::MediaProbeService(std::shared_ptr<const platform::SettingsStore> settings,
                                     std::shared_ptr<ProbeCache> cache)
    : settings_(std::move(settings)), cache_(std::move(cache)) {}

MediaAsset MediaProbeService::probe(const FileURL& url, AssetKind kind, const Unread& unread,
                                    const std::stop_token& stop) const {
    return std::move(probeAll({url}, kind, nullptr, unread, stop).front());
}

std::vector<MediaAsset> MediaProbeService::probeAll(const std::vector<FileURL>& urls, AssetKind kind,
                                                    const Progress& progress, const Unread& unread,
                                                    const std::stop_token& stop) const {
    std::vector<MediaAsset> assets(urls.size(), MediaAsset(UUID(), FileURL(), kind));
    std::vector<Known> known(urls.size());
    SideFiles sideFiles;
    if (cache_) takeFromCache(urls, sideFiles, known, assets, stop);

    std::mutex progressMutex;
    int completed = 0;
    std::vector<std::size_t> underWay; // in the order in which they were started
    const auto tell = [&] {
        if (progress)
            progress(completed, static_cast<int>(urls.size()),
                     underWay.empty() ? nullptr : &urls[underWay.front()]);
    };
    const auto begun = [&](std::size_t i) {
        const std::lock_guard lock(progressMutex);
        underWay.push_back(i);
        tell();
    };
    const auto done = [&](std::size_t i) {
        const std::lock_guard lock(progressMutex);
        std::erase(underWay, i);
        ++completed;
        tell();
    };
    std::vector<std::size_t> missing;
    for (std::size_t i = 0; i < urls.size(); ++i) {
        if (known[i].isHit)
            done(i);
        else
            missing.push_back(i);
    }
    std::vector<char> isRead(missing.size()); // not `bool`, as its elements share bytes
    const auto probeOne = [&](std::size_t which) {
        const std::size_t i = missing[which];
        begun(i);
        bool isProbed = false;
        try {
            const platform::ReadErrorWatch watch;
            Probed probed = probeFile(urls[i], kind, sideFiles);
            if (known[i].earlierID) probed.asset.id = *known[i].earlierID;
            assets[i] = probed.asset;
            isProbed = true;
            if (probed.isOpened && needsTimecodeDecoding(assets[i])) listenForTimecode(assets[i], stop);
            const bool isWhole = probed.isOpened && !watch.hasSeenError();
            isRead[which] = isWhole ? 1 : 0;
            // A result with read errors must not be cached, or it would be kept as long as the file does not
            // change. A start from linear timecode is not cached: it depends on settings, which change
            // independently of the file.
            if (cache_ && known[i].attributes && isWhole && probed.isFact)
                cache_->store(probed.asset, *known[i].attributes);
        } catch (const std::exception&) { // this file needed too much memory; the others go on
            if (!isProbed) assets[i] = MediaAsset(urls[i], kind);
        }
        done(i);
    };
    platform::concurrently(missing.size(), maxConcurrentProbes, probeOne, stop);
    for (std::size_t which = 0; which < missing.size(); ++which)
        if (unread && isRead[which] == 0) unread(urls[missing[which]]);
    if (kind == AssetKind::audio) markContents(assets, known, stop);
    return assets;
}

/// Assets that came from the cache are stored again with the mark and the missing share. Assets that were
/// just probed may have a start from linear timecode, which must not be cached; they get their marks into the
/// cache at the next scan.
void MediaProbeService::markContents(std::vector<MediaAsset>& recordings, const std::vector<Known>& known,
                                     const std::stop_token& stop) const {
    const std::vector<std::size_t> unmarked = ContentMarks::missingIn(recordings);
    const auto mark = [&](std::size_t which) {
        const std::size_t i = unmarked[which];
        recordings[i].contentMark = ContentMarks::of(recordings[i].url.path);
        if (cache_ && known[i].isHit && recordings[i].contentMark)
            cache_->store(recordings[i], *known[i].attributes);
    };
    platform::concurrently(unmarked.size(), maxConcurrentProbes, mark, stop);
    for (const auto& [i, heldShare] : ContentMarks::brokenOffIn(recordings, stop)) {
        MediaAsset& recording = recordings[i];
        recording.heldShare = heldShare;
        if (recording.durationSeconds) *recording.durationSeconds *= heldShare;
        if (cache_ && known[i].isHit) cache_->store(recording, *known[i].attributes);
    }
}

/// The attributes are read before any file is, so that the entry of a file that changes during its probe is
/// out of date.
void MediaProbeService::takeFromCache(const std::vector<FileURL>& urls, SideFiles& sideFiles,
                                      std::vector<Known>& known, std::vector<MediaAsset>& assets,
                                      const std::stop_token& stop) const {
    const ProbeCache::Snapshot snapshot = cache_->snapshot();
    inBlocks(urls.size(), std::thread::hardware_concurrency(), stop, [&](std::size_t i) {
        known[i].attributes = platform::files::attributes(urls[i].path);
        if (!known[i].attributes) return;
        auto cached = snapshot.known(urls[i], *known[i].attributes);
        if (!cached) return;
        known[i].isHit = cached->asset && isCacheEntryValid(*cached->asset, assets[i].kind, sideFiles);
        if (known[i].isHit)
            assets[i] = *std::move(cached->asset);
        else if (cached->kind == assets[i].kind)
            known[i].earlierID = cached->id;
    });
}

/// A file without timecode may have been cached while the search for linear timecode was off. A clip without
/// a start of its own depends on the files beside it, which change independently of it.
bool MediaProbeService::isCacheEntryValid(const MediaAsset& cached, AssetKind kind,
                                          SideFiles& sideFiles) const {
    if (cached.kind != kind || cached.timecodeSideFile) return false;
    if (kind == AssetKind::video && !cached.startTimecodeString && sideFiles.areBeside(cached.url.path))
        return false;
    return !needsTimecodeDecoding(cached);
}

bool MediaProbeService::needsTimecodeDecoding(const MediaAsset& asset) const {
    const bool hasStart = (asset.startTimecodeString && !mayBeUnset(asset)) || asset.bextTimeReference;
    return !hasStart && mayHoldSound(asset) && settings_->get(settings::ltcEnabled);
}

/// The order matters: later steps use and overwrite the results of earlier ones. The file is opened by its
/// path once; only its sound is read through another handle.
MediaProbeService::Probed MediaProbeService::probeFile(const FileURL& url, AssetKind kind,
                                                       SideFiles& sideFiles) const {
    Probed probed{MediaAsset(url, kind)};
    MediaAsset& asset = probed.asset;
    auto file = RandomAccessFile::open(url.path);
    if (!file) return probed;
    asset.fileSizeBytes = file->size();
    probed.isOpened = true;

    bool ranOut = false;
    const MediaInspection inspection =
        platform::inspectMedia(url.path, *file, ranOut).value_or(MediaInspection());
    probed.isFact = !ranOut;
    if (*asset.fileSizeBytes == 0)
        asset.heldShare = 0;
    else if (inspection.heldShare && isWorthTelling(*inspection.heldShare, inspection))
        asset.heldShare = inspection.heldShare;
    if (inspection.isUnclosed) asset.isUnclosed = true;
    takeTracks(asset, inspection);
    takeCreationDate(asset, inspection.metadata);
    asset.headerDate = StartSources::headerDate(inspection);

    const std::string extension = url.lowercasedExtension();
    bool rateFromTimecodeTrack = false;
    if (mayHoldTimecodeTrack(extension)) {
        if (auto start = TimecodeTrackReader::read(*file)) {
            asset.startTimecodeString = std::move(start->timecode);
            asset.projectFrameRate = start->projectFrameRate;
            asset.timecodeFrameRate = start->timecodeFrameRate;
            rateFromTimecodeTrack = start->projectFrameRate.has_value();
        }
    } else if (inspection.startTimecode) {
        rateFromTimecodeTrack = StartSources::takeCounted(asset, *inspection.startTimecode);
    }
    const bool vendorConfirmed = takeVendorRates(asset, inspection.metadata);
    StartSources::countPictures(asset, vendorConfirmed);
    if (kind == AssetKind::video)
        asset.offspeedConfidence = offspeedConfidence(asset, rateFromTimecodeTrack, vendorConfirmed);
    if (mayHoldBroadcastChunks(extension)) readBroadcastMetadata(asset, *file);
    if (!asset.startTimecodeString) StartSources::readEmbedded(asset, *file);
    if (!asset.startTimecodeString && kind == AssetKind::video) StartSources::readSideFile(asset, sideFiles);
    return probed;
}

void MediaProbeService::readBroadcastMetadata(MediaAsset& asset, RandomAccessFile& file) const {
    auto [ixml, timestamp, bext] = ixmlReader_.readBroadcast(file);
    asset.ixmlData = std::move(ixml);
    asset.bextTimeReference = bext.timeRef ? bext.timeRef : samplesOf(timestamp, asset.sampleRate);
    asset.statedStampRate = otherStampRate(bext.timeRef, timestamp, asset.sampleRate);
    asset.bextOriginator = std::move(bext.originator);
    if (bext.originationDate) {
        asset.contentCreatedDate = bext.originationDate;
        asset.dateZoneMinutes.reset();
    }
    if (asset.startTimecodeString) return;

    if (asset.bextTimeReference) {
        const double seconds = TimecodeUtils::bextToSeconds(*asset.bextTimeReference,
                                                            asset.sampleRate.value_or(assumedSampleRate));
        // At a sample rate of a few Hz a sample count can mean years; a time that no timecode can represent
        // would become midnight.
        const TimecodeFrameRate rate = statedRate(asset).value_or(TimecodeFrameRate::fps24);
        if (seconds * timecodeRate::frameRateForRealTimeCalculation(rate) < Timecode::frameCountLimit) {
            asset.startTimecodeString = TimecodeUtils::secondsToTC(seconds, rate);
            asset.timecodeFrameRate = recorderRate(asset);
        }
    }
}

/// A video begins with a whole frame, so its start is the nearest frame; of the picture, if the picture has
/// several frames to one of the timecode. A recording can begin within a frame, so its start is kept to the
/// sample.
void MediaProbeService::listenForTimecode(MediaAsset& asset, const std::stop_token& stop) const {
    const auto frame = LTCDecoder::decodeFirstFrame(asset.url.path, settings_->get(settings::ltcChannelIndex),
                                                    statedRate(asset), stop);
    if (!frame) return;
    asset.startTimecodeString = frame->tc;
    if (!frame->start) return;
    LTCStart start = *frame->start;
    if (asset.kind == AssetKind::video && asset.frameRate)
        if (const auto finer = start.inFramesOf(exactRate(*asset.frameRate))) start = *finer;
    asset.startTimecodeString = start.timecode();
    asset.timecodeFrameRate = start.rate;
    const double samples = start.seconds() * asset.sampleRate.value_or(assumedSampleRate);
    constexpr double most = 1e15; // more than a day has at any sample rate
    if (asset.kind == AssetKind::audio && samples >= 1 && samples < most)
        asset.bextTimeReference = static_cast<std::uint64_t>(std::llround(samples));
}

} // namespace orvane
