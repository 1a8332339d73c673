#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/SmallShoot.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Review/ReviewTable.h"
#include "Support/Test.h"

#include <cmath>
#include <filesystem>
#include <random>

namespace orvane::cli {
namespace {

using platform::JSON;

/// The small shoot, with the files of camera B on a card of their own.
class CardsTest : public testing::Test {
  protected:
    CardsTest() {
        test::makeSmallShoot(folder_.path());
        std::filesystem::create_directory(folder_.path("cardB"));
        std::filesystem::rename(folder_.path("camera/B001C001_261120_R1CD.mov"),
                                folder_.path("cardB/B001C001_261120_R1CD.mov"));
    }
    std::string at(const char* name) const { return folder_.path(name); }

    /// Adds a recorder that rolled at the end of both clips of the take, as their second recording.
    void addSecondRecorder(const char* date = "2026-11-20") {
        constexpr std::uint64_t sampleRate = 48000, start = 36008;
        test::WaveMaker()
            .format({.channels = 1, .sampleRate = sampleRate})
            .bext({.originator = "Other", .date = date, .timeReference = start * sampleRate})
            .silence(10 * sampleRate)
            .writeTo(at("sound/ISO.WAV"));
    }

    test::TemporaryDirectory folder_;
    test::TemporaryDirectory work_;
    test::ScopedEnvironment zone_{"TZ", "UTC"};
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()};
};

TEST_F(CardsTest, anyNumberOfFoldersIsRead) {
    const auto check = [&](std::vector<std::string> words, std::size_t videos, std::size_t audios) {
        words.insert(words.begin(), "scan");
        words.insert(words.end(), {"--json", "--no-cache"});
        const Outcome outcome = runWith(words);
        ASSERT_EQ(outcome.status, done) << outcome.err;
        const JSON found = *outcome.json().find("discoveryResult");
        EXPECT_EQ(found.find("videoURLs")->elements()->size(), videos) << outcome.out;
        EXPECT_EQ(found.find("audioURLs")->elements()->size(), audios) << outcome.out;
    };
    check({at("camera"), at("cardB"), at("sound")}, 4, 2);
    check({"--video", at("camera"), "--audio", at("sound"), "--video", at("cardB")}, 4, 2);
    check({at("cardB"), "--audio", at("sound"), at("camera")}, 4, 2);
    check({at("cardB"), at("sound"), "--video", at("camera")}, 4, 2);
    check({"--video", at("cardB"), "--video", at("cardB") + "/../camera"}, 4, 0);
    check({at("cardB"), at("cardB"), folder_.path()}, 4, 2);
    check({folder_.path(), "--exclude", "cardB", "--exclude", "sound/*ROOMTONE*"}, 3, 1);
    const Outcome typo =
        runWith({"scan", folder_.path(), "--exclude", "CardB", "--exclude", folder_.path() + "/cardB"});
    for (const std::string& text : {std::string("'CardB' fits nothing in the folders; check"),
                                    folder_.path() + "/cardB' fits nothing in the folders; it is compared "
                                                     "with names below them: try 'cardB'"})
        EXPECT_NE(typo.err.find(text), std::string::npos) << typo.err;
    const std::string empty = runWith({"diagnose", folder_.path(), "--exclude", "*"}).out;
    EXPECT_NE(empty.find("No video or audio files found."), std::string::npos) << empty;
    EXPECT_EQ(empty.find("Nothing is in doubt"), std::string::npos);
    const Outcome nothing =
        runWith({"sync", at("cardB"), at("sound"), at("camera"), "-o", "-", "--exclude", "*"});
    EXPECT_EQ(nothing.status, failed);
    for (const char* name : {"cardB", "sound", "camera"})
        EXPECT_NE(nothing.err.find("'" + at(name) + "'"), std::string::npos) << nothing.err;
}

TEST_F(CardsTest, aReviewComesBackFromASpreadsheet) {
    addSecondRecorder();
    const std::string table = at("review.tsv");
    const Outcome scan = runWith({"scan", folder_.path(), "--review", table});
    ASSERT_EQ(scan.status, done) << scan.err;
    auto lines = readReviewTable(folder_.read("review.tsv"));
    ASSERT_EQ(lines.size(), 4U);
    using enum ReviewColumn;
    EXPECT_EQ(lines[0][cameraFile], "A001C001_261120_R1AB.mov");
    EXPECT_EQ(lines[0][status], "ambiguous");
    EXPECT_EQ(lines[0][sound], "1: DAY1_T01.WAV; 2: ISO.WAV");
    EXPECT_EQ(lines[0][choice], "");

    const std::string row = "\t1: DAY1_T01.WAV; 2: ISO.WAV\t";
    folder_.write("edited.tsv", "\xEF\xBB\xBFname\tsound\tchoice\tcamera_file\toffset_frames\tskip\r\n"
                                "\"=Take \"\"A\"\"\"" +
                                    row +
                                    "2.0\tA001C001_261120_R1AB.mov\t-3,0\t\r\n"
                                    "" +
                                    row + "1\tcardB/B001C001_261120_R1CD.mov\t0\t\r\n" +
                                    "\t\t\tA001C002_261120_MOS.mov\t\tX\r\n"
                                    "gone\t\t\tZ.mov\t5\tx\r\n"
                                    "twice\t\t\tA001C002_261120_MOS.mov\t5\tx\r\n"
                                    "\t\t7\tA001C003_261120_R1AB.mov\tsoon\tmaybe\r\n");
    const Outcome sync = runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", at("edited.tsv"),
                                  "--json", "--no-smart-audio"});
    ASSERT_EQ(sync.status, done) << sync.err;
    for (const char* problem : {"line 5: there is no clip of the camera file 'Z.mov'",
                                "line 6: a line before this one", "line 7: there is no recording number '7'",
                                "line 7: offset_frames must be a number", "line 7: skip must be x"})
        EXPECT_NE(sync.err.find(problem), std::string::npos) << problem << "\n" << sync.err;
    EXPECT_EQ(sync.err.find("has no line"), std::string::npos) << sync.err;
    EXPECT_EQ(sync.json().find("counts")->find("syncClips")->integer(), 2);
    const std::string document = folder_.read("out.fcpxml");
    EXPECT_NE(document.find("name=\"=Take &quot;A&quot;\""), std::string::npos);
    EXPECT_EQ(sync.json().find("syncClipCount")->integer(), 2) << "one clip is skipped";

    const Outcome written = runWith(
        {"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", at("edited.tsv"), "--no-smart-audio"});
    EXPECT_NE(written.out.find("Not in it: 1 clip without a match, 1 excluded clip."), std::string::npos)
        << written.out;

    const Outcome first = runWith({"scan", folder_.path(), "--choose", "first", "--json"});
    EXPECT_EQ(first.json().find("counts")->find("syncClips")->integer(), 2);
    for (const char* chosen : {"'A001C001_261120_R1AB.mov' has 'DAY1_T01.WAV' 10.0 s, and not 'ISO.WAV'",
                               "'B001C001_261120_R1CD.mov' has 'DAY1_T01.WAV' 10.0 s"})
        EXPECT_NE(first.err.find(std::string("warning: chosen first: ") + chosen), std::string::npos)
            << first.err;
    const Outcome doubted = runWith({"diagnose", folder_.path(), "--choose", "first"});
    EXPECT_NE(doubted.out.find("the first of 2 recordings was chosen for 'A001C001"), std::string::npos)
        << doubted.out;
    // A table without decisions is replaced, one with decisions is not.
    EXPECT_EQ(runWith({"scan", folder_.path(), "--review", table}).status, done);
    lines[1][note] = "ask the boom operator";
    folder_.write("review.tsv", writtenReviewTable(lines));
    const Outcome refused = runWith({"scan", folder_.path(), "--review", table});
    EXPECT_EQ(refused.status, failed);
    EXPECT_NE(refused.err.find("line 3 of the table there holds a decision or a note"), std::string::npos)
        << refused.err;
    EXPECT_NE(folder_.read("review.tsv").find("boom operator"), std::string::npos);
    EXPECT_EQ(runWith({"scan", folder_.path(), "--review", table, "--force"}).status, done);
    // Never the table that is being applied.
    EXPECT_EQ(runWith({"sync", folder_.path(), "-o", table, "--apply", table, "--force"}).status, failed);
}

