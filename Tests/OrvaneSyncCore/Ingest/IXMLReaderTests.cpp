#include "OrvaneSyncCore/Services/Ingest/IXMLReader.h"

#include "MediaFactory/MediaFactory.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::BroadcastExtension;
using test::WaveMaker;

IXMLReader::Broadcast readBytes(const std::string& bytes) {
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(bytes)));
    return IXMLReader().readBroadcast(file);
}

WaveMaker wave() { return WaveMaker().format({}); }

const std::string document = test::IXMLText{.scene = "12A", .take = "3", .tracks = {"Boom"}}.text();

TEST(ChunkWalk, findsChunksAtAnyPlace) {
    const BroadcastExtension extension{.originator = "Mixer", .timeReference = 172'800'000};
    const auto check = [&](const char* name, const std::string& bytes) {
        SCOPED_TRACE(name);
        const auto found = readBytes(bytes);
        EXPECT_EQ(found.bext.timeRef, 172'800'000U);
        EXPECT_EQ(found.bext.originator, "Mixer");
        ASSERT_TRUE(found.ixml.has_value());
        EXPECT_EQ(found.ixml->scene, "12A");
    };
    check("in front of the sound", wave().bext(extension).iXML(document).silence(100).bytes());
    check("behind the sound", wave().silence(100).iXML(document).bext(extension).bytes());
    check("behind chunks of odd size",
          wave().chunk("odd ", "abc").iXML(document).chunk("PAD ", "x").bext(extension).bytes());
    check("the first of its name counts",
          wave().bext(extension).iXML(document).iXML("<BWFXML/>").bext({}).bytes());
    check("an empty one does not count",
          wave().chunk("bext", "").chunk("iXML", "").bext(extension).iXML(document).bytes());
}

TEST(ChunkWalk, isBounded) {
    std::string junk;
    for (int i = 0; i < 10000; ++i) junk += "JUNK" + test::le32(0);
    const auto behind = [&junk](std::size_t chunks) {
        const std::string ixml = "iXML" + test::le32(document.size()) + document;
        return readBytes("RIFF" + test::le32(0) + "WAVE" + junk.substr(0, 8 * chunks) + ixml).ixml;
    };
    EXPECT_TRUE(behind(9999).has_value());
    EXPECT_FALSE(behind(10000).has_value());
}

TEST(ChunkWalk, otherFilesHaveNoChunks) {
    std::string good = wave().bext({.timeReference = 5}).iXML(document).bytes();
    for (const std::string& bytes : {std::string(), good.substr(0, 11), "RIFX" + good.substr(4),
                                     good.substr(0, 8) + "AVI " + good.substr(12)})
        EXPECT_FALSE(readBytes(bytes).bext.timeRef.has_value()) << bytes.substr(0, 12);
}

