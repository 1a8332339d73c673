#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncApp/ViewModels/Results/Thumbnails.h"
#include "OrvaneSyncApp/ViewModels/Results/WarningWords.h"
#include "OrvaneSyncApp/ViewModels/Sheets/AtmoBuilderModel.h"
#include "OrvaneSyncApp/ViewModels/Sheets/Feedback.h"
#include "OrvaneSyncApp/ViewModels/Sheets/ReportTexts.h"
#include "OrvaneSyncApp/ViewModels/Sheets/SegmentPlayer.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "Platform/Stop.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <atomic>
#include <thread>

namespace orvane {

namespace {

AtmoCandidate candidate(double seconds) {
    return {UUID::random(), {"/a.wav"}, 0, 48000, 48000 + static_cast<std::int64_t>(seconds * 48000),
            48000,          0.0005F};
}

} // namespace

TEST(ReportTexts, NameRowsAndTheColumnsThatGoOn) {
    const ALEFile report = ALEParser().parse("Scene,Take,File Name,sensor_fps,Comments,Lens\n"
                                             "12,3,A001.mov,100,good,\n12,4,,,,\n,,,25,,\n");
    EXPECT_EQ(reportTexts::nameOfRow(report, 0), "A001.mov");
    EXPECT_EQ(reportTexts::nameOfRow(report, 1), "12-4");
    EXPECT_EQ(reportTexts::nameOfRow(report, 2), "row 3");
    const ALEFile marked =
        ALEParser().parse("Scene,Take,File Name,Roll,Start TC\n1,1,B.mov,A001,10:00:00:00\n"
                          "1,2,,,10:01:00:00\n");
    EXPECT_EQ(reportTexts::lineOfRow(marked, 0), "B.mov  ·  A001  ·  10:00:00:00");
    EXPECT_EQ(reportTexts::lineOfRow(marked, 1), "1-2  ·  10:01:00:00");
    EXPECT_EQ(reportTexts::columnsOf(ALEParser().parse("Name,Lens,Lens\nA,1,2\n")).shownOnly,
              (std::vector<std::string>{"Name", "Lens"}));
    const reportTexts::Columns columns = reportTexts::columnsOf(report);
    EXPECT_EQ(columns.inDocument, (std::vector<std::string>{"Scene", "Take", "sensor_fps"}));
    EXPECT_EQ(columns.shownOnly, (std::vector<std::string>{"File Name", "Comments"}));
}

TEST(DoubtCures, SayForTheWindowWhatTheTerminalHasOptionsFor) {
    using enum CureOption::Kind;
    const auto onDay = [](std::vector<CureOption> scan) {
        return DoubtCure(CureWay{{{soundDate, "2026-11-21"}}, CureScan{"this day", std::move(scan)}});
    };
    const DoubtCure moved(CureWay{{{soundDate, "2026-11-21"}, {soundOffset, "-01:00:00:00"}}});
    const struct {
        DoubtCure cure;
        const char* text;
        std::vector<std::string> buttons;
        bool scansAgain = true;
    } cases[] = {
        {DoubtCure(timecodeRate, "29.97DF") + " or " + DoubtCure(timecodeRate, "29.97NDF"),
         "count timecode at 29.97DF frames a second or count timecode at 29.97NDF frames a second",
         {"Count at 29.97DF", "Count at 29.97NDF"}},
        {moved, "date the recordings 2026-11-21 and move all sound by -01:00:00:00", {"Move and Date Sound"}},
        {DoubtCure(DoubtCure::Words{"the table", "the menu"}) + ", or take the first of each with " +
             DoubtCure(choose, "first"),
         "the menu, or take the first of each with “Choose First Recordings”",
         {"Choose First Recordings"},
         false},
        {onDay({{video, "/a b/c"}, {audio, "Bob's card"}}) + ", or " + DoubtCure(days, "same"),
         "date the recordings 2026-11-21 in a scan of this day alone (picture: '/a b/c', sound: 'Bob's "
         "card'), "
         "or match sound of the same day only",
         {}},
        {DoubtCure(soundOffset, "-01:00:00:00").in(CureScan{"these clips", {}, "put them apart"}),
         "move all sound by -01:00:00:00 for these clips alone: Ctrl+T on a clip lists the recordings of "
         "that "
         "time first",
         {}},
        {onDay({{exclude, "B"}, {withoutFolder, "/m"}}),
         "date the recordings 2026-11-21 in a scan of this day alone (without 'B', without the folder "
         "'/m')",
         {}},
        {DoubtCure(CureWay{{{exclude, "B"}, {exclude, "C*"}}}) + " leaves that recorder out",
         "a scan without 'B', without 'C*' leaves that recorder out",
         {}},
        {"listen to A --audio B.wav", "listen to A --audio B.wav", {}},
        {DoubtCure(setting, "trimMode=overlap"),
         "“Length of the clips: Overlap (picture and sound)”",
         {"Trim to Overlap (picture and sound)"},
         false},
        {DoubtCure(setting, "ltc.enabled=true") + " or " + DoubtCure(setting, "ltc.channelIndex=-1"),
         "“Read Timecode from the Sound” or “Read Timecode from Every Track”",
         {"Read Timecode from the Sound", "Read Timecode from Every Track"}},
    };
    for (const auto& one : cases) {
        const Cure cure = cureInWords(one.cure);
        EXPECT_EQ(cure.text, one.text);
        std::vector<std::string> buttons;
        for (const CureStep& step : cure.steps) {
            buttons.push_back(step.button);
            EXPECT_EQ(step.scansAgain, one.scansAgain) << step.button;
        }
        EXPECT_EQ(buttons, one.buttons) << one.text;
    }
    const CureStep step = cureInWords(moved).steps.front();
    EXPECT_NE(step.arguments.find("soundDate"), nullptr);
    EXPECT_NE(step.arguments.find("soundOffset"), nullptr);
    const SyncDoubt doubt{.message = "'b' counts wrong", .cure = {timecodeRate, "25"}};
    EXPECT_EQ(warningsInWords({{doubt, {}}}).at("'b' counts wrong; --tc-rate 25"),
              "'b' counts wrong; count timecode at 25 frames a second");
}

TEST(DoubtCures, NameAFolderInARowWithoutItsPath) {
    for (const auto& [message, row] :
         {std::pair("the clips in '/shoot/day 1/A003' are an hour late",
                    "the clips in 'A003' are an hour late"),
          {"'a.mov' and '/s/B/' or '/' of 'x/y'", "'a.mov' and 'B/' or '/' of 'x/y'"},
          {"'/unclosed", "'/unclosed"}})
        EXPECT_EQ(messageInRow({.message = message, .cure = {}}), row);
}

TEST(Warnings, SayTheSameOfSeveralFilesOnce) {
    const std::vector<std::string> warnings{
        "not in the document: A (1).mov (no sound)",
        "Project rate mismatch: A.mov is 50 fps, project is 25 fps",
        "not in the document: B.mov (several)",
        "not in the document: C.mov (no sound)",
        "something: else",
        "not in the document: ",
        "MOS (no audio): D.mov",
        "MOS (no audio): E.mov",
        "Project rate mismatch: F is it.mov is 50 fps, project is 25 fps"};
    EXPECT_EQ(warningGroups(warnings), (std::vector<WarningGroup>{{warnings[0], {"C.mov"}},
                                                                  {warnings[1], {"F is it.mov"}},
                                                                  {warnings[2], {}},
                                                                  {warnings[4], {}},
                                                                  {warnings[5], {}},
                                                                  {warnings[6], {"E.mov"}}}));
}

TEST(AtmoBuilderModel, PreselectsTheLongestAndBuildsWhatIsChosen) {
    AtmoBuilderModel model({{"12", {candidate(40), candidate(30), candidate(20)}}, {"13", {}}});
    ASSERT_EQ(model.scenes().size(), 1U) << "a scene without a stretch is not listed";
    EXPECT_EQ(model.scenes()[0].selection.size(), 2U);
    model.setTarget(0, 1000);
    EXPECT_EQ(model.scenes()[0].targetSeconds, 300);
    model.setTarget(0, 62);
    const auto order = model.begin(0);
    ASSERT_TRUE(order);
    EXPECT_EQ(order->targetDuration, 60);
    EXPECT_EQ(order->candidates.size(), 2U);
    EXPECT_FALSE(model.begin(0)) << "one at a time";
    model.failed(0, "no room");
    EXPECT_EQ(model.scenes()[0].status, "✗ no room");
    model.clear(0);
    EXPECT_FALSE(model.begin(0)) << "nothing is chosen";
    EXPECT_EQ(AtmoBuilderModel::startText({UUID::random(), {}, 0, 119996, 0, 1000, 0}), "02:00.00");
    EXPECT_EQ(AtmoBuilderModel::startText({UUID::random(), {}, 0, 48000 * 125 + 14400, 0, 48000, 0}),
              "02:05.30");
}

TEST(SegmentPlayer, GivesOneChannelOfTheStretchAlone) {
    test::TemporaryDirectory folder;
    std::vector<float> samples;
    for (int i = 0; i < 1000; ++i) samples.insert(samples.end(), {0.5F, static_cast<float>(i) / 2000});
    test::WaveMaker().format({.channels = 2}).samples(samples).writeTo(folder.path("a.wav"));
    const auto segment = openSegment({UUID::random(), folder.path("a.wav"), 1, 300, 320});
    ASSERT_NE(segment, nullptr);
    EXPECT_EQ(segment->frameCount(), 20);
    std::vector<float> read(64);
    float* channel = read.data();
    ASSERT_TRUE(segment->seek(5));
    EXPECT_EQ(segment->read({&channel, 1}, 64), 15U) << "not beyond its end";
    EXPECT_NEAR(read[0], 305.0F / 2000, 1e-4);
    EXPECT_FALSE(segment->seek(21));
}

TEST(Feedback, HoldsWhatWasShownAndNothingElse) {
    const Feedback feedback{"Grüße", "OrvaneSync 1\n", "\x89PNG bytes"};
    const auto request = feedbackRequest("https://example.com/feedback", feedback);
    EXPECT_EQ(request.method, "POST");
    const std::string type = request.headers.front().second;
    const std::string mark = type.substr(type.find('=') + 1);
    EXPECT_TRUE(request.body.starts_with("--" + mark + "\r\n"));
    EXPECT_TRUE(request.body.ends_with("--" + mark + "--\r\n"));
    for (const char* part :
         {"name=\"message\"", "Grüße", "name=\"report\"", "image/png\r\n\r\n\x89PNG bytes\r\n"})
        EXPECT_NE(request.body.find(part), std::string::npos) << part;
    EXPECT_EQ(feedbackRequest("", {"a", "b", ""}).body.find("screenshot"), std::string::npos);
}

TEST(Thumbnails, DecodeWhatIsInViewAndStopWhatIsScrolledAway) {
    const auto thread = std::make_shared<test::VirtualMainThread>();
    std::atomic<int> begun = 0, stopped = 0;
    const auto thumbnails = Thumbnails::create(
        thread, {64, 36},
        [&](const Thumbnails::Request& request, platform::PictureSize, const std::stop_token& stop) {
            ++begun;
            if (request.path == "slow") {
                while (!stop.stop_requested()) std::this_thread::yield();
                ++stopped;
                throw platform::Stopped();
            }
            platform::Picture picture;
            picture.size = {1, 1};
            return request.path == "none" ? std::nullopt : std::optional(picture);
        });
    thumbnails->want({{"slow"}, {"never"}});
    ASSERT_TRUE(thread->waitUntil([&] { return begun == 1; }));
    thumbnails->want({{"a"}, {"none"}});
    ASSERT_TRUE(thread->waitUntil([&] { return begun == 3; }));
    ASSERT_TRUE(thread->waitUntil([&] { return thumbnails->find("a") != nullptr; }));
    EXPECT_EQ(stopped, 1);
    EXPECT_EQ(thumbnails->find("none"), nullptr);
    thumbnails->want({{"a"}, {"none"}});
    thread->runPosted();
    EXPECT_EQ(begun, 3) << "neither is decoded twice, nor what was never in view for long";
}

} // namespace orvane
