#include "OrvaneSyncCLI/SoundFile.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkWarnings.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/MediaInspector.h"

#include <algorithm>

namespace orvane::cli {

std::unique_ptr<platform::AudioFile> openSound(const std::string& path, SoundTracks tracks) {
    if (const std::string why = whyUnreadable(path, false); !why.empty())
        throw CommandError("can't read '" + path + "': " + why);
    using platform::AudioFile;
    auto file = tracks == SoundTracks::all ? AudioFile::openAllTracks(path) : AudioFile::open(path);
    if (file && file->frameCount() > 0 && file->channelCount() > 0) return file;
    const std::string missed = file ? "" : missedLibraryText();
    throw CommandError("can't read '" + path +
                       "': " + (missed.empty() ? "it holds no sound that can be decoded" : missed));
}

std::string missedLibraryText() {
    if (!platform::mediaLibraryWasMissed()) return "";
    if (const std::string why = platform::whyNoSharedMemory(); !why.empty())
        return "the system gives no memory that is shared with the program that runs the media libraries (" +
               why + "); lift the limits on the size of files and on memory";
    return "the program that runs the media libraries is missing or does not start; 'orvanesync doctor' says "
           "what "
           "to install";
}

double secondsOf(const platform::AudioFile& file, std::int64_t frames) {
    return file.sampleRate() > 0 ? static_cast<double>(frames) / file.sampleRate() : 0;
}
double secondsOf(const platform::AudioFile& file) { return secondsOf(file, file.frameCount()); }
double promisedSecondsOf(const platform::AudioFile& file) { return secondsOf(file, file.promisedFrames()); }

void checkHeard(const Context& context, const std::string& path, const platform::AudioFile& file,
                std::int64_t heardFrames) {
    constexpr double leastReportedSeconds = 0.5; // seconds
    checkRead(path, file);
    const double heard = secondsOf(file, heardFrames), promised = promisedSecondsOf(file);
    if (promised - heard > leastReportedSeconds)
        context.warn(earlyEndWarning("'" + path + "'", heard, promised));
}

void checkRead(const std::string& path, const platform::AudioFile& file) {
    throwIfReadFailed(file, "'" + path + "'");
}

std::function<void(double share)> hearing(ProgressLine& line, double seconds) {
    constexpr double longest = 1e9;
    const int total = static_cast<int>(std::min(seconds, longest));
    return [&line, total](double share) {
        line.show({"Hearing seconds", static_cast<int>(share * total), total});
    };
}

} // namespace orvane::cli
