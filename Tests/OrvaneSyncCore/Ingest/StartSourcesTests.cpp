#include "ManualQueue.h"
#include "MediaFactory/MediaFactory.h"
#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"
#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using test::MovieMaker;
using test::WaveMaker;

std::string text(const std::optional<StartTimecode>& start) {
    if (!start) return "none";
    return start->text + (start->rate ? " " + std::string(timecodeRate::name(*start->rate)) : "");
}

std::string ltcTable(const std::string& attributes, const std::string& value) {
    return "<NonRealTimeMeta><LtcChangeTable " + attributes + "><LtcChange frameCount=\"0\" value=\"" +
           value +
           "\" status=\"increment\"/><LtcChange frameCount=\"99\" value=\"00000000\"/></LtcChangeTable>"
           "<VideoFormat><VideoFrame formatFps=\"29.97p\"/></VideoFormat></NonRealTimeMeta>";
}

std::string xmp(const std::string& description) {
    return "<?xpacket begin='' id='x'?><x:xmpmeta xmlns:x='x'><rdf:RDF><rdf:Description>" + description +
           "</rdf:Description></rdf:RDF></x:xmpmeta><?xpacket end='w'?>";
}

std::string xmpTimecode(const std::string& element, const std::string& format, const std::string& value) {
    return "<xmpDM:" + element + " xmpDM:timeFormat='" + format + "' xmpDM:timeValue='" + value + "'/>";
}

TEST(TimecodeDocument, whatADocumentStates) {
    const auto check = [](const char* name, const std::string& document, std::optional<double> picture,
                          const char* expected) {
        EXPECT_EQ(text(startTimecodeFromXML(document, picture)), expected) << name;
    };
    check("frames first, with the drop flag", ltcTable("tcFps='30'", "67460811"), 29.97,
          "11:08:46;27 fps29_97d");
    check("without it", ltcTable("tcFps='30'", "27460811"), 29.97, "11:08:46:27 fps29_97");
    check("flags above the hours", ltcTable("tcFps='25'", "17305759"), 25.0, "19:57:30:17 fps25");
    check("half steps of a fast picture", ltcTable("tcFps='25' halfStep='true'", "24000001"), 50.0,
          "01:00:00:24 fps25");
    check("24 frames under 23.976", ltcTable("tcFps='24'", "22410317"), 23.976025, "17:03:41:22 fps23_976");
    check("the document's rate where the file has none", ltcTable("tcFps='24'", "22410317"), {},
          "17:03:41:22 fps23_976");
    check("a label", ltcTable("tcFps='25'", "10:11:12:13"), 25.0, "10:11:12:13 fps25");
    check("a frame beyond the base", ltcTable("tcFps='25'", "25000001"), 25.0, "01:00:00:25 fps25");
    check("no digits", ltcTable("tcFps='25'", "1A000001"), 25.0, "none");
    check("a start of 0 of a camera", ltcTable("tcFps='25'", "00000000"), 25.0, "00:00:00:00 fps25");

    const std::string own = xmpTimecode("startTimecode", "25Timecode", "01:00:00:00");
    check("XMP", xmp(own), {}, "01:00:00:00 fps25");
    check("what the user set", xmp(own + xmpTimecode("altTimecode", "2997DropTimecode", "02:00:00;02")), {},
          "02:00:00;02 fps29_97d");
    check("not a start of 0", xmp(xmpTimecode("altTimecode", "25Timecode", "00:00:00:00") + own), {},
          "01:00:00:00 fps25");
    check(
        "elements",
        xmp("<xmpDM:startTimecode rdf:parseType='Resource'><xmpDM:timeFormat>23976Timecode</xmpDM:timeFormat>"
            "<xmpDM:timeValue>01:02:03:04</xmpDM:timeValue></xmpDM:startTimecode>"),
        {}, "01:02:03:04 fps23_976");
    check("not that of a part",
          xmp("<xmpMM:Pantry><rdf:Bag><rdf:li><rdf:Description>" + own +
              "</rdf:Description></rdf:li></rdf:Bag></xmpMM:Pantry>"),
          {}, "none");
    check("an unknown format", xmp(xmpTimecode("startTimecode", "FeetFrames", "01:00:00:00")), {},
          "01:00:00:00");

    check("a plain label",
          "<C><FrameRate DropFrameFlag='true'>59.94i</FrameRate><StartTimecode>10:00:00:20"
          "</StartTimecode></C>",
          {}, "10:00:00;20 fps29_97d");
    check("cut off", own.substr(0, own.size() - 2), {}, "none");
    check("another document", "<a><timeValue>01:00:00:00</timeValue></a>", 25.0, "none");
}