TEST_F(CardsTest, aLineOfACopyIsThatOfTheFileThatIsUsed) {
    std::filesystem::copy(at("cardB"), at("offload2"));
    const std::string table = folder_.write(
        "in.tsv", "camera_file\tskip\noffload2/B001C001_261120_R1CD.mov\tx\noffload2/B001C002.mov\tx\n");
    std::vector<std::string> words{"sync", folder_.path(),     "-o",        at("out.fcpxml"), "--apply",
                                   table,  "--no-smart-audio", "--no-cache"};
    const Outcome sync = runWith(words);
    ASSERT_EQ(sync.status, done) << sync.err;
    EXPECT_NE(sync.err.find("The review changes 1 clip."), std::string::npos) << sync.err;
    words.emplace_back("--quiet");
    EXPECT_EQ(runWith(words).err.find("The review changes"), std::string::npos);
    EXPECT_EQ(sync.err.find("line 2"), std::string::npos) << sync.err;
    EXPECT_NE(sync.err.find("line 3: there is no clip of the camera file"), std::string::npos) << sync.err;
}

/// `sync` does not measure, and does not know what `diagnose` found.
TEST_F(CardsTest, aDoubtOfTheTableThatNothingSettlesIsReported) {
    for (const char* lock : {"", "x"}) {
        const std::string table =
            folder_.write("in.tsv", std::string("camera_file\tdoubt\tchoice\tlock\n"
                                                "A001C001_261120_R1AB.mov\tthe clock is wrong\t1\t") +
                                        lock + "\n");
        const std::string said = runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", table,
                                          "--no-smart-audio", "--no-cache", "--force"})
                                     .err;
        EXPECT_EQ(said.find("line 2: nothing in the line settles its doubt") != std::string::npos, *lock == 0)
            << said;
    }
}

