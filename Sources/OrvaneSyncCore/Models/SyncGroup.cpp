#include "OrvaneSyncCore/Models/SyncGroup.h"

#include "OrvaneSyncCore/Models/MediaAssetFields.h"
#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Models/SyncGroupFields.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"

#include <algorithm>
#include <cmath>

namespace orvane {

namespace {

struct StatusRow {
    MatchStatus::Kind kind;
    std::string_view name;
    std::string_view label;
    bool hasCount;
};

constexpr std::array<StatusRow, 6> statusRows{{
    {MatchStatus::Kind::matched, "matched", "Matched", false},
    {MatchStatus::Kind::ambiguous, "ambiguous", "Ambiguous", true},
    {MatchStatus::Kind::splitRecording, "splitRecording", "Split Recording", true},
    {MatchStatus::Kind::unmatched, "unmatched", "No Match", false},
    {MatchStatus::Kind::mos, "mos", "MOS (no audio)", false},
    {MatchStatus::Kind::manual, "manual", "Manual", false},
}};

const StatusRow& row(MatchStatus::Kind kind) { return rowOf(statusRows, kind); }

struct MethodRow {
    std::string_view name;
    std::string_view label;
    std::string_view description;
};

constexpr std::array<MethodRow, 3> methodRows{{
    {"timecode", "Timecode", "Align using embedded timecode in video and audio files"},
    {"clap", "Clap-based", "Detect the clap point in both files and align"},
    {"manual", "Manual", "Use the sync anchor + arrow keys to set offset manually"},
}};

const MethodRow& row(SyncMethod method) { return rowOf(methodRows, method); }

} // namespace

std::string MatchStatus::label() const {
    const StatusRow& r = row(kind);
    return r.hasCount ? std::string(r.label) + " (" + std::to_string(count) + ")" : std::string(r.label);
}

std::string_view MatchStatus::name() const { return row(kind).name; }
bool MatchStatus::hasCount() const { return row(kind).hasCount; }

std::string_view label(SyncMethod method) { return row(method).label; }
std::string_view description(SyncMethod method) { return row(method).description; }

AudioMatch::AudioMatch(Shared<MediaAsset> asset, double offset, double overlap)
    : AudioMatch(UUID::random(), std::move(asset), offset, overlap) {}

AudioMatch::AudioMatch(UUID identity, Shared<MediaAsset> asset, double offset, double overlap)
    : id(identity), audio(std::move(asset)), syncOffsetSeconds(offset), overlapDurationSeconds(overlap) {}

SyncGroup::SyncGroup(MediaAsset asset, std::vector<AudioMatch> matches, MatchStatus status,
                     std::optional<std::string> name)
    : SyncGroup(UUID::random(), std::move(asset), std::move(matches), status, std::move(name)) {}

SyncGroup::SyncGroup(UUID identity, MediaAsset asset, std::vector<AudioMatch> matches, MatchStatus status,
                     std::optional<std::string> name)
    : id(identity), video(std::move(asset)), audioMatches(std::move(matches)), matchStatus(status),
      clipName(name ? std::move(*name) : video.filename) {}

std::optional<double> SyncGroup::resolvedClapPointSeconds() const {
    if (pictureClapAnchorSeconds) return pictureClapAnchorSeconds;
    if (!audioAnchorOffsetInAudioSeconds) return std::nullopt;
    const double base = audioMatches.empty() ? 0.0 : audioMatches.front().syncOffsetSeconds;
    return base + manualAudioOffsetSeconds + *audioAnchorOffsetInAudioSeconds;
}

JSON toJSON(const MatchStatus& status) {
    JSON payload = JSON::object();
    if (row(status.kind).hasCount) payload.set("count", status.count);
    return caseObject(row(status.kind).name, std::move(payload));
}

template <>
MatchStatus fromJSON<MatchStatus>(const JSON& json) {
    const auto& [name, payload] = singleCase(json);
    for (const StatusRow& r : statusRows)
        if (r.name == name) return {r.kind, r.hasCount ? required<int>(payload, "count") : 0};
    throw DecodingError("unknown case \"" + name + "\"");
}

JSON toJSON(SyncMethod method) { return row(method).name; }

template <>
SyncMethod fromJSON<SyncMethod>(const JSON& json) {
    const auto text = fromJSON<std::string>(json);
    for (const SyncMethod method : allSyncMethods)
        if (row(method).name == text) return method;
    throw DecodingError("unknown case \"" + text + "\"");
}

JSON toJSON(const AudioMatch& record) { return fieldsToJSON(record); }

template <>
AudioMatch fromJSON<AudioMatch>(const JSON& json) {
    return madeFromJSON<AudioMatch>(json);
}

template <>
AudioMatch fromJSON<AudioMatch>(const JSONView& json) {
    return madeFromJSON<AudioMatch>(json);
}

JSON toJSON(const BlockOverride& record) { return fieldsToJSON(record); }

template <>
BlockOverride fromJSON<BlockOverride>(const JSON& json) {
    return madeFromJSON<BlockOverride>(json);
}

JSON toJSON(const SyncGroup& record) { return fieldsToJSON(record); }

namespace {

bool isSame(const AudioMatch& a, const AudioMatch& b) {
    return *a.audio == *b.audio && a.syncOffsetSeconds == b.syncOffsetSeconds &&
           a.overlapDurationSeconds == b.overlapDurationSeconds;
}

/// `counts` says whether a field is compared.
template <class Record, class Counts>
bool haveSameFields(const Record& a, const Record& b, const Counts& counts) {
    const auto isSameValue = []<class Value>(const Value& one, const Value& other) {
        if constexpr (std::is_same_v<Value, MediaAsset>)
            return haveSameFields(one, other, [](const auto&) { return true; });
        else if constexpr (std::is_same_v<Value, std::vector<AudioMatch>>)
            return std::ranges::equal(one, other, isSame);
        else
            return one == other;
    };
    const auto isSameField = [&](const auto& field) {
        return !counts(field) || isSameValue(a.*field.member, b.*field.member);
    };
    return std::apply([&](const auto&... field) { return (isSameField(field) && ...); },
                      recordFields<Record>());
}

} // namespace

const SyncGroup& undecidedClip() {
    static const SyncGroup clip(UUID(), MediaAsset(UUID(), FileURL(), AssetKind::video), {},
                                MatchStatus::unmatched());
    return clip;
}

bool haveSameContents(const SyncGroup& a, const SyncGroup& b) {
    return haveSameFields(a, b, [](const auto&) { return true; });
}

bool haveSameDoubtInputs(const SyncGroup& a, const SyncGroup& b) {
    return haveSameFields(a, b, [](const auto& field) { return field.concerns(Concerns::doubts); });
}

bool haveSameNameInputs(const SyncGroup& a, const SyncGroup& b) {
    return haveSameFields(a, b, [](const auto& field) { return field.concerns(Concerns::names); });
}

bool holdsDecisions(const SyncGroup& group) {
    return group.audioAnchorOffsetInAudioSeconds || holdsDecisionsBesideClap(group);
}

bool holdsDecisionsBesideClap(const SyncGroup& group) {
    const auto isDecided = [&]<class Field>(const Field& field) {
        if constexpr (Field::source != FieldSource::decision)
            return false;
        else if constexpr (std::is_same_v<decltype(field.member), MatchStatus SyncGroup::*>)
            return group.*field.member == MatchStatus::manual();
        else if constexpr (std::is_same_v<decltype(field.member), SyncMethod SyncGroup::*>)
            // For an off-speed clip the matcher sets the clap itself, so this is not a decision.
            return isSet(group, field.member) &&
                   !(group.*field.member == SyncMethod::clap && group.video.isOffspeed());
        else
            return isSet(group, field.member);
    };
    return std::apply([&](const auto&... field) { return (isDecided(field) || ...); },
                      recordFields<SyncGroup>());
}

template <>
SyncGroup fromJSON<SyncGroup>(const JSON& json) {
    return filledFromJSON(json, undecidedClip());
}

template <>
SyncGroup fromJSON<SyncGroup>(const JSONView& json) {
    return filledFromJSON(JSONMembers(json), undecidedClip());
}

bool isMovedSinceLock(const SyncGroup& group) {
    constexpr double same = 0.0001; // seconds; no document tells less
    return group.isLocked && group.lockedAtManualOffset &&
           std::abs(*group.lockedAtManualOffset - group.manualAudioOffsetSeconds) > same;
}

} // namespace orvane
