#include "OrvaneSyncCore/Export/DocumentReader.h"
#include "OrvaneSyncCore/Export/ExportFixtures.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using namespace test;

/// A file of a take that begins with the picture; `start` is seconds into it.
MediaAsset file(const std::string& name, double start, double seconds, int channels = 1,
                const std::vector<IXMLTrack>& tracks = {}) {
    MediaAsset made = asset(AssetKind::audio, name, "", seconds);
    made.channelCount = channels;
    made.sampleRate = 48000;
    made.bextTimeReference = static_cast<std::uint64_t>((36000 + start) * 48000);
    if (!tracks.empty()) {
        made.ixmlData = ixml("1", "1");
        made.ixmlData->tracks = tracks;
    }
    return made;
}

SyncGroup take(const std::vector<MediaAsset>& files) {
    SyncGroup group = matched(picture(), {}); // 20 seconds from 10:00:00 on
    for (const MediaAsset& sound : files)
        group.audioMatches.emplace_back(sound, static_cast<double>(*sound.bextTimeReference) / 48000 - 36000,
                                        1.0);
    return group;
}

/// The channels where they lie on the picture's axis, the role sources, the length of the clip and the names
/// of the files in the bin, such as "Mix@36000s/r5 | +Mix | 20s | a".
std::string soundOf(const SyncGroup& group, ExportSettings settings = settingsAt(25)) {
    settings.generateRawMediaEvent = true;
    const Node root = readDocument(exported(group, settings));
    const Node& clip = *root.all("sync-clip").front();
    std::map<std::string, std::string> names;
    for (const Node* resource : root.all("asset")) names[resource->text("id")] = resource->text("name");
    std::string channels, sources, bin;
    const auto addChannels = [&](const Node& first, const std::string& offset) {
        const auto add = [&](const Node& channel) {
            channels +=
                channel.text("role").substr(9) + "@" + offset + "/" + names[channel.text("ref")] + " ";
        };
        add(first);
        for (const Node* other : first.all("audio")) add(*other);
    };
    for (const Node& item : clip.child("asset-clip")->children) {
        if (item.name == "clip") addChannels(*item.child("audio"), item.text("offset"));
        if (item.name == "audio") addChannels(item, item.text("offset"));
    }
    for (const Node* source : clip.all("audio-role-source"))
        sources += (source->text("active") == "0" ? "-" : "+") + source->text("role").substr(9) + " ";
    for (const Node& item : root.child("library")->children.back().children)
        if (item.name == "asset-clip") bin += " " + names[item.text("ref")];
    return channels + "| " + sources + "| " + clip.text("duration") + " |" + bin;
}

