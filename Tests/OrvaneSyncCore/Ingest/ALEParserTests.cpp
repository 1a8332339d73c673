#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"

#include "OrvaneSyncCore/Services/Ingest/ReportRecords.h"

#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using Row = std::map<std::string, std::string>;
using Texts = std::vector<std::string>;

Texts columns(const ALEFile& file) {
    Texts names;
    for (const std::string_view name : file.columns()) names.emplace_back(name);
    return names;
}

std::vector<Row> rows(const ALEFile& file) {
    std::vector<Row> rows;
    for (std::size_t row = 0; row < file.clipCount(); ++row) {
        const ALEClip clip = file.clip(row);
        rows.push_back(clip.fields());
        // Both ways to read a cell give the same.
        for (const std::string_view column : file.columns()) {
            const auto entry = rows.back().find(std::string(column));
            EXPECT_EQ(clip.cell(column), entry == rows.back().end()
                                             ? std::nullopt
                                             : std::optional<std::string_view>(entry->second));
        }
        EXPECT_EQ(clip.cell("no such column"), std::nullopt);
    }
    return rows;
}

TEST(ALEParser, readsTablesAndSections) {
    const auto check = [&](const char* name, const std::string& content, const Texts& expectedColumns,
                           const std::vector<Row>& expectedRows, const ALEFile::Heading& heading = {}) {
        SCOPED_TRACE(name);
        const ALEFile file = ALEParser().parse(content);
        EXPECT_EQ(columns(file), expectedColumns);
        EXPECT_EQ(rows(file), expectedRows);
        EXPECT_EQ(file.heading(), heading);
    };
    check("a title above the header goes", "Camera report\n\nName,Take\nA,1\n", {"Name", "Take"},
          {{{"Name", "A"}, {"Take", "1"}}});
    check("header cells are trimmed, others are not", " Name ;\"Take\t\"\n A ; 1 \n", {"Name", "Take"},
          {{{"Name", " A "}, {"Take", " 1 "}}});
    check("a quoted delimiter belongs to the cell, and quotes vanish",
          "a,b\n\"x;y\",z\n\"say \"\"hi\"\", you\",2\n", {"a", "b"},
          {{{"a", "x;y"}, {"b", "z"}}, {{"a", "say hi, you"}, {"b", "2"}}});
    check("a quote that is never closed holds up its own line only", "a,b\n\"1,2\n3,4\n", {"a", "b"},
          {{{"a", "1,2"}}, {{"a", "3"}, {"b", "4"}}});
    check("a quoted cell holds line ends, each as a line feed", "a,b\r\n\"1\r\n2\r\n\",x\r\n3,\"4\n\r,5\"",
          {"a", "b"}, {{{"a", "1\n2\n"}, {"b", "x"}}, {{"a", "3"}, {"b", "4\n\n,5"}}});
    check("and quotes in it, and another such cell behind it",
          "a,b\n\"say \"\"hi\"\"\n\"\"\",\"x\ny\"\n3,4\n", {"a", "b"},
          {{{"a", "say hi\n"}, {"b", "x\ny"}}, {{"a", "3"}, {"b", "4"}}});
    check("an inch inside a cell holds up its own line only", "a,b\n5\" lens,2\n\"x\",\"y\"\n", {"a", "b"},
          {{{"a", "5 lens,2"}}, {{"a", "x"}, {"b", "y"}}});
    check("a quote that another cell's would close closes nothing", "a,b\n\"1,2\n\"\",4\n\"5\",6\n",
          {"a", "b"}, {{{"a", "1,2"}}, {{"a", ""}, {"b", "4"}}, {{"a", "5"}, {"b", "6"}}});
    check("line ends in a quoted header", "Roll,\"1\"\r\n\"Clip\r\nName\",Reel\r\n1,2\r\n",
          {"Clip\nName", "Reel"}, {{{"Clip\nName", "1"}, {"Reel", "2"}}});
    check("the header stands behind the preamble of a sound report",
          "SOUND REPORT\rProject:,\"Film\",Sound Mixer:,\"N. N.\",Roll:,\"\"\rDate,2026-11-20\r\r"
          "File Name,Tape,T1\r\"A_1.WAV\",\"SR1\",Boom\r",
          {"File Name", "Tape", "T1"}, {{{"File Name", "A_1.WAV"}, {"Tape", "SR1"}, {"T1", "Boom"}}});
    check("also a preamble that alone would choose the delimiter",
          [] {
              std::string text;
              for (char c = 'a'; c <= 'k'; ++c) text += std::string(1, c) + ",Berlin, Mitte\n";
              return text + "Scene;FILE_NAME\n1;a.wav\n";
          }(),
          {"Scene", "FILE_NAME"}, {{{"Scene", "1"}, {"FILE_NAME", "a.wav"}}});
    check("one known name is a value", "Date,Roll\nName,x\nTake,y\n", {"Date", "Roll"},
          {{{"Date", "Name"}, {"Roll", "x"}}, {{"Date", "Take"}, {"Roll", "y"}}});
    check("rows may be too short or too long, and empty cells are cells", "a,b,c\n1\n1,2,3,4\n,,\n",
          {"a", "b", "c"},
          {{{"a", "1"}}, {{"a", "1"}, {"b", "2"}, {"c", "3"}}, {{"a", ""}, {"b", ""}, {"c", ""}}});
    check("of two columns with one name the later one counts, where the row reaches it", "a,b,a\n1,2,3\n4\n",
          {"a", "b", "a"}, {{{"a", "3"}, {"b", "2"}}, {{"a", "4"}}});
    check("lines end in any way, with blank ones between", "a,b\r1,2\r\n3,4\n \t\r\r\n5,6", {"a", "b"},
          {{{"a", "1"}, {"b", "2"}}, {{"a", "3"}, {"b", "4"}}, {{"a", "5"}, {"b", "6"}}});
    check("a header alone", "a\tb", {"a", "b"}, {});
    check("tabs win a draw, semicolons need a majority", "a\tb,c\n1\t2,3\n", {"a", "b,c"},
          {{{"a", "1"}, {"b,c", "2,3"}}});
    check("only the first ten lines choose the delimiter",
          "a,b\n1,\n2,\n3,\n4,\n5,\n6,\n7,\n8,\n9,\n;;;;;;;;;;;;,x\n", {"a", "b"}, [] {
              std::vector<Row> rows;
              for (char c = '1'; c <= '9'; ++c) rows.push_back({{"a", std::string(1, c)}, {"b", ""}});
              rows.push_back({{"a", ";;;;;;;;;;;;"}, {"b", "x"}});
              return rows;
          }());
    check("sections",
          "Heading\nFIELD_DELIM\tTABS\nFPS\t24\nFPS\t25\nalone\n\tlate\n\nColumn\n Name\tTake\t\tTape\t\n"
          "more\tcolumns\n\nData\nA\t\t\"T\"\n\t\n\tx\n",
          {" Name", "Take", "Tape"},
          {{{" Name", "A"}, {"Take", ""}, {"Tape", "\"T\""}}, {{" Name", ""}, {"Take", "x"}}},
          {{"FIELD_DELIM", "TABS"}, {"FPS", "25"}});
    check("sections without a heading, in any order; rows in front of the columns have none",
          "junk\n Data \n1\t2\nColumn\na\tb\nData\n3\t4\n", {"a", "b"}, {{}, {{"a", "3"}, {"b", "4"}}});
    check("section names count in their own case only", "column,Data\nData,x\n", {"column", "Data"},
          {{{"column", "Data"}, {"Data", "x"}}});
}

