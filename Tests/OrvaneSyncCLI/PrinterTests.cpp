#include "OrvaneSyncApp/ViewModels/Results/ClipTexts.h"
#include "OrvaneSyncCLI/ChannelStrip.h"
#include "OrvaneSyncCLI/CureCommand.h"
#include "OrvaneSyncCLI/Printers.h"
#include "OrvaneSyncCLI/ProgressLine.h"
#include "OrvaneSyncCLI/Table.h"
#include "Support/Assets.h"
#include "Support/Test.h"

#include <sstream>

namespace orvane::cli {
namespace {

TEST(ChannelStrip, showsWhoIsHeardWhen) {
    const std::vector<BlockDecision> blocks{{0, 5, 1, {}, BlockKind::mix, 1, 0, ""},
                                            {5, 8, 2, 1, BlockKind::multiActiveWarn, 1, 0, ""},
                                            {8, 10, 2, {}, BlockKind::silence, 1, 0, ""}};
    EXPECT_EQ(channelStrip(blocks, {"1 Boom", "2"}, 18),
              "1 Boom █████▒▒▒··\n2      ·····███░░\n       0:00  0:10\n");
    EXPECT_EQ(channelStrip(blocks, {"1 日本の名前"}, 18), "1 日… █████▒▒▒▒··\n      0:00   0:10\n")
        << "a label takes a third of the width";
    EXPECT_EQ(channelStrip({}, {"1"}, 18), "");
}

TEST(ExportPreviewText, SaysWhatHelps) {
    using test::audio, test::clip, test::slated, test::video;
    const SyncGroup nine = clip(video("a.mov"), slated(audio("a.wav"), "9", "1"));
    const SyncGroup ten = clip(video("b.mov"), slated(audio("b.wav"), "10\n", "1"));
    const SyncGroup none = clip(video("c.mov"), audio("c.wav"));
    const auto check = [&](const SyncGroupList& groups, bool isSplit, bool isNameChosen, bool isOneAnalysed,
                           const char* text) {
        ExportSettings settings;
        settings.set(settings::splitEventsByScene, isSplit);
        if (isOneAnalysed) settings.smartAudioResults[none.id].blocks.emplace_back();
        EXPECT_EQ(exportPreviewText(groups, settings, isNameChosen, isOneAnalysed), text);
    };
    check({none}, false, false, false, "");
    check({nine, ten}, false, true, false, "");
    check({nine, ten, none}, false, false, false,
          "The event is called 'Synced'; after its scenes it would be --event 'Scenes 9-10\xEF\xBF\xBD'.\n");
    check({nine, ten, none}, true, false, false, "By their scenes the clips call for 3 events.\n");
    check({none, nine}, true, false, true,
          "By their scenes the clips call for 2 events.\n1 clip has not been analyzed for Smart Audio — "
          "its audio "
          "settings won’t be applied in this export.\n");
}

TEST(AssetText, HasNoRowsForAbsentFacts) {
    MediaAsset asset = test::audio("T.wav");
    asset.bextOriginator = "";
    const std::string text = assetText(asset, false);
    for (const char* absent : {"recorder", "off-speed"}) EXPECT_EQ(text.find(absent), std::string::npos);
}

TEST(MatchText, SaysWhatIsCoveredWhereTheSoundWasMovedTo) {
    const struct {
        double offset, overlap, moved; ///< seconds
        const char* text;
    } cases[] = {{-2, 10, 0, "Matched"},
                 {7, 3, 0, "Matched, covers 3.0 of 10.0 s"},
                 {7, 3, -7, "Matched"},
                 {36000, 0, -36003, "Matched"},
                 {0, 0, 0, "Matched"}, // unknown
                 {0, 0, 6, "Matched, covers 4.0 of 10.0 s"}};
    for (const auto& [offset, overlap, moved, text] : cases) {
        SyncGroup group =
            test::clip(test::video("a.mov", "00:00:00:00", 10), test::audio("a.wav", "00:00:00:00", 20));
        group.audioMatches.front().syncOffsetSeconds = offset;
        group.audioMatches.front().overlapDurationSeconds = overlap;
        group.manualAudioOffsetSeconds = moved;
        EXPECT_EQ(matchText(group, takeOf(group, assumedChannels)), text) << offset << " " << moved;
    }
}

TEST(CureCommand, isTheCallWithWhatTheCureSays) {
    using enum CureOption::Kind;
    const auto way = [](std::vector<CureOption> options, std::vector<CureOption> scan = {},
                        const char* rest = "") {
        return DoubtCure(CureWay{std::move(options), CureScan{"this card", std::move(scan), rest}});
    };
    const DoubtCure sameDay(days, "same");
    const struct {
        std::vector<std::string> call;
        DoubtCure cure;
        const char* text;
        std::optional<std::string> expected;
    } cases[] = {
        {{"shoot"}, sameDay, "--days same", "orvanesync scan shoot --days same"},
        {{"my shoot", "$x"},
         DoubtCure(timecodeRate, "25") + " or " + DoubtCure(timecodeRate, "30"),
         "--tc-rate 25 or --tc-rate 30",
         "orvanesync scan 'my shoot' '$x' --tc-rate 25"},
        {{"--", "-a"},
         "attach --audio x, or " + DoubtCure(setting, "a=b") + " c",
         "attach --audio x, or --set a=b c",
         "orvanesync scan --set a=b -- -a"},
        {{"a", "--sound-offset", "1", "--exclude", "B", "--sound-date=2000-01-01"},
         way({{soundDate, "2024-05-17"}, {soundOffset, "01:00:00:00"}},
             {{exclude, "it's (1), b"}, {exclude, "C"}}),
         R"(--sound-date 2024-05-17 --sound-offset 01:00:00:00 in a scan of this card alone (--exclude 'it'\''s (1), b' --exclude 'C'))",
         R"(orvanesync scan a --exclude B --sound-date 2024-05-17 --sound-offset 01:00:00:00 --exclude 'it'\''s (1), b' --exclude C)"},
        {{"/m/A", "--audio", "/m/B C", "--audio=/m/D"},
         way({{soundDate, "2024-05-17"}}, {{withoutFolder, "/m/B C"}, {withoutFolder, "/m/D"}}),
         "--sound-date 2024-05-17 in a scan of this card alone (without the folder '/m/B C', without the "
         "folder '/m/D')",
         "orvanesync scan /m/A --sound-date 2024-05-17"},
        {{"a", "--video", "b", "--exclude", "c", "d"},
         way({{soundDate, "2024-05-17"}}, {{video, "/m/A"}, {audio, "/m/B C"}}) + ", or lock it",
         "--sound-date 2024-05-17 in a scan of this card alone (--video '/m/A' --audio '/m/B C'), or lock it",
         "orvanesync scan --exclude c --sound-date 2024-05-17 --video /m/A --audio '/m/B C'"},
        {{"a", "--quiet", "--set", "x.y=1", "--set=x.y=2", "--quiet"},
         DoubtCure(setting, "x.y=3"),
         "--set x.y=3",
         "orvanesync scan a --set x.y=3 --quiet"},
        {{"--set", "x.y=3", "a", "--quiet"},
         DoubtCure(setting, "x.y=3"),
         "--set x.y=3",
         std::nullopt},                               // already in force
        {{"a", "--review", "day.1/t.tsv", "--force"}, // its table may hold decisions by then
         sameDay,
         "--days same",
         "orvanesync scan a --review day.1/t-2.tsv --days same"},
        {{"a"},
         way({{soundDate, "2024-05-17"}}, {{exclude, ""}}, ", which you know"),
         "--sound-date 2024-05-17 in a scan of this card alone (--exclude FOLDER, which you know)",
         std::nullopt},
        {{"a"},
         DoubtCure(soundDate, "") + ", or lock it",
         "--sound-date YYYY-MM-DD, or lock it",
         std::nullopt},
        {{"a"}, "choose --days same", "choose --days same", std::nullopt},
        {{"a\nb'\\\xff"}, sameDay, "--days same", R"(orvanesync scan $'a\012b\'\\\377' --days same)"},
    };
    for (const auto& one : cases) {
        std::vector<std::string> call{"orvanesync", "scan"};
        call.insert(call.end(), one.call.begin(), one.call.end());
        EXPECT_EQ(one.cure.text(), one.text);
        EXPECT_EQ(CureCommands(call).next(one.cure), one.expected) << one.text;
    }
    CureCommands cures(std::vector<std::string>{"orvanesync", "sync", "a", "-oday.1/Out.fcpxml"});
    EXPECT_EQ(cures.next(sameDay), "orvanesync sync a -oday.1/Out.fcpxml --days same");
    EXPECT_EQ(cures.next(sameDay), std::nullopt) << "told already";
    EXPECT_EQ(cures.next({exclude, "A"}), "orvanesync sync a -oday.1/Out-2.fcpxml --exclude A");
    EXPECT_EQ(cures.next({exclude, "B"}), "orvanesync sync a -oday.1/Out-3.fcpxml --exclude B");
}

TEST(NotComparedText, standsWhereCamerasHeardSomething) {
    SyncGroup group = test::clip(test::video("A.mov"), test::audio("T.WAV"));
    std::vector<SyncGroup> clips(3, group);
    EXPECT_EQ(notComparedText(SyncGroupList{clips}), "") << "their cameras recorded no sound";
    for (SyncGroup& clip : clips) clip.video.channelCount = 2;
    EXPECT_NE(notComparedText(SyncGroupList{clips}), "");
    clips[1].isLocked = true;
    EXPECT_EQ(notComparedText(SyncGroupList{clips}), "") << "two tell nothing of a clock";
}

TEST(Table, alignsWhatATerminalShows) {
    Table table({{"NAME"}, {"N", Table::Align::right}});
    table.add({"日本", "1"});
    table.add({"e\u0301x", "12"});
    table.add({"a\tb\n", "3"});
    EXPECT_EQ(table.text(false), "NAME   N\n日本   1\ne\u0301x    12\na\uFFFDb\uFFFD   3\n");
}

TEST(ProgressLine, tellsPhaseCountBarAndTimeLeft) {
    EXPECT_EQ(ProgressLine::text({"Probing", 1, 4}, 0.25, 0.5, 40),
              "Probing 1/4 [######...................]");
    EXPECT_EQ(ProgressLine::text({"Probing", 1, 4}, 0.25, 20, 40), "Probing 1/4 [####...........] 1:00 left");
    EXPECT_EQ(ProgressLine::text({"Probing", 1, 4}, 0.25, 20, 21), "Probing 1/4 1:00 left");
    EXPECT_EQ(ProgressLine::text({"Listening to Szene_12A.WAV\x1b", 1, 4}, 0.25, 0.5, 20),
              "Listening to Sz… 1/4");
    EXPECT_EQ(ProgressLine::text({"A\x1b[2J.WAV", 1, 4}, 0.25, 0.5, 17), "A\uFFFD[2J.WAV 1/4");
    EXPECT_EQ(ProgressLine::text({"Matching timecodes...", 0, 0}, 0, 20, 40), "Matching timecodes...");
}

} // namespace
} // namespace orvane::cli
