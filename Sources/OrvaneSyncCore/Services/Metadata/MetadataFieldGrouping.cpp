#include "OrvaneSyncCore/Services/Metadata/MetadataFieldGrouping.h"

#include "Platform/Text.h"

#include <algorithm>
#include <cstddef>

namespace orvane {

namespace {

using Needles = std::vector<std::string_view>;

/// Parts of keys for each group in the order of display. A key belongs to the first group that has a part of
/// it, otherwise to the last group.
const std::array<Needles, 5>& needlesByGroup() {
    static const std::array<Needles, 5> needles{
        Needles{"camera", "sensor", "iso", "shutter", "white balance", "whitebalance", "resolution", "codec",
                "gamma", "color space", "colorspace", "lut", "aspect ratio", "frame rate", "framerate",
                "firmware"},
        Needles{"lens", "focal", "iris", "t-stop", "tstop", "zoom", "focus", "filter"},
        Needles{"sound", "audio", "mixer", "boom", "timecode", "channel", "track", "recordist", "recorder"},
        Needles{"production", "director", "dp", "company", "project", "client", "editor", "colorist", "crew",
                "producer", "writer"},
        Needles{"scene", "take", "slate", "shot", "tape", "reel", "int/ext", "day/night", "circle", "episode",
                "sequence"}};
    return needles;
}

std::size_t groupOf(const std::string& key) {
    const std::string lowered = platform::text::lowercased(key);
    const auto& groups = needlesByGroup();
    const auto takes = [&](const Needles& needles) {
        return std::ranges::any_of(
            needles, [&](std::string_view needle) { return lowered.find(needle) != std::string::npos; });
    };
    return static_cast<std::size_t>(std::ranges::find_if(groups, takes) - groups.begin());
}

} // namespace

std::vector<MetadataFieldGrouping::Group>
MetadataFieldGrouping::grouped(const std::map<std::string, std::string>& fields) {
    std::array<Group, RawValues<MetadataFieldGroup>::texts.size()> all;
    for (std::size_t i = 0; i < all.size(); ++i) all.at(i).group = static_cast<MetadataFieldGroup>(i);
    for (const auto& [key, value] : fields)
        if (!value.empty()) all.at(groupOf(key)).rows.emplace_back(key, value);
    std::vector<Group> result;
    for (Group& group : all)
        if (!group.rows.empty()) result.push_back(std::move(group));
    return result;
}

JSON MetadataFieldGrouping::toJSON(const Group& group) {
    JSON rows = JSON::array();
    for (const auto& [key, value] : group.rows) {
        JSON row;
        row.set("key", key);
        row.set("value", value);
        rows.append(std::move(row));
    }
    JSON json;
    json.set("group", orvane::rawValue(group.group));
    json.set("rows", std::move(rows));
    return json;
}

} // namespace orvane
