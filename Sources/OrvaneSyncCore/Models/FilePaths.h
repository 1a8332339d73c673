#pragma once

#include "OrvaneSyncCore/Models/MediaAsset.h"

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace orvane {

// Files by their paths: their order, and what distinguishes files of the same name. Pure; any thread.

/// The order in which people list files: folder by folder, names compared by `compareLocalizedStandard`, and
/// by the bytes of the path if that finds no difference. No two paths are equal in this order, so results
/// never depend on the order in which the file system lists the files.
void sortByPath(std::vector<FileURL>& files);
void sortByPath(std::vector<const MediaAsset*>& assets);

/// The names of the folders above a file, from the root on.
std::vector<std::string_view> folderNames(const FileURL& file);

/// For each file the part of its folder that distinguishes it from the others, such as "CARD_2" for the
/// folders "/shoot/CARD_1/DCIM" and "/shoot/CARD_2/DCIM"; files of one folder get the same text. Valid UTF-8;
/// empty for files at the root, and if all files are in one folder.
std::vector<std::string> distinguishingFolders(const std::vector<const FileURL*>& files);

/// Names of files for tables and messages: the file name, and in front of it the distinguishing folder if
/// files of other folders have the same name.
class FileNames {
  public:
    FileNames() = default;
    FileNames(const FileNames&) = delete;
    FileNames& operator=(const FileNames&) = delete;
    FileNames(FileNames&&) = default;
    FileNames& operator=(FileNames&&) = default;

    /// Adds a file that is shown; adding it twice is harmless. Add all files before the first call of `of`.
    void add(const FileURL& file);
    void add(const MediaAsset& asset) { add(asset.url); }

    /// Such as "A001C001.mov" or "CARD_2/A001C001.mov".
    std::string of(const FileURL& file) const;
    std::string of(const MediaAsset& asset) const { return of(asset.url); }
    /// Whether files of other folders have the same name.
    bool isRepeated(const FileURL& file) const;

  private:
    std::unordered_set<FileURL> files_;
    std::unordered_map<std::string, std::vector<const FileURL*>> byName_;
    /// For the repeated names that were asked for so far.
    mutable std::unordered_map<FileURL, std::string> folders_;
};

} // namespace orvane
