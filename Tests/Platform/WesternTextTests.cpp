#include "Platform/WesternText.h"

#include "Platform/Text.h"
#include "Support/Test.h"

namespace orvane::platform::text {
namespace {

std::string encoded(std::u16string_view text, WesternEncoding encoding) {
    std::string bytes;
    for (const char16_t c : text)
        for (int byte = 0; byte < 256; ++byte) {
            const std::string one(1, static_cast<char>(byte));
            const std::string_view unit(reinterpret_cast<const char*>(&c), sizeof c);
            if (decoded(one, encoding) != decoded(unit, Encoding::utf16LE)) continue;
            bytes += one;
            break;
        }
    return bytes;
}

TEST(WesternText, isTheEncodingThatGivesWords) {
    using enum WesternEncoding;
    struct Case {
        const char16_t* text;
        bool isTelling = true; ///< whether Mac OS Roman can be recognised; Windows-1252 always can
    };
    const Case cases[] = {
        {u"Türe"},
        {u"Müller, größer, Öl, ÄRGER, KÜCHE, Straße"},
        {u"Schöne Grüße aus Köln"},
        {u"scène déjà vue à l’hôtel, ça va, cœur, Noël"},
        {u"École d’été"},
        {u"ESCENA AÑO MAÑANA"},
        {u"García, Martínez, niño, corazón, ¿qué?"},
        {u"São João, ação, avó, pão"},
        {u"Åsa på ängen, Bjørn, Æbler, Århus"},
        {u"perché no, città, più"},
        {u"don’t, we’re “wide” – go… 20°"},
        {u"it’s on"},
        {u"take 3 — “ok”"},
        {u"«bonjour»"},
        {u"© Film", false},
        {u"ASCII alone", false},
    };
    for (const Case& sample : cases) {
        for (const WesternEncoding encoding : {windows1252, macRoman}) {
            const std::string bytes = encoded(sample.text, encoding);
            const auto found = westernEncoding(bytes);
            SCOPED_TRACE(decoded(bytes, encoding) + (encoding == macRoman ? " (Mac)" : " (Windows)"));
            EXPECT_EQ(bytes.size(), std::u16string_view(sample.text).size()) << "not all can be encoded";
            EXPECT_TRUE(found == encoding || !(encoding == windows1252 || sample.isTelling))
                << decoded(bytes, found);
        }
    }
    // Every byte is decoded.
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    for (const WesternEncoding encoding : {windows1252, macRoman})
        EXPECT_TRUE(isValidUTF8(decoded(all, encoding)));
}

} // namespace
} // namespace orvane::platform::text
