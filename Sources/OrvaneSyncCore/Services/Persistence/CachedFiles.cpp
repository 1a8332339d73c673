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

std::uint64_t removeOldest(std::vector<CacheEntry> entries, std::uint64_t total, std::uint64_t most) {
    std::ranges::sort(entries, {}, &CacheEntry::time);
    for (const CacheEntry& entry : entries) {
        if (total <= most) break;
        try {
            files::removeTree(entry.path);
            total -= entry.bytes;
        } catch (const platform::FileError&) { // the others are removed all the same
        }
    }
    return total;
}

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
    std::vector<CacheEntry> entries;
    std::uint64_t total = 0;
    for (const std::string& child : files::childNames(folder_).value_or(std::vector<std::string>())) {
        const std::string file = folder_ + "/" + child;
        const auto attributes = child.ends_with(suffix_) ? files::attributes(file) : std::nullopt;
        if (!attributes) continue;
        entries.push_back(
            {attributes->modificationSinceReference, static_cast<std::uint64_t>(attributes->size), file});
        total += entries.back().bytes;
    }
    bytes_ = total > mostBytes_ ? removeOldest(std::move(entries), total, mostBytes_ / 4 * 3) : total;
}

} // namespace orvane
