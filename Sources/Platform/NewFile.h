#pragma once

#include "Platform/Files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvane::platform {

/// A file that is written piece by piece and gets its name when it is complete: a temporary file in the same
/// folder until then. For files that are too large for memory. Permissions, links and devices as in
/// `files::writeAtomically`. Every operation throws FileError; without `takePlace` the temporary file is
/// removed. One thread at a time.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(NewFile&&) noexcept;
    NewFile& operator=(NewFile&&) noexcept;

    void append(std::string_view bytes);
    /// Overwrites bytes that were appended before. Does nothing on a device that has no positions.
    void overwrite(std::uint64_t position, std::string_view bytes);

    using Decide = std::function<files::Existing()>;
    /// Ends the writing. `decide` as in `files::writeAtomically`; null replaces an existing file.
    void takePlace(const Decide& decide = nullptr);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace orvane::platform
