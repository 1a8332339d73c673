#include "OrvaneSyncCLI/Serve/Desk.h"

#include "OrvaneSyncCLI/ScanRun.h"
#include "OrvaneSyncCLI/Serve/RPCMethod.h"
#include "Platform/Files.h"

namespace orvane::cli::rpc {

namespace {

FileURL readable(const std::string& path, bool isFolder) {
    if (const std::string why = whyUnreadable(path, isFolder); !why.empty())
        throw Error(ErrorCode::operationFailed, std::string("can't read the ") +
                                                    (isFolder ? "folder" : "file") + " '" + path +
                                                    "': " + why);
    return {platform::files::standardized(path)};
}

} // namespace

const SyncGroup& Desk::group(const UUID& id) const {
    if (const SyncGroup* group = controller->syncGroups().find(id)) return *group;
    throw GroupNotFound();
}

FileURL readableFile(const std::string& path) { return readable(path, false); }
FileURL readableFolder(const std::string& path) { return readable(path, true); }

} // namespace orvane::cli::rpc
