#pragma once

#include "OrvaneSyncCore/Models/SyncDoubt.h"
#include "Platform/JSON.h"

#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// What a button does against a doubt: a command of the table, and a scan behind it where the cure changes
/// what is matched.
struct CureStep {
    std::string button; ///< what is on it
    std::string_view command;
    platform::JSON arguments;
    bool scansAgain = false;

    bool operator==(const CureStep&) const = default;
};

/// A cure as a window says it, which has no options of the command line.
struct Cure {
    std::string text;
    std::vector<CureStep> steps; ///< what can be done at once; empty where people have to look first
};

/// The same of what a doubt says.
std::string messageInWords(const SyncDoubt& doubt);
/// What it says in the row of its clip, which has room for the beginning.
std::string messageInRow(const SyncDoubt& doubt);
/// Pure; any thread.
Cure cureInWords(const DoubtCure& cure);

} // namespace orvane
