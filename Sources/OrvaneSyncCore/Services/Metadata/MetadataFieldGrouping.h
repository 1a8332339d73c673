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

/// What a line of imported metadata is about, in the order of display. The texts are the titles.
enum class MetadataFieldGroup : std::uint8_t { camera, lens, sound, production, shotScene, other };
template <>
struct RawValues<MetadataFieldGroup> {
    static constexpr std::array<std::string_view, 6> texts{"Camera",     "Lens",         "Sound",
                                                           "Production", "Shot / Scene", "Other"};
};

/// Sorts the metadata of a clip by what its keys are about, for showing it. Any thread.
namespace MetadataFieldGrouping {

struct Group {
    MetadataFieldGroup group;
    std::vector<std::pair<std::string, std::string>> rows; ///< key and value, by key
};
/// Groups in the order of display, without those that would be empty; entries without a value are left out.
std::vector<Group> grouped(const std::map<std::string, std::string>& fields);

JSON toJSON(const Group& group);

} // namespace MetadataFieldGrouping

} // namespace orvane