/// A table of one recorder's scan is applied to a scan with another one.
TEST_F(CardsTest, anOffsetIsUsedOnlyForTheRecordingsOfItsLine) {
    for (const char* sound : {"1: OTHER.WAV", "1: OTHER.WAV; 2: DAY1_T01.WAV", ""}) {
        const std::string table = folder_.write(
            "in.tsv",
            std::string("camera_file\tsound\toffset_frames\nA001C001_261120_R1AB.mov\t") + sound + "\t-13\n");
        const std::string said = runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", table,
                                          "--no-smart-audio", "--no-cache", "--force"})
                                     .err;
        const bool isUsed = !std::string_view(sound).ends_with("OTHER.WAV");
        EXPECT_EQ(said.find("line 2: the offset is not used") == std::string::npos, isUsed) << said;
        EXPECT_NE(said.find(isUsed ? "changes 1 clip." : "changes 0 clips."), std::string::npos) << said;
    }
}

/// A clip without sound gets a recording of another time, as from a phone.
TEST_F(CardsTest, aChoiceMayNameAnyRecording) {
    addSecondRecorder();
    const auto after = [&](const std::string& choice, const std::string& lock) {
        const std::string table = folder_.write("in.tsv", "camera_file\tchoice\toffset_frames\tlock\n"
                                                          "A001C003_261120_R1AB.mov\t" +
                                                              choice + "\t-25\t" + lock + "\n");
        return runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", table, "--json",
                        "--no-smart-audio", "--set", "trimMode=video"});
    };
    const Outcome named = after("sound/ISO.WAV", "x");
    ASSERT_EQ(named.status, done) << named.err;
    EXPECT_EQ(named.json().find("syncClipCount")->integer(), 2)
        << "with the clip without sound: " << named.err;
    EXPECT_EQ(named.err.find("A001C003"), std::string::npos) << "locked: nothing is doubted: " << named.err;
    EXPECT_NE(folder_.read("out.fcpxml").find("ISO.WAV"), std::string::npos);
    std::filesystem::create_directory(at("day2"));
    std::filesystem::copy(at("sound/ISO.WAV"), at("day2/ISO.WAV"));
    for (const char* none : {"ISO.WAV", "T9.WAV", "1,000"}) {
        const std::string problem = after(none, "maybe").err;
        EXPECT_NE(problem.find("line 2: choice must be the number"), std::string::npos) << problem;
        EXPECT_NE(problem.find("line 2: lock must be x or nothing"), std::string::npos) << problem;
    }
}

