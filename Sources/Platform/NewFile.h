#pragma once

#include "Platform/Files.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvane::platform {

/// A file that is written piece by piece and takes its place as a whole: a temporary file in the same folder
/// until then. For what is too large to be held in memory. Permissions, links and devices as in
/// `files::writeAtomically`. Every operation throws FileError; one that was not put in its place leaves no
/// trace. One thread at a time.
class NewFile {
  public:
    explicit NewFile(const std::string& path);
    ~NewFile();
    NewFile(NewFile&&) noexcept;
    NewFile& operator=(NewFile&&) noexcept;

    void append(std::string_view bytes);
    /// Of what was appended before. A device that has no positions is left as it is.
    void overwrite(std::uint64_t position, std::string_view bytes);

    using Decide = std::function<files::Existing()>;
    /// Ends the writing. `decide` as in `files::writeAtomically`; null replaces what is there.
    void takePlace(const Decide& decide = nullptr);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace orvane::platform
