#include "Platform/Text.h"

#include "Platform/Stop.h"
#include "Platform/TextMemory.h"

#include <simdjson.h>
#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/coll.h>
#include <unicode/uchar.h>
#include <unicode/uclean.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace orvane::platform::text {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

/// ICU counts in 32 bits. Longer texts are cut if they are only compared or mapped.
constexpr std::size_t longestText = std::size_t{1} << 29U;

icu::StringPiece piece(std::string_view text) { return text.substr(0, longestText); }

// The macros of ICU's UTF-8 decoder convert implicitly.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"

/// The character at `at`, which moves to the next one; negative for bytes that are not UTF-8.
UChar32 nextCharacter(std::string_view text, std::size_t& at) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    UChar32 character = 0;
    U8_NEXT(bytes, at, text.size(), character); // NOLINT(bugprone-inc-dec-in-conditions): as ICU wrote it
    return character;
}

/// The last character of the first `end` bytes, and `end` moves before it.
UChar32 previousCharacter(std::string_view text, std::int32_t& end) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    UChar32 character = 0;
    U8_PREV(bytes, 0, end, character);
    return character;
}

#pragma GCC diagnostic pop

/// The user's sorting locale, by ICU's name; the root locale for "C", "POSIX" or nothing.
icu::Locale collationLocale() {
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* value = std::getenv(variable);
        if (value == nullptr || *value == '\0') continue;
        std::string name(value);
        name.resize(std::min(name.find_first_of(".@"), name.size()));
        if (name == "C" || name == "POSIX") break;
        return icu::Locale::createFromName(name.c_str());
    }
    return icu::Locale::getRoot();
}

std::unique_ptr<const icu::Collator> makeCollator() {
    for (const icu::Locale& locale : {collationLocale(), icu::Locale::getRoot()}) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(locale, status));
        if (U_FAILURE(status) || !collator) continue;
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        return collator;
    }
    return nullptr;
}

/// Opened at the first comparison: loading ICU's data takes milliseconds, which a short run can save. Const
/// afterwards, so that threads share it. Null without ICU's data; then texts are ordered by their bytes.
const icu::Collator* collator() {
    static const std::unique_ptr<const icu::Collator> shared = makeCollator();
    return shared.get();
}

/// The block, or a call of the new-handler if it is null.
void* orCallNewHandler(void* block) {
    if (block != nullptr) return block;
    if (const std::new_handler handler = std::get_new_handler()) handler();
    return nullptr;
}

/// Changes the case of the bytes between `first` and `last`.
std::string mappedASCII(std::string_view text, char first, char last) {
    std::string result(text);
    for (char& c : result)
        if (c >= first && c <= last) c = static_cast<char>(c ^ 0x20);
    return result;
}

template <class Mapping>
std::string mapped(std::string_view text, Mapping mapping) {
    const std::string valid = validUTF8(text);
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    mapping(piece(valid), sink, status);
    return U_SUCCESS(status) ? result : valid;
}

/// Moves from one boundary between characters to the next.
std::unique_ptr<icu::BreakIterator> characterBoundaries(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    UText opened = UTEXT_INITIALIZER;
    utext_openUTF8(&opened, text.data(), static_cast<std::int64_t>(text.size()), &status);
    std::unique_ptr<icu::BreakIterator> boundaries(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (boundaries) boundaries->setText(&opened, status); // makes a copy of its own
    utext_close(&opened);
    return U_SUCCESS(status) ? std::move(boundaries) : nullptr;
}

const char* icuName(Encoding encoding) {
    switch (encoding) {
    case Encoding::utf16BE:
        return "UTF-16BE";
    case Encoding::utf16LE:
        return "UTF-16LE";
    case Encoding::macRoman:
        return "macintosh";
    case Encoding::latin1:
        return "ISO-8859-1";
    }
    return "";
}

std::optional<UChar32> firstCodePoint(std::string_view text) {
    if (text.empty()) return std::nullopt;
    std::size_t at = 0;
    const UChar32 first = nextCharacter(text, at);
    return first < 0 ? std::nullopt : std::optional(first);
}

/// Whether an ASCII character is white space; absent for a byte of another character.
std::optional<bool> isASCIIBlank(char c) {
    if (static_cast<unsigned char>(c) >= 0x80U) return std::nullopt;
    return c == ' ' || (c >= '\t' && c <= '\r');
}

template <class Number>
std::optional<Number> decimal(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt; // the parser takes this sign itself
    }
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

void callNewHandlerWithoutMemory() {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(
        nullptr, [](const void*, std::size_t size) { return orCallNewHandler(std::malloc(size)); },
        [](const void*, void* block, std::size_t size) {
            return orCallNewHandler(std::realloc(block, size));
        },
        [](const void*, void* block) { std::free(block); }, &status);
}

std::string joined(const std::vector<std::string>& texts, std::string_view separator) {
    std::string result;
    for (std::size_t i = 0; i < texts.size(); ++i) result.append(i == 0 ? "" : separator).append(texts[i]);
    return result;
}

std::string formatted(const char* format, double value) {
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), format, value);
    return text.data();
}

