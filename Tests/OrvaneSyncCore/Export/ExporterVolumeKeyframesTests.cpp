#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"

#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <limits>

namespace orvane {
namespace {

using namespace test;
using Lines = std::vector<std::string>;

std::vector<BlockDecision> blocks(const std::vector<std::pair<double, int>>& endsAndTracks,
                                  double gain = 1.0) {
    std::vector<BlockDecision> made;
    for (const auto& [end, track] : endsAndTracks) {
        BlockDecision block;
        block.startSeconds = made.empty() ? 0 : made.back().endSeconds;
        block.endSeconds = end;
        block.activeTrack = track;
        block.gainMultiplier = gain;
        made.push_back(block);
    }
    return made;
}

/// Such as "0:1 easeOut, 9.875:1 easeOut".
std::string text(const std::vector<FCPXMLExporter::VolumeKeyframe>& keyframes) {
    std::ostringstream out;
    for (const auto& keyframe : keyframes)
        out << (out.tellp() > 0 ? ", " : "") << keyframe.time << ":" << keyframe.value << " "
            << keyframe.interp;
    return out.str();
}

TEST(VolumeKeyframes, OpenOnATracksBlocksAndCloseOnTheOthers) {
    const auto check = [&](const char* name, const std::vector<BlockDecision>& blocks,
                           const std::string& keyframes) {
        EXPECT_EQ(text(FCPXMLExporter::keyframesFromBlocks(blocks, 1, 0.25)), keyframes) << name;
    };
    check("none", {}, "");
    check("one", blocks({{8, 1}}), "0:1 easeOut, 8:1 easeOut");
    check("two", blocks({{10, 1}, {20, 2}}), "0:1 easeOut, 9.875:1 easeOut, 10.125:0 easeIn, 20:0 easeOut");
    check("a boundary near the start", blocks({{0.05, 2}, {20, 1}}, 0.5),
          "0:0 easeOut, 0:0 easeOut, 0.175:0.5 easeIn, 20:0.5 easeOut");
    check("others among themselves", blocks({{10, 2}, {20, 3}, {30, 0}}), "0:0 easeOut, 30:0 easeOut");
    check("an end inside the ramp", blocks({{10, 2}, {10.1, 1}}),
          "0:0 easeOut, 9.875:0 easeOut, 10.125:1 easeIn");
}

TEST(VolumeKeyframes, FollowTheBestTrackWhereThereAreNoBlocks) {
    const auto check = [&](const char* name, const std::vector<WindowedBestSegment>& segments,
                           const std::string& keyframes) {
        EXPECT_EQ(text(FCPXMLExporter::keyframesFromLegacySegments(segments, 1, 0.1)), keyframes) << name;
    };
    check("never", {{0, 10, 2}, {10, 20, 3}}, "0:0 linear");
    check("from the start", {{0, 10, 1}, {10, 20, 2}},
          "0:0 linear, 0.05:1 linear, 10:1 linear, 10.05:0 linear");
    check("later", {{0, 10, 2}, {10, 20, 1}}, "0:0 linear, 10:0 linear, 10.05:1 linear");
    check("behind a pause", {{5, 10, 1}, {12, 20, 2}},
          "0:1 linear, 4.95:0 linear, 5.05:1 linear, 11.95:1 linear, 12.05:0 linear");
}

TEST(VolumeKeyframes, ReachTheChannelsOfTheirRole) {
    MediaAsset named = recording(3);
    named.ixmlData = ixml("1", "1", {"Boom", "Anna", "Boom"});
    const SyncGroup first = matched(picture("a.mov"), {named}), second = matched(picture("b.mov"), {named});
    const SyncGroup unheard = matched(picture("c.mov"), {named});
    ExportSettings settings = settingsAt(25);
    settings.generateMulticam = false; // an angle would hold its clip's channels once more
    settings.smartAudioResults[first.id].blocks = blocks({{1.2349, 2}, {4, 3}}, 0.5);
    settings.smartAudioResults[second.id].windowedBestTracks = {{0, 2, 1}};
    settings.smartAudioResults[unheard.id] = {};
    const auto document = [&] {
        return FCPXMLExporter::exportDocument({first, second, unheard}, {}, settings).fcpxmlString;
    };
    EXPECT_EQ(countOf(document(), "<param"), 0U);
    settings.experimentalVolumeKeyframes = true;
    const std::string curves = document();
    EXPECT_EQ(countOf(curves, "<param name=\"volume\" key=\"volume\">"), 3U * 3U * 2U)
        << "each channel of each clip has the curve of its role in both";
    const auto from = curves.find("role=\"dialogue.Anna\"");
    const std::string anna = curves.substr(from, curves.find("</audio>", from) - from);
    EXPECT_EQ(linesWith(anna, "<keyframe "),
              (Lines{
                  R"(<keyframe time="0/1000s" value="0.500" interp="easeOut"/>)",
                  R"(<keyframe time="1109/1000s" value="0.500" interp="easeOut"/>)",
                  R"(<keyframe time="1359/1000s" value="0.000" interp="easeIn"/>)",
                  R"(<keyframe time="4000/1000s" value="0.000" interp="easeOut"/>)",
                  R"(<keyframe time="0/1000s" value="0.000" interp="linear"/>)",
              }));
    // Channels 1 and 3 share a role: the curve is that of channel 1, which is never heard in the first clip.
    const auto boom = curves.find("role=\"dialogue.Boom\"");
    EXPECT_EQ(linesWith(curves.substr(boom, 2000), "4000/1000s").front(),
              R"(<keyframe time="4000/1000s" value="0.000" interp="easeOut"/>)");

    // What a hand-edited session holds that is no number is left out, and a curve of nothing else with it.
    ExportSettings odd = settings;
    odd.smartAudioResults.at(first.id).blocks.front().gainMultiplier =
        std::numeric_limits<double>::infinity();
    const std::string oddCurves = FCPXMLExporter::exportDocument({first}, {}, odd).fcpxmlString;
    EXPECT_GT(countOf(oddCurves, "<keyframe "), 0U);
    EXPECT_EQ(countOf(oddCurves, "inf\"") + countOf(oddCurves, "nan\""), 0U);

    fcpxml::XMLDocument tree;
    EXPECT_TRUE(FCPXMLExporter::injectVolumeKeyframes(tree, {first}, settings)) << "nothing to do";
    tree.makeRoot("audio").setAttribute("role", "dialogue.Anna");
    const std::string before = tree.text();
    EXPECT_FALSE(FCPXMLExporter::injectVolumeKeyframes(tree, {first, second}, settings, 4));
    EXPECT_EQ(tree.text(), before);
    EXPECT_TRUE(FCPXMLExporter::injectVolumeKeyframes(tree, {first, second}, settings, 5));
    EXPECT_EQ(countOf(tree.text(), "<keyframe "), 5U);
}

} // namespace
} // namespace orvane
