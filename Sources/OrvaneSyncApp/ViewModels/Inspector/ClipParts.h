#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Services/Metadata/MetadataFieldGrouping.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace orvane {

// What the inspector shows about a clip, except its sound. Interface thread.

/// The doubts about a clip, each with the steps that can be taken at once. A step that several doubts have
/// is given with the last of them.
struct DoubtsPart {
    struct Doubt {
        std::string message;
        std::string cure;
        std::vector<CureStep> steps;
        std::string reason{}; ///< the message for a short line about the clip

        bool operator==(const Doubt&) const = default;
    };
    std::vector<Doubt> doubts;
    std::string whyUnmatched; ///< why the clip has no recording; empty if it has one

    /// Keeps each step with the last doubt that has it.
    static void keepLastSteps(std::vector<Doubt>& doubts);
    static DoubtsPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const DoubtsPart&) const = default;
};

/// The names of a clip, and what the export takes of it.
struct NamePart {
    std::string name;      ///< given by the editor; empty: none
    std::string automatic; ///< the name by the naming rules, without suffixes
    std::string exported;  ///< the name in Final Cut Pro
    bool isPickup = false;
    bool isExcluded = false;
    bool isExcludedFromMulticam = false;
    bool isMOS = false;
    bool canBeMOS = false;

    static NamePart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const NamePart&) const = default;
};
/// The name that the clip would have in Final Cut Pro if the editor named it `name`; empty: if the editor
/// gave it no name.
std::string exportedName(const ImportController& controller, const SyncGroup& group, std::string_view name);
/// The same, with the names of other clips that change because no two clips have the same one.
struct NameChange {
    std::string exported;
    std::size_t others = 0;
    std::string before, now; ///< of the first of them

    static NameChange of(const ImportController& controller, const SyncGroup& group, std::string_view name);
    /// Empty if there are no others.
    std::string othersText() const;
};

/// What the files and the imported lists say about the clip, grouped by subject.
struct MetadataPart {
    struct Source {
        std::string title;
        std::string_view clearCommand; ///< empty: the source cannot be cleared
        std::vector<MetadataFieldGrouping::Group> groups;
    };
    static constexpr std::string_view cameraFile = "Camera file", recording = "Recording"; ///< in `files`
    std::vector<std::pair<std::string, std::string>> files; ///< from the picture's file and the recorder
    std::vector<Source> sources;

    static MetadataPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const MetadataPart& other) const;
};

/// The notes that people wrote about the take, and what its slate says.
struct NotesPart {
    std::vector<std::pair<std::string, std::string>> notes; ///< author, note
    std::string slate;        ///< what was read on the slate; before a search, what to do
    std::string slateProblem; ///< why the latest search may have missed something; empty: it missed nothing
    std::string proposal;     ///< what could be copied from the slate to the clip; empty: nothing
    bool isSearched = false;

    static NotesPart of(const ImportController& controller, const SyncGroup& group);
    bool operator==(const NotesPart&) const = default;
};

} // namespace orvane
