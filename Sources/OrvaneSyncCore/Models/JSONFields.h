#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"
#include "OrvaneSyncCore/Models/RecordMembers.h"
#include "OrvaneSyncCore/Models/Shared.h"

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace orvane {

/// The JSON form of a member of this type. Specialised for members with a form of their own.
template <class T>
struct JSONForm;

/// One field of a record's JSON form: its key and its member. A field is required, unless its member is
/// optional or it is `addedLater`.
template <class Record, class Value, class FormOfField = JSONForm<Value>>
struct JSONField {
    using Form = FormOfField;
    std::string_view key;
    Value Record::*member;
};
/// Needed by compilers without class template argument deduction for aggregates (clang before 17).
template <class Record, class Value>
JSONField(const char*, Value Record::*) -> JSONField<Record, Value>;

/// A field whose form differs from that of its type: `fieldAs<PathForm>("folder", &Record::folder)`.
template <template <class> class Form, class Record, class Value>
constexpr JSONField<Record, Value, Form<Value>> fieldAs(std::string_view key, Value Record::*member) {
    return {key, member};
}

template <class Field>
struct AddedLater : Field {
    static constexpr bool mayBeAbsent = true;
};
/// A field that the first version of its record did not have: if it is absent, the value of a new record is
/// used. `addedLater(JSONField{"isPickup", &Record::isPickup})`. Users have files that were written before a
/// field was added, so each new field is `addedLater` or has an optional member.
template <class Field>
constexpr AddedLater<Field> addedLater(Field field) {
    return {field};
}

/// The JSON form of a record, as one list of its fields in their order, for reading and writing. Specialised
/// where the record's form is defined:
///
///     template <> struct JSONFields<IXMLTrack> {
///         static constexpr std::tuple list{JSONField{"channelIndex", &IXMLTrack::channelIndex}, ...};
///     };
///
/// Members that the form leaves out are listed in a second tuple, `leftOut{&IXMLTrack::...}`.
template <class Record>
struct JSONFields;

/// The list of a record's fields; all code reads it through this. Does not compile if a member is neither in
/// it nor in `leftOut`, is in both, or is in either twice.
template <class Record>
constexpr const auto& recordFields() {
    using Fields = JSONFields<Record>;
    constexpr auto members = [] {
        const auto listed =
            std::apply([](const auto&... field) { return std::tuple{field.member...}; }, Fields::list);
        if constexpr (requires { Fields::leftOut; })
            return std::tuple_cat(listed, Fields::leftOut);
        else
            return listed;
    }();
    static_assert(std::apply([](auto... member) { return areDistinct(member...); }, members),
                  "two lines of this record name the same member");
    using OneLineForEachMember =
        decltype(nameMembers<std::tuple_size_v<decltype(members)>>(std::declval<Record&>()));
    static_assert(std::is_void_v<OneLineForEachMember>);
    return Fields::list;
}

template <class T>
struct JSONForm {
    static void put(JSON& json, std::string_view key, const T& value) {
        constexpr bool isPlain =
            (std::is_arithmetic_v<T> && !std::is_same_v<T, float>) || std::is_same_v<T, std::string>;
        if constexpr (isPlain)
            json.set(key, value);
        else
            json.set(key, toJSON(value));
    }
    template <class Json>
    static T taken(const Json& json, std::string_view key) {
        return required<T>(json, key);
    }
};

template <class T>
struct JSONForm<std::optional<T>> {
    static void put(JSON& json, std::string_view key, const std::optional<T>& value) {
        if (value) JSONForm<T>::put(json, key, *value);
    }
    template <class Json>
    static std::optional<T> taken(const Json& json, std::string_view key) {
        return optional<T>(json, key);
    }
};

template <class T>
struct JSONForm<std::vector<T>> {
    static void put(JSON& json, std::string_view key, const std::vector<T>& value) {
        json.set(key, toJSONArray(value));
    }
    template <class Json>
    static std::vector<T> taken(const Json& json, std::string_view key) {
        return requiredArray<T>(json, key);
    }
};

template <class T>
struct JSONForm<Shared<T>> {
    static void put(JSON& json, std::string_view key, const Shared<T>& value) {
        JSONForm<T>::put(json, key, *value);
    }
    template <class Json>
    static Shared<T> taken(const Json& json, std::string_view key) {
        return required<T>(json, key);
    }
};

template <>
struct JSONForm<std::set<int>> {
    static void put(JSON& json, std::string_view key, const std::set<int>& value) {
        json.set(key, toJSON(value));
    }
    template <class Json>
    static std::set<int> taken(const Json& json, std::string_view key) {
        return requiredSet(json, key);
    }
};

template <class Record>
JSON fieldsToJSON(const Record& record) {
    JSON json = JSON::object();
    const auto put = [&]<class Field>(const Field& field) {
        Field::Form::put(json, field.key, record.*field.member);
    };
    std::apply([&](const auto&... field) { (put(field), ...); }, recordFields<Record>());
    return json;
}

template <class Field>
concept MayBeAbsent = Field::mayBeAbsent;
template <class Json>
bool isAbsent(const Json& json, std::string_view key) {
    const auto value = json.find(key);
    return !value || value->isNull();
}
template <class Record, MayBeAbsent Field>
auto valueOfNew(const Field& field) {
    return Record{}.*field.member;
}

/// Constructs a record from its fields in their order.
template <class Record, class Json>
Record madeFromJSON(const Json& json) {
    const auto taken = [&]<class Field>(const Field& field) {
        if constexpr (MayBeAbsent<Field>)
            if (isAbsent(json, field.key)) return valueOfNew<Record>(field);
        return Field::Form::taken(json, field.key);
    };
    return std::apply([&](const auto&... field) { return Record{taken(field)...}; }, recordFields<Record>());
}

/// Constructs an empty record and reads the fields into it.
template <class Record, class Json>
Record filledFromJSON(const Json& json, Record record) {
    const auto take = [&]<class Field>(const Field& field) {
        if constexpr (MayBeAbsent<Field>)
            if (isAbsent(json, field.key)) return;
        record.*field.member = Field::Form::taken(json, field.key);
    };
    std::apply([&](const auto&... field) { (take(field), ...); }, recordFields<Record>());
    return record;
}

} // namespace orvane