TEST(ExporterTakes, AreOneRecordingInTheDocument) {
    const auto check = [](const char* name, const std::vector<MediaAsset>& files, const std::string& sound,
                          const std::function<void(SyncGroup&, ExportSettings&)>& change = {}) {
        SyncGroup group = take(files);
        ExportSettings settings = settingsAt(25);
        if (change) change(group, settings);
        EXPECT_EQ(soundOf(group, settings), sound) << name;
    };
    const auto hand = [](std::set<int> tracks) {
        return [=](SyncGroup& group, ExportSettings&) { group.manualActiveTracks = tracks; };
    };
    const auto trim = [](TrimMode mode) {
        return [=](SyncGroup&, ExportSettings& settings) { settings.trimMode = mode; };
    };
    const std::vector<MediaAsset> split{file("T1_2.WAV", 8, 22, 2), file("T1_1.WAV", -1, 9, 2)};
    const std::vector<MediaAsset> mono{file("T1_Tr1.WAV", 0, 30), file("T1_Tr2.WAV", 0, 30),
                                       file("T1_Tr3.WAV", 0, 30)};
    check("one file a channel: the names of a recording with three", mono,
          "Boom@36000s/t1_tr2 Lav 1@36000s/t1_tr3 Mix@36000s/t1_tr1 | -Mix +Boom -Lav 1 | 20s |"
          " a003c012_240517 t1_tr1 t1_tr2 t1_tr3",
          hand({2}));
    check("the recorder's names",
          {file("T1_1.WAV", 0, 30, 1, {{1, "Boom"}}), file("T1_2.WAV", 0, 30, 1, {{2, "Anna"}})},
          "Anna@36000s/t1_2 Boom@36000s/t1_1 | +Boom +Anna | 20s | a003c012_240517 t1_1 t1_2");
    check("a channel of a split take is one channel in all parts", split,
          "Mix@36008s/t1_2 Boom@36008s/t1_2 Mix@35999s/t1_1 Boom@35999s/t1_1 | -Mix +Boom | 20s |"
          " a003c012_240517 t1_2 t1_1",
          hand({2}));
    check("its length is that of the chain", split,
          "Mix@36008s/t1_2 Boom@36008s/t1_2 Mix@35999s/t1_1 Boom@35999s/t1_1 | +Mix +Boom | 31s |"
          " a003c012_240517 t1_2 t1_1",
          trim(TrimMode::noTrim));
    check("offsets move every file",
          {file("T1_1.WAV", 0, 8), file("T1_2.WAV", 8, 22), file("ZOOM0004.WAV", 2, 5, 2)},
          "Mix@900202/25s/t1_2 Mix 2@900052/25s/zoom0004 Boom@900052/25s/zoom0004 Mix@900002/25s/t1_1 |"
          " +Mix +Mix 2 +Boom | 20s | a003c012_240517 t1_1 t1_2 zoom0004",
          [](SyncGroup& group, ExportSettings& settings) {
              group.manualAudioOffsetSeconds = 0.12;
              settings.globalAudioOffsetSeconds = -0.04;
          });
    check("a copy on another card is left out", {file("a/T1.WAV", 0, 30), file("b/T1.WAV", 0, 30)},
          "Mix@36000s/t1 | +Mix | 20s | a003c012_240517 t1");
    check("names that come again get a number that is free",
          {file("T1.WAV", 0, 30, 4, {{1, "Anna"}, {2, "Anna"}, {3, "Anna 2"}, {4, "Anna"}})},
          "Anna@36000s/t1 Anna 3@36000s/t1 Anna 2@36000s/t1 Anna 4@36000s/t1 |"
          " +Anna +Anna 3 +Anna 2 +Anna 4 | 20s | a003c012_240517 t1");
}

TEST(ExporterTakes, CurvesLieInTheFileThatHoldsTheMoment) {
    SyncGroup group = take({file("T1_1.WAV", 0, 8), file("T1_2.WAV", 8, 12), file("ZOOM0004.WAV", 0, 5)});
    ExportSettings settings = settingsAt(25);
    settings.volumeKeyframes = true;
    auto& blocks = settings.smartAudioResults[group.id].blocks;
    for (const auto& [end, track] : std::initializer_list<std::pair<double, int>>{{3, 1}, {8, 2}, {20, 1}}) {
        BlockDecision& block = blocks.emplace_back();
        block.startSeconds = blocks.size() > 1 ? blocks[blocks.size() - 2].endSeconds : 0;
        block.endSeconds = end;
        block.activeTrack = track;
    }
    std::string curves;
    const Node root = readDocument(exported(group, settings));
    for (const Node* channel : root.all("audio")) {
        curves += channel->text("start") + ":";
        for (const Node* point : channel->all("keyframe"))
            curves += " " + point->text("time") + " " + point->text("value");
        curves += "; ";
    }
    // The change at the seam is half in the one file and half in the other.
    EXPECT_EQ(curves, "36008s: 36008s -48dB 288065/8s 0dB 36020s 0dB; 36000s:; "
                      "36000s: 36000s 0dB 288023/8s 0dB 288025/8s -96dB 288063/8s -96dB 36008s -48dB; ");
}

} // namespace
} // namespace orvane
