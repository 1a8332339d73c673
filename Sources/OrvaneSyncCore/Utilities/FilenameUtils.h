#pragma once

#include <string_view>

namespace orvane {

/// Tests on file names by whole words. Words are separated by "_", "-", blanks and points; case and the
/// extension do not count. Pure; any thread.
namespace FilenameUtils {

/// Room tone and other ambience, such as SC12_AMB_03.wav or "room-tone.wav".
bool isAtmo(std::string_view name);
/// The end of the name, behind the scene, of a room tone file that the program made.
inline constexpr std::string_view madeRoomToneEnding = "=Atmo";
/// A room tone file that the program made, or a copy of it that the desktop has numbered.
bool isMadeRoomTone(std::string_view name);
/// A clip shot without sound.
bool isMOS(std::string_view name);
/// The name without its last extension. A name whose only point is its first character has no extension.
std::string_view withoutExtension(std::string_view name);

} // namespace FilenameUtils
} // namespace orvane
