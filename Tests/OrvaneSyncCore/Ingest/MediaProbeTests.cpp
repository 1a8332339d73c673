#include "OrvaneSyncCore/Services/Ingest/MediaProbeService.h"

#include "ManualQueue.h"
#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/MXFMaker.h"
#include "MediaFactory/MediaFactory.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <atomic>
#include <filesystem>
#include <new>
#include <numeric>
#include <sys/stat.h>

namespace orvane {
namespace {

using test::MovieMaker;
using test::WaveMaker;
using Confidence = OffspeedConfidence;

class Probe : public testing::Test {
  protected:
    std::shared_ptr<ProbeCache> newCache() const {
        return std::make_shared<ProbeCache>(folder.path("cache.json"), std::make_unique<test::ManualQueue>());
    }
    template <class Maker>
    MediaAsset probed(const Maker& maker, const std::string& name) {
        maker.writeTo(folder.path(name));
        const FileURL url{folder.path(name)};
        return MediaProbeService(settings, nullptr).probe(url, assetKindFrom(url).value());
    }

    test::TemporaryDirectory folder;
    std::shared_ptr<platform::MemorySettingsStore> settings =
        std::make_shared<platform::MemorySettingsStore>();
};

MovieMaker camera() { return MovieMaker().video({.timescale = 25, .frames = 250}).audio({.channels = 2}); }

TEST_F(Probe, aCameraFile) {
    const MediaAsset asset =
        probed(camera()
                   .timecode({25, 1, 90000})
                   .metadata("com.apple.quicktime.creationdate", "2024-05-17T10:00:00+0200"),
               "A001.mov");
    JSON json = toJSON(asset);
    for (const char* key : {"id", "url", "fileSizeBytes"}) json.remove(key);
    EXPECT_EQ(asset.fileSizeBytes, std::filesystem::file_size(asset.url.path));
    EXPECT_EQ(json, JSON::parse(R"({"kind":"video","filename":"A001.mov","startTimecodeString":"01:00:00:00",
        "timecodeFrameRate":"fps25","durationSeconds":10.0,"width":1920,"height":1080,"frameRate":25.0,"sensorFrameRate":25.0,
        "projectFrameRate":25.0,"videoCodecFourCC":"avc1","channelCount":2,"sampleRate":48000.0,
        "contentCreatedDate":"2024-05-17T08:00:00Z","dateZoneMinutes":120})"));
}

TEST_F(Probe, creationDates) {
    const auto date = [&](MovieMaker maker, const std::string& text) {
        const char* key = "com.apple.quicktime.creationdate";
        return probed(maker.metadata(key, text).metadata(key, "2020-01-01T00:00:00Z"), "a.mov")
            .contentCreatedDate;
    };
    EXPECT_FALSE(
        probed(camera().metadata("com.apple.quicktime.creationdate", "2024-05-17T08:00:00Z"), "a.mov")
            .dateZoneMinutes)
        << "nobody's clock";
    EXPECT_EQ(date(camera(), "2024-05-17T08:00:00.250Z"), dateFromISO8601("2024-05-17T08:00:00.250Z"));
    EXPECT_EQ(date(camera(), "2024-05-17T08:00:00"), calendar::date({2024, 5, 17, 8, 0, 0}));
    for (const char* text : {"2024-05-17", "2024-02-31T08:00:00", "2024-05-17T08:00:00 ", "yesterday"})
        EXPECT_FALSE(date(camera(), text).has_value()) << text << ": the first text ends the search";
    EXPECT_FALSE(probed(camera(), "b.mov").contentCreatedDate.has_value());
}

TEST_F(Probe, theSoundOfACameraMayOutlastItsPictures) {
    const auto pictureSeconds = [&](MovieMaker maker, std::uint32_t samples) {
        return probed(maker.audio({.samples = samples}), "a.mov").pictureSeconds;
    };
    const auto four = MovieMaker().video({.timescale = 25, .frames = 100});
    EXPECT_EQ(pictureSeconds(four, 196'320), 4); // the sound lasts 4.09 s
    EXPECT_EQ(pictureSeconds(four, 193'800), std::nullopt) << "less than a frame";
    EXPECT_EQ(pictureSeconds(four, 150'000), std::nullopt) << "the picture is the longer one";
    const auto edited = MovieMaker().track({.handler = "vide",
                                            .timescale = 24000,
                                            .duration = 150 * 1001,
                                            .timeToSample = {{150, 1001}},
                                            .trackAtoms = test::atom("edts", "")});
    folder.write("a.mxf", test::mxfHeader({.duration = 100, .soundDuration = 103}));
    const MediaAsset exchanged =
        MediaProbeService(settings, nullptr).probe(FileURL{folder.path("a.mxf")}, AssetKind::video);
    EXPECT_EQ(exchanged.durationSeconds, 4.12);
    EXPECT_EQ(exchanged.pictureSeconds, 4);
    // The track header states 6.25625 s in units of 1/600.
    EXPECT_EQ(pictureSeconds(edited, 480'000), 150 * 1001 / 24000.0);
}

TEST_F(Probe, offspeed) {
    const std::optional<double> none;
    const auto unknown = Confidence::suspectedUnconfirmed(1.0);
    const auto with = [](const char* key, const test::MetadataValue& value, const char* other = nullptr,
                         const test::MetadataValue& otherValue = 0.0) {
        MovieMaker movie = camera().metadata(key, value);
        return other == nullptr ? movie : movie.metadata(other, otherValue);
    };
    const auto check = [&](const char* name, const MovieMaker& maker, std::optional<double> sensor,
                           std::optional<double> project, const std::optional<Confidence>& confidence) {
        SCOPED_TRACE(name);
        const MediaAsset asset = probed(maker, "clip.mp4");
        EXPECT_EQ(asset.sensorFrameRate, sensor);
        EXPECT_EQ(asset.projectFrameRate, project);
        EXPECT_EQ(asset.offspeedConfidence, confidence);
    };
    check("nothing but its own rate", camera(), 25.0, none, unknown);
    check("a timecode track clears it", camera().timecode({25, 1, 0}), 25.0, 25.0, {});
    check("one of another rate", camera().timecode({50, 1, 0}), 25.0, 50.0, Confidence::confirmed(true, 0.5));
    check("one without a rate", camera().timecode({0, 0, 0}), 25.0, none, unknown);
    check("no picture", MovieMaker().audio({}), none, none, {});
    check("vendor keys", with("com.acme.sensorFPS", 120.0, "projectFPS", std::int64_t{24}), 120.0, 24.0,
          Confidence::confirmed(true, 5.0));
    const auto picture = [](std::uint32_t timescale, std::uint32_t step) {
        return MovieMaker().video({.timescale = timescale, .frameDuration = step});
    };
    const std::tuple<std::uint32_t, std::uint32_t, test::TimecodeSpec> sameSpeed[] = {
        {50, 1, {25, 1, 0}},       {60000, 1001, {30000, 1001, 0}}, {60, 1, {30, 1, 0}},
        {60000, 1001, {30, 1, 0}}, {48, 1, {24000, 1001, 0}},       {24, 1, {24000, 1001, 0}},
        {24000, 1001, {24, 1, 0}}, {30, 1, {30000, 1001, 0}},       {25, 1, {24, 1, 0}},
        {25, 1, {24000, 1001, 0}}};
    for (const auto& [rate, step, counter] : sameSpeed) {
        const MediaAsset asset = probed(picture(rate, step).timecode(counter), "counted.mov");
        EXPECT_NEAR(asset.projectFrameRate.value_or(0), double(rate) / step, 1e-9) << "the picture's rate";
        EXPECT_NEAR(timecodeRate::rate(asset.timecodeFrameRate.value()).doubleValue(),
                    double(counter.timescale) / counter.frameDuration, 1e-9)
            << "labels count at their own";
        EXPECT_FALSE(asset.isOffspeed() || asset.offspeedConfidence);
    }
    check("a pace that is none of timecode's", picture(6389, 256).timecode({25, 1, 0}), 6389.0 / 256, 25.0,
          {});
    EXPECT_EQ(probed(with("projectFPS", "23.976"), "ntsc.mov").projectFrameRate, 24000.0 / 1001);
    check("as text, over the timecode track",
          with("com.acme.CaptureFrameRate", "50", "masterFPS", "+25.0").timecode({25, 1, 0}), 50.0, 25.0,
          Confidence::confirmed(true, 2.0));
    check("one key with both words", with("playbackFrameRate_recordFrameRate", 30.0), 30.0, 30.0, {});
    check("no numbers", with("project_fps", "24 fps", "sensor_fps", ""), 25.0, none, unknown);
    check("a rate of zero is kept and rejected", with("projectfps", 0.0), 25.0, 0.0, {});
    check("not finite", with("sensorfps", std::numeric_limits<double>::infinity()), 25.0, none, unknown);
    check("a ratio that no number holds", with("sensorfps", 1e300, "projectfps", 1e-300), 25.0, none, {});
    camera().writeTo(folder.path("sound.mov"));
    EXPECT_FALSE(MediaProbeService(settings, nullptr)
                     .probe(FileURL{folder.path("sound.mov")}, AssetKind::audio)
                     .offspeedConfidence.has_value());
}

TEST_F(Probe, aRecording) {
    const auto recording = [](std::uint64_t reference, const std::string& rate) {
        return WaveMaker()
            .format({.channels = 4})
            .bext({.originator = "Mixer", .date = "2024:03:09", .timeReference = reference})
            .iXML(test::IXMLText{.scene = "12A", .timecodeRate = rate, .tracks = {"Boom", "Lav"}}.text())
            .silence(48000);
    };
    const MediaAsset asset = probed(recording(172'800'000, "25/1"), "take.wav");
    EXPECT_EQ(asset.startTimecodeString, "01:00:00:00");
    EXPECT_EQ(asset.bextTimeReference, 172'800'000U);
    EXPECT_EQ(asset.bextOriginator, "Mixer");
    EXPECT_EQ(asset.contentCreatedDate, calendar::date({2024, 3, 9, 12, 0, 0}));
    EXPECT_EQ(asset.ixmlData.value().tracks.size(), 2U);
    EXPECT_EQ(asset.channelCount, 4);
    EXPECT_DOUBLE_EQ(asset.durationSeconds.value_or(0), 1.0);
    EXPECT_FALSE(asset.frameRate.has_value()) << "the recorder's rate serves the conversion alone";
    EXPECT_FALSE(asset.offspeedConfidence.has_value());

    EXPECT_EQ(probed(recording(172'800'000, "30000/1001"), "df.bwf").startTimecodeString, "01:00:00;00");
    const MediaAsset stated = probed(recording(172'800'000, "29.97 NDF"), "ndf.wav");
    EXPECT_EQ(stated.startTimecodeString, "00:59:56:12");
    EXPECT_EQ(stated.timecodeFrameRate, TimecodeFrameRate::fps29_97);
    std::string ixml = test::IXMLText{.timecodeRate = "30000/1001"}.text();
    ixml.insert(ixml.find("</SPEED>"), "<TIMECODE_FLAG>NDF</TIMECODE_FLAG>");
    EXPECT_EQ(probed(WaveMaker().bext({.timeReference = 172'800'000}).iXML(ixml).silence(48), "flag.wav")
                  .startTimecodeString,
              "01:00:00;00")
        << "the text of the rate alone says how frames are counted";
    EXPECT_EQ(probed(recording(172'802'000, ""), "24.wav").startTimecodeString, "01:00:00:01");
    EXPECT_EQ(probed(recording(172'802'000, "nonsense"), "24.wav").startTimecodeString, "01:00:00:01");
    EXPECT_FALSE(probed(recording(0, "25/1"), "none.wav").startTimecodeString.has_value());
    EXPECT_EQ(probed(recording(5, "25/1"), "renamed.aif").bextTimeReference, 5U);
    EXPECT_EQ(probed(WaveMaker().bext({.timeReference = 48000}), "headless.wav").startTimecodeString,
              "00:00:01:00")
        << "48 kHz where the file does not say";
    const MediaAsset slow =
        probed(WaveMaker().format({.sampleRate = 1}).bext({.timeReference = ~0ULL}), "slow.wav");
    EXPECT_EQ(slow.bextTimeReference, ~0ULL);
    EXPECT_FALSE(slow.startTimecodeString.has_value()) << "beyond what a timecode counts, and not midnight";
}

TEST_F(Probe, linearTimecodeIsTheLastResort) {
    const auto sound = test::ltcSignal(test::ltcBits(10, 0, 0, 0) + test::ltcBits(10, 0, 0, 1), 24);
    std::vector<float> interleaved;
    for (const float sample : sound) interleaved.insert(interleaved.end(), {0.0F, sample});
    const auto start = [&](std::uint64_t reference) {
        return probed(WaveMaker()
                          .format({.channels = 2})
                          .bext({.timeReference = reference})
                          .samples(interleaved),
                      "a.wav")
            .startTimecodeString;
    };
    EXPECT_FALSE(start(0).has_value()) << "off unless it is wanted";
    settings->setByName("ltc.enabled", true);
    EXPECT_EQ(start(0), "10:00:00:00") << "on whichever channel it is";
    settings->setByName("ltc.channelIndex", std::int64_t{0});
    EXPECT_FALSE(start(0).has_value()) << "on the chosen one alone";
    for (const std::int64_t channel : {1, 7, 1023}) {
        settings->setByName("ltc.channelIndex", channel);
        EXPECT_EQ(start(0), "10:00:00:00") << channel;
    }
    EXPECT_EQ(start(48000), "00:00:01:00");
}

TEST_F(Probe, linearTimecodeGivesTheStartOfTheFile) {
    settings->setByName("ltc.enabled", true);
    constexpr double start = 24 * 36000 + 5.4;
    const auto sound = test::LTCSignal{.rate = TimecodeFrameRate::fps24}.samples(start, 1.5);
    const MediaAsset recording = probed(WaveMaker().format({}).samples(sound), "a.wav");
    EXPECT_EQ(recording.startTimecodeString, "10:00:00:05");
    EXPECT_EQ(recording.timecodeFrameRate, TimecodeFrameRate::fps24);
    EXPECT_NEAR(static_cast<double>(recording.bextTimeReference.value_or(0)), start * 2000, 1);

    std::string bytes;
    for (const float sample : sound)
        bytes += test::be16(static_cast<std::uint16_t>(std::lround(sample * 32767)));
    const auto samples = static_cast<std::uint32_t>(sound.size());
    const MovieMaker silent = MovieMaker()
                                  .video({.frames = 36})
                                  .audio({.channels = 1,
                                          .codec = "twos",
                                          .samples = samples,
                                          .sound = std::string(bytes.size(), '\0')});
    const MovieMaker movie =
        MovieMaker(silent).audio({.channels = 1, .codec = "twos", .samples = samples, .sound = bytes});
    const MediaAsset clip = probed(movie, "a.mov");
    EXPECT_EQ(clip.startTimecodeString, "10:00:00:05") << "on the second of its sound tracks";
    EXPECT_EQ(clip.timecodeFrameRate, TimecodeFrameRate::fps24);
    EXPECT_FALSE(clip.bextTimeReference || clip.projectFrameRate);
    const MediaAsset fast =
        probed(MovieMaker()
                   .video({.timescale = 48, .frames = 72})
                   .audio({.channels = 1, .codec = "twos", .samples = samples, .sound = bytes}),
               "fast.mov");
    EXPECT_EQ(fast.startTimecodeString, "10:00:00:11") << "the nearest picture of two to a frame of timecode";
    EXPECT_EQ(fast.timecodeFrameRate, TimecodeFrameRate::fps48);
    EXPECT_FALSE(probed(silent, "b.mov").startTimecodeString.has_value());
    EXPECT_EQ(probed(MovieMaker(movie).timecode({25, 1, 90000}), "c.mov").startTimecodeString, "01:00:00:00");
    EXPECT_EQ(probed(MovieMaker(movie).timecode({25, 1, 0}), "e.mov").startTimecodeString, "10:00:00:05");
    EXPECT_EQ(probed(MovieMaker(silent).timecode({25, 1, 0}), "f.mov").startTimecodeString, "00:00:00:00");

    // An empty edit of 250 units (of 1/1000 s), then the whole track.
    const std::string edits = test::be32(2) + test::be32(250) + test::be32(~0U) + test::be32(0x10000) +
                              test::be32(1500) + test::be32(0) + test::be32(0x10000);
    const std::string sixteenBits = std::string(6, '\0') + test::be16(1) + std::string(8, '\0') +
                                    test::be16(1) + test::be16(16) + test::be32(0) +
                                    test::be32(48000U << 16U);
    const MovieMaker late = MovieMaker()
                                .video({.frames = 36})
                                .track({.handler = "soun",
                                        .timescale = 48000,
                                        .duration = samples,
                                        .sampleEntry = test::atom("twos", sixteenBits),
                                        .timeToSample = {{samples, 1}},
                                        .sampleSize = 2,
                                        .sample = bytes,
                                        .trackAtoms = test::atom("edts", test::fullAtom("elst", edits))})
                                .duration(1750, 1000);
    EXPECT_EQ(probed(late, "d.mov").startTimecodeString, "09:59:59:23") << "six frames before its sound";
}

TEST_F(Probe, anyFileGivesAnAsset) {
    camera().writeTo(folder.path("real.mov"));
    const std::string whole = folder.read("real.mov");
    folder.write("empty.mov", "");
    folder.write("noise.mov", std::string(4096, '\xA5'));
    folder.write("cut.mov", whole.substr(0, whole.size() / 2));
    folder.write("folder.mov/x", "");
    folder.write("text.wav", "this is no sound");
    std::filesystem::create_symlink("loop.mov", folder.path("loop.mov"));
    ASSERT_EQ(::mkfifo(folder.path("pipe.wav").c_str(), 0600), 0);
    settings->setByName("ltc.enabled", true);
    const auto cache = newCache();
    MediaProbeService service(settings, cache);
    for (const char* name : {"empty.mov", "noise.mov", "cut.mov", "folder.mov", "text.wav", "loop.mov",
                             "pipe.wav", "missing.mov", "mxf without anything.mxf"}) {
        SCOPED_TRACE(name);
        const FileURL url{folder.path(name)};
        const MediaAsset asset = service.probe(url, AssetKind::video);
        EXPECT_EQ(asset.filename, name);
        EXPECT_EQ(asset.url, url);
        EXPECT_FALSE(asset.startTimecodeString.has_value());
        EXPECT_FALSE(asset.durationSeconds.has_value());
    }
    EXPECT_EQ(cache->count(), 4U) << "only what could be opened: another probe may find the others readable";
}

TEST_F(Probe, manyFilesKeepTheirOrder) {
    std::vector<FileURL> urls;
    for (unsigned i = 0; i < 100; ++i) {
        // The first files take the longest.
        const std::string name =
            "take " + std::to_string(i) + (i % 3 == 0 ? " \xE9\n.mov" : " \xF0\x9F\x8E\xAC.mov");
        MovieMaker maker = camera().timecode({25, 1, i});
        if (i < 8) maker.endlessMedia().mediaBytes(3'000'000);
        maker.writeTo(folder.path(name));
        urls.push_back(FileURL{folder.path(name)});
    }
    MediaProbeService service(settings, newCache());
    std::vector<int> reports;
    const auto progress = [&](int completed, int total, const FileURL* currentFile) {
        EXPECT_EQ(total, 100);
        EXPECT_TRUE(currentFile == nullptr || std::ranges::find(urls, *currentFile) != urls.end());
        EXPECT_TRUE(completed < total || currentFile == nullptr);
        EXPECT_TRUE(completed > 0 || currentFile != nullptr) << "a file is named before it is done";
        if (reports.empty() || reports.back() != completed) reports.push_back(completed);
    };
    const auto first = service.probeAll(urls, AssetKind::video, progress);
    std::vector<int> upward(101);
    std::iota(upward.begin(), upward.end(), 0);
    EXPECT_EQ(reports, upward);
    ASSERT_EQ(first.size(), urls.size());
    for (std::size_t i = 0; i < urls.size(); ++i) {
        EXPECT_EQ(first[i].url, urls[i]);
        const std::string frames = std::to_string(100 + i % 25).substr(1);
        EXPECT_EQ(first[i].startTimecodeString, "00:00:0" + std::to_string(i / 25) + ":" + frames);
    }

    // A rescan keeps the ids of unchanged files; another file at the same place is another asset.
    camera().timecode({25, 1, 90000}).mediaBytes(77).writeTo(urls[5].path);
    std::filesystem::remove(urls[6].path);
    const auto second = service.probeAll(urls, AssetKind::video, progress);
    for (std::size_t i = 0; i < urls.size(); ++i)
        EXPECT_EQ(first[i].id == second[i].id, i != 5 && i != 6) << i;
    EXPECT_EQ(second[5].startTimecodeString, "01:00:00:00");
    EXPECT_FALSE(second[6].startTimecodeString.has_value());
    EXPECT_TRUE(service.probeAll({}, AssetKind::video, progress).empty());
}

TEST_F(Probe, aCachedAssetHasTheRequestedKindAndIsComplete) {
    const auto sound = test::ltcSignal(test::ltcBits(10, 0, 0, 0) + test::ltcBits(10, 0, 0, 1), 24);
    WaveMaker().format({}).samples(sound).writeTo(folder.path("a.wav"));
    const FileURL url{folder.path("a.wav")};
    MediaProbeService service(settings, newCache());
    const MediaAsset first = service.probe(url, AssetKind::audio);
    EXPECT_EQ(service.probe(url, AssetKind::audio).id, first.id);
    EXPECT_FALSE(first.startTimecodeString.has_value());
    settings->setByName("ltc.enabled", true);
    const MediaAsset heard = service.probe(url, AssetKind::audio);
    EXPECT_EQ(heard.startTimecodeString, "10:00:00:00") << "its sound was not listened to before";
    EXPECT_EQ(heard.id, first.id) << "the file is the same";
    settings->setByName("ltc.enabled", false);
    const MediaAsset unheard = service.probe(url, AssetKind::audio);
    EXPECT_FALSE(unheard.startTimecodeString || unheard.bextTimeReference)
        << "the settings decide, not the cache";
    EXPECT_EQ(unheard.id, first.id);
    const MediaAsset other = service.probe(url, AssetKind::video);
    EXPECT_EQ(other.kind, AssetKind::video);
    EXPECT_NE(other.id, first.id);
}

TEST_F(Probe, aFileThatUsesAllTheMemoryDoesNotAffectTheOthers) {
    struct FullQueue : test::ManualQueue {
        void post(std::function<void()> work, std::stop_token stop) override {
            if (full) throw std::bad_alloc();
            ManualQueue::post(std::move(work), std::move(stop));
        }
        std::atomic<bool> full = false;
    };
    auto owned = std::make_unique<FullQueue>();
    FullQueue& queue = *owned;
    MediaProbeService service(settings,
                              std::make_shared<ProbeCache>(folder.path("cache.json"), std::move(owned)));
    std::vector<FileURL> urls;
    for (const char* name : {"a.mov", "b.mov", "c.mov"}) {
        camera().writeTo(folder.path(name));
        urls.push_back(FileURL{folder.path(name)});
    }
    queue.full = true;
    int reports = 0;
    const auto assets = service.probeAll(urls, AssetKind::video,
                                         [&](int completed, int, const FileURL*) { reports = completed; });
    queue.full = false;
    EXPECT_EQ(reports, 3);
    for (std::size_t i = 0; i < urls.size(); ++i) {
        EXPECT_EQ(assets[i].url, urls[i]);
        EXPECT_EQ(assets[i].width, 1920);
    }
}

} // namespace
} // namespace orvane