/// Mono files, and parts that meet in the middle of the clip, of a recorder that is an hour ahead.
TEST_F(CardsTest, aChoiceOfOneFileAttachesItsWholeTake) {
    struct File {
        const char* name;
        int start, seconds;
    };
    struct Case {
        const char* choice;
        std::vector<File> files;
        const char* shown;
    };
    constexpr std::uint64_t sampleRate = 8000;
    for (const Case& one :
         {Case{"S7T3_1.WAV",
               {{"S7T3_1.WAV", -2, 14}, {"S7T3_2.WAV", -2, 14}, {"S7T4_1.WAV", 20, 14}},
               "S7T3_1.WAV + 1 file (2 ch)"},
          {"T3-002.WAV",
           {{"T3-001.WAV", -4, 5}, {"T3-002.WAV", 1, 5}, {"T3-003.WAV", 6, 60}, {"T3-004.WAV", 66, 60}},
           "T3-001.WAV + 2 files (1 ch)"}}) {
        std::filesystem::remove_all(at("bag"));
        std::filesystem::create_directory(at("bag"));
        for (const File& file : one.files) {
            const auto start = std::uint64_t{40500} + static_cast<std::uint64_t>(file.start);
            test::WaveMaker()
                .format({.channels = 1, .sampleRate = sampleRate})
                .bext({.originator = "Bag", .date = "2026-11-20", .timeReference = start * sampleRate})
                .silence(sampleRate * static_cast<std::size_t>(file.seconds))
                .writeTo(folder_.path(std::string("bag/") + file.name));
        }
        const std::string table = folder_.write("in.tsv", std::string("camera_file\tchoice\toffset_frames\n"
                                                                      "A001C003_261120_R1AB.mov\t") +
                                                              one.choice + "\t-90000\n");
        const Outcome sync = runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--force", "--apply",
                                      table, "--no-smart-audio"});
        ASSERT_EQ(sync.status, done) << sync.err;
        EXPECT_NE(sync.out.find(one.shown), std::string::npos) << sync.out;
    }
}

TEST_F(CardsTest, aLockBesideAChoiceTakesOffWhatIsOfAnotherDay) {
    const auto hasOther = [&](const char* date, const std::string& cells) {
        addSecondRecorder(date);
        const std::string table =
            folder_.write("in.tsv", "camera_file\tchoice\tlock\nA001C001_261120_R1AB.mov\t" + cells + "\n");
        const Outcome sync = runWith({"sync", at("camera"), at("sound"), "-o", at("out.fcpxml"), "--days",
                                      "neighbours", "--apply", table, "--no-smart-audio"});
        EXPECT_EQ(sync.status, done) << sync.err;
        return sync.out.find("+ 1 more") != std::string::npos;
    };
    EXPECT_TRUE(hasOther("2026-11-21", "1\t"));
    EXPECT_FALSE(hasOther("2026-11-21", "1\tx"));
    EXPECT_TRUE(hasOther("2026-11-21", "2\tx")) << "it is what was chosen";
    EXPECT_TRUE(hasOther("2026-11-20", "1\tx")) << "another recorder of the day";
}

TEST_F(CardsTest, aTableOfOneCardIsGoodForTheWholeShoot) {
    const std::string table = at("card.tsv");
    ASSERT_EQ(runWith({"scan", at("cardB"), at("sound"), "--review", table}).status, done);
    ASSERT_NE(folder_.read("card.tsv").find("1: DAY1_T01.WAV\tmatched"), std::string::npos);
    std::filesystem::create_directory(at("day2"));
    std::filesystem::copy(at("sound/DAY1_T01.WAV"), at("day2/DAY1_T01.WAV"));
    const Outcome sync = runWith({"sync", folder_.path(), "-o", at("out.fcpxml"), "--apply", table,
                                  "--exclude", "day2/*", "--no-smart-audio"});
    EXPECT_TRUE(sync.err.starts_with(
        "warning: review: the table has no line for 3 of 4 clips, the first is 'A001C001_261120_R1AB.mov': "))
        << sync.err;
    EXPECT_NE(sync.err.find("The review changes 0 clips.\nwarning: not in the document: "),
              std::string::npos);
}

/// Clips with microphones, five minutes apart, and the recordings that they heard from the sixth second on.
class HeardReview : public testing::Test {
  protected:
    static constexpr int rate = 8000, takeSeconds = 25, clipSeconds = 12, from = 6;

    HeardReview() { std::filesystem::create_directory(folder_.path("shoot")); }

