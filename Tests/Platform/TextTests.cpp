#include "Platform/Text.h"
#include "Support/Test.h"

namespace orvane::platform {
namespace {

TEST(Text, theOrderOfAFileBrowser) {
    struct Case {
        const char* name;
        const char* first;
        const char* second;
        int sign;
    };
    for (const Case& test : {
             Case{"numbers count by value", "Clip 2", "Clip 10", -1},
             Case{"numbers inside a name", "A001C9_x", "A001C10_a", -1},
             Case{"leading zeros do not count", "take 007", "take 7", 0},
             Case{"long numbers do not overflow", "9999999999999999999998", "10000000000000000000000", -1},
             Case{"letters before case", "apple", "Banana", -1},
             Case{"case decides last", "clip", "Clip", -1},
             Case{"accents beside their letter", "\xC3\xA9tude", "f", -1},
             Case{"the same", "x", "x", 0},
             Case{"the empty text first", "", "a", -1},
         }) {
        const auto sign = [](int value) { return (value > 0) - (value < 0); };
        EXPECT_EQ(sign(text::compareLocalizedStandard(test.first, test.second)), test.sign) << test.name;
        EXPECT_EQ(sign(text::compareLocalizedStandard(test.second, test.first)), -test.sign) << test.name;
        EXPECT_EQ(sign(text::localizedStandardSortKey(test.first)
                           .compare(text::localizedStandardSortKey(test.second))),
                  test.sign)
            << test.name;
    }
    EXPECT_NE(text::compareLocalizedStandard("\xFF", "a"), 0);
    const std::string longText(5000, '\xFF');
    EXPECT_FALSE(text::localizedStandardSortKey(longText).empty());
}

TEST(Text, caseMapping) {
    EXPECT_EQ(text::uppercased("a[z]{9~"), "A[Z]{9~");
    EXPECT_EQ(text::lowercased("A[Z]{9~"), "a[z]{9~");
    EXPECT_EQ(text::uppercased("stra\xC3\x9F"
                               "e"),
              "STRASSE");
    EXPECT_EQ(text::lowercased("\xC3\x89TUDE I"), "\xC3\xA9tude i");
    EXPECT_EQ(text::uppercased("a\xFFz"), "A\xEF\xBF\xBDZ");
}

TEST(Text, repairsUTF8) {
    EXPECT_EQ(text::validUTF8("plain \xC3\xA9"), "plain \xC3\xA9");
    EXPECT_EQ(text::validUTF8("a\xC3"), "a\xEF\xBF\xBD");
    EXPECT_EQ(text::validUTF8("\xE2\x82z"), "\xEF\xBF\xBDz");
    EXPECT_EQ(text::validUTF8("\xC0\xAF"), "\xEF\xBF\xBD\xEF\xBF\xBD") << "an overlong slash";
    EXPECT_FALSE(text::isValidUTF8("\xED\xA0\x80")) << "half a pair";
}

TEST(Text, trimsUnicodeWhiteSpace) {
    EXPECT_EQ(text::trimmed(" \t\r\n a b\xC2\xA0\xE2\x80\xA8"), "a b");
    EXPECT_EQ(text::trimmed(" \xE3\x80\x80 "), "");
    EXPECT_EQ(text::trimmed("\xFF \x80"), "\xFF \x80");
    EXPECT_EQ(text::trimmed(""), "");
}

TEST(Text, decimalNumbers) {
    using Integer = std::optional<std::int64_t>;
    const std::tuple<const char*, Integer, double> numbers[] = {
        {"3", 3, 3},
        {"+3", 3, 3},
        {"-3", -3, -3},
        {"2.5", {}, 2.5},
        {"+.5e1", {}, 5},
        {"9223372036854775807", INT64_MAX, 9223372036854775808.0},
        {"9223372036854775808", {}, 9223372036854775808.0}};
    for (const auto& [written, integer, number] : numbers) {
        EXPECT_EQ(text::decimalInteger(written), integer) << written;
        EXPECT_EQ(text::decimalNumber(written), number) << written;
    }
    for (const char* none : {"", "+", "+-3", "--3", "++3", " 3", "3 ", "0x10", "1e999", "inf", "nan"})
        EXPECT_FALSE(text::decimalInteger(none) || text::decimalNumber(none)) << none;
}

TEST(Text, aBeginningEndsBetweenCharacters) {
    const std::string_view text = "a\xC3\xA9\xF0\x9F\x8E\xAC";
    for (const auto& [most, size] : std::vector<std::pair<std::size_t, std::size_t>>{
             {0, 0}, {1, 1}, {2, 1}, {3, 3}, {6, 3}, {7, 7}, {99, 7}})
        EXPECT_EQ(text::beginning(text, most).size(), size) << most;
    EXPECT_EQ(text::beginning("\x80\x80\x80", 2), "");
}

TEST(Text, decodesOtherEncodings) {
    using namespace std::string_view_literals;
    using text::Encoding;
    EXPECT_EQ(text::decoded("caf\x8E \xA9"sv, Encoding::macRoman), "caf\xC3\xA9 \xC2\xA9");
    EXPECT_EQ(text::decoded("\0A\xD8\x3C\xDF\xAC"sv, Encoding::utf16BE), "A\xF0\x9F\x8E\xAC");
    EXPECT_EQ(text::decoded("A\0\x3C\xD8\xAC\xDF"sv, Encoding::utf16LE), "A\xF0\x9F\x8E\xAC");
    EXPECT_EQ(text::decoded("\0A\xDF\xAC\0"sv, Encoding::utf16BE), "A\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(text::decoded(""sv, Encoding::utf16LE), "");

    EXPECT_EQ(text::strictlyDecoded("\0A\xD8\x3C\xDF\xAC"sv, Encoding::utf16BE), "A\xF0\x9F\x8E\xAC");
    EXPECT_EQ(text::strictlyDecoded("caf\xE9"sv, Encoding::latin1), "caf\xC3\xA9");
    EXPECT_EQ(text::strictlyDecoded(""sv, Encoding::macRoman), "");
    for (const std::string_view broken : {"A\0\0"sv, "\x3C\xD8"sv,
                                          "\x3C\xD8"
                                          "A\0"sv,
                                          "\xAC\xDF"
                                          "A\0"sv})
        EXPECT_FALSE(text::strictlyDecoded(broken, Encoding::utf16LE)) << broken;
    // Longer than any internal buffer, with surrogate pairs across every border.
    std::string units, characters;
    for (int i = 0; i < 30000; ++i) {
        units += i % 7 == 0 ? "\x41\0"sv : "\x3C\xD8\xAC\xDF"sv;
        characters += i % 7 == 0 ? "A" : "\xF0\x9F\x8E\xAC";
    }
    EXPECT_EQ(text::strictlyDecoded(units, Encoding::utf16LE), characters);
}

TEST(Text, characters) {
    using Pieces = std::vector<std::string_view>;
    EXPECT_EQ(text::characters(""), Pieces{});
    EXPECT_EQ(text::characters("ab"), (Pieces{"a", "b"}));
    EXPECT_EQ(text::characters("e\xCC\x81z"), (Pieces{"e\xCC\x81", "z"})) << "a letter and its accent";
    EXPECT_EQ(text::characters("\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA!"),
              (Pieces{"\xF0\x9F\x87\xA9\xF0\x9F\x87\xAA", "!"}));
    std::string joined;
    for (const auto piece : text::characters("\xFF\xC3\xA9\xC3")) joined += piece;
    EXPECT_EQ(joined, "\xFF\xC3\xA9\xC3") << "bytes that are no text are not lost";
    for (const char* number : {"7", "\xD9\xA3", "\xC2\xBD", "\xE2\x85\xA7"})
        EXPECT_TRUE(text::isNumber(number)) << number;
    for (const char* other : {"", "x", "-", "\xFF", "\xC3\xA9"}) EXPECT_FALSE(text::isNumber(other)) << other;
    EXPECT_EQ(text::utf8('A'), "A");
    EXPECT_EQ(text::utf8(0x1F4A1), "\xF0\x9F\x92\xA1");
    for (const std::uint64_t none : {0xD800, 0xDFFF, 0x110000})
        EXPECT_EQ(text::utf8(none), std::nullopt) << none;
    for (const char* letter : {"a", "Z", "\xC3\xA9", "e\xCC\x81", "\xE4\xB8\xAD"})
        EXPECT_TRUE(text::isLetter(letter)) << letter;
    for (const char* other : {"", "7", "_", "\xFF", "\xF0\x9F\x87\xA9"})
        EXPECT_FALSE(text::isLetter(other)) << other;
}

} // namespace
} // namespace orvane::platform
