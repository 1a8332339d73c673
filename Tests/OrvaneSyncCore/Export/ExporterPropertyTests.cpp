#include "FrameCheck/FrameCheck.h"
#include "OrvaneSyncCore/Export/DocumentReader.h"
#include "OrvaneSyncCore/Export/RandomShoot.h"
#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Services/Export/ExportTimes.h"
#include "OrvaneSyncCore/Utilities/TimecodeUtils.h"
#include "Platform/Text.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"
#include "Timecode/ExactRate.h"

#include <set>

namespace orvane {
namespace {

using namespace test;
using fcpxml::Time;

constexpr unsigned documents = 150; ///< for each kind of `Numbers`

/// Every file has a name of its own, so a clip of the document is known by the file in it.
const SyncGroup* groupOf(const Node& pictureClip, const SyncGroupList& groups) {
    for (const SyncGroup& group : groups)
        if (group.video.filename == pictureClip.text("name")) return &group;
    return nullptr;
}

bool isWhole(const Time& time, const Time& unit) { return (time / unit).denominator() == BInt(1); }

bool isOnGrid(const Time& time, const std::vector<double>& rates) {
    return std::ranges::any_of(
        rates, [&](double fps) { return isWhole(time, FCPXMLExporter::frameDurationTime(fps)); });
}

class Document {
  public:
    explicit Document(const Shoot& shoot)
        : shoot_(shoot),
          result_(FCPXMLExporter::exportDocument(shoot.groups, shoot.wildTracks, shoot.settings)),
          root_(readDocument(result_.fcpxmlString)) {
        for (const Node& item : root_.child("resources")->children)
            if (!resources_.emplace(item.text("id"), &item).second)
                ADD_FAILURE() << "twice " << item.text("id");
    }

    const std::string& text() const { return result_.fcpxmlString; }

    /// Checks what is true for all numbers. Identifiers of resources are unique; those of angles are made
    /// from the camera's name only, so two angles of one clip may have the same one.
    void checkReferences() const {
        for (const Node* node : root_.all("")) {
            if (node->has("format")) expectResource(*node, "format", "format");
            if (node->has("ref")) expectResource(*node, "ref", node->name == "mc-clip" ? "media" : "asset");
            for (const char* name : {"offset", "start", "duration", "tcStart", "frameDuration", "time"})
                if (node->has(name)) expectTime(*node, name);
            for (const char* name : {"duration", "frameDuration"})
                EXPECT_FALSE(node->text(name).starts_with('-')) << node->name << " " << name;
        }
        for (const Node* clip : root_.all("mc-clip")) {
            const auto angles = resource(clip->text("ref")).all("mc-angle");
            for (const Node* source : clip->all("mc-source"))
                EXPECT_TRUE(std::ranges::any_of(angles, [&](const Node* angle) {
                    return angle->text("angleID") == source->text("angleID");
                })) << source->text("angleID");
        }
    }

    /// The keyframes of a curve are in the order of time and within their channel's file.
    void checkCurves() const {
        for (const Node* channel : root_.all("audio")) {
            const Node* volume = channel->child("adjust-volume");
            if (volume == nullptr) continue;
            Time before = *channel->time("start") - Time(1, 1000);
            for (const Node* keyframe : volume->all("keyframe")) {
                EXPECT_GT(*keyframe->time("time"), before);
                before = *keyframe->time("time");
            }
            EXPECT_LE(before, *channel->time("start") + *channel->time("duration"));
        }
    }

    void checkCounts() const {
        int clips = 0, multicams = 0;
        for (const Node& event : root_.child("library")->children)
            for (const Node& item : event.children) {
                multicams += item.name == "mc-clip";
                for (const Node& child : item.children)
                    clips += item.name == "sync-clip" && child.name == "keyword" &&
                             (child.text("value") == "Synced" || child.text("value") == "MOS");
            }
        EXPECT_EQ(clips, result_.syncClipCount);
        EXPECT_EQ(multicams, result_.multicamCount);
        EXPECT_EQ(multicams, std::ssize(root_.all("multicam")));
    }

