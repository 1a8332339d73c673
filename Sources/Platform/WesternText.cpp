#include "Platform/WesternText.h"

#include "Platform/Stop.h"
#include "Platform/Text.h"

#include <unicode/uchar.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace orvane::platform::text {

namespace {

constexpr std::size_t firstAbove = 0x80;
using Table = std::array<char16_t, 256 - firstAbove>;

/// The characters of the bytes from 0x80 on (Unicode's CP1252.TXT and ROMAN.TXT).
constexpr Table windows1252{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152,
    0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122,
    0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178, 0x00A0, 0x00A1, 0x00A2, 0x00A3, 0x00A4, 0x00A5, 0x00A6,
    0x00A7, 0x00A8, 0x00A9, 0x00AA, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x00AF, 0x00B0, 0x00B1, 0x00B2, 0x00B3,
    0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x00B9, 0x00BA, 0x00BB, 0x00BC, 0x00BD, 0x00BE, 0x00BF, 0x00C0,
    0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C6, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC, 0x00CD,
    0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D7, 0x00D8, 0x00D9, 0x00DA,
    0x00DB, 0x00DC, 0x00DD, 0x00DE, 0x00DF, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5, 0x00E6, 0x00E7,
    0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00ED, 0x00EE, 0x00EF, 0x00F0, 0x00F1, 0x00F2, 0x00F3, 0x00F4,
    0x00F5, 0x00F6, 0x00F7, 0x00F8, 0x00F9, 0x00FA, 0x00FB, 0x00FC, 0x00FD, 0x00FE, 0x00FF};
constexpr Table macRoman{
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, 0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5,
    0x00E7, 0x00E9, 0x00E8, 0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, 0x00F2, 0x00F4,
    0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, 0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6,
    0x00DF, 0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, 0x221E, 0x00B1, 0x2264, 0x2265,
    0x00A5, 0x00B5, 0x2202, 0x2211, 0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, 0x00BF,
    0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, 0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5,
    0x0152, 0x0153, 0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, 0x00FF, 0x0178, 0x2044,
    0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1,
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, 0xF8FF, 0x00D2, 0x00DA, 0x00DB, 0x00D9,
    0x0131, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7};

const Table& tableOf(WesternEncoding encoding) {
    return encoding == WesternEncoding::macRoman ? macRoman : windows1252;
}

enum class Kind : std::uint8_t {
    lower,
    upper,
    digit,
    blank,
    opening, ///< quotation marks
    closing,
    apostrophe,
    dash,
    ellipsis,
    unit, ///< follows a number, such as a degree sign
    sign,
    nothing
};

Kind kindOf(char16_t c) {
    switch (c) {
    case u'“':
    case u'„':
    case u'«':
    case u'‘':
        return Kind::opening;
    case u'”':
    case u'»':
        return Kind::closing;
    case u'’':
        return Kind::apostrophe;
    case u'–':
    case u'—':
        return Kind::dash;
    case u'…':
        return Kind::ellipsis;
    case u'°':
    case u'²':
    case u'³':
    case u'½':
    case u'¼':
    case u'¾':
    case u'µ':
    case u'×':
    case u'€':
        return Kind::unit;
    case u'\u00A0':
        return Kind::blank;
    // Letters by name, but not letters of a Western word.
    case u'ª':
    case u'º':
    case u'ƒ':
    case u'ﬁ':
    case u'ﬂ':
    case u'ˆ':
    case u'ˇ':
    case u'π':
    case u'Ω':
        return Kind::sign;
    default:
        break;
    }
    if (u_isULowercase(c) != 0) return Kind::lower;
    if (u_isUUppercase(c) != 0) return Kind::upper;
    if (u_isdigit(c) != 0) return Kind::digit;
    if (u_isUWhiteSpace(c) != 0) return Kind::blank;
    return u_iscntrl(c) != 0 ? Kind::nothing : Kind::sign;
}

constexpr std::size_t bytesBetweenChecks = std::size_t{1} << 18U;

using Kinds = std::array<Kind, 256>;

Kinds kindsOf(WesternEncoding encoding) {
    Kinds kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte)
        kinds.at(byte) =
            kindOf(byte < firstAbove ? static_cast<char16_t>(byte) : tableOf(encoding).at(byte - firstAbove));
    return kinds;
}

bool isLetter(Kind kind) { return kind == Kind::lower || kind == Kind::upper; }
bool isOfWord(Kind kind) { return isLetter(kind) || kind == Kind::digit; }

/// A text in one of the encodings, as kinds of characters; blank outside the text.
class Reading {
  public:
    Reading(std::string_view bytes, const Kinds& kinds) : bytes_(bytes), kinds_(kinds) {}

