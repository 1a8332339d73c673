#include "Platform/Files.h"
#include "Platform/ZipArchive.h"

#include "MemoryFile.h"

#include <cstdlib>
#include <unistd.h>

// The bytes as an archive that is unpacked into a folder of its own: nothing is written outside it, and no
// more than allowed within.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    constexpr std::uint64_t mostBytes = 1'000'000;
    static const std::string parent =
        platform::files::temporaryDirectory() + "/fuzz-zip-" + std::to_string(::getpid());
    const std::string folder = parent + "/in";
    const fuzz::MemoryFile file(data, size);
    try {
        platform::files::createDirectories(folder);
        if (platform::isZipArchive(file.path())) {
            platform::unpackedBytes(file.path(), mostBytes);
            platform::unpackZip(file.path(), folder, mostBytes);
        }
    } catch (const platform::ZipError&) {  // refused
    } catch (const platform::FileError&) { // a name that is a file and a folder, or too long
    }
    std::int64_t bytes = 0;
    platform::files::walk(
        folder,
        [&](const std::string& path, platform::files::WalkEntry) {
            const auto there = platform::files::attributes(path);
            if (there && there->isRegularFile) bytes += there->size;
        },
        [](const std::string&) { return true; }, platform::files::Hidden::include);
    if (bytes > static_cast<std::int64_t>(mostBytes)) std::abort();
    if (platform::files::childNames(parent).value_or(std::vector<std::string>()).size() != 1) std::abort();
    platform::files::removeTree(parent);
    return 0;
}
