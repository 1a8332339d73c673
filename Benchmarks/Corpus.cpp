#include "Corpus.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Matching/SyncEngine.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Files.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <utility>

namespace orvane::bench {

namespace {

constexpr std::uint32_t sampleRate = 48000;
constexpr int framesPerSecond = 25;
constexpr int channels = 8;
constexpr int secondsBetweenTakes = 90;
constexpr int clipSeconds = 60;
constexpr int firstTakeAt = 6 * 3600;
constexpr int takesADay = 600;

std::string formatted(const char* format, int a, int b) {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(), format, a, b);
    return text.data();
}

/// Seconds since midnight at which the take of that number begins, on a day that begins `later` seconds after
/// the first.
int startOf(int take, int ofADay, int later = 0) {
    constexpr int secondsADay = 86400;
    return (firstTakeAt + later + take % ofADay * secondsBetweenTakes % 60000) % secondsADay;
}

std::vector<std::string> trackNames() {
    return {"MixL", "MixR", "Boom 1", "Boom 2", "Lav Anna", "Lav Ben", "Lav Cleo", "Plant"};
}

void writeMovie(const std::string& path, int take) {
    test::MovieMaker maker;
    maker.video({.width = 3840, .height = 2160, .codec = "apch", .frames = clipSeconds * framesPerSecond})
        .audio({.codec = "sowt", .samples = clipSeconds * sampleRate})
        .timecode({.firstFrame = static_cast<std::uint32_t>(startOf(take, takesADay) * framesPerSecond)})
        .metadata("com.apple.quicktime.creationdate", "2026-03-09T10:00:00+0100")
        .metadata("com.apple.quicktime.make", "Camera")
        .mediaBytes(50'000'000);
    maker.writeTo(path);
}

struct TakeOfSound {
    int number = 0;
    int startsAt = 0; ///< seconds since midnight
    int seconds = 0;
    std::vector<std::string> tracks;
};

void writeWave(const std::string& path, const TakeOfSound& take) {
    const test::IXMLText ixml{.scene = std::to_string(take.number / 10 + 1),
                              .take = std::to_string(take.number % 10 + 1),
                              .tape = "SR001",
                              .note = "quiet please",
                              .project = "Bench",
                              .tracks = take.tracks};
    test::WaveMaker()
        .format({.channels = static_cast<int>(take.tracks.size()), .sampleRate = sampleRate})
        .bext({.timeReference = static_cast<std::uint64_t>(take.startsAt) * sampleRate})
        .iXML(ixml.text())
        .silence(static_cast<std::uint64_t>(take.seconds) * sampleRate)
        .writeTo(path);
    // The zeros take no room on the disk. A recording does not end in zeros, as these would be examined.
    constexpr std::streamoff lastBytes = 64;
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(-lastBytes, std::ios::end);
    file << std::string(static_cast<std::size_t>(lastBytes), '\x11');
}

MediaAsset camera(int take, int day, int ofADay, int later = 0) {
    MediaAsset asset({"/shoot/camera/" + formatted("A%03dC%03d", day + 1, take % 1000) +
                      formatted("_2603%02d_R%d.mov", day % 31 + 1, take)},
                     AssetKind::video);
    asset.startTimecodeString =
        TimecodeUtils::secondsToTC(startOf(take, ofADay, later), TimecodeFrameRate::fps25);
    asset.durationSeconds = clipSeconds;
    asset.frameRate = asset.sensorFrameRate = asset.projectFrameRate = framesPerSecond;
    asset.width = 3840;
    asset.height = 2160;
    return asset;
}

MediaAsset recording(int take, int day, int ofADay, int channelCount, int later = 0) {
    MediaAsset asset({"/shoot/sound/" + formatted("SR%03d_2603%02d", day + 1, day % 31 + 1) +
                      formatted("_T%05d-%d.WAV", take, 1)},
                     AssetKind::audio);
    asset.bextTimeReference = static_cast<std::uint64_t>(startOf(take, ofADay, later) - 2) * sampleRate;
    asset.startTimecodeString =
        TimecodeUtils::secondsToTC(startOf(take, ofADay, later) - 2, TimecodeFrameRate::fps25);
    asset.durationSeconds = clipSeconds + 5;
    asset.channelCount = channelCount;
    asset.sampleRate = sampleRate;
    IXMLData ixml;
    ixml.scene = std::to_string(take / 10 + 1);
    ixml.take = std::to_string(take % 10 + 1);
    const auto names = trackNames();
    for (int channel = 1; channel <= channelCount; ++channel)
        ixml.tracks.push_back({channel, names.at(static_cast<std::size_t>(channel - 1) % names.size())});
    asset.ixmlData = std::move(ixml);
    return asset;
}

} // namespace