bool isASCII(std::string_view text) {
    unsigned char bits = 0; // no early end, so that the compiler reads many bytes at a time
    for (const char c : text) bits |= static_cast<unsigned char>(c);
    return bits < 0x80U;
}

std::optional<std::int64_t> decimalInteger(std::string_view text) { return decimal<std::int64_t>(text); }

std::optional<double> decimalNumber(std::string_view text) {
    const auto value = decimal<double>(text);
    return value && std::isfinite(*value) ? value : std::nullopt; // the parser also reads "inf" and "nan"
}

int compareLocalizedStandard(std::string_view a, std::string_view b) {
    if (a == b) return 0;
    if (const icu::Collator* order = collator()) {
        UErrorCode status = U_ZERO_ERROR;
        const UCollationResult result = order->compareUTF8(piece(a), piece(b), status);
        if (U_SUCCESS(status)) return static_cast<int>(result);
    }
    return a.compare(b);
}

std::string localizedStandardSortKey(std::string_view text) {
    const icu::Collator* order = collator();
    if (order == nullptr) return std::string(text);
    const icu::UnicodeString wide = icu::UnicodeString::fromUTF8(piece(text));
    std::string key(4 * text.size() + 16, '\0');
    for (;;) {
        auto* bytes = reinterpret_cast<std::uint8_t*>(key.data());
        const std::int32_t needed = order->getSortKey(wide, bytes, static_cast<std::int32_t>(key.size()));
        const bool complete = static_cast<std::size_t>(needed) <= key.size();
        key.resize(static_cast<std::size_t>(needed));
        if (complete) break;
    }
    if (!key.empty()) key.pop_back(); // the terminating zero
    return key;
}

std::string uppercased(std::string_view text) {
    if (isASCII(text)) return mappedASCII(text, 'a', 'z');
    return mapped(text, [](icu::StringPiece from, icu::ByteSink& to, UErrorCode& status) {
        icu::CaseMap::utf8ToUpper("", 0, from, to, nullptr, status);
    });
}

std::string lowercased(std::string_view text) {
    if (isASCII(text)) return mappedASCII(text, 'A', 'Z');
    return mapped(text, [](icu::StringPiece from, icu::ByteSink& to, UErrorCode& status) {
        icu::CaseMap::utf8ToLower("", 0, from, to, nullptr, status);
    });
}

bool isValidUTF8(std::string_view bytes) {
    return isASCII(bytes) || simdjson::validate_utf8(bytes.data(), bytes.size());
}

std::string validUTF8(std::string_view bytes) {
    if (isValidUTF8(bytes)) return std::string(bytes);
    std::string result;
    result.reserve(bytes.size() + 16);
    for (std::size_t at = 0; at < bytes.size();) {
        const std::size_t start = at;
        if (nextCharacter(bytes, at) < 0)
            result += replacement;
        else
            result.append(bytes, start, at - start);
    }
    return result;
}

std::optional<std::string> utf8(std::uint64_t codePoint) {
    if (codePoint > UCHAR_MAX_VALUE || U_IS_SURROGATE(codePoint)) return std::nullopt;
    std::string text;
    icu::UnicodeString(static_cast<UChar32>(codePoint)).toUTF8String(text);
    return text;
}

std::string printable(std::string_view text) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t start = at;
        const UChar32 character = nextCharacter(text, at);
        if (character < 0 || u_iscntrl(character) != 0)
            result += replacement;
        else
            result.append(text, start, at - start);
    }
    return result;
}

