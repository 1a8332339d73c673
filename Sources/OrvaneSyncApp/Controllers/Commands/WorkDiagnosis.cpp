#include "OrvaneSyncApp/Controllers/Commands/WorkDiagnosis.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <string_view>

namespace orvane {

namespace {

/// The chosen folder that contains the file (the longest, if one contains another), with the name of the
/// folder directly below it, unless the file is directly in the chosen folder.
std::string cardOf(const std::vector<FileURL>& folders, const std::string& file) {
    std::string_view chosen;
    for (const FileURL& folder : folders) {
        const std::string_view path = folder.path;
        const bool holds =
            file.starts_with(path) && (path.ends_with('/') || file.substr(path.size()).starts_with('/'));
        if (holds && path.size() > chosen.size()) chosen = path;
    }
    const std::size_t inside = chosen.size() + (chosen.ends_with('/') ? 0 : 1);
    const std::size_t slash = file.find('/', inside);
    return std::string(slash == std::string::npos ? chosen : std::string_view(file).substr(0, slash));
}

} // namespace

std::vector<CardContents> cardContents(const WorkSnapshot& work) {
    const auto& found = work.discoveryResult;
    if (!found) return {};
    const std::vector<FileURL> folders = work.folders;
    std::map<std::string, CardContents> cards;
    const auto card = [&](const FileURL& file) -> CardContents& {
        std::string path = cardOf(folders, file.path);
        CardContents& contents = cards[path];
        contents.path = std::move(path);
        return contents;
    };
    for (const auto* list : {&found->videoURLs, &found->audioURLs})
        for (const FileURL& file : *list) ++card(file).files;
    for (const FileURL& file : found->unreadMedia)
        ++card(file).unread[platform::text::uppercased(file.lowercasedExtension())];
    for (const FileURL& folder : folders)
        if (std::ranges::none_of(cards,
                                 [&](const auto& entry) { return entry.first.starts_with(folder.path); }))
            cards[folder.path].path = folder.path;
    std::vector<CardContents> result;
    for (auto& [path, contents] : cards) result.push_back(std::move(contents));
    return result;
}

LeftOver leftOver(const WorkSnapshot& work) {
    std::vector<const MediaAsset*> recordings;
    for (const WildTrack& track : work.wildTracks()) recordings.push_back(&track.audio);
    return LeftOver::of(work.groups(), recordings, work.matchRules(), work.doubts());
}

JSON diagnosisJSON(const WorkSnapshot& work) {
    JSON::Array cards, doubts;
    for (const CardContents& contents : cardContents(work)) {
        JSON unread = JSON::object();
        for (const auto& [kind, count] : contents.unread) unread.set(kind, count);
        JSON card;
        card.set("path", contents.path);
        card.set("files", contents.files);
        card.set("unread", std::move(unread));
        cards.push_back(std::move(card));
    }
    for (const CardDoubt& doubt : work.doubts().summary(work.groups())) doubts.push_back(toJSON(doubt));
    JSON json;
    json.set("cards", std::move(cards));
    json.set("counts", countsJSON(work));
    json.set("doubts", std::move(doubts));
    if (const LeftOver left = leftOver(work); !left.isEmpty()) json.set("leftOver", toJSON(left));
    if (const NotCompared others = work.notCompared(); !others.isEmpty())
        json.set("notCompared", toJSON(others));
    return json;
}

} // namespace orvane