MediaCorpus mediaCorpus(const std::string& folder) {
    MediaCorpus corpus;
    corpus.folder = folder;
    platform::files::createDirectories(folder);
    for (int i = 0; i < filesOfAKind; ++i) {
        const std::string movie = folder + "/" + formatted("A001C%03d_260309_R%d.mov", i, i);
        const std::string wave = folder + "/" + formatted("SR001_260309_T%04d-%d.WAV", i, 1);
        if (!platform::files::exists(movie)) writeMovie(movie, i);
        if (!platform::files::exists(wave))
            writeWave(wave, {i, startOf(i, takesADay) - 2, clipSeconds + 5, trackNames()});
        corpus.videos.push_back({movie});
        corpus.audios.push_back({wave});
    }
    return corpus;
}

MediaCorpus twoCards(const std::string& folder) {
    constexpr int takes = 60, fewestChannels = 4, differentCounts = 5;
    constexpr int clipsATake = (clipsACard + takes - 1) / takes;
    MediaCorpus corpus;
    corpus.folder = folder;
    for (const std::string card : {"/CARD_1", "/CARD_2"}) {
        platform::files::createDirectories(folder + card);
        for (int i = 0; i < clipsACard; ++i) {
            const std::string movie = folder + card + "/" + formatted("A001C%03d_260309_R%d.mov", i, 1);
            if (!platform::files::exists(movie)) writeMovie(movie, i);
            corpus.videos.push_back({movie});
        }
    }
    platform::files::createDirectories(folder + "/SOUND");
    for (int take = 0; take < takes; ++take) {
        const int count = fewestChannels + take % differentCounts;
        for (int channel = 1; channel <= count; ++channel) {
            const std::string wave =
                folder + "/SOUND/" + formatted("SR001_260309_T%03d_%d.WAV", take, channel);
            if (!platform::files::exists(wave))
                writeWave(wave, {.number = take,
                                 .startsAt = startOf(take * clipsATake, takesADay) - 2,
                                 .seconds = clipsATake * secondsBetweenTakes,
                                 .tracks = {trackNames().at(static_cast<std::size_t>(channel - 1))}});
            corpus.audios.push_back({wave});
        }
    }
    return corpus;
}

MediaCorpus weekOfCards(const std::string& folder) {
    MediaCorpus corpus;
    corpus.folder = folder;
    for (int i = 0; i < clipsOfAWeek; ++i) {
        const int day = i / takesADay + 1;
        const std::string card = folder + formatted("/DAY_%d/CARD_%d", day, 1);
        const std::string sound = folder + formatted("/DAY_%d/SOUND_%d", day, 1);
        if (i % takesADay == 0)
            for (const std::string& made : {card, sound}) platform::files::createDirectories(made);
        const std::string movie = card + "/" + formatted("A001C%03d_26030%d_R1.mov", i % takesADay, day);
        const std::string wave = sound + "/" + formatted("SR001_26030%d_T%04d.WAV", day, i % takesADay);
        if (!platform::files::exists(movie)) writeMovie(movie, i);
        if (!platform::files::exists(wave))
            writeWave(wave, {i, startOf(i, takesADay) - 2, clipSeconds + 5, trackNames()});
        corpus.videos.push_back({movie});
        corpus.audios.push_back({wave});
    }
    return corpus;
}

AssetCorpus assetCorpus(int clips, int clipsADay, int shiftOfADay) {
    AssetCorpus corpus;
    for (int i = 0; i < clips; ++i) {
        const int day = i / clipsADay, later = day * shiftOfADay;
        corpus.videos.push_back(camera(i, day, clipsADay, later));
        corpus.audios.push_back(recording(i, day, clipsADay, channels, later));
    }
    return corpus;
}

SyncGroupList matchedGroups(int clips, int channelCount) {
    std::vector<SyncGroup> groups;
    for (int i = 0; i < clips; ++i) {
        std::vector<AudioMatch> matches;
        matches.emplace_back(recording(i, i / takesADay, takesADay, channelCount), -2.0, clipSeconds);
        groups.emplace_back(camera(i, i / takesADay, takesADay), std::move(matches), MatchStatus::matched());
    }
    return SyncGroupList(std::move(groups));
}

} // namespace orvane::bench