int displayWidth(std::string_view text) {
    int width = 0;
    for (std::size_t at = 0; at < text.size();) {
        const UChar32 character = nextCharacter(text, at);
        const auto kind = u_charType(character);
        if (kind == U_NON_SPACING_MARK || kind == U_ENCLOSING_MARK || kind == U_FORMAT_CHAR) continue;
        const int eastAsian = u_getIntPropertyValue(character, UCHAR_EAST_ASIAN_WIDTH);
        width += eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
    }
    return width;
}

std::string decoded(std::string_view bytes, Encoding encoding) {
    const auto count = static_cast<std::int32_t>(std::min(bytes.size(), longestText));
    const char* const first = bytes.data();
    std::string result;
    return icu::UnicodeString(first, count, icuName(encoding)).toUTF8String(result);
}

std::optional<std::string> strictlyDecoded(std::string_view bytes, Encoding encoding,
                                           const std::stop_token& stop) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::LocalUConverterPointer from(ucnv_open(icuName(encoding), &status));
    const icu::LocalUConverterPointer to(ucnv_open("UTF-8", &status));
    ucnv_setToUCallBack(from.getAlias(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    if (U_FAILURE(status)) return std::nullopt;

    std::array<UChar, 4096> pivot;
    UChar *pivotSource = pivot.data(), *pivotTarget = pivot.data();
    std::array<char, 16384> piece;
    const char* source = bytes.data();
    std::string result;
    bool isFirst = true;
    do {
        throwIfStopped(stop);
        char* target = piece.data();
        status = U_ZERO_ERROR;
        ucnv_convertEx(to.getAlias(), from.getAlias(), &target, piece.data() + piece.size(), &source,
                       bytes.data() + bytes.size(), pivot.data(), &pivotSource, &pivotTarget,
                       pivot.data() + pivot.size(), isFirst ? 1 : 0, 1, &status);
        isFirst = false;
        result.append(piece.data(), target);
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    return U_SUCCESS(status) ? std::optional(std::move(result)) : std::nullopt;
}

std::string_view trimmed(std::string_view text) {
    while (!text.empty()) {
        if (const auto isBlank = isASCIIBlank(text.front())) {
            if (!*isBlank) break;
            text.remove_prefix(1);
            continue;
        }
        std::size_t next = 0;
        if (!u_isUWhiteSpace(nextCharacter(text, next))) break;
        text.remove_prefix(next);
    }
    while (!text.empty()) {
        if (const auto isBlank = isASCIIBlank(text.back())) {
            if (!*isBlank) break;
            text.remove_suffix(1);
            continue;
        }
        // A character has four bytes at most: the decoder need not get more, and counts in 32 bits.
        const std::string_view tail = text.substr(text.size() - std::min<std::size_t>(text.size(), 4));
        auto end = static_cast<std::int32_t>(tail.size());
        if (!u_isUWhiteSpace(previousCharacter(tail, end))) break;
        text.remove_suffix(tail.size() - static_cast<std::size_t>(end));
    }
    return text;
}

std::string_view beginning(std::string_view text, std::size_t mostBytes) {
    if (text.size() <= mostBytes) return text;
    const auto continuesCharacter = [text](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
    };
    while (mostBytes > 0 && continuesCharacter(mostBytes)) --mostBytes;
    return text.substr(0, mostBytes);
}

std::vector<std::string_view> characters(std::string_view text) {
    std::vector<std::string_view> result;
    const auto boundaries = isASCII(text) ? nullptr : characterBoundaries(text);
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = start;
        const std::int32_t boundary = boundaries ? boundaries->next() : icu::BreakIterator::DONE;
        if (boundary != icu::BreakIterator::DONE && static_cast<std::size_t>(boundary) > start)
            end = static_cast<std::size_t>(boundary);
        else
            nextCharacter(text, end);
        result.push_back(text.substr(start, end - start));
        start = end;
    }
    return result;
}

bool isNumber(std::string_view character) {
    const auto first = firstCodePoint(character);
    return first && (U_GET_GC_MASK(*first) & U_GC_N_MASK) != 0;
}

bool isLetter(std::string_view character) {
    const auto first = firstCodePoint(character);
    return first && u_isUAlphabetic(*first) != 0;
}

} // namespace orvane::platform::text
