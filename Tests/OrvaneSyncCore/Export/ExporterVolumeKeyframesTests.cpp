#include "OrvaneSyncCore/Services/Export/VolumeCurves.h"

#include "OrvaneSyncCore/Export/DocumentReader.h"
#include "OrvaneSyncCore/Export/ExportFixtures.h"

#include <limits>

namespace orvane {
namespace {

using namespace test;

BlockDecision block(double start, double end, int track, double gain = 1.0) {
    BlockDecision made;
    made.startSeconds = start;
    made.endSeconds = end;
    made.activeTrack = track;
    made.gainMultiplier = gain;
    return made;
}

std::vector<BlockDecision> blocks(const std::vector<std::pair<double, int>>& endsAndTracks,
                                  double gain = 1.0) {
    std::vector<BlockDecision> made;
    for (const auto& [end, track] : endsAndTracks)
        made.push_back(block(made.empty() ? 0 : made.back().endSeconds, end, track, gain));
    return made;
}

/// The keyframes as "time:value", such as "0:1 9.875:1".
std::string text(const std::vector<FCPXMLExporter::VolumeKeyframe>& keyframes) {
    std::ostringstream out;
    for (const auto& keyframe : keyframes)
        out << (out.tellp() > 0 ? " " : "") << keyframe.time << ":" << keyframe.value;
    return out.str();
}

TEST(VolumeKeyframes, OpenOnATracksBlocksAndCloseOnTheOthers) {
    const auto check = [&](const char* name, const std::vector<BlockDecision>& blocks,
                           const std::string& keyframes) {
        EXPECT_EQ(text(FCPXMLExporter::keyframesFromBlocks(blocks, 1, 0.25)), keyframes) << name;
    };
    check("none", {}, "");
    check("one", blocks({{8, 1}}), "0:1 8:1");
    check("two", blocks({{10, 1}, {20, 2}}), "0:1 9.875:1 10.125:0 20:0");
    check("a boundary near the start", blocks({{0.05, 2}, {20, 1}}, 0.5), "0:0 0.175:0.5 20:0.5");
    check("others among themselves", blocks({{10, 2}, {20, 3}, {30, 0}}), "0:0 30:0");
    check("an end inside the ramp", blocks({{10, 2}, {10.125, 1}}), "0:0 9.875:0 10.125:1");
    check("shorter than a ramp", blocks({{10, 2}, {10.125, 1}, {20, 3}}),
          "0:0 9.875:0 10.0625:1 10.25:0 20:0");
}

TEST(VolumeKeyframes, FollowTheBestTrackWhereThereAreNoBlocks) {
    const auto check = [&](const char* name, const std::vector<WindowedBestSegment>& segments,
                           const std::string& keyframes) {
        EXPECT_EQ(text(FCPXMLExporter::keyframesFromLegacySegments(segments, 1, 0.1)), keyframes) << name;
    };
    check("never", {{0, 10, 2}, {10, 20, 3}}, "0:0");
    check("from the start", {{0, 10, 1}, {10, 20, 2}}, "0:0 0.05:1 10:1 10.05:0");
    check("later", {{0, 10, 2}, {10, 20, 1}}, "0:0 10:0 10.05:1");
    check("behind a pause", {{5, 10, 1}, {12, 20, 2}}, "0:1 4.95:0 5.05:1 11.95:1 12.05:0");
    check("shorter than the change", {{0, 10, 2}, {10, 10.02, 1}, {10.02, 20, 2}},
          "0:0 10:0 10.05:1 10.07:0");
}

/// The keyframes of each channel of each clip, in seconds and decibels, such as "Anna 35999.5:0 36002:-96; ".
std::string curvesOf(const Node& root) {
    std::string text;
    for (const Node* channel : root.all("audio")) {
        const Node* volume = channel->child("adjust-volume");
        if (volume == nullptr) continue;
        EXPECT_EQ(&channel->children.front(), volume);
        EXPECT_EQ(volume->text("amount"), "0dB");
        EXPECT_EQ(volume->child("param")->text("name"), "amount");
        text += channel->text("role").substr(channel->text("role").find('.') + 1);
        for (const Node* keyframe : volume->child("param")->child("keyframeAnimation")->all("keyframe")) {
            EXPECT_EQ(keyframe->text("interp"), "linear");
            text += " " + keyframe->text("time") + ":" + keyframe->text("value");
        }
        text += "; ";
    }
    return text;
}

TEST(VolumeCurves, BelongToTheChannelsOfTheirOwnRecording) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    MediaAsset named = recording(2); // begins at 35999.5 s
    named.ixmlData = ixml("1", "1", {"Boom", "Anna"});
    // `change`: made to the first of two clips whose channels have the same names; the second has no result.
    const auto check = [&](const char* name, const std::vector<BlockDecision>& blocks,
                           const std::string& curves,
                           const std::function<void(SyncGroup&, SmartAudioResult&)>& change = {}) {
        SyncGroup first = matched(picture("a.mov"), {named});
        const SyncGroup second = matched(picture("b.mov"), {named});
        ExportSettings settings = settingsAt(25);
        settings.set(settings::generateMulticam, false); // an angle would hold its clip's channels once more
        SmartAudioResult& result = settings.smartAudioResults[first.id];
        result.blocks = blocks;
        if (change) change(first, result);
        const auto document = [&] {
            return FCPXMLExporter::exportDocument({first, second}, {}, settings).fcpxmlString;
        };
        EXPECT_EQ(countOf(document(), "<keyframe "), 0U) << name;
        settings.set(settings::volumeKeyframes, true);
        EXPECT_EQ(curvesOf(readDocument(document())), curves) << name;
        const std::string missing = result.isHeard() ? "1 clip" : "2 clips";
        EXPECT_EQ(FCPXMLExporter::exportDocument({first, second}, {}, settings).warnings,
                  std::vector<std::string>{"Volume curves are missing: Smart Audio has not analyzed " +
                                           missing + "; analyze and export again"})
            << name << ": the second clip at least";
    };
    check("two blocks", blocks({{10, 1}, {40, 2}}, 0.5),
          "Boom 71999/2s:-6.02dB 288075/8s:-6.02dB 288077/8s:-96dB 72059/2s:-96dB; "
          "Anna 71999/2s:-96dB 288075/8s:-96dB 288077/8s:-6.02dB 72059/2s:-6.02dB; ");
    check("moments to a thousandth, levels as the control has them", blocks({{1.2349, 1}, {4, 2}}, 10),
          "Boom 71999/2s:12dB 36000609/1000s:12dB 36000859/1000s:-96dB 72007/2s:-96dB; "
          "Anna 71999/2s:-96dB 36000609/1000s:-96dB 36000859/1000s:12dB 72007/2s:12dB; ");
    check("nothing known", {}, "");
    check("the best track alone", {}, "Boom 71999/2s:-96dB 719991/20s:0dB; Anna 71999/2s:-96dB; ",
          [](SyncGroup&, SmartAudioResult& result) {
              result.windowedBestTracks = {{0, 2, 1}};
          });
    check("blocks without a length, out of order, overlapping, of no number",
          {block(10, 20, 2), block(5, 5, 2), block(none, 7, 2), block(0, 12, 1, none)},
          "Boom 71999/2s:0dB 288075/8s:0dB 288077/8s:-96dB 72039/2s:-96dB; "
          "Anna 71999/2s:-96dB 288075/8s:-96dB 288077/8s:0dB 72039/2s:0dB; ");
    const auto byHand = [](const std::set<int>& tracks) {
        return [=](SyncGroup& group, SmartAudioResult&) { group.manualActiveTracks = tracks; };
    };
    check("a microphone that was switched off leaves no hole", blocks({{10, 1}, {20, 2}}),
          "Boom 71999/2s:0dB 72019/2s:0dB; Anna 71999/2s:-96dB 72019/2s:-96dB; ", byHand({1}));
    check("one that was switched on is heard", blocks({{10, 1}, {20, 1}}), "Boom 71999/2s:0dB 72039/2s:0dB; ",
          byHand({1, 2}));
    check("none of those that were chosen is on", blocks({{10, 1}}), "", byHand({2}));
}

} // namespace
} // namespace orvane