TEST(ALEParser, saysWhyThereIsNoReport) {
    using enum ALEParserError::Kind;
    using std::string_literals::operator""s;
    const test::TemporaryDirectory folder;
    const auto check = [&](const char* name, const std::string& bytes, const ALEParserError::Kind& kind) {
        SCOPED_TRACE(name);
        const FileURL url{folder.write("report.csv", bytes)};
        try {
            ALEParser().parse(url);
            FAIL();
        } catch (const ALEParserError& error) {
            EXPECT_EQ(error.kind(), kind);
        }
    };
    check("nothing", "", noColumns);
    check("blanks", " \n\t\n", noColumns);
    check("one column", "Name\nA\nB\n", noColumns);
    check("sections without columns", "Column\n\nData\na\tb\n", noColumns);
    check("a mark of UTF-8 in front of other bytes",
          "\xEF\xBB\xBF"
          "a,b\n\xFF",
          unreadable);
    check("half a character behind a mark of UTF-16",
          "\xFF\xFE"
          "a\0,\0b"s,
          unreadable);
    check("half a pair", "\xFE\xFF\xD8\x00\0,"s, unreadable);
    check("a document", "%PDF-1.7\nName,Take\n", noTable);
    check("bytes of any kind", "Column\n\x01\x02\x03\0Data\n\x04"s, noTable);
    for (const std::string& path : {folder.path(), folder.path("gone.csv")})
        EXPECT_THROW(ALEParser().parse(FileURL{path}), ALEParserError);
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

/// The same table in every encoding, with every delimiter and line end.
TEST(ALEParser, detectsEncodingAndDelimiter) {
    const auto narrow = [](const std::string& word) {
        return [word](const std::u16string& text) {
            std::string bytes;
            for (const char16_t unit : text)
                bytes += unit == u'ü' ? word : std::string(1, static_cast<char>(unit));
            return bytes;
        };
    };
    const auto wide = [](const std::string& mark, bool bigEndian) {
        return [=](const std::u16string& text) { return mark + utf16(text, bigEndian); };
    };
    // `accented`: what "Türe" is read as
    const auto check = [&](const char* name, const std::function<std::string(const std::u16string&)>& encode,
                           const std::string& accented) {
        for (const char16_t delimiter : u",;\t")
            for (const char16_t* lineEnd : {u"\n", u"\r\n", u"\r"}) {
                if (delimiter == 0) return;
                const std::u16string d(1, delimiter);
                const std::u16string text =
                    u"Name" + d + u"Comment" + lineEnd + u"A001" + d + u"Türe" + lineEnd;
                const ALEFile file = ALEParser().parse(ALEParser::decodeText(encode(text)));
                EXPECT_EQ(columns(file), (Texts{"Name", "Comment"})) << name;
                EXPECT_EQ(rows(file), (std::vector<Row>{{{"Name", "A001"}, {"Comment", accented}}})) << name;
            }
    };
    check("UTF-8", narrow("ü"), "Türe");
    check(
        "UTF-8 with a mark", [&](const auto& text) { return "\xEF\xBB\xBF" + narrow("ü")(text); }, "Türe");
    check("UTF-16 little-endian with a mark", wide("\xFF\xFE", false), "Türe");
    check("UTF-16 big-endian with a mark", wide("\xFE\xFF", true), "Türe");
    check("UTF-16 little-endian", wide("", false), "Türe");
    check("UTF-16 big-endian", wide("", true), "Türe");
    check("Mac OS Roman", narrow("\x9F"), "Türe");
    check("Windows-1252", narrow("\xFC"), "Türe");
}

TEST(ALEParser, needsTimeAndMemoryInProportionToTheFile) {
    // Texts with NUL bytes that are not UTF-16: one at every second byte, and a few.
    using std::string_literals::operator""s;
    EXPECT_EQ(ALEParser::decodeText("a\0b\0\0"s), "a\0b\0\0"s);
    EXPECT_EQ(ALEParser::decodeText("a,b\n\0,2\n"s), "a,b\n\0,2\n"s);
    // A character across the border of two pieces in which a long text is examined.
    for (const std::size_t before : {1, 2, 3, 4}) {
        const std::string text = std::string((std::size_t{4} << 20U) - before, 'a') + "\U0001F3AC,";
        EXPECT_TRUE(ALEParser::decodeText(text) == text) << before;
    }

    constexpr std::size_t manyColumns = 10000;
    std::string header, row;
    for (std::size_t i = 0; i < manyColumns; ++i) {
        header += "c" + std::to_string(i / 2) + ",";
        row += std::to_string(i) + ",";
    }
    const ALEFile wide = ALEParser().parse(header + "\n" + row + "\n" + row);
    EXPECT_EQ(wide.columns().size(), manyColumns + 1);
    EXPECT_EQ(wide.clip(1).cell("c4999"), "9999");
    EXPECT_EQ(wide.clip(1).fields().size(), manyColumns / 2 + 1);

    const ALEFile nameless = ALEParser().parse(",a,,b\n1,2,3, \n4");
    EXPECT_EQ(nameless.clip(0).cell(""), "3");
    EXPECT_EQ(nameless.clip(1).cell(""), "4");
    EXPECT_EQ(nameless.clip(1).cell("b"), std::nullopt);
    EXPECT_EQ(nameless.columnsWithText(), std::vector({true, true, true, false}));

    constexpr std::size_t oneLine = 200'000;
    EXPECT_EQ(ALEParser().parse(std::string(oneLine, ',')).columns().size(), oneLine + 1);
    EXPECT_THROW(ALEParser().parse(std::string(oneLine, '"')), ALEParserError);
    EXPECT_EQ(ALEParser().parse("a,b\n" + std::string(oneLine, '\r')).clipCount(), 0U);
    const auto cellOf = [](std::size_t length) {
        return ALEParser().parse("a,b\n\"" + std::string(length, '\n') + "\",x\n");
    };
    constexpr std::size_t most = ReportRecords::mostCellBytes;
    EXPECT_EQ(cellOf(most - 2).clip(0).cell("a")->size(), most - 2);
    EXPECT_EQ(cellOf(most - 2).openQuotes(), 0U);
    EXPECT_EQ(cellOf(most).openQuotes(), 2U) << "no cell is that long, and the other quote opens one";
    EXPECT_EQ(cellOf(most).firstOpenQuoteLine(), 2U);
    // This would take hours if each line searched all lines that follow.
    std::string markers, quotes;
    for (std::size_t i = 0; i < oneLine; ++i) markers += "Data\n", quotes += "\"\"\",\"\n";
    EXPECT_EQ(ALEParser().parse("Column\na\n" + markers).clipCount(), 0U);
    EXPECT_GT(ALEParser().parse("a,b\n" + quotes).clipCount(), 0U);
    EXPECT_EQ(ALEParser().parse("a,b\n\"" + std::string(oneLine, ',')).clip(0).cell("a")->size(), oneLine);
}

} // namespace
} // namespace orvane
