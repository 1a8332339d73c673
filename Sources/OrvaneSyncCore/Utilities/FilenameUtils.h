#pragma once

#include <string_view>

namespace orvane {

/// Tests on file names, by whole words: the pieces between "_", "-", blanks and points, without the extension
/// and whatever the case. Pure; any thread.
namespace FilenameUtils {

/// Room tone and other ambience, such as SC12_AMB_03.wav or "room-tone.wav".
bool isAtmo(std::string_view name);
/// What the file of a room tone that the program made is called behind its scene.
inline constexpr std::string_view madeRoomToneEnding = "=Atmo";
/// Such a file, also a copy of it that the desktop has numbered.
bool isMadeRoomTone(std::string_view name);
/// A clip shot without sound.
bool isMOS(std::string_view name);
/// The name without its last extension; a name that begins with its only point has none.
std::string_view withoutExtension(std::string_view name);

} // namespace FilenameUtils
} // namespace orvane
