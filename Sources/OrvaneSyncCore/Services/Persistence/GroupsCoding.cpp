#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"

#include "Platform/JSONParts.h"
#include "Platform/JSONView.h"
#include "Platform/MainThread.h"

#include <algorithm>
#include <cmath>
#include <thread>
#include <unordered_map>
#include <unordered_set>

namespace orvane {

namespace {

constexpr std::size_t clipsAPiece = 64; // for one thread at a time

/// Calls `work(i)` for every i below `count`, on several threads if there are many. Throws Stopped.
template <class Work>
void forEachIndex(std::size_t count, const Work& work, const std::stop_token& stop = {}) {
    const std::size_t pieces = (count + clipsAPiece - 1) / clipsAPiece;
    const auto workOnPiece = [&](std::size_t piece) {
        const std::size_t end = std::min(count, (piece + 1) * clipsAPiece);
        for (std::size_t i = piece * clipsAPiece; i < end; ++i) work(i);
    };
    platform::concurrently(pieces, std::thread::hardware_concurrency(), workOnPiece, stop);
}

bool holdsOnlyNumbers(const JSON& json) {
    if (const auto* members = json.members())
        return std::ranges::all_of(*members,
                                   [](const auto& member) { return holdsOnlyNumbers(member.second); });
    if (const auto* elements = json.elements()) return std::ranges::all_of(*elements, holdsOnlyNumbers);
    return std::isfinite(json.number().value_or(0));
}

std::string encodedGroup(const SyncGroup& group) {
    const JSON json = toJSON(group);
    std::string text = json.dump(JSON::Layout::pretty, 1);
    if (holdsOnlyNumbers(json)) return text;
    try {
        fromJSON<SyncGroup>(JSON::parse(text)); // numbers without a JSON form are null, which only optional
                                                // values may be
        return text;
    } catch (const DecodingError& error) {
        throw EncodingError("the clip " + group.clipName +
                            " holds a value that no file can hold: " + error.what());
    }
}

} // namespace

std::string GroupsEncoder::encode(const SyncGroupList& groups) {
    std::vector<Encoded> now(groups.size());
    std::unordered_map<const SyncGroup*, const Encoded*> before;
    std::vector<std::size_t> changed;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        now[i].group = groups.element(i);
        if (i < last_.size() && last_[i].group == now[i].group) {
            now[i].text = last_[i].text;
            continue;
        }
        if (before.empty())
            for (const Encoded& entry : last_) before.emplace(entry.group.get(), &entry);
        const auto found = before.find(now[i].group.get());
        if (found != before.end())
            now[i].text = found->second->text;
        else
            changed.push_back(i);
    }
    forEachIndex(changed.size(), [&](std::size_t i) {
        Encoded& entry = now[changed[i]];
        entry.text = std::make_shared<const std::string>(encodedGroup(*entry.group));
    });
    last_ = std::move(now);

    std::size_t size = 0;
    constexpr std::size_t punctuation = 8;
    for (const Encoded& entry : last_) size += entry.text->size() + punctuation;
    std::string text;
    text.reserve(size + punctuation);
    for (const Encoded& entry : last_) {
        text += text.empty() ? "[\n  " : ",\n  ";
        text += *entry.text;
    }
    text += text.empty() ? "[]\n" : "\n]\n";
    return text;
}

SyncGroupList groupsFromText(const std::string& text, const std::stop_token& stop) {
    const auto records = platform::listParts(text, stop);
    if (!records) throw DecodingError("expected a list of clips");
    std::vector<std::shared_ptr<SyncGroup>> groups(records->size());
    const auto decode = [&](std::size_t i) {
        platform::JSONParser parser;
        try {
            groups[i] = std::make_shared<SyncGroup>(fromJSON<SyncGroup>(parser.parse((*records)[i])));
        } catch (const DecodingError& error) {
            throw DecodingError("clip " + std::to_string(i + 1) + ": " + error.what());
        }
    };
    forEachIndex(records->size(), decode, stop);
    SyncGroupList list;
    std::unordered_set<UUID> ids;
    for (auto& group : groups) {
        if (!ids.insert(group->id).second) group->id = UUID::random();
        list.append(std::move(group));
    }
    return list;
}

} // namespace orvane
