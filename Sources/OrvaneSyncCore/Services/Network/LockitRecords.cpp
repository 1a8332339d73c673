#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include "Platform/JSONView.h"

#include <type_traits>

namespace orvane {

namespace {

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};

template <class Record>
Record read(const JSON& json);

/// What every record is read from.
const JSON& membersOf(const JSON& json) {
    if (!json.isObject()) throw DecodingError("expected an object");
    return json;
}

template <class T>
T valueOf(const JSON& json) {
    if constexpr (IsList<T>::value) {
        const auto* elements = json.elements();
        if (!elements) throw DecodingError("expected a list");
        T list;
        list.reserve(elements->size());
        for (const JSON& element : *elements) list.push_back(valueOf<typename T::value_type>(element));
        return list;
    } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
        return fromJSON<T>(json);
    } else {
        return read<T>(json);
    }
}

template <class T>
T named(const JSON& json, std::string_view key) {
    try {
        return valueOf<T>(json);
    } catch (const DecodingError& error) {
        throw DecodingError(std::string(key) + ": " + error.what());
    }
}

/// Fills a member: one that is optional may be missing or null, any other has to be there.
template <class T>
void take(const JSON& members, std::string_view key, T& member) {
    member = named<T>(requiredMember(members, key), key);
}
template <class T>
void take(const JSON& members, std::string_view key, std::optional<T>& member) {
    const JSON* value = members.find(key);
    if (value != nullptr && !value->isNull()) member = named<T>(*value, key);
}

template <>
LockitUser read<LockitUser>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitUser user;
    take(members, "uuid", user.uuid);
    take(members, "email", user.email);
    take(members, "login", user.login);
    return user;
}

template <>
LockitProject read<LockitProject>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitProject project;
    take(members, "uuid", project.uuid);
    take(members, "name", project.name);
    take(members, "isSeries", project.isSeries);
    take(members, "isPremium", project.isPremium);
    take(members, "productionCompany", project.productionCompany);
    return project;
}

template <>
LockitDate read<LockitDate>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitDate date;
    take(members, "year", date.year);
    take(members, "month", date.month);
    take(members, "day", date.day);
    return date;
}

template <>
LockitShootingDay read<LockitShootingDay>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitShootingDay day;
    take(members, "uuid", day.uuid);
    take(members, "day", day.day);
    take(members, "prefix", day.prefix);
    take(members, "suffix", day.suffix);
    take(members, "date", day.date);
    return day;
}

template <>
LockitSet read<LockitSet>(const JSON& json) {
    LockitSet set;
    take(membersOf(json), "name", set.name);
    return set;
}

template <>
LockitClipScene read<LockitClipScene>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitClipScene scene;
    take(members, "number", scene.number);
    take(members, "additional", scene.additional);
    take(members, "content", scene.content);
    take(members, "comment", scene.comment);
    take(members, "dayNight", scene.dayNight);
    take(members, "insideOutside", scene.insideOutside);
    take(members, "sets", scene.sets);
    return scene;
}

template <>
LockitClipSlate read<LockitClipSlate>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitClipSlate slate;
    take(members, "number", slate.number);
    take(members, "additional", slate.additional);
    take(members, "comment", slate.comment);
    return slate;
}

template <>
LockitClipTake read<LockitClipTake>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitClipTake result;
    take(members, "number", result.number);
    take(members, "comment", result.comment);
    take(members, "isPickup", result.isPickup);
    return result;
}

template <>
LockitClipEpisode read<LockitClipEpisode>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitClipEpisode episode;
    take(members, "number", episode.number);
    take(members, "name", episode.name);
    return episode;
}

template <>
LockitCamera read<LockitCamera>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitCamera camera;
    take(members, "name", camera.name);
    take(members, "label", camera.label);
    take(members, "model", camera.model);
    return camera;
}

template <>
LockitPreformatted read<LockitPreformatted>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitPreformatted texts;
    take(members, "episode", texts.episode);
    take(members, "scene", texts.scene);
    take(members, "shot", texts.shot);
    take(members, "take", texts.take);
    take(members, "takeComment", texts.takeComment);
    take(members, "tags", texts.tags);
    return texts;
}

template <>
LockitClip read<LockitClip>(const JSON& json) {
    const JSON& members = membersOf(json);
    LockitClip clip;
    take(members, "uuid", clip.uuid);
    take(members, "clipName", clip.clipName);
    take(members, "camRoll", clip.camRoll);
    take(members, "fileName", clip.fileName);
    take(members, "scene", clip.scene);
    take(members, "slate", clip.slate);
    take(members, "take", clip.take);
    take(members, "episode", clip.episode);
    take(members, "camera", clip.camera);
    take(members, "preformatted", clip.preformatted);
    return clip;
}

/// Most of the answer is names with null behind them, of which no tree is made.
ClipMatchResponse matchResponse(std::string_view body) {
    platform::JSONParser parser;
    const platform::JSONMembers members(parser.parse(body));
    if (!members.isObject()) throw DecodingError("expected an object");
    ClipMatchResponse response;
    if (const auto unmatched = members.find("unmatched"); unmatched && !unmatched->isNull())
        response.unmatched = named<std::vector<LockitClip>>(unmatched->value(), "unmatched");
    const auto matches = members.find("matches");
    if (!matches || matches->isNull()) return response;
    const platform::JSONMembers clips(*matches);
    if (!clips.isObject()) throw DecodingError("matches: expected an object");
    response.matches.emplace();
    for (const auto& [filename, clip] : clips.all())
        if (!clip.isNull())
            response.matches->insert_or_assign(std::string(filename),
                                               named<LockitClip>(clip.value(), "matches"));
    return response;
}

template <class T>
T decoded(std::string_view body) {
    return valueOf<T>(JSON::parse(body));
}

} // namespace

std::string LockitShootingDay::label() const {
    return prefix.value_or("") + (day ? std::to_string(*day) : "?") + suffix.value_or("");
}

template <>
LockitUser decodedAnswer<LockitUser>(std::string_view body) {
    return decoded<LockitUser>(body);
}
template <>
ClipMatchResponse decodedAnswer<ClipMatchResponse>(std::string_view body) {
    return matchResponse(body);
}
template <>
std::vector<LockitProject> decodedList<LockitProject>(std::string_view body) {
    return decoded<std::vector<LockitProject>>(body);
}
template <>
std::vector<LockitShootingDay> decodedList<LockitShootingDay>(std::string_view body) {
    return decoded<std::vector<LockitShootingDay>>(body);
}

JSON toJSON(const LockitProject& project) {
    JSON json;
    json.set("uuid", project.uuid);
    json.set("name", project.name);
    json.setIfPresent("isSeries", project.isSeries);
    json.setIfPresent("isPremium", project.isPremium);
    json.setIfPresent("productionCompany", project.productionCompany);
    return json;
}

JSON toJSON(const LockitShootingDay& day) {
    JSON json;
    json.set("uuid", day.uuid);
    json.set("label", day.label());
    json.setIfPresent("day", day.day);
    json.setIfPresent("prefix", day.prefix);
    json.setIfPresent("suffix", day.suffix);
    if (day.date) {
        JSON date;
        date.set("year", day.date->year);
        date.set("month", day.date->month);
        date.set("day", day.date->day);
        json.set("date", std::move(date));
    }
    return json;
}

} // namespace orvane
