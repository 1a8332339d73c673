#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <string>
#include <vector>

namespace orvane {

/// The media files below one or more folders, recognised by their extensions alone.
struct DiscoveryResult {
    std::vector<FileURL> videoURLs;
    std::vector<FileURL> audioURLs;
    // The lists below name what was not found or read; not part of the JSON form.
    std::vector<FileURL> unreadableFolders;
    std::vector<FileURL> brokenLinks; ///< with the name of a media file or of a folder
    std::vector<FileURL> linkedFiles; ///< the media files above that are links; not part of the JSON form
    /// Picture and sound files of kinds that no scan reads, recognised by extension; not part of the JSON
    /// form.
    std::vector<FileURL> unreadMedia;
    /// Exclusions that matched no path; not part of the JSON form.
    std::vector<std::string> unusedExclusions;

    std::size_t videoCount() const { return videoURLs.size(); }
    std::size_t audioCount() const { return audioURLs.size(); }
    std::size_t totalCount() const { return videoCount() + audioCount(); }
    bool isEmpty() const { return videoURLs.empty() && audioURLs.empty(); }
};

struct ScanError {
    UUID id;
    FileURL url;
    std::string message;
};

/// A small copy of a camera file, beside that file.
struct ProxyFile {
    FileURL url;
    FileURL originalURL;
};

/// Another copy of a camera file, from a card that was offloaded more than once.
struct CameraCopy {
    FileURL url;
    FileURL originalURL; ///< the file that is used
    bool endsEarly = false;
};

/// The assets of one scan, in the order of their paths.
struct ScanResult {
    std::vector<MediaAsset> videoAssets;
    std::vector<MediaAsset> audioAssets;
    double scanDuration = 0; ///< seconds
    std::vector<ScanError> errors;
    std::vector<ProxyFile> proxies; ///< found, but not among the assets
    std::vector<CameraCopy> copies; ///< found, but not among the assets
    /// Files that could not be read to their end, for a warning; not part of the JSON form.
    std::vector<FileURL> unreadFiles;

    std::size_t totalFiles() const { return videoAssets.size() + audioAssets.size(); }
    bool hasErrors() const { return !errors.empty(); }
};

/// The phase of a scan.
enum class ScanState { idle, discovering, probing, matching, done };
/// The stored name, such as "probing".
std::string_view name(ScanState state);
/// The text on screen for this state; empty for `idle`.
std::string_view progressText(ScanState state);

struct ScanProgress {
    std::string phase;
    int current = 0;
    int total = 0;
    std::string file{}; ///< the name of the current file; empty without one

    static ScanProgress idle() { return {}; }
    /// 0 to 1; 0 if there is nothing to do.
    double fraction() const { return total < 1 ? 0.0 : static_cast<double>(current) / total; }
    bool isActive() const { return total > 0; }

    bool operator==(const ScanProgress&) const = default;
};

JSON toJSON(const DiscoveryResult& result);
JSON toJSON(const ScanError& error);
JSON toJSON(const ProxyFile& proxy);
JSON toJSON(const CameraCopy& copy);
JSON toJSON(const ScanResult& result);

} // namespace orvane
