#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "Platform/Files.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The cache's data for one file, as bytes: a head that every version can read, and the asset in the form of
/// the reader that made it. Little-endian; the first eight bytes are a checksum of all others.
struct ProbeRecord {
    std::string_view path; ///< bytes of the file system
    /// Attributes of the file when it was probed.
    double modificationSinceReference = 0; ///< seconds since 1 January 2001 00:00 UTC
    std::int64_t size = 0;                 ///< bytes
    std::uint32_t readerVersion = 0;
    UUID id;
    AssetKind kind = AssetKind::video;
    std::string_view body; ///< from `encodedAsset`

    std::string bytes() const;
    /// A view into the bytes. Absent if the bytes are not a record or were changed.
    static std::optional<ProbeRecord> fromBytes(std::string_view bytes);

    bool isOf(const platform::FileAttributes& file) const;
};

/// All of an asset except identity, kind and place. Only the same version of the program can read it.
std::string encodedAsset(const MediaAsset& asset);
/// Absent if the bytes are not a complete asset.
std::optional<MediaAsset> decodedAsset(const ProbeRecord& record);

} // namespace orvane
