#include "OrvaneSyncCLI/SoundFile.h"

#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "Platform/MediaInspector.h"

#include <algorithm>

namespace orvane::cli {

std::unique_ptr<platform::AudioFile> openSound(const std::string& path, SoundTracks tracks) {
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    using platform::AudioFile;
    auto file = tracks == SoundTracks::all ? AudioFile::openAllTracks(path) : AudioFile::open(path);
    if (file && file->frameCount() > 0 && file->channelCount() > 0) return file;
    const bool noLibrary = !file && platform::mediaLibraryWasMissed();
    throw CommandError("can't read '" + path + "': " +
                       (noLibrary ? "the program that runs the media libraries is missing or does not start; "
                                    "'orvanesync doctor' says what to install"
                                  : "it holds no sound that can be decoded"));
}

double secondsOf(const platform::AudioFile& file, std::int64_t frames) {
    return file.sampleRate() > 0 ? static_cast<double>(frames) / file.sampleRate() : 0;
}
double secondsOf(const platform::AudioFile& file) { return secondsOf(file, file.frameCount()); }
double promisedSecondsOf(const platform::AudioFile& file) { return secondsOf(file, file.promisedFrames()); }

std::function<void(double share)> hearing(ProgressLine& line, double seconds) {
    constexpr double longest = 1e9;
    const int total = static_cast<int>(std::min(seconds, longest));
    return [&line, total](double share) {
        line.show({"Hearing seconds", static_cast<int>(share * total), total});
    };
}

} // namespace orvane::cli
