#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SyncGroup.h"

#include <cstdint>
#include <string_view>

/// What a line of the list of a clip's fields says (`SyncGroupFields.h`).
namespace orvane {

/// Where the value of a field of a clip comes from.
enum class FieldSource {
    found,    ///< by a scan, a report or an analysis, which would find it again
    clap,     ///< the clap point in the sound: set by the editor, or by the search when a clip is opened
    decision, ///< by the editor alone; any value other than that of a new clip is a decision
    detail    ///< by the editor; ignored without the decision that it belongs to
};

/// What is derived again when a field of a clip changes, besides what shows the field itself. A field affects
/// both unless its line says otherwise.
enum class Concerns : std::uint8_t {
    neither = 0,
    doubts = 1, ///< the doubts about its match
    names = 2,  ///< the names of the clips, which depend on each other
    both = doubts | names
};

/// Which files store a field: sessions alone, or projects as well.
enum class KeptIn { sessions, projects };

template <FieldSource Source, KeptIn Kept, Concerns Derived, class Value>
struct ClipField : JSONField<SyncGroup, Value> {
    static constexpr FieldSource source = Source;
    static constexpr KeptIn keptIn = Kept;
    static constexpr bool concerns(Concerns one) {
        return (static_cast<unsigned>(Derived) & static_cast<unsigned>(one)) != 0;
    }
    std::string_view keyInProjects;
};
template <FieldSource Source, KeptIn Kept, Concerns Derived = Concerns::both, class Value>
constexpr ClipField<Source, Kept, Derived, Value> clipField(std::string_view key, Value SyncGroup::*member,
                                                            std::string_view keyInProjects = {}) {
    return {{key, member}, keyInProjects.empty() ? key : keyInProjects};
}

} // namespace orvane