class Starts : public testing::Test {
  protected:
    std::string probed(const std::string& name) {
        const FileURL url{folder.path(name)};
        asset = MediaProbeService(settings, cache).probe(url, assetKindFrom(url).value());
        return text(asset.startTimecodeString
                        ? std::optional(StartTimecode{*asset.startTimecodeString, asset.timecodeFrameRate})
                        : std::nullopt);
    }
    MovieMaker camera() const { return MovieMaker().video({.timescale = 25, .frames = 250}); }

    test::TemporaryDirectory folder;
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
    std::shared_ptr<ProbeCache> cache;
    MediaAsset asset{FileURL(), AssetKind::video};
};

TEST_F(Starts, documentsWithinAFile) {
    const std::string packet = xmp(xmpTimecode("startTimecode", "25Timecode", "01:00:00:00"));
    const std::string identity = "\xBE\x7A\xCF\xCB\x97\xA9\x42\xE8\x9C\x71\x99\x94\x91\xE3\xAF\xAC";
    const std::string camerasOwn =
        test::fullAtom("meta", test::fullAtom("hdlr", test::be32(0) + "nrtm") +
                                   test::fullAtom("xml ", ltcTable("tcFps='25'", "00000002")));
    const auto aiff = [](const std::string& chunks) {
        const std::string body = "AIFFCOMM" + test::be32(18) + test::be16(1) + test::be32(0) +
                                 test::be16(16) + test::be16(16398) + test::be64(0xBB80ULL << 48U) + chunks;
        return "FORM" + test::be32(body.size()) + body;
    };
    const auto chunk = [](const std::string& name, std::string body) {
        if (body.size() % 2 != 0) body += '\0';
        return name + test::be32(body.size()) + body;
    };
    const std::string ixml =
        "<BWFXML><SPEED><TIMECODE_RATE>25/1</TIMECODE_RATE>"
        "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>0</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_HI>"
        "<TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>172800000</TIMESTAMP_SAMPLES_SINCE_MIDNIGHT_LO>"
        "<TIMESTAMP_SAMPLE_RATE>48000</TIMESTAMP_SAMPLE_RATE></SPEED></BWFXML>";
    const auto check = [this](const char* name, const std::string& bytes, const char* expected) {
        folder.write(name, bytes);
        EXPECT_EQ(probed(name), expected) << name;
    };
    check("user data.mov", camera().userDataAtom(test::atom("XMP_", packet)).bytes(), "01:00:00:00 fps25");
    check("box.mp4", camera().trailingAtom(test::atom("uuid", identity + packet)).bytes(),
          "01:00:00:00 fps25");
    check("camera.mp4", camera().trailingAtom(camerasOwn).bytes(), "02:00:00:00 fps25");
    check("track first.mp4", camera().timecode({25, 1, 250}).trailingAtom(camerasOwn).bytes(),
          "00:00:10:00 fps25");
    check("xmp.wav", WaveMaker().format({}).silence(8).chunk("_PMX", packet).bytes(), "01:00:00:00 fps25");
    check("xmp.aif", aiff(chunk("APPL", "XMP " + packet)), "01:00:00:00 fps25");
    check("ixml.aiff", aiff(chunk("iXML", ixml)), "01:00:00:00 fps25");
    EXPECT_EQ(asset.bextTimeReference, 172'800'000U);
    EXPECT_EQ(asset.sampleRate, 48000.0);
    for (const auto& [rate, reference, stated] : {std::tuple(44100, 172'800'000ULL, std::optional(48000.0)),
                                                  {48000, 172'800'000ULL, std::nullopt},
                                                  {47952, 172'800'000ULL, std::nullopt},
                                                  {44100, 158'760'000ULL, std::nullopt}}) {
        folder.write("stamp.wav", WaveMaker()
                                      .format({.sampleRate = static_cast<std::uint32_t>(rate)})
                                      .bext({.timeReference = reference})
                                      .iXML(ixml)
                                      .silence(8)
                                      .bytes());
        probed("stamp.wav");
        EXPECT_EQ(asset.statedStampRate, stated) << rate;
    }
}

