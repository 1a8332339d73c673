#pragma once

#include "OrvaneSyncCore/Models/IncompleteFile.h"
#include "Platform/AudioFile.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace orvane {

/// A recording could not be read to its end: the disk, the share or the program that decodes it failed, and
/// what was read of it must not pass for the whole. A file that merely ends early is no such failure.
class ReadFailed : public std::runtime_error {
  public:
    /// `heardSeconds`: how far it could be read.
    explicit ReadFailed(IncompleteFile file);

    const IncompleteFile& file() const { return *file_; }

  private:
    std::shared_ptr<const IncompleteFile> file_; ///< an exception is copied without a failure
};

/// How far the file was read; absent where no read of it failed, be it by `audio` or by another of its
/// readers.
std::optional<IncompleteFile> failedRead(const platform::AudioFile& audio, const std::string& filename);

/// Once something was made of what `audio` gave. Throws ReadFailed.
void throwIfReadFailed(const platform::AudioFile& audio, const std::string& filename);

} // namespace orvane
