#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orvane {

/// Texts from a report or the metadata service about a clip; the key is the name of the field.
using ImportedTexts = std::map<std::string, std::string>;

template <>
struct JSONForm<std::optional<ImportedTexts>> {
    static void put(JSON& json, std::string_view key, const std::optional<ImportedTexts>& map) {
        if (!map) return;
        JSON members = JSON::object();
        for (const auto& [name, text] : *map) members.set(name, text);
        json.set(key, std::move(members));
    }
    template <class Json>
    static std::optional<ImportedTexts> taken(const Json& object, std::string_view key) {
        const auto value = object.find(key);
        if (!value || value->isNull()) return std::nullopt;
        try {
            return mapFrom(*value);
        } catch (const DecodingError& error) {
            throw DecodingError(std::string(key) + ": " + error.what());
        }
    }

  private:
    static ImportedTexts mapFrom(const JSON& json) {
        const JSON::Object* members = json.members();
        if (members == nullptr) throw DecodingError("expected an object");
        ImportedTexts map;
        for (const auto& [name, text] : *members) map[name] = fromJSON<std::string>(text);
        return map;
    }
    static ImportedTexts mapFrom(const JSONView& json) { return mapFrom(json.value()); }
};

} // namespace orvane
