#pragma once

#include <stop_token>
#include <string>
#include <string_view>

namespace orvane::platform::text {

/// The two encodings of Western text with one byte a character that files still come in.
enum class WesternEncoding { windows1252, macRoman };

/// Which of them the bytes read as words in. Every byte above 127 is decoded in both and looked at where it
/// stands. These count for an encoding: a letter in a word whose case fits its neighbours, and a sign in its
/// usual place, a quotation mark at the edge of a word, the apostrophe of "don't" and "l'eau", a dash between
/// blanks, a degree behind a number. These count against it: a letter whose case does not fit, a sign between
/// two letters, and a byte that stands for nothing. Windows-1252 where they are equal. Takes time by the
/// length of the text. Throws Stopped, as the next.
WesternEncoding westernEncoding(std::string_view bytes, const std::stop_token& stop = {});
/// As UTF-8. The bytes that Windows-1252 leaves open become control characters.
std::string decoded(std::string_view bytes, WesternEncoding encoding, const std::stop_token& stop = {});

} // namespace orvane::platform::text
