#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataFieldGrouping.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

// What the inspector says of a clip beside its sound. Interface thread.

/// The doubts about a clip, each with what can be done at once.
struct DoubtsPart {
    struct Doubt {
        std::string message;
        std::string cure;
        std::vector<CureStep> steps;

        bool operator==(const Doubt&) const = default;
    };
    std::vector<Doubt> doubts;

    static DoubtsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const DoubtsPart&) const = default;
};

/// What the clip is called, and what goes out of it.
struct NamePart {
    std::string name;      ///< the editor's; empty: none
    std::string automatic; ///< what the rules make of the clip, without suffixes
    std::string exported;  ///< the name in Final Cut Pro
    bool isPickup = false;
    bool isExcluded = false;
    bool isExcludedFromMulticam = false;
    bool isMOS = false;
    bool canBeMOS = false;

    static NamePart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const NamePart&) const = default;
};
/// The name in Final Cut Pro if the editor called the clip that; empty: nothing.
std::string exportedName(const ImportController& controller, const SyncGroup& group, std::string_view name);

/// What the files and imported lists say, by what it is about.
struct MetadataPart {
    struct Source {
        std::string title;
        std::string_view clearCommand; ///< empty: cannot be cleared
        std::vector<MetadataFieldGrouping::Group> groups;
    };
    std::vector<std::pair<std::string, std::string>> files; ///< of the picture's file and the recorder
    std::vector<Source> sources;

    static MetadataPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const MetadataPart& other) const;
};

/// What people wrote about the take, and what its slate says.
struct NotesPart {
    std::vector<std::pair<std::string, std::string>> notes; ///< who, and what
    std::string slate;        ///< what was found on it; what to do before a search
    std::string slateProblem; ///< why the latest search may have missed something; empty: it has not
    std::string proposal;     ///< what could be taken over; empty: nothing
    bool isSearched = false;

    static NotesPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const NotesPart&) const = default;
};

} // namespace orvane
