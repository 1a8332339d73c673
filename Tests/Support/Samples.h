#pragma once

#include <cstdlib>
#include <filesystem>

namespace orvane::test {

/// Files of real recorders and cameras, with a list of what other tools read in them: the folder that
/// ORVANE_SAMPLES names, else one beside the project. It need not be there.
inline std::filesystem::path samplesFolder() {
    if (const char* given = std::getenv("ORVANE_SAMPLES")) return given;
    return std::filesystem::path(ORVANE_SOURCE_DIR).parent_path() / "shared" / "samples";
}

} // namespace orvane::test