TEST(ChunkWalk, largeFilesHaveTheirSizesInFront) {
    const test::TemporaryDirectory folder;
    const std::string path = folder.path("large.wav");
    wave().rf64().bext({.timeReference = 9}).silence(2'000'000'000).iXML(document).writeTo(path);
    const auto file = platform::RandomAccessFile::open(path);
    ASSERT_TRUE(file.has_value());
    EXPECT_GT(file->size(), std::uint64_t{1} << 32U);
    EXPECT_EQ(IXMLReader().readAll(path).bextTimeRef, 9U);
    EXPECT_TRUE(IXMLReader().readAll(path).ixml.has_value()) << "behind more than 4 GB of sound";

    // BW64 may have a long description of its objects, whose size is in the table of "ds64".
    const std::string ds64 =
        test::le64(0) + test::le64(4) + test::le64(0) + test::le32(1) + "axml" + test::le64(6);
    const std::string bytes = "BW64" + test::le32(0xFFFFFFFF) + "WAVEds64" + test::le32(ds64.size()) + ds64 +
                              "data" + test::le32(0xFFFFFFFF) + "1234axml" + test::le32(0xFFFFFFFF) +
                              "<adm/>" + "iXML" + test::le32(document.size()) + document;
    EXPECT_TRUE(readBytes(bytes).ixml.has_value());
    EXPECT_FALSE(readBytes(bytes.substr(0, 40)).ixml.has_value());
}

TEST(ChunkWalk, readsNothingBeyondTheFile) {
    // A document that claims four gigabytes is complete if the file is cut off after the document's end.
    const auto claiming = [](const std::string& body) {
        return wave().bext({.timeReference = 7}).chunkClaiming("iXML", 0xFFFFFFF0, body).bytes();
    };
    EXPECT_TRUE(readBytes(claiming(document)).ixml.has_value());
    EXPECT_FALSE(readBytes(claiming(document.substr(0, document.size() - 3))).ixml.has_value());
    EXPECT_EQ(readBytes(claiming("<")).bext.timeRef, 7U);
}

TEST(ChunkWalk, aHoleIsNoDocument) {
    const test::TemporaryDirectory folder;
    const std::string path = folder.path("hole.wav");
    test::SparseBytes bytes;
    bytes.append("RIFF" + test::le32(0xFFFFFFFF) + "WAVEiXML" + test::le32(0xF0000000) + document);
    bytes.appendZeros(0xE0000000);
    bytes.writeTo(path);
    EXPECT_EQ(IXMLReader().read(path).value().take, "3") << "the document ends at its first NUL";
}

TEST(ChunkWalk, operationsOnPaths) {
    const test::TemporaryDirectory folder;
    const std::string path = folder.path("take \xE9.wav");
    wave().bext({.originator = "R", .timeReference = 9}).iXML(document).writeTo(path);
    const IXMLReader reader;
    EXPECT_EQ(reader.read(path).value().scene, "12A");
    EXPECT_EQ(reader.readBextTimeReference(path), 9U);
    EXPECT_EQ(reader.readAll(path).bextTimeRef, 9U);
    EXPECT_EQ(reader.readAll(path).ixml.value().scene, "12A");
    EXPECT_EQ(reader.readBextFull(path).originator, "R");
    EXPECT_FALSE(reader.readAll(folder.path("missing.wav")).ixml.has_value());
    EXPECT_FALSE(reader.read(folder.path()).has_value());
}

TEST(BextChunk, eachFieldNeedsOnlyItsOwnBytes) {
    const auto cut = [](std::size_t bytes) {
        return readBytes(wave().bext({.originator = "Mixer", .timeReference = 5, .bytes = bytes}).bytes())
            .bext;
    };
    EXPECT_EQ(cut(346).timeRef, 5U);
    EXPECT_FALSE(cut(345).timeRef.has_value());
    EXPECT_TRUE(cut(330).originationDate.has_value());
    EXPECT_FALSE(cut(329).originationDate.has_value());
    EXPECT_EQ(cut(288).originator, "Mixer");
    EXPECT_FALSE(cut(287).originator.has_value());
    EXPECT_FALSE(readBytes(wave().bext({.timeReference = 0}).bytes()).bext.timeRef.has_value());
    EXPECT_EQ(readBytes(wave().bext({.timeReference = ~0ULL}).bytes()).bext.timeRef, ~0ULL);
}

TEST(BextChunk, originator) {
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {"Mixer 6 ", "Mixer 6"},
        {" \t\x01Mixer\x7F", "Mixer"},
        {"", std::nullopt},
        {"  \n ", std::nullopt},
        {"Mixer \xE9", std::nullopt},
        {std::string("Mixer\0\xE9", 7), std::nullopt},
        {std::string(40, 'x'), std::string(32, 'x')},
    };
    for (const auto& [written, read] : cases)
        EXPECT_EQ(readBytes(wave().bext({.originator = written}).bytes()).bext.originator, read) << written;
}

TEST(BextChunk, originationDate) {
    const auto noon = [](int year, int month, int day) {
        return calendar::date({year, month, day, 12, 0, 0});
    };
    const std::pair<std::string, std::optional<Date>> cases[] = {
        {"2024:03:09", noon(2024, 3, 9)},   {"2024-03-09", noon(2024, 3, 9)},
        {"2024--3--9", noon(2024, 3, 9)},   {"24-03-09  ", std::nullopt},
        {"2024/03/09", std::nullopt},       {"2024-03-0x", std::nullopt},
        {"2024-03-0 ", std::nullopt},       {"20240309--", std::nullopt},
        {"20-24-03-9", std::nullopt},       {"0000-00-00", std::nullopt},
        {"2024-03-\xB9\xB9", std::nullopt}, {"", std::nullopt},
    };
    for (const auto& [written, read] : cases)
        EXPECT_EQ(readBytes(wave().bext({.date = written}).bytes()).bext.originationDate, read) << written;
}

std::optional<IXMLData> parsed(const std::string& inside) {
    return IXMLReader::parseIXMLContent("<BWFXML>" + inside + "</BWFXML>");
}

