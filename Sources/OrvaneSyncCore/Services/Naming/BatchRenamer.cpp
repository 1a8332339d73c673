#include "OrvaneSyncCore/Services/Naming/BatchRenamer.h"

#include "OrvaneSyncCore/Services/Naming/ClipNames.h"
#include "OrvaneSyncCore/Services/Naming/Replacing.h"
#include "Platform/Text.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace orvane {

namespace {

std::string currentName(const SyncGroup& group, const BatchRenamer::Settings& settings) {
    if (group.manualClipName && !group.manualClipName->empty()) return *group.manualClipName;
    return GroupNaming::baseName(group, settings.source, settings.customPattern, settings.separator);
}

std::vector<std::string> listNames(const SyncGroupList& groups, const BatchRenamer::Settings& settings) {
    std::vector<std::string> names =
        ClipNames::inDocument(groups, settings.source, settings.customPattern, settings.separator);
    for (std::size_t i = 0; i < names.size(); ++i)
        names[i] = GroupNaming::appendingOffspeedTag(std::move(names[i]), groups[i]);
    return names;
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

std::vector<BatchRenamer::PreviewRow> BatchRenamer::preview(const SyncGroupList& groups,
                                                            const std::vector<UUID>& clips,
                                                            const Settings& settings) const {
    const std::unordered_set<UUID> chosen(clips.begin(), clips.end());
    std::unordered_map<UUID, std::string> given;
    for (auto& [id, name] : newNames(
             groups.filtered([&](const SyncGroup& group) { return chosen.contains(group.id); }), settings))
        given.emplace(id, std::move(name));
    SyncGroupList renamed;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        const auto own = given.find(groups[i].id);
        if (own == given.end()) {
            renamed.append(groups.element(i));
            continue;
        }
        SyncGroup group = groups[i];
        group.manualClipName = own->second;
        renamed.append(std::move(group));
    }
    std::unordered_map<UUID, PreviewRow> rows;
    std::vector<std::string> before = listNames(groups, settings), after = listNames(renamed, settings);
    for (std::size_t i = 0; i < groups.size(); ++i)
        rows[groups[i].id] = {std::move(before[i]), std::move(after[i])};
    std::vector<PreviewRow> preview;
    preview.reserve(clips.size());
    for (const UUID& clip : clips) preview.push_back(std::move(rows.at(clip)));
    return preview;
}

std::vector<std::pair<UUID, std::string>> BatchRenamer::newNames(const SyncGroupList& groups,
                                                                 const Settings& settings) const {
    std::vector<std::pair<UUID, std::string>> names;
    if (!hasOperation()) return names;
    for (const SyncGroup& group : groups) {
        const std::string name = currentName(group, settings);
        if (hasCameraName(group, name)) continue;
        if (std::string given = transform(name); given != name)
            names.emplace_back(group.id, std::move(given));
    }
    return names;
}

std::string BatchRenamer::padNumericSegments(std::string_view name, int digits) {
    std::string result;
    std::string run; // the current run of number characters
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