    void checkPictures() const {
        for (const Node* clip : root_.all("sync-clip")) checkPicture(*clip, *clip->child("asset-clip"));
        for (const Node* picture : root_.all("asset-clip")) checkPicture(*picture, *picture);
    }

    void checkSound() const {
        for (const Node* picture : root_.all("asset-clip")) {
            const SyncGroup* group = groupOf(*picture, shoot_.groups);
            for (const Node& sound : picture->children)
                if (sound.name == "clip" || sound.name == "audio")
                    checkAnchored(*picture, sound, *group, matchOf(sound, *group));
        }
        for (const Node* source : root_.all("sync-source")) {
            std::set<std::string> roles;
            for (const Node& role : source->children)
                EXPECT_TRUE(roles.insert(role.text("role")).second) << role.text("role");
        }
    }

    /// Importers refuse a clip that begins before its file or ends after it.
    void checkInsideFiles() const {
        for (const Node* node : root_.all("")) {
            if (node->name != "asset-clip" && node->name != "audio") continue;
            const Node& asset = resource(node->text("ref"));
            const Time first = asset.time("start").value_or(Time::zero()), start = *node->time("start");
            EXPECT_GE(start, first) << node->text("name");
            if (asset.has("duration")) {
                EXPECT_LE(start + *node->time("duration"), first + *asset.time("duration"))
                    << node->name << " " << node->text("name");
            }
        }
    }

    void checkMulticams() const {
        const bool isCutShort = std::ranges::any_of(result_.warnings, [](const std::string& line) {
            return line.starts_with("Not in the multicam clip");
        });
        EXPECT_TRUE(isCutShort || result_.multicamCount ==
                                      ExportPreview::forecast(shoot_.groups, shoot_.settings).multicams);
        for (const Node* clip : root_.all("mc-clip")) {
            const Node& multicam = resource(clip->text("ref")).children.front();
            const Time earliest = *multicam.time("tcStart");
            const Time frame = FCPXMLExporter::frameDurationTime(shoot_.settings.frameRate);
            EXPECT_EQ(*clip->time("start"), earliest);
            Time total = Time::zero();
            std::set<double> rates;
            for (const Node* picture : multicam.all("asset-clip"))
                if (const SyncGroup* camera = groupOf(*picture, shoot_.groups))
                    rates.insert(projectRate(*camera));
            EXPECT_GE(multicam.children.size(), 2U);
            for (const Node& angle : multicam.children) {
                const Node& camera = angle.children.back();
                const Time offset = *camera.time("offset");
                EXPECT_EQ(offset, *camera.time("start") - earliest);
                EXPECT_TRUE(rates.size() < 2 || (isWhole(offset, frame) && isWhole(earliest, frame)));
                EXPECT_EQ(angle.children.size(), offset == Time::zero() ? 1U : 2U);
                if (offset != Time::zero()) {
                    const Node gap{"gap",
                                   {{"offset", "0s"},
                                    {"start", earliest.description()},
                                    {"duration", offset.description()}},
                                   {}};
                    EXPECT_EQ(angle.children.front(), gap);
                }
                total = std::max(total, offset + *camera.time("duration"));
                if (shoot_.settings.get(settings::generateSyncClips)) expectInAnEvent(camera, frame);
            }
            EXPECT_EQ(*clip->time("duration"), total);
        }
    }

  private:
    const Node& resource(const std::string& id) const { return *resources_.at(id); }

    void expectResource(const Node& node, const char* attribute, const std::string& kind) const {
        const auto found = resources_.find(node.text(attribute));
        ASSERT_NE(found, resources_.end()) << node.name << " " << attribute << " " << node.text(attribute);
        EXPECT_EQ(found->second->name, kind) << node.name << " " << attribute;
    }

    /// An exact time: a whole number of seconds or a fraction, both written with digits only.
    static void expectTime(const Node& node, const char* attribute) {
        std::string text = node.text(attribute);
        const bool endsInSeconds = text.ends_with('s');
        std::erase_if(text, [](char c) { return c >= '0' && c <= '9'; });
        if (text.starts_with('-')) text.erase(0, 1);
        EXPECT_TRUE(endsInSeconds && (text == "s" || text == "/s"))
            << node.name << " " << attribute << "=" << node.text(attribute);
    }

