// Searches exported documents for errors of a frame.
//
//     cmake --build --preset release --target frame_check
//     build/release/bin/frame_check [--clips N] [--seed N] [--media FOLDER]
//
// Without options it exports 20,000 random clips at all rates of timecode, half of them in documents with
// multicam clips. --media adds the picture files below a folder, as the program reads them, and counts
// their pictures. Every time is compared with exact fractions. It prints the counts and the first errors, and
// ends with 1 if there are any.

#include "FrameCheck/FrameCheck.h"
#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "Platform/Playback/FrameReader.h"
#include "Timecode/ExactRate.h"

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

using namespace orvane;

bool print(const char* what, const frameCheck::Report& report) {
    std::printf("%s: %zu clips with sound, %zu multicam clips, %zu faults\n", what, report.clips,
                report.multicams, report.faultCount);
    for (const std::string& fault : report.faults) std::printf("  %s\n", fault.c_str());
    return report.faultCount == 0 && report.clips > 0;
}

/// Whether an asset with the length of the file's shown seconds ends after the last picture that the
/// libraries find.
bool endsBehindItsPictures(const MediaAsset& video, std::int64_t count) {
    const auto stated = truncatedFrames(*video.shownSeconds() * exactRateValue(*video.frameRate));
    if (stated.value_or(0) <= count) return false;
    std::printf("  %s: an asset of %lld frames, a file of %lld\n", video.filename.c_str(),
                static_cast<long long>(*stated), static_cast<long long>(count));
    return true;
}

bool checkFolder(const std::string& folder, unsigned seed) {
    const DiscoveryResult found = FileDiscoveryService().discover(folder);
    const auto settings = std::make_shared<platform::MemorySettingsStore>();
    MediaProbeService service(settings, nullptr);
    std::vector<MediaAsset> pictures;
    std::size_t faults = 0, unread = 0;
    for (MediaAsset& video : service.probeAll(found.videoURLs, AssetKind::video, nullptr)) {
        if (!video.durationSeconds || !video.frameRate || video.isOffspeed()) continue;
        video.filename = std::to_string(pictures.size()) + " " + video.filename;
        std::printf("  %-28s %s at %.6g, picture at %.6g fps\n", video.filename.c_str(),
                    video.startTimecodeString.value_or("no timecode").c_str(),
                    video.timecodeFrameRate
                        ? timecodeRate::frameRateForRealTimeCalculation(*video.timecodeFrameRate)
                        : 0.0,
                    video.frameRate.value_or(0));
        const auto reader = platform::FrameReader::open(video.url.path);
        const std::int64_t count = reader ? reader->facts().pictureCount : 0;
        // A damaged file does not count as an error: the number of pictures in it is unknown.
        if (count == 0 || video.heldShare || !reader->pictureAt({}, {}, {})) {
            std::printf("  %s: can't be read to its end; its pictures are not counted\n",
                        video.filename.c_str());
            ++unread;
        } else {
            faults += endsBehindItsPictures(video, count) ? 1 : 0;
        }
        pictures.push_back(std::move(video));
    }
    if (unread > 0) std::printf("  %zu files can't be read\n", unread);
    return print(folder.c_str(), frameCheck::checkPictures(pictures, seed)) && faults == 0;
}

} // namespace

int main(int count, char** arguments) {
    std::size_t clips = 20'000;
    unsigned seed = 1;
    std::string folder;
    for (int i = 1; i < count; i += 2) {
        const std::string_view option = arguments[i];
        if (i + 1 == count || (option != "--clips" && option != "--seed" && option != "--media")) {
            std::puts("frame_check [--clips N] [--seed N] [--media FOLDER]");
            return 2;
        }
        if (option == "--clips") clips = std::strtoull(arguments[i + 1], nullptr, 10);
        if (option == "--seed") seed = static_cast<unsigned>(std::strtoul(arguments[i + 1], nullptr, 10));
        if (option == "--media") folder = arguments[i + 1];
    }
    bool isGood = print("random clips", frameCheck::checkRandomClips(clips, seed));
    if (!folder.empty()) isGood = checkFolder(folder, seed) && isGood;
    return isGood ? 0 : 1;
}
