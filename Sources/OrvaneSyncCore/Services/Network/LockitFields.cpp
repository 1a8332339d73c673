#include "OrvaneSyncCore/Services/Network/LockitFields.h"

#include "OrvaneSyncCore/Models/LockitField.h"
#include "Platform/Text.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace orvane {

namespace {

using Text = std::optional<std::string>;

Text decimal(const std::optional<std::int64_t>& number) {
    return number ? Text(std::to_string(*number)) : std::nullopt;
}

/// The first one if it is present, even if it is blank.
Text firstPresent(Text first, Text otherwise) { return first ? std::move(first) : std::move(otherwise); }

/// Empty if absent.
std::string_view trimmed(const Text& text) {
    return text ? platform::text::trimmed(*text) : std::string_view();
}

template <class Record>
const Record& orEmpty(const std::optional<Record>& record) {
    static const Record empty;
    return record ? *record : empty;
}

} // namespace

Text composedTake(const Text& shot, const Text& take) {
    std::string composed(trimmed(shot));
    const std::string_view number = trimmed(take);
    if (!composed.empty() && !number.empty()) composed += '-';
    composed += number;
    return composed.empty() ? std::nullopt : Text(std::move(composed));
}

LockitFields lockitFields(const LockitClip& clip) {
    const LockitPreformatted& texts = orEmpty(clip.preformatted);
    const LockitClipScene& scene = orEmpty(clip.scene);
    const LockitClipTake& take = orEmpty(clip.take);
    const LockitClipEpisode& episode = orEmpty(clip.episode);
    const LockitCamera& camera = orEmpty(clip.camera);
    const auto& sets = orEmpty(scene.sets);
    LockitFields fields;
    const auto add = [&](LockitField field, const Text& value) {
        if (const std::string_view text = trimmed(value); !text.empty())
            fields.emplace(rawValue(field), text);
    };
    add(LockitField::scene, firstPresent(texts.scene, decimal(scene.number)));
    add(LockitField::take, composedTake(texts.shot, firstPresent(texts.take, decimal(take.number))));
    add(LockitField::shotDescription, orEmpty(clip.slate).comment);
    add(LockitField::takeComment, firstPresent(take.comment, texts.takeComment));
    add(LockitField::intExtDayNight, scene.insideOutside);
    add(LockitField::sceneContent, scene.content);
    add(LockitField::setName, sets.empty() ? std::nullopt : sets.front().name);
    if (texts.tags) add(LockitField::tags, platform::text::joined(*texts.tags, ", "));
    add(LockitField::episode, firstPresent(decimal(episode.number), texts.episode));
    add(LockitField::cameraName, firstPresent(camera.name, camera.label));
    return fields;
}

ClipMatchResponse decodedMatches(std::string_view body, std::size_t names, const std::stop_token& stop) {
    std::unordered_map<std::string, LockitFields> matches;
    const auto add = [&](std::string_view filename, const LockitClip& clip) {
        matches.insert_or_assign(std::string(filename), lockitFields(clip));
    };
    if (!decodeMatches(body, names, add, stop)) return {};
    return {std::move(matches)};
}

} // namespace orvane
