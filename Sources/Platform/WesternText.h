#pragma once

#include <stop_token>
#include <string>
#include <string_view>

namespace orvane::platform::text {

/// The two encodings of Western text with one byte for each character that files still use.
enum class WesternEncoding { windows1252, macRoman };

/// Detects in which of them the bytes form words. Every byte above 127 is decoded in both and judged by its
/// neighbours. These count for an encoding: a letter in a word whose case fits its neighbours, and a sign in
/// its usual place, such as a quotation mark at the edge of a word, the apostrophe of "don't" and "l'eau", a
/// dash between blanks, a degree sign after a number. These count against it: a letter whose case does not
/// fit, a sign between two letters, and an undefined byte. Windows-1252 if both are equal. Its time grows
/// with the length of the text. Throws Stopped, as `decoded` does.
WesternEncoding westernEncoding(std::string_view bytes, const std::stop_token& stop = {});
/// As UTF-8. The bytes that Windows-1252 does not define become control characters.
std::string decoded(std::string_view bytes, WesternEncoding encoding, const std::stop_token& stop = {});

} // namespace orvane::platform::text
