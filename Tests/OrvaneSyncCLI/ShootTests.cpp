#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/LTCSignal.h"
#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/SmallShoot.h"
#include "MediaFactory/WaveMaker.h"
#include "Platform/JSON.h"
#include "Support/Assets.h"
#include "Support/BadDisk.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <filesystem>
#include <fstream>
#include <set>

namespace orvane::cli {
namespace {

using platform::JSON;

/// Runs the program on a shoot.
class ShootTest : public testing::Test {
  protected:
    ShootTest() { test::makeSmallShoot(folder_.path()); }

    test::TemporaryDirectory folder_;
    test::TemporaryDirectory work_;
    test::ScopedEnvironment zone_{"TZ", "UTC"};
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()};
};

TEST_F(ShootTest, scanShowsTheWholeState) {
    const Outcome outcome =
        runWith({"scan", folder_.path("camera"), folder_.path("sound"), "--json", "--no-cache"});
    ASSERT_EQ(outcome.status, done) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const JSON state = outcome.json();
    EXPECT_EQ(*state.find("scanState")->string(), "done");
    EXPECT_EQ(state.find("discoveryResult")->find("videoURLs")->elements()->size(), 4U);
    EXPECT_TRUE(state.find("discoveryResult")
                    ->find("audioURLs")
                    ->elements()
                    ->front()
                    .string()
                    ->starts_with("file:///"));
    EXPECT_EQ(state.find("scanResult")->find("audioAssets")->elements()->size(), 2U);
    EXPECT_EQ(state.find("wildTracks")->elements()->size(), 1U);
    EXPECT_TRUE(*state.find("counts") ==
                JSON::parse(R"({"matched":3,"unmatched":1,"syncClips":2,"mos":1,"projectedMulticam":1})"));
    const auto& groups = *state.find("syncGroups")->elements();
    ASSERT_EQ(groups.size(), 4U);
    EXPECT_EQ(*groups.front().find("video")->find("filename")->string(), "A001C001_261120_R1AB.mov");
    const std::string id = *groups.front().find("id")->string();
    EXPECT_EQ(*state.find("displayNames")->find(id)->string(), "12A-3 Cam A");
    const JSON& file = state.find("takes")->find(id)->elements()->front();
    EXPECT_EQ(*file.find("url"),
              *groups.front().find("audioMatches")->elements()->front().find("audio")->find("url"));
    EXPECT_EQ(file.find("channelCount")->integer(), 6);
    EXPECT_EQ(state.find("aleMatchStatus"), nullptr);
    const JSON diagnosis = runWith({"diagnose", folder_.path(), "--json", "--no-cache"}).json();
    const JSON& card = diagnosis.find("cards")->elements()->front();
    EXPECT_EQ(*card.find("path")->string(), folder_.path("camera"));
    EXPECT_EQ(card.find("files")->integer(), 4);
    const test::TemporaryDirectory links;
    std::filesystem::create_directory_symlink(folder_.path(), links.path("link"));
    const JSON linked = runWith({"diagnose", links.path("link"), "--json", "--no-cache"}).json();
    EXPECT_EQ(*linked.find("cards")->elements()->front().find("path")->string(), links.path("link/camera"));
}

TEST_F(ShootTest, scanShowsATableToPeople) {
    const std::string cacheFile = folder_.path("cache/probe-cache.bin");
    const Outcome outcome = runWith({"scan", folder_.path()}, false, cacheFile);
    ASSERT_EQ(outcome.status, done) << outcome.err;
    for (const char* piece :
         {"12A-3 Cam B", "10:00:02:12", "DAY1_T01.WAV (6 ch)", "2.480 s before", "MOS (no audio)",
          "NOT MATCHED", "no sound at that time", "DAY1_ROOMTONE.WAV", "room tone or wild track",
          "4 clips: 2 with sound, 1 MOS, 1 not matched; 1 recording without picture."})
        EXPECT_NE(outcome.out.find(piece), std::string::npos) << piece << " in\n" << outcome.out;
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(std::filesystem::exists(cacheFile)); // written before the command ends
    // Progress is only printed to a terminal, and is erased at the end.
    EXPECT_TRUE(runWith({"scan", folder_.path()}, true).err.ends_with("\r\x1b[K"));
    EXPECT_EQ(runWith({"scan", folder_.path(), "--quiet"}, true).err, "");
}

TEST_F(ShootTest, eachScanTellsOfFilesThatEndEarly) {
    std::filesystem::remove(
        folder_.path("camera/B001C001_261120_R1CD.mov")); // leaves one clip of the recording
    const std::string sound = folder_.path("sound/DAY1_T01.WAV");
    std::filesystem::resize_file(sound, std::filesystem::file_size(sound) / 2);
    const std::string cacheFile = folder_.path("cache/probe-cache.bin");
    std::string id;
    for (const char* command : {"diagnose", "scan"}) {
        const std::string told = runWith({command, folder_.path()}, false, cacheFile).out;
        for (const char* piece : {"DAY1_T01.WAV' ends early: ", "copy it again from the card"})
            EXPECT_NE(told.find(piece), std::string::npos) << command << ":\n" << told;
        EXPECT_EQ(told.find("(1 clip)"), std::string::npos) << command;
        const JSON probed = runWith({"scan", folder_.path(), "--json"}, false, cacheFile).json();
        const auto& last = probed.find("scanResult")->find("audioAssets")->elements()->back();
        EXPECT_TRUE(id.empty() || id == *last.find("id")->string()) << "it is the same recording";
        id = *last.find("id")->string();
    }
}

TEST_F(ShootTest, recordingsOfOneNameHaveMarksThatTheCacheKeeps) {
    const test::TemporaryDirectory cards;
    const std::string cacheFile = cards.path("cache.bin");
    for (const char* day : {"1", "2"}) {
        std::filesystem::create_directory(cards.path(day));
        test::WaveMaker()
            .bext({.date = "", .timeReference = 36000 * 48000ULL})
            .samples(std::vector<float>(480'000, *day == '2' ? 0.1F : 0.2F))
            .writeTo(cards.path(day + std::string("/T01.WAV")));
    }
    for (const char* from : {"the files", "the cache of files", "the cache of files with marks"}) {
        const JSON scan = runWith({"scan", cards.path(), "--json"}, false, cacheFile).json();
        std::set<std::string> marks;
        for (const JSON& audio : *scan.find("scanResult")->find("audioAssets")->elements())
            marks.insert(audio.find("contentMark")->dump());
        EXPECT_EQ(marks.size(), 2U) << from;
    }
}

TEST_F(ShootTest, scanSaysWhatNamesDoNotTell) {
    const test::TemporaryDirectory cards;
    test::makeSmallShoot(cards.path("1"));
    test::makeSmallShoot(cards.path("2"));
    const std::string clip = "/camera/A001C001_261120_R1AB.mov";
    std::filesystem::create_directory(cards.path("3"));
    std::filesystem::copy(cards.path("1") + clip, cards.path("3"));
    // Makes them files of another camera.
    for (const auto& camera : std::filesystem::directory_iterator(cards.path("2/camera")))
        std::ofstream(camera.path(), std::ios::app | std::ios::binary) << std::string("\0\0\0\x08"
                                                                                      "free",
                                                                                      8);
    const auto small = test::MovieMaker()
                           .video({.width = 640, .height = 360, .frames = 200})
                           .timecode({.firstFrame = 36002 * 25});
    std::filesystem::create_directory(cards.path("1/camera/Proxy"));
    small.writeTo(cards.path("1/camera/Proxy/A001C001_261120_R1AB.mov"));
    const std::string report = cards.write("report.csv", "Name,Scene\nA001C001_261120_R1AB,7\n");
    const std::vector<std::string> words{"scan", cards.path(), "--report", report};
    const Outcome outcome = runWith(words);
    for (const char* piece :
         {"12A-3 Cam A 1 ", "2/A001C001_261120_R1AB.mov", "1/DAY1_T01.WAV (6 ch) + 1 copy",
          "2/DAY1_ROOMTONE.WAV", "1 proxy left out.", "1 copy of a camera file left out.", "8 clips"})
        EXPECT_NE(outcome.out.find(piece), std::string::npos) << piece << " in\n" << outcome.out;
    for (const char* piece :
         {"left out as proxies of files that are here: '", "; the first one is a copy of '",
          "each has the same row: 'A001C001_261120_R1AB.mov'\n"})
        EXPECT_NE(outcome.err.find(piece), std::string::npos) << piece << " in\n" << outcome.err;
    std::vector<std::string> asJSON = words;
    asJSON.emplace_back("--json");
    const JSON proxies = *runWith(asJSON).json().find("scanResult")->find("proxies");
    ASSERT_EQ(proxies.elements()->size(), 1U);
    EXPECT_TRUE(proxies.elements()
                    ->front()
                    .find("originalURL")
                    ->string()
                    ->ends_with("/1/camera/A001C001_261120_R1AB.mov"));
}

TEST_F(ShootTest, syncWritesTheDocument) {
    const std::string output = folder_.path("out.fcpxml");
    const Outcome outcome =
        runWith({"sync", folder_.path(), "-o", output, "--event", "Day & Night", "--json"});
    ASSERT_EQ(outcome.status, done) << outcome.err;
    const JSON result = outcome.json();
    EXPECT_EQ(*result.find("output")->string(), output);
    EXPECT_EQ(result.find("syncClipCount")->integer(), 3);
    EXPECT_EQ(result.find("counts")->find("unmatched")->integer(), 1);
    EXPECT_NE(result.find("warnings")->elements()->back().string()->find("A001C003"), std::string::npos);
    // The recording has no speech: the routing had to decide window by window, and its report says how.
    const std::string report = work_.read("Orvane Tandrel/diagnostics/orvane_routing_debug.txt");
    EXPECT_TRUE(report.starts_with("=== Smart-Audio routing diagnostic ===\nFrames: 80 "));
    EXPECT_NE(report.find("Take-default: NONE"), std::string::npos);
    const std::string document = folder_.read("out.fcpxml");
    EXPECT_NE(document.find("<fcpxml version=\"1.14\">"), std::string::npos);
    EXPECT_NE(document.find("event name=\"Day &amp; Night\""), std::string::npos);

    const Outcome toOutput = runWith({"sync", folder_.path(), "-o", "-", "--fcpxml-version", "1.10", "--set",
                                      "audioBaseRole=fx", "--set", "eventName=2024.10"});
    EXPECT_NE(toOutput.out.find("<event name=\"2024.10\">"), std::string::npos)
        << "a text, though it looks like a number";
    EXPECT_TRUE(toOutput.out.starts_with("<?xml"));
    EXPECT_NE(toOutput.out.find("<fcpxml version=\"1.10\">"), std::string::npos);
    EXPECT_NE(toOutput.out.find("role=\"fx.Lav Anna\""), std::string::npos);

    const Outcome forPeople =
        runWith({"sync", folder_.path(), "-o", output, "--set", "export.splitEventsByScene=true"});
    EXPECT_NE(forPeople.out.find(" by scene). Not in it: 1 clip"), std::string::npos) << forPeople.out;
    EXPECT_NE(forPeople.out.find("Wrote " + output +
                                 ": 3 synchronized clips (2 with sound, 1 MOS), "
                                 "1 multicam clip, 5 source media files, in "),
              std::string::npos)
        << forPeople.out;

    folder_.write("empty/x.txt", "");
    const Outcome nothing = runWith({"sync", folder_.path("empty"), "-o", folder_.path("none.fcpxml")});
    EXPECT_EQ(nothing.status, failed);
    const Outcome alone =
        runWith({"sync", folder_.path("camera"), "--exclude", "*MOS*", "-o", folder_.path("none.fcpxml")});
    EXPECT_EQ(alone.status, failed);
    EXPECT_NE(alone.err.find("none of them matched"), std::string::npos) << alone.err;
    EXPECT_NE(alone.err.find("3 not matched"), std::string::npos) << alone.err;
    EXPECT_FALSE(std::filesystem::exists(folder_.path("none.fcpxml")));
}

TEST_F(ShootTest, probeKeepsTheOrderAndTheOtherFiles) {
    const std::string wave = folder_.path("sound/DAY1_T01.WAV");
    folder_.write("odd\n\x1b[31mname.wav", "RIFF");
    const Outcome outcome =
        runWith({"probe", "--json", wave, folder_.path("gone.mov"), folder_.path("odd\n\x1b[31mname.wav"),
                 folder_.path("camera/A001C001_261120_R1AB.mov")});
    ASSERT_EQ(outcome.status, done) << outcome.err;
    const auto assets = *outcome.json().elements();
    ASSERT_EQ(assets.size(), 4U);
    EXPECT_EQ(assets[0].find("bextTimeReference")->integer(), 36000LL * 48000);
    EXPECT_EQ(*assets[1].find("filename")->string(), "gone.mov");
    EXPECT_EQ(assets[2].find("durationSeconds"), nullptr);
    EXPECT_EQ(*assets[3].find("startTimecodeString")->string(), "10:00:02:00");
    EXPECT_NE(outcome.err.find("warning: can't read"), std::string::npos);

    const Outcome text = runWith({"probe", folder_.path("odd\n\x1b[31mname.wav"), wave});
    // A name must not reach the terminal as a control sequence.
    EXPECT_EQ(text.out.find('\x1b'), std::string::npos);
    EXPECT_NE(text.out.find("Lav Cleo"), std::string::npos);
}

TEST_F(ShootTest, ltcReadsAChannelOrSaysThatThereIsNone) {
    const auto signal = test::LTCSignal{}.samples(25.0 * 3723 - 0.5, 1.0);
    std::vector<float> stereo;
    for (const float sample : signal) stereo.insert(stereo.end(), {0.0F, sample});
    test::WaveMaker().format({.channels = 2}).samples(stereo).writeTo(folder_.path("ltc.wav"));
    const Outcome found = runWith({"ltc", folder_.path("ltc.wav"), "--channel", "1", "--json"});
    ASSERT_EQ(found.status, done) << found.err;
    EXPECT_EQ(found.json().find("tc")->string()->substr(0, 8), "01:02:03");
    EXPECT_GE(*found.json().find("atSeconds")->number(), 0);
    EXPECT_TRUE(runWith({"ltc", folder_.path("ltc.wav"), "--channel", "0", "--json"}).json().isNull());
    const JSON any = runWith({"ltc", folder_.path("ltc.wav"), "--json"}).json();
    EXPECT_EQ(any.find("channel")->number(), 1);
    EXPECT_EQ(*any.find("start")->string(), "01:02:03:00");
    EXPECT_EQ(runWith({"ltc", folder_.path("ltc.wav"), "--channel", "-2"}).status, wrongUsage);
}

TEST_F(ShootTest, aClapIsFoundDrawnAndNothingIsReplacedByThePicture) {
    std::vector<float> samples(20 * 48'000, 0.001F);
    samples[3 * 48'000 + 100] = 0.9F;
    const std::string clap = folder_.write("clap.wav", test::WaveMaker().format({}).samples(samples).bytes());
    EXPECT_EQ(runWith({"clap", clap, "--json"}).json().find("clapPointSeconds")->number(), 3);
    const std::string silent = folder_.write("silent.wav", test::WaveMaker().format({}).silence(480).bytes());
    EXPECT_TRUE(runWith({"clap", silent, "--json"}).json().isNull());
    const JSON onsets = runWith({"onsets", clap, "--json"}).json();
    ASSERT_EQ(onsets.find("onsets")->elements()->size(), 1U);
    EXPECT_NEAR(*onsets.find("onsets")->elements()->front().number(), 3, 0.01);

    const std::string picture = folder_.path("clap.png"), other = folder_.write("other.png", "a picture");
    const std::vector<std::string> draw{"waveform", clap, "--bins", "100", "--png"};
    const auto drawn = [&](const std::string& to, const char* more = "--quiet") {
        std::vector<std::string> words = draw;
        words.insert(words.end(), {to, more});
        return runWith(words).status;
    };
    EXPECT_EQ(drawn(picture), 0);
    EXPECT_EQ(drawn(picture), 0) << "its own may be drawn again";
    EXPECT_EQ(drawn(other), 1);
    EXPECT_EQ(folder_.read("other.png"), "a picture");
    EXPECT_EQ(drawn(other, "--force"), 0);
    EXPECT_EQ(drawn(clap, "--force"), 1);
    EXPECT_EQ(runWith({"waveform", clap, "--bins", "0"}).status, 2);
    const JSON waveform = runWith({"waveform", clap, "--bins", "100", "--json"}).json();
    EXPECT_EQ(waveform.find("binsPerSecond")->number(), 5);
    EXPECT_EQ(waveform.find("peaks")->elements()->size(), 100U);
}

TEST_F(ShootTest, aMediaFileIsNeverOverwritten) {
    const std::string clip = folder_.path("camera/A001C001_261120_R1AB.mov"),
                      link = folder_.path("out.fcpxml");
    const std::string before = folder_.read("camera/A001C001_261120_R1AB.mov");
    for (const bool isHardLink : {false, true}) {
        isHardLink ? std::filesystem::create_hard_link(clip, link)
                   : std::filesystem::create_symlink(clip, link);
        const Outcome outcome = runWith({"sync", folder_.path(), "-o", link, "--no-smart-audio", "--force"});
        EXPECT_EQ(outcome.status, failed);
        EXPECT_NE(outcome.err.find("media file"), std::string::npos) << outcome.err;
        EXPECT_EQ(folder_.read("camera/A001C001_261120_R1AB.mov"), before);
        std::filesystem::remove(link);
    }
    // A damaged file of the scan: only the scan can tell whether a damaged file is one of its own.
    folder_.write("camera/B009C001_261120_R1AB.mov", "torn");
    std::filesystem::create_hard_link(folder_.path("camera/B009C001_261120_R1AB.mov"), link);
    const Outcome outcome = runWith({"sync", folder_.path(), "-o", link, "--no-smart-audio", "--force"});
    EXPECT_NE(outcome.err.find("it is the media file '"), std::string::npos) << outcome.err;
    EXPECT_EQ(folder_.read("out.fcpxml"), "torn");
}

TEST_F(ShootTest, aDocumentDestroysNothing) {
    const std::string report = folder_.write("DAY1.csv", "Name,Scene\nA001C001_261120_R1AB,7\n");
    const std::string notes = folder_.write("notes.txt", "mine"), out = folder_.path("out.fcpxml");
    const auto sync = [&](const std::string& output, const std::vector<std::string>& more) {
        std::vector<std::string> words{"sync", folder_.path(), "-o", output, "--no-smart-audio"};
        words.insert(words.end(), more.begin(), more.end());
        return runWith(words);
    };
    EXPECT_EQ(sync(report, {"--report", report, "--force"}).status, failed);
    EXPECT_TRUE(folder_.read("DAY1.csv").starts_with("Name,Scene"));
    const Outcome other = sync(notes, {"--set", "ltc.enabled=true"});
    EXPECT_EQ(other.status, failed);
    EXPECT_NE(other.err.find("--force to replace it"), std::string::npos) << other.err;
    EXPECT_EQ(folder_.read("notes.txt"), "mine");
    EXPECT_EQ(sync(notes, {"--force"}).status, done);
    for (int time = 0; time < 2; ++time) EXPECT_EQ(sync(out, {}).status, done); // the program's own document
}

TEST_F(ShootTest, aReportReachesTheClipsAndTheDocument) {
    // Control characters and markup in cells are typing errors and must not break the document.
    const std::string ale =
        folder_.write("day.ale", "Heading\nFPS\t25\n\nColumn\nName\tScene\tTake\tSensor FPS\t"
                                 "Tape\n\nData\n"
                                 "a001c001_261120_r1ab\t77<\x02&\"\t9\t100\tA001\n");
    const Outcome scan = runWith({"scan", folder_.path(), "--report", ale, "--json"});
    ASSERT_EQ(scan.status, done) << scan.err;
    const JSON state = scan.json();
    EXPECT_EQ(*state.find("aleMatchStatus")->string(), "Report loaded: 1 of 4 clips matched");
    const JSON& group = state.find("syncGroups")->elements()->front();
    EXPECT_EQ(*group.find("aleMetadata")->find("Tape")->string(), "A001");
    EXPECT_EQ(group.find("video")->find("sensorFrameRate")->number(), 100);
    EXPECT_EQ(*state.find("displayNames")->find(*group.find("id")->string())->string(), "12A-3 Cam A 100fps");
    EXPECT_NE(runWith({"scan", folder_.path(), "--report", ale}).out.find("1 of 4 clips"), std::string::npos);

    const Outcome sync = runWith(
        {"sync", folder_.path(), "-o", "-", "--report", ale, "--set", "export.splitEventsByScene=true"});
    for (const char* piece : {"studio.scene\" value=\"77&lt;\uFFFD&amp;&quot;\"", "studio.shot\" value=\"9\"",
                              "<event name=\"Synced 77&lt;\uFFFD&amp;&quot;\">",
                              "keyword value=\"Offspeed 100fps\"", "studio.scene\" value=\"12A\""})
        EXPECT_NE(sync.out.find(piece), std::string::npos) << piece << " in\n" << sync.out;
    EXPECT_EQ(runWith({"sync", folder_.path(), "-o", "-"}).out.find("Offspeed"), std::string::npos);

    // No clip has the scene of the report, so the output asks to check the match setting.
    const Outcome hint = runWith({"scan", folder_.path(), "--report", ale, "--set", "ale.matchField=column",
                                  "--set", "ale.matchColumn=Scene"});
    EXPECT_NE(hint.out.find("0 of 4 clips matched — check the match setting (current: column “Scene”)"),
              std::string::npos)
        << hint.out;
}

TEST_F(ShootTest, aReportThatIsNoneOrOfAnotherDayIsTold) {
    const auto with = [&](const std::string& report) {
        return runWith({"scan", folder_.path(), "--report", folder_.write("list.csv", report), "--json"});
    };
    const Outcome none = with("Name\nA\n");
    EXPECT_EQ(none.status, wrongUsage);
    EXPECT_NE(none.err.find("list.csv: No column header found in the file"), std::string::npos) << none.err;
    for (const auto& [cells, isReported] :
         {std::pair("15:00:00:00,2026-11-20", true), std::pair("10:00:02:00,2026-11-19", false),
          std::pair("10:00:02:00,2026-11-01", true), std::pair("-,today", false)}) {
        const Outcome outcome =
            with(std::string("Name,Start,Shoot Date\na001c001_261120_r1ab,") + cells + "\n");
        EXPECT_EQ(outcome.err.find("of another day") != std::string::npos, isReported)
            << cells << outcome.err;
    }
}

TEST_F(ShootTest, whatTheScanDoubtsIsALineAndInTheJSON) {
    const std::string camera = folder_.path("camera/");
    std::filesystem::create_symlink("nowhere.mov", camera + "gone.mov");
    std::filesystem::create_symlink("nowhere", camera + "card 2");
    std::filesystem::create_symlink("nowhere", camera + "notes.txt");
    for (const char* name : {"F001.mov", "F002.mov", "worn.mov"})
        test::MovieMaker()
            .video({.timescale = 15, .frames = 15})
            .timecode({.timescale = 15, .firstFrame = 15})
            .writeTo(camera + name);
    const test::BadDisk disk(camera + "worn.mov");
    const std::string report =
        folder_.write("day.csv", "Name,Sensor FPS\nA001C001_261120_R1AB,1e300\n"
                                 "A001C002_261120_MOS,0.001\nA001C003_261120_R1AB,0.1\n");
    const std::vector<std::string> starts{
        "links that lead nowhere: '" + camera, "can't read all of '" + camera + "worn.mov'; ",
        "the timecode of 'F001.mov' and 1 more counts 15 frames a second and is read as if it counted 24;",
        "a sensor rate of 0.001 fps is unusual and stretches the clip; check it: 'A001C002_261120_MOS.mov'",
        "a sensor rate of 1e+300 fps"};
    for (std::vector<std::string> words :
         {std::vector<std::string>{"scan"}, {"sync", "-o", folder_.path("out.fcpxml")}}) {
        words.insert(words.end(), {folder_.path("camera"), folder_.path("sound"), "--report", report,
                                   "--json", "--no-cache"});
        const Outcome outcome = runWith(words);
        ASSERT_EQ(outcome.status, done) << outcome.err;
        const JSON json = outcome.json();
        std::vector<std::string> warnings;
        for (const JSON& warning : *json.find("warnings")->elements()) warnings.push_back(*warning.string());
        for (const std::string& start : starts) {
            EXPECT_NE(outcome.err.find("warning: " + start), std::string::npos) << outcome.err;
            EXPECT_EQ(std::ranges::count_if(warnings, [&](auto& w) { return w.starts_with(start); }), 1)
                << start;
        }
        EXPECT_NE(outcome.err.find("' and 1 more; what they lead to"), std::string::npos) << outcome.err;
    }
}

TEST(Reports, sayWhichFilesOfOneNameTheyMixUp) {
    const test::TemporaryDirectory folder;
    const auto clip = [&](const char* name, std::uint32_t hour, std::uint32_t frames = 50) {
        folder.write(
            name,
            test::MovieMaker().video({.frames = frames}).timecode({.firstFrame = hour * 90'000}).bytes());
    };
    const auto sound = [&](const char* name, std::uint64_t hour) {
        folder.write(name, test::WaveMaker()
                               .format({})
                               .bext({.timeReference = hour * 3600 * 48'000})
                               .silence(48'000)
                               .bytes());
    };
    clip("1/A001.mov", 10);
    clip("2/A001.mov", 10, 51); // otherwise the scan takes it for a copy
    clip("2/A002.mov", 11);
    sound("1/T01.WAV", 10);
    sound("2/T01.WAV", 11);
    sound("2/T02.WAV", 11);
    const auto mixedUp = [&](const std::string& rows) {
        const std::string said = runWith({"scan", folder.path(), "--no-cache", "--report",
                                          folder.write("r.csv", "Name,File Name,Scene,Take\n" + rows)})
                                     .err;
        const auto at = said.find("can't tell files of one name");
        return at == std::string::npos ? "" : said.substr(said.find("row: ", at) + 5);
    };
    EXPECT_EQ(mixedUp("A001.mov,,1,1\n"), "'A001.mov'\n");
    EXPECT_EQ(mixedUp(",T01.WAV,1,1\n"), "'T01.WAV'\n");
    EXPECT_EQ(mixedUp(",T02.WAV,1,1\n"), "");
}

TEST_F(ShootTest, reportShowsWhatAMergeWouldTake) {
    const std::string path =
        folder_.write("day.csv", "Day 1\nEmpty,Take,Scene,Name,Sensor FPS\n,3,12,\x1b[31mA,48\n,,,B\n");
    const Outcome json = runWith({"report", path, "--json"});
    EXPECT_TRUE(json.json() ==
                JSON::parse(R"({"heading": {}, "columns": ["Empty", "Take", "Scene", "Name", "Sensor FPS"],
        "clips": [{"fields": {"Empty": "", "Take": "3", "Scene": "12", "Name": "\u001b[31mA", "Sensor FPS": "48"}},
                  {"fields": {"Empty": "", "Take": "", "Scene": "", "Name": "B"}}]})"))
        << json.out;
    const Outcome text = runWith({"report", path});
    EXPECT_EQ(text.out, "Name    Scene  Take  Sensor FPS  -> SENSOR RATE\n"
                        "\uFFFD[31mA  12     3     48                  48 fps\n"
                        "B                                             -\n\n"
                        "2 clips, 5 columns. 1 column is not shown. --json has everything.\n");
    EXPECT_EQ(text.err, "");
    EXPECT_TRUE(runWith({"report", folder_.write("none.csv", "a,b"), "--json"}).json() ==
                JSON::parse(R"({"heading": {}, "columns": ["a", "b"], "clips": []})"));
}

TEST_F(ShootTest, aReportThatCanGiveTheClipsNothingSaysWhy) {
    const std::string padded = folder_.write("padded.csv", "Day 1;;\nWho;What;\nA;1;\n");
    const std::string bare = folder_.write("bare.csv", "Name,Scene\n");
    const auto check = [&](const std::vector<std::string>& words, const char* says) {
        const Outcome outcome = runWith(words);
        EXPECT_EQ(outcome.status, done);
        EXPECT_NE(outcome.err.find(says), std::string::npos) << outcome.err;
    };
    check({"report", padded}, "no column 'Name'; its columns are 'Day 1', (no name), (no name). ");
    check({"scan", folder_.path(), "--report", padded}, "no column 'Name'; its columns are 'Day 1', ");
    check({"report", bare}, "no rows");
    check({"report", bare, "--set", "ale.matchField=column", "--set", "ale.matchColumn=Tape"},
          "no column 'Tape'; its columns are 'Name', 'Scene'. The setting ale.matchColumn");
}

TEST_F(ShootTest, analyzeTellsMicrophonesApartAndDrawsTheTake) {
    // A boom with bursts of speech over noise, and a second channel with noise only.
    constexpr std::size_t sampleRate = 48000, seconds = 12;
    std::vector<float> samples;
    for (std::size_t i = 0; i < seconds * sampleRate; ++i) {
        const double time = static_cast<double>(i) / sampleRate;
        const double hiss = 0.001 * std::sin(static_cast<double>(i) * 2.1);
        const double speech =
            0.3 * std::sin(2 * std::numbers::pi * 300 * time) * (std::fmod(time, 1.0) < 0.6 ? 1 : 0);
        samples.insert(samples.end(), {static_cast<float>(hiss + speech), static_cast<float>(hiss)});
    }
    const std::string path = folder_.path("take.wav");
    test::WaveMaker()
        .format({.channels = 2})
        .iXML(test::IXMLText{.tracks = {"Boom", "Lav Anna"}}.text())
        .samples(samples)
        .writeTo(path);
    const Outcome text = runWith({"analyze", path});
    ASSERT_EQ(text.status, done) << text.err;
    EXPECT_EQ(text.err, "");
    for (const char* piece : {"* 1", "Lav Anna", "iXML: Boom", "-17.1 dBFS", "Loudness 30 %",
                              "\xE2\x96\x88\xE2\x96\x88", "0:12\n"})
        EXPECT_NE(text.out.find(piece), std::string::npos) << piece << " in\n" << text.out;
    const JSON result = runWith({"analyze", path, "--json"}).json();
    EXPECT_EQ(result.find("bestTrackIndex")->integer(), 1);
    EXPECT_EQ(result.find("tracks")->elements()->size(), 2U);
    EXPECT_EQ(runWith({"analyze", path, "--json", "--no-blocks"}).json().find("blocks")->elements()->size(),
              0U);
    const auto loudness = runWith({"loudness", path, "--json"}).json().find("integratedLUFS")->number();
    ASSERT_TRUE(loudness.has_value());
    EXPECT_NEAR(*loudness, -0.7 + 10 * std::log10(0.6 * 0.3 * 0.3 / 2),
                0.6); // a tone for three fifths of the time
    std::vector<float> hum;
    for (std::size_t i = 0; i < 2 * sampleRate; ++i)
        hum.push_back(0.1F *
                      std::sin(2 * std::numbers::pi_v<float> * 60 * static_cast<float>(i) / sampleRate));
    test::WaveMaker().format({}).samples(hum).writeTo(folder_.path("hum.wav"));
    const Outcome custom =
        runWith({"analyze", folder_.path("hum.wav"), "--mode", "custom", "--set", "smartAudio.humFreq=60"});
    EXPECT_NE(custom.out.find("Hum 60 Hz"), std::string::npos) << custom.out;
    EXPECT_EQ(runWith({"analyze", path, "--candidates", "3,9"}).status, wrongUsage);
    EXPECT_NE(
        runWith({"analyze", path, "--candidates", "2,9"}).err.find("warning: --candidates: there is no"),
        std::string::npos);
    EXPECT_EQ(runWith({"analyze", path, "--diagnose", "3"}).status, wrongUsage);
    EXPECT_NE(runWith({"analyze", path, "--channels", "3"}).err.find("has 2 channels, not 3"),
              std::string::npos);
    const std::string twoReadings = runWith({"analyze", path, "--diagnose", "1"}).out;
    EXPECT_TRUE(twoReadings.starts_with("=== Channel Reading Diagnostic ===\n")) << twoReadings;
    EXPECT_NE(twoReadings.find("Compared: 48 windows · differing: 0\n"), std::string::npos) << twoReadings;

    const std::string cut = folder_.path("cut.wav");
    std::filesystem::copy_file(path, cut);
    std::filesystem::resize_file(cut, std::filesystem::file_size(path) / 2);
    for (const char* command : {"analyze", "loudness"})
        EXPECT_NE(runWith({command, cut}).err.find("cut.wav' ends early: 0:06 of the 0:12 that its header"),
                  std::string::npos)
            << command;
    const JSON measured = runWith({"loudness", cut, "--json"}).json();
    EXPECT_NEAR(*measured.find("heardSeconds")->number(), 6, 0.01);
    EXPECT_EQ(measured.find("promisedSeconds")->number(), 12);
    EXPECT_NEAR(*measured.find("integratedLUFS")->number(), *loudness, 1);

    const std::string silence = folder_.path("sound/DAY1_T01.WAV");
    EXPECT_TRUE(runWith({"loudness", silence, "--json"}).json().find("integratedLUFS")->isNull());
    const std::string nobody = runWith({"analyze", silence}).out;
    EXPECT_EQ(nobody.find('*'), std::string::npos) << nobody;
    EXPECT_NE(nobody.find("\xE2\x96\x91"), std::string::npos) << "chosen, but silent:\n" << nobody;
}

} // namespace
} // namespace orvane::cli
