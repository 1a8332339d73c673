#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"

#include "OrvaneSyncCore/Services/Naming/Replacing.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace {

std::string currentName(const SyncGroup& group, const BatchRenamer::Settings& settings) {
    if (group.manualClipName && !group.manualClipName->empty()) return *group.manualClipName;
    return GroupNaming::baseName(group, settings.source, settings.customPattern, settings.separator);
}

bool hasCameraName(const SyncGroup& group, std::string_view name) {
    return name == group.video.filenameStem();
}

} // namespace

bool BatchRenamer::hasOperation() const {
    return !find.empty() || padDigits > 0 || !prefix.empty() || !suffix.empty();
}

std::string BatchRenamer::transform(std::string_view name) const {
    std::string result = replacingAll(name, find, replace);
    if (padDigits > 0) result = padNumericSegments(result, std::min(padDigits, mostPadDigits));
    return prefix + result + suffix;
}

BatchRenamer::Preview BatchRenamer::previewSample(const SyncGroupList& groups,
                                                  const Settings& settings) const {
    Preview preview;
    for (std::size_t i = 0; i < std::min(groups.size(), previewRowLimit); ++i) {
        const std::string before = currentName(groups[i], settings);
        preview.rows.push_back(
            {groups[i].id, before, hasCameraName(groups[i], before) ? before : transform(before)});
    }
    if (groups.size() > preview.rows.size())
        preview.remainder = "… and " + std::to_string(groups.size() - preview.rows.size()) + " more";
    return preview;
}

std::vector<std::pair<UUID, std::string>> BatchRenamer::newNames(const SyncGroupList& groups,
                                                                 const Settings& settings) const {
    std::vector<std::pair<UUID, std::string>> names;
    if (!hasOperation()) return names;
    for (const SyncGroup& group : groups)
        if (const std::string name = currentName(group, settings); !hasCameraName(group, name))
            names.emplace_back(group.id, transform(name));
    return names;
}

std::string BatchRenamer::padNumericSegments(std::string_view name, int digits) {
    std::string result;
    std::string run; // number characters, so far
    int length = 0;
    const auto flush = [&] {
        if (length > 0 && length < digits) result.append(static_cast<std::size_t>(digits - length), '0');
        result += run;
        run.clear();
        length = 0;
    };
    for (const std::string_view character : platform::text::characters(name)) {
        if (platform::text::isNumber(character)) {
            run += character;
            ++length;
        } else {
            flush();
            result += character;
        }
    }
    flush();
    return result;
}

std::vector<UUID> BatchRenamer::manuallyNamed(const SyncGroupList& groups) {
    std::vector<UUID> ids;
    for (const SyncGroup& group : groups)
        if (group.manualClipName) ids.push_back(group.id);
    return ids;
}

} // namespace orvane
