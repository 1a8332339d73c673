#include "OrvaneSyncCore/Services/Persistence/CachedFiles.h"

#include "OrvaneSyncCore/Utilities/QuickHash.h"
#include "Platform/Files.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>
#include <vector>

namespace orvane {

namespace files = platform::files;

CachedFiles::CachedFiles(std::string folder, std::string suffix, std::uint64_t mostBytes)
    : folder_(std::move(folder)), suffix_(std::move(suffix)), mostBytes_(mostBytes) {}

std::string CachedFiles::path(std::string_view key) const {
    std::array<char, 2 * sizeof(std::uint64_t) + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(quickHash(key)));
    return folder_ + "/" + digits.data() + suffix_;
}

bool CachedFiles::contains(std::string_view key) const { return files::exists(path(key)); }

std::optional<std::string> CachedFiles::read(std::string_view key) const {
    if (!contains(key)) return std::nullopt;
    try {
        return files::readText(path(key));
    } catch (const platform::FileError&) {
        return std::nullopt;
    }
}

void CachedFiles::write(std::string_view key, std::string_view contents) {
    const std::lock_guard lock(mutex_);
    try {
        files::createDirectories(folder_);
        files::writeAtomically(path(key), contents);
        makeRoom(contents.size());
    } catch (const platform::FileError&) { // if the disk is full, nothing is cached
    }
}

/// Removes files down to three quarters of the limit, so that the folder is not listed for every file.
void CachedFiles::makeRoom(std::uint64_t added) {
    if (bytes_ && *bytes_ + added <= mostBytes_) {
        *bytes_ += added;
        return;
    }
    struct File {
        double written = 0;
        std::uint64_t size = 0;
        std::string path;
    };
    std::vector<File> kept;
    std::uint64_t total = 0;
    for (const std::string& child : files::childNames(folder_).value_or(std::vector<std::string>())) {
        const std::string file = folder_ + "/" + child;
        const auto attributes = child.ends_with(suffix_) ? files::attributes(file) : std::nullopt;
        if (!attributes) continue;
        kept.push_back(
            {attributes->modificationSinceReference, static_cast<std::uint64_t>(attributes->size), file});
        total += kept.back().size;
    }
    if (total > mostBytes_) {
        std::ranges::sort(kept, {}, &File::written);
        for (const File& file : kept) {
            if (total <= mostBytes_ / 4 * 3) break;
            files::remove(file.path);
            total -= file.size;
        }
    }
    bytes_ = total;
}

} // namespace orvane
