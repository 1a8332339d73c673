#pragma once

#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/OrvaneSyncProject.h"
#include "OrvaneSyncCore/Utilities/Base64.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Forms of single fields of projects and sessions, for `fieldAs`.
namespace orvane {

/// A path in the form of `FileURL::pathText`.
template <class T>
struct PathForm;

template <>
struct PathForm<FileURL> {
    static void put(JSON& json, std::string_view key, const FileURL& path) { json.set(key, path.pathText()); }
    static FileURL from(const std::string& text, std::string_view key) {
        auto url = FileURL::fromPathText(text);
        if (!url) throw DecodingError(std::string(key) + ": expected a path");
        return std::move(*url);
    }
    static FileURL taken(const JSON& json, std::string_view key) {
        return from(required<std::string>(json, key), key);
    }
};

template <>
struct PathForm<std::optional<FileURL>> {
    static void put(JSON& json, std::string_view key, const std::optional<FileURL>& path) {
        if (path) json.set(key, path->pathText());
    }
    static std::optional<FileURL> taken(const JSON& json, std::string_view key) {
        return optionalPath(json, key);
    }
};

template <>
struct PathForm<std::vector<FileURL>> {
    static void put(JSON& json, std::string_view key, const std::vector<FileURL>& paths) {
        JSON::Array texts;
        for (const FileURL& path : paths) texts.emplace_back(path.pathText());
        json.set(key, std::move(texts));
    }
    static std::vector<FileURL> taken(const JSON& json, std::string_view key) {
        std::vector<FileURL> paths;
        for (const std::string& text : requiredArray<std::string>(json, key))
            paths.push_back(PathForm<FileURL>::from(text, key));
        return paths;
    }
};

/// Bytes as base64 text.
template <class T>
struct BytesForm;

template <>
struct BytesForm<std::optional<std::string>> {
    static void put(JSON& json, std::string_view key, const std::optional<std::string>& bytes) {
        if (bytes) json.set(key, base64::encoded(*bytes));
    }
    static std::optional<std::string> taken(const JSON& json, std::string_view key) {
        return optionalBytes(json, key);
    }
};

/// Values that write their own keys into a record, and none if they are empty.
template <class T>
struct OwnKeysForm;

template <>
struct OwnKeysForm<ScanScope> {
    static void put(JSON& json, std::string_view /*key*/, const ScanScope& scope) {
        setScanScope(json, scope);
    }
    static ScanScope taken(const JSON& json, std::string_view /*key*/) { return scanScopeFrom(json); }
};

template <>
struct OwnKeysForm<SourceCorrections> {
    static void put(JSON& json, std::string_view /*key*/, const SourceCorrections& corrections) {
        setSourceCorrections(json, corrections);
    }
    static SourceCorrections taken(const JSON& json, std::string_view /*key*/) {
        return sourceCorrectionsFrom(json);
    }
};

} // namespace orvane
