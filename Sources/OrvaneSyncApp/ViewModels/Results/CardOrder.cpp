#include "OrvaneSyncApp/ViewModels/Results/CardOrder.h"

#include "OrvaneSyncCore/Services/Ingest/FileDiscoveryService.h"
#include "Platform/InterfaceThread.h"

#include <algorithm>

namespace orvane {

std::vector<std::string> cardsByContents(std::vector<std::string> folders) {
    platform::assertMayBlock("listing cards");
    enum class Holds { pictures, soundAlone, nothing };
    std::vector<std::pair<std::string, Holds>> cards;
    for (std::string& folder : folders) {
        const DiscoveryResult found = FileDiscoveryService().discover(folder);
        cards.emplace_back(std::move(folder), found.videoCount() > 0   ? Holds::pictures
                                              : found.totalCount() > 0 ? Holds::soundAlone
                                                                       : Holds::nothing);
    }
    auto next = cards.begin();
    for (const Holds wanted : {Holds::pictures, Holds::soundAlone}) {
        const auto first =
            std::find_if(next, cards.end(), [&](const auto& one) { return one.second == wanted; });
        if (first == cards.end()) continue;
        std::rotate(next, first, first + 1);
        ++next;
    }
    std::vector<std::string> ordered;
    for (auto& [folder, holds] : cards) ordered.push_back(std::move(folder));
    return ordered;
}

} // namespace orvane