    std::string at(const std::string& name) const { return folder_.path("shoot/" + name); }
    /// `date`: of the recording, which then states its time; null: it states neither.
    void film(unsigned take, const char* date = nullptr) const {
        const std::string number = std::to_string(take);
        std::mt19937 random(take);
        std::uniform_real_distribution<float> level(-50, -10), noise(-1, 1);
        std::vector<float> samples(static_cast<std::size_t>(takeSeconds * rate));
        float gain = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) { // levels that change as with syllables
            if (i % (rate * 3 / 10) == 0) gain = std::pow(10.0F, level(random) / 20);
            samples[i] = gain * noise(random);
        }
        std::string heard;
        for (std::size_t i = from * rate; i < (from + clipSeconds) * rate; ++i) {
            const auto sample = static_cast<std::int16_t>(samples[i] * 30000);
            heard += {static_cast<char>(sample >> 8), static_cast<char>(sample & 0xFF)};
        }
        test::MovieMaker()
            .video({.frames = 25 * clipSeconds})
            .audio({.channels = 1,
                    .sampleRate = rate,
                    .codec = "twos",
                    .samples = clipSeconds * rate,
                    .sound = heard})
            .timecode({.firstFrame = 25 * (36000 + 300 * take)})
            .writeTo(at("A001C00" + number + "_261120_R1AB.mov"));
        test::WaveMaker recording;
        recording.format({.channels = 1, .sampleRate = rate});
        if (date != nullptr)
            recording.bext({.originator = "Cart",
                            .date = date,
                            .timeReference = static_cast<std::uint64_t>(rate) * (36000 + 300 * take - from)});
        recording.samples(samples).writeTo(at("T" + number + ".WAV"));
    }

    const test::TemporaryDirectory folder_;
};

/// The recorder's date is one day behind. Where nobody listens, only the time of day joins them.
TEST_F(HeardReview, WhatOnlyTheCamerasSettledIsNotDoubtedWithTheirTable) {
    for (const unsigned take : {1, 2, 3, 4}) film(take, "2026-11-19");
    const std::string table = folder_.path("heard.tsv");
    const auto sync = [&](const std::vector<std::string>& more) {
        std::vector<std::string> call{
            "sync",    folder_.path("shoot"), "-o",        folder_.path("out.fcpxml"),
            "--force", "--no-smart-audio",    "--no-cache"};
        call.insert(call.end(), more.begin(), more.end());
        return runWith(call).err;
    };
    const std::string doubt = "fit recordings of 2026-11-19";
    EXPECT_NE(sync({}).find(doubt), std::string::npos);
    const Outcome told = runWith({"diagnose", folder_.path("shoot"), "--review", table, "--no-cache"});
    for (const char* text : {"Microphones heard the recordings of 4 clips in their places. By timecode alone",
                             "Nothing else is in doubt.\n"})
        EXPECT_NE(told.out.find(text), std::string::npos) << told.out;
    EXPECT_NE(told.out.find("4 lines are filled in"), std::string::npos) << told.out;
    const std::string after = sync({"--apply", table});
    EXPECT_TRUE(after.starts_with("The review changes 4 clips.\n")) << after;
    EXPECT_EQ(after.find("2026-11-19"), std::string::npos) << after;
}

TEST_F(HeardReview, WhatTheCamerasHeardIsFilledInAndTakenBack) {
    for (const unsigned take : {1, 2}) film(take);
    const std::string table = folder_.path("heard.tsv");
    const Outcome told = runWith({"diagnose", folder_.path("shoot"), "--review", table, "--no-cache"});
    ASSERT_EQ(told.status, done) << told.err;
    EXPECT_NE(told.out.find("2 lines are filled in"), std::string::npos) << told.out;
    const auto lines = readReviewTable(folder_.read("heard.tsv"));
    ASSERT_EQ(lines.size(), 2U);
    for (const std::size_t i : {0, 1}) {
        EXPECT_EQ(lines[i][ReviewColumn::choice], "T" + std::to_string(i + 1) + ".WAV");
        EXPECT_EQ(lines[i][ReviewColumn::offsetFrames], "-150");
    }
    const Outcome sync = runWith({"sync", folder_.path("shoot"), "-o", folder_.path("out.fcpxml"), "--apply",
                                  table, "--json", "--no-smart-audio", "--no-cache"});
    ASSERT_EQ(sync.status, done) << sync.err;
    EXPECT_EQ(sync.json().find("counts")->find("syncClips")->integer(), 2);
}

} // namespace
} // namespace orvane::cli