    /// A clip with sound runs at the rate of its project. A clip that shows only the file may also run at the
    /// rate of the file or of the sensor.
    void checkPicture(const Node& node, const Node& picture) const {
        const SyncGroup* group = groupOf(picture, shoot_.groups);
        if (group == nullptr) return; // a clip with sound only
        const MediaAsset& video = group->video;
        std::vector<double> rates{projectRate(*group)};
        if (&node != &picture) rates.push_back(shoot_.settings.frameRate); // angles may differ
        if (picture.child("clip") == nullptr)
            for (const auto& rate :
                 {video.frameRate, video.sensorFrameRate, std::optional(shoot_.settings.frameRate)})
                rates.push_back(rate.value_or(24));
        EXPECT_TRUE(isOnGrid(node.time("start").value(), rates)) << node.text("start");
        const bool isPlaced = &node == &picture;
        EXPECT_TRUE(!isPlaced || isOnGrid(node.time("offset").value(), rates)) << node.text("offset");
        // A file without a duration gets 1000 frames of the rounded rate.
        for (std::size_t i = rates.size(); i > 0 && !video.durationSeconds; --i)
            rates.push_back(std::round(rates[i - 1]));
        EXPECT_TRUE(isOnGrid(node.time("duration").value(), rates)) << node.text("duration");
    }

    double projectRate(const SyncGroup& group) const {
        return FCPXMLExporter::clipRate(group.video, shoot_.settings);
    }

    const AudioMatch& matchOf(const Node& sound, const SyncGroup& group) const {
        const Node& channel = sound.name == "clip" ? *sound.child("audio") : sound;
        const std::string name = resource(channel.text("ref")).text("name");
        return *std::ranges::find_if(group.audioMatches, [&](const AudioMatch& match) {
            return platform::text::lowercased(match.audio->filenameStem()) == name;
        });
    }

    void checkAnchored(const Node& picture, const Node& sound, const SyncGroup& group,
                       const AudioMatch& match) const {
        const MediaAsset& audio = match.audio;
        const double fps = projectRate(group);
        const Time frame = FCPXMLExporter::frameDurationTime(fps);
        const Time start = *sound.time("start"), slide = *sound.time("offset") - start;
        const bool isCounted = audio.bextTimeReference.value_or(0) != 0;
        if (isCounted) {
            EXPECT_EQ(start, Time(static_cast<std::int64_t>(*audio.bextTimeReference),
                                  static_cast<std::int64_t>(audio.sampleRate.value_or(48000))));
        }
        for (const Node* channel : sound.all("audio")) {
            EXPECT_EQ(channel->time("start"), start);
            EXPECT_EQ(channel->time("offset"), start);
        }
        const double global = FCPXMLExporter::effectiveGlobalAudioOffset(group, shoot_.settings, fps);
        const double manual = group.manualAudioOffsetSeconds;
        // If a video has no rate, the matcher reads its timecode at 24 frames per second, and the export at
        // the rate of the project.
        const auto& video = group.video;
        const double matched =
            secondsOf(video, video.projectFrameRate.value_or(video.frameRate.value_or(24)));
        const double shown = secondsOf(video, fps);
        double said = matched - shown + match.syncOffsetSeconds + manual + global;
        // A timecode label may be between two frames of its picture; the sound keeps its distance from the
        // label. The offset of the match is adjusted to whole samples of the recording.
        const double sample = 1 / static_cast<double>(audio.sampleRate.value_or(48000));
        const double cutToSamples = std::abs(std::remainder(match.syncOffsetSeconds, sample));
        const double besideFrames = std::abs(std::remainder(slide.toDouble(), frame.toDouble()));
        EXPECT_TRUE(isWhole(slide, frame) || std::abs(cutOff(shown, fps)) > 1e-6 ||
                    (cutToSamples > 1e-9 && besideFrames < cutToSamples + 1e-9))
            << slide.description();
        // Only what is cut from each single time may be missing.
        said -= cutOff(manual, fps) + cutOff(global, fps);
        if (!isCounted) {
            const double soundRate = exactRateValue(audio.frameRate.value_or(24));
            said -= cutOff(secondsOf(audio, soundRate), soundRate);
        }
        EXPECT_NEAR((*sound.time("offset") - *picture.time("start")).toDouble(), said, frame.toDouble() / 2);
    }

