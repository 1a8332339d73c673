#include "OrvaneSyncCLI/Serve/Desk.h"

#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Serve/RPCMethod.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"

#include <algorithm>

namespace orvane::cli::rpc {

namespace {

FileURL readable(const std::string& path, bool isFolder) {
    const platform::MayBlock caller; // waits for the answer, and for nothing else
    if (const std::string why = whyUnreadable(path, isFolder); !why.empty())
        throw Error(ErrorCode::operationFailed, std::string("can't read the ") +
                                                    (isFolder ? "folder" : "file") + " '" + path +
                                                    "': " + why);
    return {platform::files::standardized(path)};
}

} // namespace

void Desk::expectKnown(const Call& call) const {
    const auto expect = [&](const auto& list, std::string_view name, const char* what) {
        if (call.has(name) &&
            std::ranges::none_of(list, [&](const auto& element) { return element.id == call.id(name); }))
            throw Error(ErrorCode::operationFailed, std::string(what) + " not found");
    };
    if (call.has("id")) expect(controller->work().wildTracks(), "id", "Wild track");
    const char* const clip = call.has("of") ? "of" : "groupID";
    if (!call.has(clip)) return;
    const SyncGroup& known = group(call.id(clip));
    expect(known.audioMatches, "matchID", "Audio match");
    expect(known.manualBlockOverrides, "overrideID", "Range override");
}

platform::Task Desk::withUndo(const UndoStep& step, const std::function<platform::Task()>& edit) const {
    auto analysis = platform::Task::ended();
    controller->withUndo(step, [&] { analysis = edit(); });
    return analysis;
}

const SyncGroup& Desk::group(const UUID& id) const {
    if (const SyncGroup* group = controller->work().syncGroups().find(id)) return *group;
    throw GroupNotFound();
}

FileURL readableFile(const std::string& path) { return readable(path, false); }
FileURL readableFolder(const std::string& path) { return readable(path, true); }

} // namespace orvane::cli::rpc
