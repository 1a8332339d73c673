#include "OrvaneSyncApp/Controllers/SessionFolderList.h"

#include "Platform/InterfaceThread.h"

#include <algorithm>
#include <utility>

namespace orvane {

const FolderInfo* SessionFolderList::find(std::string_view name) const {
    const auto found = std::ranges::find(folders_, name, &FolderInfo::name);
    return found == folders_.end() ? nullptr : &*found;
}

void SessionFolderList::applyUnwritten(std::vector<FolderInfo>& folders) const {
    for (const auto& change : unwritten_) change(folders);
}

bool SessionFolderList::load() {
    const platform::MayBlock record;
    auto stored = store_.readFolderInfos();
    std::vector<FolderInfo> folders = stored.problem ? folders_ : std::move(*stored.record);
    applyUnwritten(folders);
    sortByName(folders);
    readProblem_ = std::move(stored.problem);
    return std::exchange(folders_, folders) != folders;
}

void SessionFolderList::change(SessionStore::FolderChange change) {
    change(folders_);
    sortByName(folders_);
    unwritten_.push_back(std::move(change));
}

std::optional<std::string> SessionFolderList::write() {
    const platform::MayBlock record;
    try {
        auto changed = store_.changeFolderInfos(
            folders_, [this](std::vector<FolderInfo>& folders) { applyUnwritten(folders); });
        folders_ = std::move(changed.record);
        unwritten_.clear();
        writeFailure_.reset();
        readProblem_.reset();
        return std::move(changed.kept);
    } catch (const platform::FileError& error) {
        writeFailure_ = std::string("folders.json: ") + error.what();
        return std::nullopt;
    }
}

} // namespace orvane
