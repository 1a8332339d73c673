#include "OrvaneSyncCore/Services/Network/LockitRecords.h"

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "Platform/JSONView.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <tuple>
#include <type_traits>
#include <utility>

namespace orvane {

template <>
struct JSONFields<LockitUser> {
    static constexpr std::tuple list{JSONField{"uuid", &LockitUser::uuid},
                                     JSONField{"email", &LockitUser::email},
                                     JSONField{"login", &LockitUser::login}};
};

template <>
struct JSONFields<LockitProject> {
    static constexpr std::tuple list{
        JSONField{"uuid", &LockitProject::uuid}, JSONField{"name", &LockitProject::name},
        JSONField{"isSeries", &LockitProject::isSeries}, JSONField{"isPremium", &LockitProject::isPremium},
        JSONField{"productionCompany", &LockitProject::productionCompany}};
};

template <>
struct JSONFields<LockitDate> {
    static constexpr std::tuple list{JSONField{"year", &LockitDate::year},
                                     JSONField{"month", &LockitDate::month},
                                     JSONField{"day", &LockitDate::day}};
};

template <>
struct JSONFields<LockitShootingDay> {
    static constexpr std::tuple list{
        JSONField{"uuid", &LockitShootingDay::uuid}, JSONField{"day", &LockitShootingDay::day},
        JSONField{"prefix", &LockitShootingDay::prefix}, JSONField{"suffix", &LockitShootingDay::suffix},
        JSONField{"date", &LockitShootingDay::date}};
};

template <>
struct JSONFields<LockitSet> {
    static constexpr std::tuple list{JSONField{"name", &LockitSet::name}};
};

template <>
struct JSONFields<LockitClipScene> {
    static constexpr std::tuple list{JSONField{"number", &LockitClipScene::number},
                                     JSONField{"additional", &LockitClipScene::additional},
                                     JSONField{"content", &LockitClipScene::content},
                                     JSONField{"comment", &LockitClipScene::comment},
                                     JSONField{"dayNight", &LockitClipScene::dayNight},
                                     JSONField{"insideOutside", &LockitClipScene::insideOutside},
                                     JSONField{"sets", &LockitClipScene::sets}};
};

template <>
struct JSONFields<LockitClipSlate> {
    static constexpr std::tuple list{JSONField{"number", &LockitClipSlate::number},
                                     JSONField{"additional", &LockitClipSlate::additional},
                                     JSONField{"comment", &LockitClipSlate::comment}};
};

template <>
struct JSONFields<LockitClipTake> {
    static constexpr std::tuple list{JSONField{"number", &LockitClipTake::number},
                                     JSONField{"comment", &LockitClipTake::comment},
                                     JSONField{"isPickup", &LockitClipTake::isPickup}};
};

template <>
struct JSONFields<LockitClipEpisode> {
    static constexpr std::tuple list{JSONField{"number", &LockitClipEpisode::number},
                                     JSONField{"name", &LockitClipEpisode::name}};
};

template <>
struct JSONFields<LockitCamera> {
    static constexpr std::tuple list{JSONField{"name", &LockitCamera::name},
                                     JSONField{"label", &LockitCamera::label},
                                     JSONField{"model", &LockitCamera::model}};
};

template <>
struct JSONFields<LockitPreformatted> {
    static constexpr std::tuple list{JSONField{"episode", &LockitPreformatted::episode},
                                     JSONField{"scene", &LockitPreformatted::scene},
                                     JSONField{"shot", &LockitPreformatted::shot},
                                     JSONField{"take", &LockitPreformatted::take},
                                     JSONField{"takeComment", &LockitPreformatted::takeComment},
                                     JSONField{"tags", &LockitPreformatted::tags}};
};

template <>
struct JSONFields<LockitClip> {
    static constexpr std::tuple list{
        JSONField{"uuid", &LockitClip::uuid},       JSONField{"clipName", &LockitClip::clipName},
        JSONField{"camRoll", &LockitClip::camRoll}, JSONField{"fileName", &LockitClip::fileName},
        JSONField{"scene", &LockitClip::scene},     JSONField{"slate", &LockitClip::slate},
        JSONField{"take", &LockitClip::take},       JSONField{"episode", &LockitClip::episode},
        JSONField{"camera", &LockitClip::camera},   JSONField{"preformatted", &LockitClip::preformatted}};
};

namespace {

template <class T>
struct IsList : std::false_type {};
template <class T>
struct IsList<std::vector<T>> : std::true_type {};

// `Json` is a tree or a view of the text; a view is used for clips, as there are thousands.

template <class Record, class Json>
Record read(const Json& json);

template <class T, class Json>
T valueOf(const Json& json) {
    if constexpr (IsList<T>::value) {
        const auto elements = json.elements();
        if (!elements) throw DecodingError("expected a list");
        T list;
        list.reserve(elements->size());
        for (const auto& element : *elements) list.push_back(valueOf<typename T::value_type>(element));
        return list;
    } else if constexpr (std::is_arithmetic_v<T> || std::is_same_v<T, std::string>) {
        return fromJSON<T>(json);
    } else {
        return read<T>(json);
    }
}

template <class T, class Json>
T named(const Json& json, std::string_view key) {
    try {
        return valueOf<T>(json);
    } catch (const DecodingError& error) {
        throw DecodingError(std::string(key) + ": " + error.what());
    }
}

/// Reads a member; an optional one may be missing or null, any other is required.
template <class T, class Json>
void take(const Json& members, std::string_view key, T& member) {
    member = named<T>(requiredMember(members, key), key);
}
template <class T, class Json>
void take(const Json& members, std::string_view key, std::optional<T>& member) {
    const auto value = members.find(key);
    if (value && !value->isNull()) member = named<T>(*value, key);
}

template <class Record, class Json>
Record read(const Json& json) {
    if (!json.isObject()) throw DecodingError("expected an object");
    Record record;
    std::apply([&](const auto&... field) { (take(json, field.key, record.*field.member), ...); },
               recordFields<Record>());
    return record;
}

template <class T>
T decoded(std::string_view body) {
    platform::JSONParser parser;
    return valueOf<T>(parser.parse(body));
}

} // namespace

void understand(const std::function<void()>& decode) {
    try {
        decode();
    } catch (const platform::JSONError&) {
        throw DecodingError("LockitNetwork's answer can't be understood: it is no JSON. It may have been cut "
                            "short, or come from the page on which a network asks to sign in to it; check "
                            "the connection and try again");
    } catch (const DecodingError& error) {
        throw DecodingError(
            "LockitNetwork's answer can't be understood (" + std::string(error.what()) +
            "). Try again later; if it happens again, report it to the operator of the service");
    }
}

/// Most of the answer is names with the value null.
bool decodeMatches(std::string_view body, std::size_t names,
                   const std::function<void(std::string_view filename, const LockitClip& clip)>& match,
                   const std::stop_token& stop) {
    platform::JSONParser parser;
    const platform::JSONMembers members(parser.parse(body));
    if (!members.isObject()) throw DecodingError("expected an object");
    if (const auto unmatched = members.find("unmatched"); unmatched && !unmatched->isNull()) {
        const auto clips = unmatched->elements();
        if (!clips) throw DecodingError("unmatched: expected a list");
        for (const auto& clip : *clips) {
            platform::throwIfStopped(stop);
            static_cast<void>(named<LockitClip>(clip, "unmatched"));
        }
    }
    const auto matches = members.find("matches");
    if (!matches || matches->isNull()) return false;
    const platform::JSONMembers clips(*matches);
    if (!clips.isObject()) throw DecodingError("matches: expected an object");
    const auto isMatch = [](const auto& member) { return !member.second.isNull(); };
    if (std::cmp_greater(std::ranges::count_if(clips.all(), isMatch), names))
        throw DecodingError("matches: more clips than were asked for");
    for (const auto& [filename, clip] : clips.all()) {
        platform::throwIfStopped(stop);
        if (!clip.isNull()) match(filename, named<LockitClip>(clip, "matches"));
    }
    return true;
}

/// The form inside the JSON of a shooting day.
static JSON toJSON(const LockitDate& date) { return fieldsToJSON(date); }

std::string LockitShootingDay::label() const {
    return prefix.value_or("") + (day ? std::to_string(*day) : "?") + suffix.value_or("");
}

template <>
LockitUser decodedAnswer<LockitUser>(std::string_view body) {
    return decoded<LockitUser>(body);
}
template <>
std::vector<LockitProject> decodedList<LockitProject>(std::string_view body) {
    return decoded<std::vector<LockitProject>>(body);
}
template <>
std::vector<LockitShootingDay> decodedList<LockitShootingDay>(std::string_view body) {
    return decoded<std::vector<LockitShootingDay>>(body);
}

JSON toJSON(const LockitProject& project) { return fieldsToJSON(project); }

JSON toJSON(const LockitShootingDay& day) {
    JSON json = fieldsToJSON(day);
    json.set("label", day.label());
    return json;
}

} // namespace orvane
