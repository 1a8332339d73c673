#include "OrvaneSyncApp/Controllers/Commands/WorkDiagnosis.h"

#include "OrvaneSyncApp/Controllers/Commands/WorkJSON.h"
#include "OrvaneSyncApp/Controllers/DoubtSource.h"
#include "Platform/Text.h"

#include <algorithm>

namespace orvane {

namespace {

/// A chosen folder by its path as it was given, and by the path that files found in it have; without a slash
/// at the end.
struct ChosenFolder {
    std::string given, real;
};

/// The chosen folder that contains the file (the longest, if one contains another), with the name of the
/// folder directly below it, unless the file is directly in the chosen folder.
std::string cardOf(const std::vector<ChosenFolder>& folders, const std::string& file) {
    const ChosenFolder* chosen = nullptr;
    for (const ChosenFolder& folder : folders) {
        const std::string& path = folder.real;
        const bool holds = file.starts_with(path) && file.substr(path.size()).starts_with('/');
        if (holds && (chosen == nullptr || path.size() > chosen->real.size())) chosen = &folder;
    }
    if (chosen == nullptr) return file.substr(0, file.rfind('/')); // a link in the folder leads elsewhere
    const std::size_t slash = file.find('/', chosen->real.size() + 1);
    return slash == std::string::npos
               ? chosen->given
               : chosen->given + file.substr(chosen->real.size(), slash - chosen->real.size());
}

} // namespace

std::vector<CardContents> cardContents(const WorkSnapshot& work) {
    const auto& found = work.discoveryResult;
    if (!found) return {};
    std::vector<ChosenFolder> folders;
    for (const FileURL& folder : work.folders) {
        folders.push_back({folder.path, realFolder(folder).path});
        if (folders.back().given.ends_with('/')) folders.back().given.pop_back();
    }
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
    for (const ChosenFolder& folder : folders)
        if (std::ranges::none_of(cards,
                                 [&](const auto& entry) { return entry.first.starts_with(folder.given); }))
            cards[folder.given].path = folder.given;
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
