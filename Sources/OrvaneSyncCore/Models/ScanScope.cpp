#include "OrvaneSyncCore/Models/ScanScope.h"

namespace orvane {

namespace {

constexpr std::string_view foldersKey = "moreFolders", exclusionsKey = "exclude";

std::vector<std::string> textsIfPresent(const JSON& record, std::string_view key) {
    const JSON* value = record.find(key);
    return value == nullptr || value->isNull() ? std::vector<std::string>{}
                                               : requiredArray<std::string>(record, key);
}

} // namespace

void setScanScope(JSON& record, const ScanScope& scope) {
    JSON::Array folders, exclusions;
    for (const FileURL& folder : scope.moreFolders) folders.emplace_back(folder.pathText());
    for (const std::string& glob : scope.exclusions) exclusions.emplace_back(glob);
    if (!folders.empty()) record.set(foldersKey, std::move(folders));
    if (!exclusions.empty()) record.set(exclusionsKey, std::move(exclusions));
}

ScanScope scanScopeFrom(const JSON& record) {
    ScanScope scope;
    for (const std::string& text : textsIfPresent(record, foldersKey)) {
        auto folder = FileURL::fromPathText(text);
        if (!folder) throw DecodingError(std::string(foldersKey) + ": expected a path");
        scope.moreFolders.push_back(std::move(*folder));
    }
    scope.exclusions = textsIfPresent(record, exclusionsKey);
    return scope;
}

} // namespace orvane
