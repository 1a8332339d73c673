#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::platform::text {

/// The order in which a file browser lists names: case-insensitive first, numbers within names by value
/// ("Clip 2" before "Clip 10"). Negative, zero or positive. Texts that are the same in this order but differ
/// in their bytes compare as equal. Any thread.
int compareLocalizedStandard(std::string_view a, std::string_view b);

/// The same order as a sort key: byte order of keys is the order of the texts. For sorting long lists.
std::string localizedStandardSortKey(std::string_view text);

/// Full Unicode case mapping, locale-independent. Bytes that are not UTF-8 become U+FFFD.
std::string uppercased(std::string_view text);
std::string lowercased(std::string_view text);

/// The text as valid UTF-8: each invalid byte sequence becomes U+FFFD.
std::string validUTF8(std::string_view bytes);
bool isValidUTF8(std::string_view bytes);
/// One code point; nothing for a surrogate and for a value beyond U+10FFFF.
std::optional<std::string> utf8(std::uint64_t codePoint);

/// The text for a terminal: valid UTF-8, control characters (line ends and escape sequences too) as U+FFFD.
std::string printable(std::string_view text);
/// Columns that a printable text takes on a terminal: wide characters take two, combining marks none.
int displayWidth(std::string_view text);

enum class Encoding { utf16BE, utf16LE, macRoman, latin1 };
/// Bytes of another encoding as UTF-8. Invalid bytes become U+FFFD.
std::string decoded(std::string_view bytes, Encoding encoding);
/// The same for bytes of any length that must all be valid; nothing when some are not, such as half a pair of
/// UTF-16 or a last odd byte. Throws Stopped.
std::optional<std::string> strictlyDecoded(std::string_view bytes, Encoding encoding,
                                           const std::stop_token& stop = {});

/// Without white space (Unicode, line ends included) at both ends.
std::string_view trimmed(std::string_view text);
/// The longest beginning of a UTF-8 text that has at most that many bytes and ends between two code points.
std::string_view beginning(std::string_view text, std::size_t mostBytes);

/// The whole text as a decimal number: ASCII digits with one optional leading sign, without blanks. Nothing
/// for a number that does not fit or is not finite.
std::optional<std::int64_t> decimalInteger(std::string_view text);
/// The same with an optional fraction and exponent.
std::optional<double> decimalNumber(std::string_view text);

/// All texts, empty ones too, with the separator between each two.
std::string joined(const std::vector<std::string>& texts, std::string_view separator);

/// A number by a printf format that takes one double and gives fewer than 400 characters.
std::string formatted(const char* format, double value);

bool isASCII(std::string_view text);

/// The characters as people count them: a letter and the accents on it are one (Unicode's grapheme clusters).
/// The pieces are parts of `text` and cover it completely.
std::vector<std::string_view> characters(std::string_view text);
/// Whether a character is a digit or another number (Unicode's category N), of any script.
bool isNumber(std::string_view character);
/// Whether a character is a letter (Unicode's property Alphabetic), of any script.
bool isLetter(std::string_view character);

} // namespace orvane::platform::text
