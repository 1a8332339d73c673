#include "OrvaneSyncApp/Controllers/Commands/UnsavedWork.h"

#include <algorithm>
#include <utility>

namespace orvane::commands {

namespace {

platform::Task expectWritten(std::shared_ptr<SessionManager> sessions, UUID session, platform::Task writing) {
    co_await writing;
    const auto failure = sessions->saveError(session);
    if (!failure) co_return;
    const SessionInfo* info = sessions->session(session);
    throw UnsavedWork(info == nullptr ? session.text() : info->name, *failure);
}

} // namespace

UnsavedWork::UnsavedWork(std::string session, std::string failure)
    : Error(Refusal::failed, "the session '" + session +
                                 "' stays open, because its last change could not be "
                                 "saved: " +
                                 failure + "; leaveUnsaved: true leaves it"),
      session_(std::move(session)), failure_(std::move(failure)) {}

bool leavesUnsaved(const Call& call) {
    return call.has(leaveUnsaved.name) && call.boolean(leaveUnsaved.name);
}

platform::Task saveBeforeLeaving(CommandContext& context, const Call& call) {
    return leavesUnsaved(call) ? platform::Task::ended() : saveBeforeLeaving(context);
}

platform::Task saveBeforeLeaving(CommandContext& context) {
    if (!context.sessions || !context.sessions->currentSessionId()) return platform::Task::ended();
    const UUID session = *context.sessions->currentSessionId();
    platform::Task writing = context.sessions->flush();
    // Without unwritten changes the caller goes on at once.
    if (std::ranges::count(context.sessions->unsaved(), session, &SessionManager::Unsaved::id) == 0)
        return platform::Task::ended();
    return expectWritten(context.sessions, session, std::move(writing));
}

} // namespace orvane::commands