    static double secondsOf(const MediaAsset& asset, double fps) {
        const auto timecode =
            Timecode::fromString(asset.startTimecodeString.value_or(""),
                                 asset.timecodeFrameRate.value_or(TimecodeUtils::frameRate(fps)));
        return timecode ? timecode->realTimeValue() : 0;
    }

    /// What cutting a time to whole frames removes, in seconds.
    static double cutOff(double seconds, double fps) {
        const double frames = seconds * fps;
        return (frames - std::trunc(frames + std::copysign(0.00001, frames))) / fps;
    }

    /// An event has the same clip, except for its place in the angle and less than a frame at either end.
    void expectInAnEvent(const Node& camera, const Time& frame) const {
        for (const Node& event : root_.child("library")->children)
            for (Node item : event.children) {
                if (item.name != camera.name) continue;
                const Time before = *camera.time("start") - *item.time("start");
                const Time behind = *item.time("duration") - *camera.time("duration") - before;
                if (before < Time::zero() || behind < Time::zero() || !(std::max(before, behind) < frame))
                    continue;
                for (const char* cut : {"offset", "start", "duration"})
                    item.attributes[cut] = camera.text(cut);
                if (item == camera) return;
            }
        ADD_FAILURE() << "no event has the clip " << camera.text("name");
    }

    const Shoot& shoot_;
    ExportResult result_;
    Node root_;
    std::map<std::string, const Node*> resources_;
};

/// Empty if all clips are excluded.
std::optional<Document> documentOf(const Shoot& shoot) {
    if (std::ranges::all_of(shoot.groups, [](const SyncGroup& group) { return group.isExcludedFromExport; }))
        return std::nullopt;
    return std::optional<Document>(std::in_place, shoot);
}

TEST(ExporterProperties, DocumentsAgreeWithTheirShoot) {
    int multicams = 0, sounds = 0;
    for (const unsigned seed : test::seeds(documents)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Shoot shoot = randomShoot(seed, Numbers::sane);
        const auto document = documentOf(shoot);
        if (!document) continue;
        document->checkReferences();
        document->checkCounts();
        document->checkCurves();
        document->checkPictures();
        document->checkSound();
        document->checkInsideFiles();
        document->checkMulticams();
        EXPECT_EQ(documentOf(shoot)->text(), document->text()) << "the same again";
        if (HasFailure()) return;
        multicams += document->text().find("<multicam") != std::string::npos;
        sounds += document->text().find("<sync-source") != std::string::npos;
    }
    EXPECT_GT(std::min(multicams, sounds), 0) << "the shoots are worth the test";
}

/// The shoot of this seed has such track names.
TEST(ExporterProperties, TrackNamesThatDifferInInvalidCharactersGiveSeveralRoles) {
    const Shoot shoot = randomShoot(2496780451, Numbers::sane);
    const auto document = documentOf(shoot);
    ASSERT_TRUE(document);
    document->checkSound();
}

TEST(ExporterProperties, NoTimeIsAFrameOff) {
    const auto report = frameCheck::checkRandomClips(400, 11);
    EXPECT_EQ(report.faults, std::vector<std::string>());
    EXPECT_GT(report.multicams, 20U);
    EXPECT_GE(report.clips, 400U + report.multicams * 2) << "each clip, and again as an angle";
}

TEST(ExporterProperties, UnrealisticNumbersBreakNothing) {
    for (const unsigned seed : test::seeds(documents)) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Shoot shoot = randomShoot(seed, Numbers::any);
        const auto document = documentOf(shoot);
        if (!document) continue;
        document->checkReferences();
        document->checkCounts();
        document->checkCurves();
        if (HasFailure()) return;
    }
}

} // namespace
} // namespace orvane
