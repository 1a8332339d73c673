#include "Platform/XMLStreamParser.h"
#include "Support/Test.h"

namespace orvane::platform {
namespace {

struct Recorder : XMLStreamHandler {
    std::string told;
    void startElement(std::string_view name) override { told += "<" + std::string(name) + ">"; }
    void endElement(std::string_view name) override { told += "</" + std::string(name) + ">"; }
    void characters(std::string_view text) override { told += text; }
};

std::optional<std::string> told(std::string_view document) {
    Recorder recorder;
    return parseXMLStream(document, recorder) ? std::optional(recorder.told) : std::nullopt;
}

TEST(XMLStreamParser, readsDocuments) {
    using namespace std::string_view_literals;
    EXPECT_EQ(told("<?xml version='1.0'?><a x='1'>t&amp;<n:b/><![CDATA[<c>]]></a>"),
              "<a>t&<n:b></n:b><c></a>");
    EXPECT_EQ(told("<?xml version='1.0' encoding='windows-1252'?><a>\x80\xE9</a>"),
              "<a>\xE2\x82\xAC\xC3\xA9</a>");
    EXPECT_EQ(told("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE9</a>"), "<a>\xC3\xA9</a>");
    EXPECT_EQ(told("\xFF\xFE<\0a\0/\0>\0"sv), "<a></a>");
    const std::string big(3'000'000, 'x');
    EXPECT_EQ(told("<a>" + big + "</a>")->size(), big.size() + 7);
}

TEST(XMLStreamParser, refusesBrokenDocuments) {
    for (const char* document : {"", "  ", "<a>", "<a></b>", "<a/><b/>", "<a>&undefined;</a>", "<a>\xFF</a>",
                                 "<?xml version='1.0' encoding='no-such'?><a/>", "<a", "text"})
        EXPECT_EQ(told(document), std::nullopt) << document;
}

TEST(XMLStreamParser, nestingAndTokensAreBounded) {
    const auto nested = [](int depth) {
        std::string text, ends;
        for (int i = 0; i < depth; ++i) {
            text += "<A>";
            ends += "</A>";
        }
        return text + ends;
    };
    EXPECT_TRUE(told(nested(256)).has_value());
    EXPECT_FALSE(told(nested(257)).has_value());

    std::string filler;
    filler.resize(30'000'000, 'x');
    std::string attributes;
    for (int i = 0; i < 300'000; ++i) attributes += " a" + std::to_string(i) + "=''";
    for (const std::string& document :
         {"<a><!--" + filler + "--></a>", "<a b='" + filler + "'/>", "<a " + attributes + "/>",
          "<a><?" + filler + "?></a>", "<" + filler + "/>", "<!DOCTYPE a [<!--" + filler + "-->]><a/>"})
        EXPECT_EQ(told(document), std::nullopt) << document.substr(0, 20);
    EXPECT_EQ(told("<a><!--" + filler.substr(0, 900'000) + "--></a>"), "<a></a>");
}

TEST(XMLStreamParser, entitiesNeitherReachFilesNorExplode) {
    EXPECT_EQ(told("<!DOCTYPE a [<!ENTITY x 'y'>]><a>&x;</a>"), "<a>y</a>");
    EXPECT_EQ(told("<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>").value_or("<a></a>"),
              "<a></a>");
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 'aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i) {
        bomb += "<!ENTITY e" + std::to_string(i) + " '";
        for (int n = 0; n < 10; ++n) bomb += "&e" + std::to_string(i - 1) + ";";
        bomb += "'>";
    }
    Recorder recorder;
    EXPECT_FALSE(parseXMLStream(bomb + "]><a>&e9;</a>", recorder));
    EXPECT_LT(recorder.told.size(), 3'000'000U);
}

TEST(XMLStreamParser, anExceptionOfTheHandlerPassesThrough) {
    struct ThrowingRecorder : Recorder {
        void startElement(std::string_view) override { throw std::runtime_error("enough"); }
    } thrower;
    EXPECT_THROW(parseXMLStream("<a><b/></a>", thrower), std::runtime_error);
}

} // namespace
} // namespace orvane::platform