TEST_F(Starts, filesBesideAClip) {
    const std::string log =
        "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n\nColumn\nName\tStart\n\nData\nOther\t05:00:00:00\n"
        "D001\t04:00:00:00\n";
    folder.write("C001M01.XML", ltcTable("tcFps='25'", "00000002"));
    folder.write("c001.xmp", xmp(xmpTimecode("startTimecode", "25Timecode", "03:00:00:00")));
    folder.write("C002.MOV.xmp", xmp(xmpTimecode("startTimecode", "25Timecode", "03:00:00:00")));
    folder.write("D001.ale", log);
    folder.write("E001.xml", "<broken");
    folder.write("F001.ale", "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n\nColumn\nName\tStart\n\nData\n"
                             "F001\t09:05:00:27\n");
    folder.write("A001R2EC_AVID.ALE",
                 "Heading\nFIELD_DELIM\tTABS\nFPS\t24\n\nColumn\nName\tSource File\tStart\n\n"
                 "Data\nA001C001_110101_R2EC\t\t06:00:00:00\n"
                 "12A-3\tA001C002_110101_R2EC.mov\t07:00:00:23\n");
    struct Case {
        const char *name, *start, *sideFile;
    };
    for (const auto& [name, start, sideFile] :
         {Case{"c001.MP4", "02:00:00:00 fps25", "C001M01.XML"},
          Case{"C002.mov", "03:00:00:00 fps25", "C002.MOV.xmp"},
          Case{"D001.mov", "04:00:00:00 fps25", "D001.ale"}, Case{"E001.mov", "none", ""},
          Case{"F001.mov", "09:05:00:27 fps25", "F001.ale"},
          Case{"A001C001_110101_R2EC.mov", "06:00:00:00 fps24", "A001R2EC_AVID.ALE"},
          Case{"A001C002_110101_R2EC.mov", "07:00:00:23 fps24", "A001R2EC_AVID.ALE"},
          Case{"A001C003_110101_R2EC.mov", "none", ""}, Case{"C001X.mov", "none", ""}}) {
        folder.write(name, camera().bytes());
        EXPECT_EQ(probed(name), start) << name;
        EXPECT_EQ(asset.timecodeSideFile.value_or(""), sideFile) << name;
    }
    folder.write("C001.mov", camera().timecode({25, 1, 250}).bytes());
    EXPECT_EQ(probed("C001.mov").substr(0, 11), "00:00:10:00") << "the clip's own track counts";
    EXPECT_FALSE(asset.timecodeSideFile);
}

/// The start of a clip without a start of its own depends on files that the cache does not know.
TEST_F(Starts, sideFilesComeAndGoWithoutTheClip) {
    cache = std::make_shared<ProbeCache>(folder.path("cache.json"), std::make_unique<test::ManualQueue>());
    folder.write("C001.MP4", camera().bytes());
    EXPECT_EQ(probed("C001.MP4"), "none");
    const UUID id = asset.id;
    folder.write("C001M01.XML", ltcTable("tcFps='25'", "00000002"));
    EXPECT_EQ(probed("C001.MP4"), "02:00:00:00 fps25");
    folder.write("C001M01.XML", ltcTable("tcFps='25'", "00000003"));
    EXPECT_EQ(probed("C001.MP4"), "03:00:00:00 fps25");
    std::filesystem::remove(folder.path("C001M01.XML"));
    EXPECT_EQ(probed("C001.MP4"), "none");
    EXPECT_EQ(asset.id, id);
}

TEST_F(Starts, theDayOfTheHeader) {
    constexpr std::uint32_t from1904To1970 = 2'082'844'800;
    const std::pair<std::uint32_t, std::optional<const char*>> cases[] = {
        {0, {}},
        {from1904To1970 + 315'532'800, {}}, // 1980
        {from1904To1970 + 1'715'940'000, "2024-05-17T10:00:00Z"},
    };
    for (const auto& [time, expected] : cases) {
        folder.write("a.mov", camera().created(time).bytes());
        probed("a.mov");
        EXPECT_EQ(asset.headerDate, expected ? dateFromISO8601(*expected) : std::nullopt) << time;
        EXPECT_FALSE(asset.shootDay()) << "a header decides about no shoot day";
    }
}

} // namespace
} // namespace orvane
