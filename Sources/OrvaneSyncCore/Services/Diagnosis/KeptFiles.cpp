#include "OrvaneSyncCore/Services/Diagnosis/KeptFiles.h"

#include <algorithm>

namespace orvane {

namespace {

std::string folderWithSlash(const std::string& folder) { return folder + (folder.ends_with('/') ? "" : "/"); }

bool isInOneOf(const std::vector<std::string>& folders, const std::string& path) {
    return std::ranges::any_of(folders, [&](const std::string& folder) { return path.starts_with(folder); });
}

} // namespace

KeptFiles::KeptFiles(const std::vector<FileURL>& folders, const CureWay& way) {
    using enum CureOption::Kind;
    std::vector<CureOption> options = way.options;
    if (way.scan) options.insert(options.end(), way.scan->options.begin(), way.scan->options.end());
    for (const FileURL& folder : folders) roots_.push_back(folderWithSlash(folder.path));
    for (const CureOption& option : options) {
        if (option.kind == exclude) patterns_.emplace_back(roots_, option.value);
        if (option.kind == withoutFolder) std::erase(roots_, folderWithSlash(option.value));
        if (option.kind == video) videoFolders_.push_back(folderWithSlash(option.value));
        if (option.kind == audio) audioFolders_.push_back(folderWithSlash(option.value));
    }
}

bool KeptFiles::has(const MediaAsset& file) const {
    const std::string& path = file.url.path;
    if (std::ranges::any_of(patterns_, [&](const PassedOver& one) { return one.leavesOut(path); }))
        return false;
    if (videoFolders_.empty() && audioFolders_.empty()) return roots_.empty() || isInOneOf(roots_, path);
    return isInOneOf(file.kind == AssetKind::video ? videoFolders_ : audioFolders_, path);
}

} // namespace orvane
