#include "Platform/JSON.h"

#include "Platform/JSONParts.h"
#include "Platform/JSONView.h"
#include "Platform/Stop.h"
#include "Support/Test.h"

#include <malloc.h>

namespace orvane::platform {
namespace {

TEST(JSON, keepsEveryNumberAndItsKind) {
    const auto check = [&](const char* name, const char* text, const char* written) {
        const JSON value = JSON::parse(text);
        EXPECT_EQ(value.dump(), written) << name;
        EXPECT_EQ(JSON::parse(value.dump()).dump(), written) << name;
        const auto listed = [](const std::string& number) { return "[" + number + "]"; };
        EXPECT_EQ(JSON::parse(listed(text)).dump(), listed(written)) << name;
    };
    check("a whole number stays one", "2", "2");
    check("a whole double stays a double", "25.0", "25.0");
    check("smallest integer", "-9223372036854775808", "-9223372036854775808");
    check("largest unsigned", "18446744073709551615", "18446744073709551615");
    check("beyond 2^53 nothing is rounded", "9007199254740993", "9007199254740993");
    check("shortest form", "0.1", "0.1");
    check("a frame rate", "23.976023976023978", "23.976023976023978");
    check("a whole double of 21 digits is no integer", "123456789012345680000.0", "123456789012345683968.0");
    check("smallest denormal", "5e-324", "5e-324");
    check("largest double", "1.7976931348623157e308", "1.7976931348623157e+308");
    check("negative zero", "-0.0", "-0.0");
    EXPECT_EQ(JSON(std::nan("")).dump(), "null");
    EXPECT_EQ(JSON(-std::numeric_limits<double>::infinity()).dump(), "null");
}

TEST(JSON, convertsOnlyWhatFits) {
    EXPECT_EQ(JSON(25.0).integer(), 25);
    EXPECT_EQ(JSON(25.5).integer(), std::nullopt);
    EXPECT_EQ(JSON(9223372036854775808.0).integer(), std::nullopt);
    EXPECT_EQ(JSON(-9223372036854775808.0).integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(JSON(std::numeric_limits<std::uint64_t>::max()).integer(), std::nullopt);
    EXPECT_EQ(JSON(-1).unsignedInteger(), std::nullopt);
    EXPECT_EQ(JSON(true).number(), std::nullopt);
    EXPECT_EQ(JSON(1).boolean(), std::nullopt);
    EXPECT_EQ(JSON(2), JSON(2.0));
    EXPECT_NE(JSON(9007199254740993), JSON(9007199254740992.0));
    EXPECT_NE(JSON(1), JSON(true));
}

TEST(JSON, writesTextsThatReadBack) {
    const std::string awkward = "\"\\/\b\n\r\t\x01\x7F \xC3\xA9 \xF0\x9F\x8E\xAC";
    EXPECT_EQ(*JSON::parse(JSON(awkward).dump()).string(), awkward);
    EXPECT_EQ(JSON("a\x01\n").dump(), R"("a\u0001\n")");
    EXPECT_EQ(*JSON::parse(JSON("a\xFF\xC3").dump()).string(), "a\xEF\xBF\xBD\xEF\xBF\xBD");
    EXPECT_EQ(*JSON::parse(R"("\ud83c\udfac")").string(), "\xF0\x9F\x8E\xAC");
    EXPECT_EQ(*JSON::parse(JSON(std::string("a\0b", 3)).dump()).string(), std::string("a\0b", 3));
}

TEST(JSON, takesBoundedMemory) {
    // A dense text of what needs the most memory: members with short names and texts.
    std::string text = "[";
    for (int i = 0; i < 100'000; ++i) text += R"({"a name of a member":"v","the other name of it":"w"},)";
    text.back() = ']';
#ifndef ORVANE_SANITIZED // sanitizers count differently
    const std::size_t before = ::mallinfo2().uordblks + ::mallinfo2().hblkhd;
    const JSON tree = JSON::parse(text);
    EXPECT_EQ(tree.elements()->size(), 100'000U);
    EXPECT_LT(::mallinfo2().uordblks + ::mallinfo2().hblkhd - before, 8 * text.size());
#endif
    for (const char* tiny : {"0,", "[],", R"("",)", R"({"":0},)"}) {
        std::string dense = "[";
        for (std::size_t i = 0; i < 2 * JSON::fewValues; ++i) dense += tiny;
        dense.back() = ']';
        EXPECT_THROW(JSON::parse(dense), JSONError) << tiny;
        JSONParser parser;
        EXPECT_THROW(parser.parse(dense), JSONError) << tiny;
        dense.resize(dense.size() / 4);
        dense.resize(dense.rfind(',') + 1);
        dense.back() = ']';
        EXPECT_NO_THROW(JSON::parse(dense)) << tiny << ": few values may be tiny";
    }
}

TEST(JSON, sortsMembersAndIndents) {
    JSON value;
    value.set("b", JSON::array());
    value.set("a", JSON(JSON::Array{1, JSON(JSON::Object{{"k", nullptr}})}));
    value.set("b", true);
    EXPECT_EQ(value.dump(), R"({"a":[1,{"k":null}],"b":true})");
    EXPECT_EQ(value.dump(JSON::Layout::pretty),
              "{\n  \"a\": [\n    1,\n    {\n      \"k\": null\n    }\n  ],\n  \"b\": true\n}");
    EXPECT_EQ(JSON::object().dump(JSON::Layout::pretty), "{}");
    EXPECT_EQ(value, JSON::parse(R"({"b":true,"a":[1,{"k":null}]})"));
    EXPECT_NE(value, JSON::parse(R"({"b":true,"a":[1,{"k":false}]})"));
}

TEST(JSON, theLastOfEqualKeysWins) {
    EXPECT_EQ(JSON::parse(R"({"a":1,"b":2,"a":3})").dump(), R"({"a":3,"b":2})");
    std::string many = "{";
    for (int i = 0; i < 100; ++i) many += "\"k" + std::to_string(i % 50) + "\":" + std::to_string(i) + ",";
    const JSON value = JSON::parse(many + "\"last\":0}");
    EXPECT_EQ(value.members()->size(), 51U);
    EXPECT_EQ(value.find("k7")->integer(), 57);
}

TEST(JSON, refusesWhatIsNoJSON) {
    const std::string deep(600, '['), notTooDeep(500, '[');
    for (const std::string& text :
         {std::string(), std::string("  "), std::string("{"), std::string("[1,]"), std::string("1 2"),
          std::string("nul"), std::string("\"\xFF\""), std::string("{\"a\" 1}"), std::string("1e400"),
          std::string(R"("\ud800")"), std::string("\"a\nb\""), deep + std::string(600, ']')})
        EXPECT_THROW(JSON::parse(text), JSONError) << text.substr(0, 20);
    EXPECT_NO_THROW(JSON::parse(notTooDeep + std::string(500, ']')));
    EXPECT_EQ(JSON::parse("\xEF\xBB\xBF{}"), JSON::object());
}

/// The answers of a reader about a value, as text.
std::string answers(const auto& value) {
    const auto show = [](const auto& answer) { return answer ? JSON(*answer).dump() : std::string("-"); };
    const auto text = value.string();
    return std::to_string(value.isNull()) + std::to_string(value.isObject()) + " " + show(value.integer()) +
           " " + show(value.unsignedInteger()) + " " + show(value.number()) + " " +
           (text ? std::string(*text) : std::string("-"));
}

TEST(JSONView, answersLikeTheTree) {
    const std::string text =
        "\xEF\xBB\xBF"
        R"({"a":null,"b":true,"c":-3,"d":18446744073709551615,"e":2.0,"f":2.5,"g":"x\u00e9\n","h":{},
        "i":[1,"two",{"three":3}],"j":1e300,"":-2.0})";
    JSONParser parser;
    for (int round = 0; round < 2; ++round) {
        const JSON tree = JSON::parse(text);
        const JSONView view = parser.parse(text);
        const JSONMembers members(view);
        EXPECT_EQ(view.value(), tree);
        for (const auto& [key, value] : *tree.members()) {
            EXPECT_EQ(answers(view.find(key).value()), answers(value)) << key;
            EXPECT_EQ(answers(members.find(key).value()), answers(value)) << key;
        }
        EXPECT_FALSE(view.find("z") || members.find("z"));
        const auto elements = view.find("i")->elements();
        ASSERT_TRUE(elements && elements->size() == 3);
        EXPECT_EQ((*elements)[2].find("three")->integer(), 3);
        EXPECT_FALSE(view.elements());
        EXPECT_FALSE(JSONMembers(view.find("i").value()).isObject());
        parser.parse("[" + std::string(2'000'000, ' ') + "]"); // then small documents again
    }
    for (const char* broken : {"", "{", "{}{}", "\xFF", "01"})
        EXPECT_THROW(parser.parse(broken), JSONError) << broken;
    EXPECT_TRUE(parser.parse(" 7 ").integer() == 7) << "still of use after an error";
}

TEST(JSONRecords, areVisitedAsTheyAreWritten) {
    std::string text = R"( {"a":{ "x" : [1,{"y":"}"}] },"b\"\u00e9":{},"a":{"later":1}} )";
    std::vector<std::pair<std::string, std::string>> visited;
    forEachRecord(text,
                  [&](auto key, auto record) { visited.emplace_back(key, JSON::parse(record).dump()); });
    EXPECT_EQ(visited, (std::vector<std::pair<std::string, std::string>>{
                           {"a", R"({"x":[1,{"y":"}"}]})"}, {"b\"\xC3\xA9", "{}"}, {"a", R"({"later":1})"}}));
    for (std::string broken :
         {"", " ", "null", "[]", "{", "{}{}", "{\"a\":1}", "{\"a\":{}", "{\"a\":{},}", "{\"a\":{}x}",
          "{\"a\" {}}", "{a:{}}", "{\"a\":{\"b\":\"}}", "{\"\\x\":{}}", "{\"a\":{\"b\":\"\xFF\"}}"})
        EXPECT_THROW(forEachRecord(broken, [](auto, auto) {}), JSONError) << broken;
}

