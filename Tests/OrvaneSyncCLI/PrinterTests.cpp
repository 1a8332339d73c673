#include "OrvaneSyncCLI/ChannelStrip.h"
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
        settings.splitEventsByScene = isSplit;
        if (isOneAnalysed) settings.smartAudioResults[none.id].blocks.emplace_back();
        EXPECT_EQ(exportPreviewText(groups, settings, isNameChosen, isOneAnalysed), text);
    };
    check({none}, false, false, false, "");
    check({nine, ten}, false, true, false, "");
    check({nine, ten, none}, false, false, false,
          "The event is called 'Synced'; after its scenes it would be --event 'Scenes 9-10\xEF\xBF\xBD'.\n");
    check({nine, ten, none}, true, false, false, "By their scenes the clips call for 3 events.\n");
    check({none, nine}, true, false, true,
          "By their scenes the clips call for 2 events.\n1 clips have not been analyzed for Smart Audio — "
          "their audio "
          "settings won’t be applied in this export.\n");
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
