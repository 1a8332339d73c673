#pragma once

#include "OrvaneSyncApp/Controllers/Commands/CommandContext.h"

#include <string>

namespace orvane::commands {

/// Thrown by a command that would replace or close the open work while the disk refuses its last change.
class UnsavedWork : public Error {
  public:
    UnsavedWork(std::string session, std::string failure);
    const std::string& session() const { return session_; } ///< its name
    const std::string& failure() const { return failure_; } ///< as `SessionManager::saveError`

  private:
    std::string session_, failure_;
};

/// The parameter of such a command by which it runs all the same. The changes stay in memory, and are tried
/// again.
inline const Parameter leaveUnsaved{"leaveUnsaved", Parameter::Kind::boolean, true};
bool leavesUnsaved(const Call& call);

/// To be awaited before the open work is replaced or closed: writes the changes of its session. Throws
/// UnsavedWork if that fails, unless the call has `leaveUnsaved`.
platform::Task saveBeforeLeaving(CommandContext& context, const Call& call);
/// The same without a call.
platform::Task saveBeforeLeaving(CommandContext& context);

} // namespace orvane::commands