TEST(JSONParts, areTheTextsOfElementsAndMembers) {
    using Texts = std::vector<std::string_view>;
    const std::string list =
        "\xEF\xBB\xBF [ {\"a\" : [1,{\"y\":\"}\\\\\\\"]\"}]} ,1.5\n,\"[\\\\\", null,[ ]] ";
    EXPECT_EQ(listParts(list), (Texts{R"({"a" : [1,{"y":"}\\\"]"}]})", "1.5", R"("[\\")", "null", "[ ]"}));
    EXPECT_EQ(listParts("[ ]"), Texts());
    EXPECT_EQ(listParts("{}"), std::nullopt);
    EXPECT_EQ(memberParts(R"( {"a":{"x":1}, "b\"\u00e9" : [2] ,"a":3} )"),
              (JSONMemberParts{{"a", R"({"x":1})"}, {"b\"\xC3\xA9", "[2]"}, {"a", "3"}}));
    EXPECT_EQ(memberParts("[]"), std::nullopt);
    for (const char* broken :
         {"[", "[1", "[1,]", "[,1]", "[1 2]", "[1]]", "[1}", "[\"a]", "[{]", "[{\"a\":\"\\\"}]"})
        EXPECT_THROW(listParts(broken), JSONError) << broken;
    for (const char* broken : {"{", "{\"a\"}", "{\"a\":}", "{a:1}", "{1:2}", "{\"a\":1,}", "{}{}"})
        EXPECT_THROW(memberParts(broken), JSONError) << broken;
    std::string dense = "[";
    for (std::size_t i = 0; i < 2 * JSON::fewValues; ++i) dense += "1,";
    EXPECT_THROW(listParts(dense + "1]"), JSONError) << "the list of parts would be larger than the text";
}

TEST(JSONParts, aStopEndsTheDivision) {
    std::string records; // 4,000 brackets and texts
    for (int i = 0; i < 1000; ++i) records += R"({"key":["text"]},)";
    std::stop_source source;
    const auto divide = [&] { listParts("[" + records + "]", source.get_token()); };
    EXPECT_THROW(divide(), JSONError) << "nothing is after the last comma";
    source.request_stop();
    EXPECT_THROW(divide(), Stopped);
    EXPECT_THROW(memberParts("{\"list\":[" + records + "}", source.get_token()), Stopped);
}

} // namespace
} // namespace orvane::platform
