#pragma once

#include "OrvaneSyncCore/Models/IncompleteFile.h"
#include "Platform/AudioFile.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace orvane {

/// A recording could not be read to its end: the disk, the share or the program that decodes it failed. The
/// part that was read must not be used as the whole. A file that only ends early is no such failure.
class ReadFailed : public std::runtime_error {
  public:
    /// `heardSeconds` of the file: how far it could be read.
    explicit ReadFailed(IncompleteFile file);

    const IncompleteFile& file() const { return *file_; }

  private:
    /// A shared pointer, because copying an exception must not fail.
    std::shared_ptr<const IncompleteFile> file_;
};

/// How far the file was read; absent if no read of it failed, by `audio` or by another reader of the file.
std::optional<IncompleteFile> failedRead(const platform::AudioFile& audio, const std::string& filename);

/// To be called after the samples of `audio` were used. Throws ReadFailed.
void throwIfReadFailed(const platform::AudioFile& audio, const std::string& filename);

} // namespace orvane
