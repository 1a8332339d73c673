#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "OrvaneSyncCore/Models/SyncDoubt.h"
#include "Platform/JSON.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What a button does to resolve a doubt: a command of the table, followed by a scan if the cure changes what
/// is matched.
struct CureStep {
    std::string button; ///< its text
    std::string_view command;
    platform::JSON arguments;
    bool scansAgain = false;

    bool operator==(const CureStep&) const = default;
};

/// A cure in the words of a window, without options of the command line.
struct Cure {
    std::string text;
    std::vector<CureStep> steps; ///< what can be done at once; empty if the user has to check something first
};

/// The message of a doubt in the words of a window.
std::string messageInWords(const SyncDoubt& doubt);
/// The message for the row of its clip, which has room only for its beginning; folders without their paths.
std::string messageInRow(const SyncDoubt& doubt);
/// Names each folder that is given by its path in quotation marks by its last part only.
std::string withFolderNames(std::string message);
/// `withoutSound`: the clips that a step gives the sound of an offset that is right for the clips in doubt
/// only; empty: there is no such step. Pure function; any thread.
Cure cureInWords(const DoubtCure& cure, const std::vector<UUID>& withoutSound = {});
/// Those of the clips in doubt that such a step changes; empty unless they are most of them.
std::vector<UUID> clipsForOffset(const SyncGroupList& groups, const std::vector<UUID>& inDoubt);
/// A cure that nothing but a decision for each of the clips carries out becomes a step that decides for those
/// that have a suggestion. Interface thread.
void offerSuggestions(Cure& cure, const ImportController& controller, const std::vector<UUID>& groupIDs);

} // namespace orvane
