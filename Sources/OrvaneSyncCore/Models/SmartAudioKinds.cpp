#include "OrvaneSyncCore/Models/SmartAudioKinds.h"

#include "OrvaneSyncCore/Models/Settings.h"

#include <cmath>

namespace orvane {

namespace {

struct CharacterRow {
    std::string_view displayName;
    double minBlockSeconds;
};
constexpr std::array<CharacterRow, 4> characterRows{{
    {"Interview / Talking Head", 4.0},
    {"Standard Dialog", 2.0},
    {"Fast Dialog / Comedy", 1.0},
    {"Action / Atmo-heavy", 2.0},
}};

// Seconds of an adaptive block as long as nothing is known of the material.
constexpr double undetectedBlockSeconds = 2.0;

struct BlockModeRow {
    std::string_view badge;
    double seconds;
    std::string_view menuLabel;
};
constexpr std::array<BlockModeRow, 4> blockModeRows{{
    {"Auto", undetectedBlockSeconds, "Auto"},
    {"Fine", 1.0, "Fine — 1 s · fast comedy"},
    {"Standard", 2.0, "Standard — 2 s · drama"},
    {"Coarse", 4.0, "Coarse — 4 s · interview"},
}};

constexpr std::array<std::string_view, 4> bestChannelDescriptions{
    "All tracks active — no automatic routing", "App picks one best track for the entire clip",
    "Volume keyframes fade between tracks where each is cleanest",
    "Choose per-clip yourself in the detail view"};

struct SmartAudioModeRow {
    std::string_view description;
    std::string_view sectionText;
};
constexpr std::array<SmartAudioModeRow, 5> smartAudioModeRows{{
    {"No audio adjustments", "No audio adjustments applied"},
    {"Best-source routing, light correction", "Best-source routing, light Voice Isolation on noisy tracks"},
    {"Voice Isolation + Loudness targeting", "Voice Isolation + Loudness targeting (-23 LUFS)"},
    {"Aggressive background reduction", "Aggressive background reduction + full enhancement"},
    {"User-defined values", "Use the sliders below to define your own values"},
}};

} // namespace

std::string_view displayName(MaterialCharacter character) {
    return rowOf(characterRows, character).displayName;
}
double minBlockSeconds(MaterialCharacter character) {
    return rowOf(characterRows, character).minBlockSeconds;
}

double blockSeconds(BlockMode mode, std::optional<MaterialCharacter> detected) {
    if (mode == BlockMode::adaptive && detected) return minBlockSeconds(*detected);
    return rowOf(blockModeRows, mode).seconds;
}

std::string menuLabel(BlockMode mode, std::optional<MaterialCharacter> detected) {
    if (mode == BlockMode::adaptive && detected)
        return "Auto (currently: " + std::string(displayName(*detected)) + ")";
    return std::string(rowOf(blockModeRows, mode).menuLabel);
}

std::string badgeLabel(BlockMode mode, std::optional<MaterialCharacter> detected) {
    const bool named = mode == BlockMode::adaptive && detected;
    const std::string_view name = named ? displayName(*detected) : rowOf(blockModeRows, mode).badge;
    const auto seconds = std::lround(blockSeconds(mode, detected));
    return std::string(name) + " · " + std::to_string(seconds) + "s blocks";
}

std::string_view displayText(SmartAudioRouting routing) {
    static constexpr std::array<std::string_view, 3> texts{"Automatic", "One track of the take",
                                                           "Whoever speaks"};
    return rowOf(texts, routing);
}

std::string_view displayText(Aggressiveness aggressiveness) {
    static constexpr std::array<std::string_view, 3> texts{"Conservative", "Balanced", "Inclusive"};
    return rowOf(texts, aggressiveness);
}

std::string_view description(BestChannelMode mode) { return rowOf(bestChannelDescriptions, mode); }

std::string_view description(SmartAudioMode mode) { return rowOf(smartAudioModeRows, mode).description; }
std::string_view sectionText(SmartAudioMode mode) { return rowOf(smartAudioModeRows, mode).sectionText; }

std::optional<SmartAudioMode> smartAudioModeFromUITag(std::string_view tag) {
    const auto index = settings::smartAudioMode.choiceIndex(tag);
    return index ? std::optional(static_cast<SmartAudioMode>(*index)) : std::nullopt;
}

template <>
ChannelKind fromJSON<ChannelKind>(const JSON& json) {
    return rawValueFromJSON<ChannelKind>(json);
}
template <>
MaterialCharacter fromJSON<MaterialCharacter>(const JSON& json) {
    return rawValueFromJSON<MaterialCharacter>(json);
}
template <>
BlockMode fromJSON<BlockMode>(const JSON& json) {
    return rawValueFromJSON<BlockMode>(json);
}
template <>
Aggressiveness fromJSON<Aggressiveness>(const JSON& json) {
    return rawValueFromJSON<Aggressiveness>(json);
}
template <>
BlockKind fromJSON<BlockKind>(const JSON& json) {
    return rawValueFromJSON<BlockKind>(json);
}

} // namespace orvane
