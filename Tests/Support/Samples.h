#pragma once

#include <cstdlib>
#include <filesystem>

namespace orvane::test {

/// The folder with files of real recorders and cameras and a list of what other tools read in them: the
/// folder named by ORVANE_SAMPLES, else one beside the project. It may be missing.
inline std::filesystem::path samplesFolder() {
    if (const char* given = std::getenv("ORVANE_SAMPLES")) return given;
    return std::filesystem::path(ORVANE_SOURCE_DIR).parent_path() / "shared" / "samples";
}

} // namespace orvane::test