    /// How much the byte at that place supports this reading, from -2 to 1.
    int score(std::size_t at) const {
        const Kind before = kind(at, -1), itself = kind(at, 0), after = kind(at, 1);
        const bool isBetweenLetters = isLetter(before) && isLetter(after);
        switch (itself) {
        case Kind::lower:
        case Kind::upper:
            return letterScore(at, itself, before, after);
        case Kind::opening:
            return !isOfWord(before) && isOfWord(after) ? 1 : isBetweenLetters ? -1 : 0;
        case Kind::closing:
        case Kind::ellipsis:
            return before != Kind::blank && !isOfWord(after) ? 1 : isBetweenLetters ? -1 : 0;
        case Kind::apostrophe:
            return isBetweenLetters ? (isElision(at) ? 1 : -1) : isLetter(before) ? 1 : 0;
        case Kind::dash:
            return before == Kind::blank && after == Kind::blank ? 1 : isBetweenLetters ? -1 : 0;
        case Kind::unit:
            return before == Kind::digit && !isLetter(after) ? 1 : isBetweenLetters ? -1 : 0;
        case Kind::nothing:
            return -2;
        default:
            return isBetweenLetters ? -1 : 0;
        }
    }

  private:
    Kind kind(std::size_t at, int offset) const {
        const std::size_t place = at + static_cast<std::size_t>(offset); // wraps around before the start
        return place < bytes_.size() ? kinds_[static_cast<unsigned char>(bytes_[place])] : Kind::blank;
    }
    char lowerASCII(std::size_t at) const {
        if (at >= bytes_.size()) return ' ';
        const char c = bytes_[at];
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }

    int letterScore(std::size_t at, Kind itself, Kind before, Kind after) const {
        if (!isLetter(before) && !isLetter(after)) {
            const bool isOneWord = itself == Kind::lower && before == Kind::blank && after == Kind::blank;
            return isOneWord ? 1 : before == Kind::digit || after == Kind::digit ? -1 : 0;
        }
        if (itself == Kind::lower) return after == Kind::upper ? -1 : 1;
        if (before == Kind::lower) return -1;
        // A capital inside a word has capitals beside it.
        return before == Kind::upper && after == Kind::lower && kind(at, -2) != Kind::upper ? -1 : 1;
    }

    /// "don't", "we'll" and the like, or "l'eau" and "dell'arte" before a vowel.
    bool isElision(std::size_t at) const {
        const char first = lowerASCII(at + 1), second = lowerASCII(at + 2);
        const bool endsAfterOne = !isLetter(kind(at, 2)), endsAfterTwo = !isLetter(kind(at, 3));
        if (endsAfterOne && std::string_view("stdm").find(first) != std::string_view::npos) return true;
        if (endsAfterTwo && ((first == 'r' || first == 'v') && second == 'e')) return true;
        if (endsAfterTwo && first == 'l' && second == 'l') return true;
        const bool isVowel = std::string_view("aeiouhy").find(first) != std::string_view::npos ||
                             static_cast<unsigned char>(first) >= firstAbove;
        const bool isArticle =
            std::string_view("lcdjmnst").find(lowerASCII(at - 1)) != std::string_view::npos &&
            (!isLetter(kind(at, -2)) || lowerASCII(at - 2) == 'l');
        return isVowel && (isArticle || lowerASCII(at - 1) == 'u');
    }

    std::string_view bytes_;
    const Kinds& kinds_;
};

} // namespace

WesternEncoding westernEncoding(std::string_view bytes, const std::stop_token& stop) {
    static const Kinds windowsKinds = kindsOf(WesternEncoding::windows1252);
    static const Kinds macKinds = kindsOf(WesternEncoding::macRoman);
    const Reading windows(bytes, windowsKinds), mac(bytes, macKinds);
    std::int64_t lead = 0; // by which Windows-1252 leads
    StopCheck check(stop, bytesBetweenChecks);
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        check();
        if (static_cast<unsigned char>(bytes[at]) >= firstAbove) lead += windows.score(at) - mac.score(at);
    }
    return lead >= 0 ? WesternEncoding::windows1252 : WesternEncoding::macRoman;
}

std::string decoded(std::string_view bytes, WesternEncoding encoding, const std::stop_token& stop) {
    std::array<std::string, 256 - firstAbove> texts;
    for (std::size_t i = 0; i < texts.size(); ++i) texts.at(i) = *utf8(tableOf(encoding).at(i));
    std::string result;
    result.reserve(bytes.size() + bytes.size() / 8);
    StopCheck check(stop, bytesBetweenChecks);
    for (const char c : bytes) {
        check();
        const auto byte = static_cast<unsigned char>(c);
        if (byte < firstAbove)
            result += c;
        else
            result += texts.at(byte - firstAbove);
    }
    return result;
}

} // namespace orvane::platform::text
