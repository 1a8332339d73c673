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

/// The calls that apply cures, in the syntax of a shell: "orvanesync diagnose shoot --days same".
class CureCommands {
  public:
    /// `call`: its words; the first two are the program and the name of a command.
    explicit CureCommands(std::span<const std::string> call);

    /// The call with the options of the first way that the cure names. If these leave cards out, the call
    /// writes another document beside its own: "OUT-2.fcpxml", "OUT-3.fcpxml" and so on; a table is always a
    /// new one, as a person may have filled in the first, and no file is overwritten by force. Returns
    /// nothing if options cannot do all of it (such as if files have to be put into a folder of their own),
    /// for names that a terminal cannot show, and for a call that was returned before or does the same as
    /// this one. No option and no setting is repeated. `helps`: checked last, decides whether the way is
    /// worth a call.
    std::optional<std::string> next(
        const DoubtCure& cure, const std::function<bool()>& helps = [] { return true; });
    /// The same, if matching the files in this way shows that it helps.
    std::optional<std::string> next(const CardDoubt& doubt, const WorkSnapshot& work);

  private:
    std::vector<std::string> start_; ///< program and command
    std::vector<Arguments::Part> parts_;
    std::set<std::string> given_; ///< the meanings of the returned calls, without numbers
    int files_ = 1;               ///< documents and tables that have been named so far
};

/// The calls for all doubts, in their order.
std::vector<std::string> cureCommands(std::span<const std::string> call, const WorkSnapshot& work);

} // namespace orvane::cli
