#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"

#include "OrvaneSyncCore/Utilities/CountText.h"

#include <utility>

namespace orvane {

ReadFailed::ReadFailed(IncompleteFile file)
    : std::runtime_error(
          "can't read " + file.filename + " past " + clockText(file.heardSeconds) + " of " +
          clockText(file.promisedSeconds) +
          ": its disk or share fails, or the program that decodes it ended; see that the file can "
          "be copied, and try again"),
      file_(std::make_shared<const IncompleteFile>(std::move(file))) {}

std::optional<IncompleteFile> failedRead(const platform::AudioFile& audio, const std::string& filename) {
    const auto frame = audio.failedAt();
    if (!frame) return std::nullopt;
    const double rate = audio.sampleRate() > 0 ? audio.sampleRate() : 1;
    return IncompleteFile{filename, static_cast<double>(*frame) / rate,
                          static_cast<double>(audio.frameCount()) / rate};
}

void throwIfReadFailed(const platform::AudioFile& audio, const std::string& filename) {
    if (const auto failed = failedRead(audio, filename)) throw ReadFailed(*failed);
}

} // namespace orvane
