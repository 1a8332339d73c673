#include "OrvaneSyncCLI/Serve/Desk.h"

#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Serve/RPCMethod.h"
#include "Platform/Files.h"

#include <algorithm>

namespace orvane::cli::rpc {

namespace {

FileURL readable(const std::string& path, bool isFolder) {
    if (path.empty()) throw Error(ErrorCode::invalidParams, "a path is empty");
    if (const std::string why = whyUnreadable(path, isFolder); !why.empty())
        throw Error(ErrorCode::operationFailed, std::string("can't read the ") +
                                                    (isFolder ? "folder" : "file") + " '" + path +
                                                    "': " + why);
    return {platform::files::standardized(path)};
}

} // namespace

bool Desk::knows(const Call& call) const {
    const auto isOneOf = [](const auto& list, const UUID& id) {
        return std::ranges::any_of(list, [&](const auto& element) { return element.id == id; });
    };
    if (call.has("id")) return isOneOf(controller->wildTracks(), call.id("id"));
    const char* const clip = call.has("of") ? "of" : "groupID";
    if (!call.has(clip)) return true;
    const SyncGroup* group = controller->syncGroups().find(call.id(clip));
    if (group == nullptr) return false;
    if (call.has("matchID")) return isOneOf(group->audioMatches, call.id("matchID"));
    return !call.has("overrideID") || isOneOf(group->manualBlockOverrides, call.id("overrideID"));
}

const SyncGroup& Desk::group(const UUID& id) const {
    if (const SyncGroup* group = controller->syncGroups().find(id)) return *group;
    throw GroupNotFound();
}

FileURL readableFile(const std::string& path) { return readable(path, false); }
FileURL readableFolder(const std::string& path) { return readable(path, true); }

} // namespace orvane::cli::rpc
