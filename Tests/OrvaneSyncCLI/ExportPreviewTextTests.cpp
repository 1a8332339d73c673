#include "OrvaneSyncCLI/Printers.h"

#include "Support/Assets.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(ExportPreviewText, SaysWhatHelps) {
    using test::audio, test::clip, test::slated, test::video;
    const SyncGroup nine = clip(video("a.mov"), slated(audio("a.wav"), "9", "1"));
    const SyncGroup ten = clip(video("b.mov"), slated(audio("b.wav"), "10\n", "1"));
    const SyncGroup none = clip(video("c.mov"), audio("c.wav"));
    const auto check = [&](const SyncGroupList& groups, bool isSplit, bool isNameChosen, bool isOneAnalysed,
                           const char* text) {
        ExportSettings settings;
        settings.splitEventsByScene = isSplit;
        if (isOneAnalysed) settings.smartAudioResults[none.id] = {};
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

} // namespace
} // namespace orvane::cli
