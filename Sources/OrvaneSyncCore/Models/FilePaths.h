#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvane {

// Files by their paths: in which order they are taken, and what tells files of one name apart. Pure; any
// thread.

/// The order in which people list files: folder by folder, the names of each path in the order of
/// `compareLocalizedStandard`, and the bytes of the path where that tells two apart by nothing. No two paths
/// are equal in it, so that what is made of the files never depends on how the file system lists them.
void sortByPath(std::vector<FileURL>& files);
void sortByPath(std::vector<const MediaAsset*>& assets);

/// The names of the folders above a file, from the root on.
std::vector<std::string_view> folderNames(const FileURL& file);

/// For each file the part of its folder that distinguishes it from the others, such as "CARD_2" of
/// "/shoot/CARD_1/DCIM" and "/shoot/CARD_2/DCIM"; the same for files of one folder alone. Valid UTF-8; empty
/// for files at the root and where all lie in one folder.
std::vector<std::string> distinguishingFolders(const std::vector<const FileURL*>& files);

/// What to call files in tables and messages: by their names, and where files of other folders bear the same
/// name, with the folder that tells them apart.
class FileNames {
  public:
    FileNames() = default;
    FileNames(const FileNames&) = delete;
    FileNames& operator=(const FileNames&) = delete;
    FileNames(FileNames&&) = default;
    FileNames& operator=(FileNames&&) = default;

    /// One of the files that are shown; again is no harm. All before the first `of`.
    void add(const FileURL& file);
    void add(const MediaAsset& asset) { add(asset.url); }

    /// Such as "A001C001.mov" or "CARD_2/A001C001.mov".
    std::string of(const FileURL& file) const;
    std::string of(const MediaAsset& asset) const { return of(asset.url); }
    /// Files of the same name in other folders.
    bool isRepeated(const FileURL& file) const;

  private:
    std::unordered_set<FileURL> files_;
    std::unordered_map<std::string, std::vector<const FileURL*>> byName_;
    /// Of the repeated names that were asked for.
    mutable std::unordered_map<FileURL, std::string> folders_;
};

} // namespace orvane
