#pragma once

#include "OrvaneSyncCore/Models/RawValues.h"

#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// The kind of microphone or signal on a recorder channel.
enum class ChannelKind { boom, lav, mix, unknown };
template <>
struct RawValues<ChannelKind> {
    static constexpr std::array<std::string_view, 4> texts{"boom", "lav", "mix", "unknown"};
};

/// The kind of material in a take.
enum class MaterialCharacter { interview, standardDialog, fastDialog, actionAtmo };
template <>
struct RawValues<MaterialCharacter> {
    static constexpr std::array<std::string_view, 4> texts{"interview", "standardDialog", "fastDialog",
                                                           "actionAtmo"};
};
std::string_view displayName(MaterialCharacter character);
/// The shortest block that suits such material, in seconds.
double minBlockSeconds(MaterialCharacter character);

/// How often the router may switch microphones.
enum class BlockMode { adaptive, fine, standard, coarse };
template <>
struct RawValues<BlockMode> {
    static constexpr std::array<std::string_view, 4> texts{"adaptive", "fine", "standard", "coarse"};
};
/// Seconds of a block; `adaptive` depends on what was detected in the take.
double blockSeconds(BlockMode mode, std::optional<MaterialCharacter> detected);
std::string menuLabel(BlockMode mode, std::optional<MaterialCharacter> detected);
inline std::string displayText(BlockMode mode) { return menuLabel(mode, std::nullopt); }
std::string badgeLabel(BlockMode mode, std::optional<MaterialCharacter> detected);

/// How the router chooses the microphone. `automatic` means `speaker` for takes without a boom or mix that
/// qualifies as default, otherwise `takeDefault`.
enum class SmartAudioRouting { automatic, takeDefault, speaker };
template <>
struct RawValues<SmartAudioRouting> {
    static constexpr std::array<std::string_view, 3> texts{"auto", "takeDefault", "speaker"};
};
std::string_view displayText(SmartAudioRouting routing);

/// Shown and stored; routing does not read it.
enum class Aggressiveness { conservative, balanced, inclusive };
template <>
struct RawValues<Aggressiveness> {
    static constexpr std::array<std::string_view, 3> texts{"conservative", "balanced", "inclusive"};
};
std::string_view displayText(Aggressiveness aggressiveness);

/// The kind of a routed block. `multiActiveWarn`: two speakers are active on two lavalier tracks and there is
/// no mix track to use instead.
enum class BlockKind { boom, lav, mix, silence, multiActiveWarn };
template <>
struct RawValues<BlockKind> {
    static constexpr std::array<std::string_view, 5> texts{"boom", "lav", "mix", "silence",
                                                           "multiActiveWarn"};
};
/// Shown on the block strip over such a block.
inline constexpr std::string_view multiActiveWarnLabel = "⚠ Multi";

/// How the export activates tracks.
enum class BestChannelMode { off, perClip, perWindow, manual };
template <>
struct RawValues<BestChannelMode> {
    static constexpr std::array<std::string_view, 4> texts{"Off", "Per Clip", "Per Window", "Manual"};
};
std::string_view description(BestChannelMode mode);
/// The texts under which the settings hold the modes.
inline constexpr std::array<std::string_view, 4> bestChannelModeTags{"off", "perClip", "perWindow", "manual"};

/// The recommendation level.
enum class SmartAudioMode { off, standard, studio, cinematic, custom };
template <>
struct RawValues<SmartAudioMode> {
    static constexpr std::array<std::string_view, 5> texts{"Off", "Standard", "Studio", "Cinematic",
                                                           "Custom"};
};
std::string_view description(SmartAudioMode mode);
/// The text of the settings screen below the chosen mode.
std::string_view sectionText(SmartAudioMode mode);
/// The tags under which the settings hold the modes.
inline constexpr std::array<std::string_view, 5> smartAudioModeTags{"off", "standard", "studio", "cinematic",
                                                                    "custom"};
/// The mode of a stored or typed tag, ignoring case and surrounding blanks; absent for any other word.
std::optional<SmartAudioMode> smartAudioModeFromUITag(std::string_view tag);

/// The look of a project.
enum class SmartAudioLook { cinematic, drama, documentary, none };
template <>
struct RawValues<SmartAudioLook> {
    static constexpr std::array<std::string_view, 4> texts{"Cinematic", "Drama", "Documentary", "None"};
};
/// The name with its amounts, in whole percent.
std::string displayText(SmartAudioLook look);

template <>
ChannelKind fromJSON<ChannelKind>(const JSON& json);
template <>
MaterialCharacter fromJSON<MaterialCharacter>(const JSON& json);
template <>
BlockMode fromJSON<BlockMode>(const JSON& json);
template <>
Aggressiveness fromJSON<Aggressiveness>(const JSON& json);
template <>
BlockKind fromJSON<BlockKind>(const JSON& json);

} // namespace orvane
