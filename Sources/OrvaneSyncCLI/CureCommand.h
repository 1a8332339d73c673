#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "OrvaneSyncCLI/Arguments.h"

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace orvane::cli {

/// The calls that apply cures, as a shell reads them: "orvanesync diagnose shoot --days same".
class CureCommands {
  public:
    /// `call`: its words, the program and the name of a command first.
    explicit CureCommands(std::span<const std::string> call);

    /// The call with the options of the first way that the cure names. Where these leave cards out, it writes
    /// a document of its own beside that of the call: "OUT-2.fcpxml", "OUT-3.fcpxml" and so on; a table is
    /// always another one, as people may have filled in the first, and nothing is forced. Nothing where
    /// no options do all of it, as where files have to be put into a folder of their own, for names that no
    /// terminal shows, and for a call that was given before or does nothing else than this one. No option
    /// comes twice, and no setting.
    /// `helps`: asked last, whether the way is worth a call.
    std::optional<std::string> next(
        const DoubtCure& cure, const std::function<bool()>& helps = [] { return true; });
    /// The same where the files, matched as the way says, show that it helps.
    std::optional<std::string> next(const CardDoubt& doubt, const WorkSnapshot& work);

  private:
    std::vector<std::string> start_; ///< program and command
    std::vector<Arguments::Part> parts_;
    std::set<std::string> given_; ///< what they say, without numbers
    int files_ = 1;               ///< documents and tables that are named so far
};

/// Those of all doubts, in their order.
std::vector<std::string> cureCommands(std::span<const std::string> call, const WorkSnapshot& work);

} // namespace orvane::cli