TEST(IXMLDocument, fieldsAreFoundByTheirBareNames) {
    const auto data =
        parsed("<PROJECT>P &amp; Q</PROJECT><sCeNe>\n 12A\t</sCeNe><X><TAKE>3</TAKE></X><TAPE>R1</TAPE>"
               "<NOTE><![CDATA[a < b]]></NOTE><CIRCLED>true</CIRCLED><WILD_TRACK>TRUE</WILD_TRACK>"
               "<SPEED><NOTE>x</NOTE><SCENE>no</SCENE><TIMECODE_RATE>30000/1001</TIMECODE_RATE>"
               "<TIMECODE_FLAG>NDF</TIMECODE_FLAG></SPEED><TIMECODE_RATE>1/1</TIMECODE_RATE>");
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(toJSON(*data).dump(),
              R"({"circled":"true","note":"a < b","project":"P & Q","scene":"12A","take":"3","tape":"R1",)"
              R"("timecodeFlag":"NDF","timecodeRate":"30000/1001","tracks":[],"wildTrack":"TRUE"})");
}

TEST(IXMLDocument, theLastElementOfANameCounts) {
    EXPECT_EQ(parsed("<SCENE>1</SCENE><SCENE>2</SCENE>")->scene, "2");
    EXPECT_FALSE(parsed("<NOTE>filled</NOTE><NOTE/>")->note.has_value());
    EXPECT_FALSE(parsed("<SPEED><TIMECODE_RATE>25/1</TIMECODE_RATE><TIMECODE_RATE> </TIMECODE_RATE></SPEED>")
                     ->timecodeRate.has_value());
    EXPECT_EQ(parsed("<SCENE>a<B>b</B>c</SCENE>")->scene, "bc")
        << "an element's start throws away what stood before";
}

TEST(IXMLDocument, tracks) {
    const auto data = parsed(
        "<TRACK><NAME>outside</NAME><CHANNEL_INDEX>1</CHANNEL_INDEX></TRACK><NAME>n</NAME><TRACK_LIST>"
        "<SCENE>no</SCENE><NAME>no</NAME>"
        "<TRACK><CHANNEL_INDEX>7</CHANNEL_INDEX><INTERLEAVE_INDEX>3</INTERLEAVE_INDEX><NAME> Lav A "
        "</NAME></TRACK>"
        "<TRACK><NAME>Boom</NAME><CHANNEL_INDEX>+2</CHANNEL_INDEX><INTERLEAVE_INDEX>x</INTERLEAVE_INDEX></"
        "TRACK>"
        "<TRACK><CHANNEL_INDEX>4</CHANNEL_INDEX></TRACK>"
        "<TRACK><CHANNEL_INDEX>5</CHANNEL_INDEX><NAME> </NAME></TRACK>"
        "<TRACK><NAME>no index</NAME></TRACK>"
        "<TRACK><CHANNEL_INDEX>99999999999</CHANNEL_INDEX><NAME>no number</NAME><SCENE>no</SCENE></TRACK>"
        "</TRACK_LIST><SCENE>after</SCENE>");
    ASSERT_TRUE(data.has_value());
    EXPECT_EQ(data->tracks, (std::vector<IXMLTrack>{{3, "Lav A"}, {2, "Boom"}}));
    EXPECT_EQ(data->scene, "after");
}

TEST(IXMLDocument, whatIsNotTrustedIsNotRead) {
    const std::string bomb = "<!DOCTYPE x [<!ENTITY a \"b\">]><BWFXML><SCENE>&a;</SCENE></BWFXML>";
    const std::string padding(65536, ' ');
    const auto check = [&](const char* name, const std::string& bytes, bool isRead) {
        EXPECT_EQ(IXMLReader::parseIXMLContent(bytes).has_value(), isRead) << name;
    };
    check("not a document", "recorder was switched off", false);
    check("empty", "", false);
    check("cut off", "<BWFXML><SCENE>1</SCENE>", false);
    check("two roots", "<A/><B/>", false);
    check("entities", bomb, false);
    check("an entity in the text of a note", "<A><NOTE><![CDATA[<!eNtItY]]></NOTE></A>", false);
    check("behind NUL anything goes", std::string("<A/>") + '\0' + "<!ENTITY", true);
    check("bytes that are no text", "<A>\xFF</A>", false);
    check("a declared encoding", "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><A><NOTE>\xE9</NOTE></A>",
          true);
    check("entities beyond the start", "<!--" + padding + "-->" + bomb, true);
}

TEST(IXMLDocument, fiftyMegabytesOfText) {
    std::string note = "x";
    for (int i = 0; i < 25'000'000; ++i) note += "\xC3\xA9";
    const auto read =
        readBytes(wave().iXML("<BWFXML><NOTE>" + note + "</NOTE><TAKE>1</TAKE></BWFXML>").bytes());
    ASSERT_TRUE(read.ixml.has_value());
    EXPECT_EQ(read.ixml->note, note.substr(0, 65535)) << "64 KB of a field, and no half character";
    EXPECT_EQ(read.ixml->take, "1");
}

} // namespace
} // namespace orvane
