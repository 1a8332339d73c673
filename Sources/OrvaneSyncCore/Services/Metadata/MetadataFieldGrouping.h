#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane {

/// The topic of a line of imported metadata, in the order of display. The texts are the titles.
enum class MetadataFieldGroup : std::uint8_t { camera, lens, sound, production, shotScene, other };
template <>
struct RawValues<MetadataFieldGroup> {
    static constexpr std::array<std::string_view, 6> texts{"Camera",     "Lens",         "Sound",
                                                           "Production", "Shot / Scene", "Other"};
};

/// Groups the metadata of a clip by the topics of its keys, for display. Any thread.
namespace MetadataFieldGrouping {

struct Group {
    MetadataFieldGroup group;
    std::vector<std::pair<std::string, std::string>> rows; ///< key and value, by key
};
/// Groups in the order of display; empty groups and entries without a value are left out.
std::vector<Group> grouped(const std::map<std::string, std::string>& fields);

JSON toJSON(const Group& group);

} // namespace MetadataFieldGrouping

} // namespace orvane
