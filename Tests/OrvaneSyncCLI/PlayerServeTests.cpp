#include "MediaFactory/WaveMaker.h"
#include "Platform/AudioFile.h"
#include "Platform/Files.h"
#include "Platform/Playback/FrameReader.h"
#include "Platform/Playback/Player.h"
#include "RunCommand.h"
#include "ServeTest.h"
#include "Support/Assets.h"
#include "Support/NumberedClip.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <set>
#include <tuple>

namespace orvane::cli::rpc {
namespace {

constexpr int soundRate = 48'000;

/// Ten seconds of numbered pictures at 25 per second, and a recording with a clap at its second 3.
struct PlayedClip {
    explicit PlayedClip(const test::TemporaryDirectory& folder) : videoPath(folder.path("A001C001.mov")) {
        isMade = test::NumberedClip{.pictures = 250, .encoding = "-c:v libx264 -g 12 -pix_fmt yuv420p"}.make(
            videoPath);
        std::vector<float> samples(std::size_t{10} * soundRate, 0.0005F);
        for (std::size_t i = 0; i < soundRate / 100; ++i)
            samples[3 * soundRate + i] = i % 2 == 0 ? 0.9F : -0.9F;
        soundPath = folder.write(
            "T01.WAV", test::WaveMaker().format({.sampleRate = soundRate}).samples(samples).bytes());
    }
    std::string videoPath, soundPath;
    bool isMade = false;
};

class PlayerServeTest : public ServeTest {
  protected:
    PlayerServeTest() {
        context_.openPlayers = [this] { return platform::PulledPlayerSystem::create(loop_); };
        for (const double offset : {1.0, -0.5}) {
            MediaAsset picture = test::video("A001C001.mov", "10:00:00:00", 10);
            picture.url = FileURL{clip_.videoPath};
            MediaAsset sound = test::audio("T01.WAV", "10:00:01:00", 10);
            sound.url = FileURL{clip_.soundPath};
            sound.channelCount = 1;
            SyncGroup group = test::clip(std::move(picture), std::move(sound));
            group.audioMatches.front().syncOffsetSeconds = offset;
            ids_.push_back(group.id.text());
            groups_.push_back(std::move(group));
        }
        groupID_ = ids_[0];
        context_.controller->openStoredWork({{}, {}, SyncGroupList(groups_)});
    }
    JSON state(const std::string& field, const std::string& method = "playerState") {
        const JSON all = call(method);
        const JSON* value = all.find(field);
        return value == nullptr ? JSON() : *value;
    }
    double number(const std::string& field) { return state(field).number().value_or(-1); }
    void key(const std::string& name, const std::string& more = "") {
        call("playerKey", R"({"key":")" + name + R"(","isDown":true)" + more + "}");
        call("playerKey", R"({"key":")" + name + R"(","isDown":false)" + more + "}");
    }
    void advance(double seconds) { call("advanceClock", R"({"seconds":)" + std::to_string(seconds) + "}"); }

    PlayedClip clip_{folder_};
    std::vector<std::string> ids_;
    std::vector<SyncGroup> groups_;
};

TEST_F(PlayerServeTest, anEditorFindsTheClapAndCorrectsIt) {
    if (!clip_.isMade) GTEST_SKIP() << "no tool for media";
    call("playerLoad", onFirst());
    EXPECT_EQ(number("shownFrame"), 100);
    EXPECT_EQ(*state("timecode").string(), "10:00:04:00");
    struct Case {
        std::string method, params;
        int frame;
    };
    for (const Case& c : std::vector<Case>{{"playerStep", R"({"count":3,"blip":true})", 103},
                                           {"playerStep", R"({"count":-4})", 99},
                                           {"playerSeek", R"({"seconds":2.5})", 62},
                                           {"playerSkim", R"({"seconds":7.0})", 175},
                                           {"playerSkim", "{}", 62},
                                           {"scrollFrames", R"({"deltaY":-2.0,"isPrecise":false})", 60},
                                           {"playerSeek", R"({"seconds":99})", 249},
                                           {"playerSeek", R"({"seconds":-1})", 0}}) {
        call(c.method, c.params);
        EXPECT_EQ(number("shownFrame"), c.frame) << c.method << c.params;
    }
    const auto zoom = [&](std::size_t clip) {
        return call("timeline", R"({"groupID":")" + ids_[clip] + "\"}").find("zoomScale")->number();
    };
    key("plus");
    EXPECT_EQ(zoom(1), 1);
    EXPECT_EQ(zoom(0), 1.25);
    key("arrowDown");
    EXPECT_NEAR(number("seconds"), 4, 0.01);
    key("arrowRight", R"(,"modifiers":["shift"])");
    EXPECT_EQ(number("shownFrame"), 105);
    key(",");
    EXPECT_NEAR(number("seconds"), 3.96, 1e-6); // at the anchor
    EXPECT_NEAR(number("syncOffsetSeconds"), 0.96, 1e-9);
    key("c");
    advance(0.3);
    call("nudgeByFrames", onFirst(R"(,"frames":5)"));
    EXPECT_NEAR(number("syncOffsetSeconds"), 1.16, 1e-9);
    EXPECT_EQ(number("rate"), 1);
    advance(0.3);
    EXPECT_NEAR(number("seconds"), 3.96 - 0.48 + 0.6, 0.041);
    ASSERT_FALSE(state("levels").elements()->empty());
    EXPECT_NE(state("levels").elements()->front().find("rms"), nullptr);
    advance(0.5); // past the end of the loop
    EXPECT_NEAR(number("seconds"), 3.96 - 0.48 + 0.14, 0.081);
    key("escape");
    call("undo");
    EXPECT_NEAR(number("syncOffsetSeconds"), 1, 1e-9);
    for (const auto& [pressed, label] : std::vector<std::pair<std::string, std::string>>{
             {"l", "▶ 2×"}, {"j", "◀"}, {"j", "◀ 2×"}, {"k", "STOP"}}) {
        key(pressed);
        EXPECT_EQ(*state("label").string(), label);
        advance(0.2);
    }
    call("playerSeek", R"({"seconds":9.8})");
    call("playerPlay");
    advance(1);
    EXPECT_EQ(number("seconds"), 10);
    EXPECT_EQ(number("rate"), 0);
    EXPECT_EQ(number("droppedFrames"), 0);
    EXPECT_EQ(call("playerFrame", R"({"output":")" + folder_.path("p.png") + "\"}").find("seconds")->number(),
              9.96);
    call("playerSlowMotion", R"({"forward":true})"); // from the end, it begins at the start
    EXPECT_EQ(number("shownFrame"), 0);
    call("playerVolume", R"({"volume":0})");
    call("playerLoop", R"({"aroundSeconds":6,"frames":5})");
    EXPECT_EQ(number("shownFrame"), 145);
    EXPECT_TRUE(failure("playerKey", R"({"key":"hyper","isDown":true})").starts_with("-32602"));
    EXPECT_TRUE(failure("clusterLoad", R"({"groupIDs":["x"]})").starts_with("-32602"));
}

TEST_F(PlayerServeTest, theCamerasOfATakeShowTheSameMoment) {
    if (!clip_.isMade) GTEST_SKIP() << "no tool for media";
    call("clusterLoad", R"({"groupIDs":[")" + ids_[0] + "\",\"" + ids_[1] + "\"]}");
    call("clusterSeek", R"({"seconds":2})");
    const auto frames = [&] {
        std::vector<double> shown;
        const JSON members = state("members", "clusterState");
        for (const JSON& member : *members.elements())
            shown.push_back(member.find("shownFrame")->number().value_or(-1));
        return shown;
    };
    EXPECT_EQ(frames(), (std::vector<double>{75, 37}));
    key("space");
    advance(1.06); // the first 50 ms are before the start
    EXPECT_EQ(frames(), (std::vector<double>{100, 62}));
    call("clusterAudioSource", R"({"groupID":")" + ids_[1] + "\"}");
    EXPECT_EQ(*state("audioSourceMemberID", "clusterState").string(), ids_[1]);
    call("clusterPause");
    call("clusterStep", R"({"count":2})");
    EXPECT_EQ(frames()[0], 102);
    call("scrollFrames", R"({"deltaY":-2.0,"isPrecise":false})");
    EXPECT_EQ(frames()[0], 100);
    // If they are stopped before they have begun, they show the picture of that moment.
    call("clusterSeek", R"({"seconds":7})");
    call("clusterPlay");
    call("clusterPause");
    EXPECT_EQ(frames(), (std::vector<double>{200, 162}));
    call("playerLoad", onFirst());
    EXPECT_TRUE(state("members", "clusterState").elements()->empty());
    // A command to a cluster that a clip has just left waits for the other clips.
    call("clusterLoad", R"({"groupIDs":[")" + ids_[0] + "\",\"" + ids_[1] + "\"]}");
    call("removeVideoFromSync", onFirst());
    call("clusterPressL");
    EXPECT_EQ(state("members", "clusterState").elements()->front().find("rate")->number(), 1);
}

TEST_F(PlayerServeTest, soundIsRenderedAsItWouldBeHeard) {
    if (!clip_.isMade) GTEST_SKIP() << "no tool for media";
    const std::string output = folder_.path("heard.wav");
    const auto ran = runWith({"play", clip_.videoPath, clip_.soundPath, "--offset", "-1.5", "--from", "1",
                              "--to", "3", "--render", output, "--json"});
    ASSERT_EQ(ran.status, 0) << ran.err;
    const auto heard = platform::AudioFile::open(output);
    ASSERT_TRUE(heard);
    EXPECT_EQ(heard->frameCount(), 2 * soundRate);
    std::vector<float> left(2 * soundRate), right(2 * soundRate);
    const std::array<float*, 2> channels{left.data(), right.data()};
    ASSERT_EQ(heard->read(channels, left.size()), left.size());
    const auto clap = std::ranges::find_if(left, [](float sample) { return std::abs(sample) > 0.5F; });
    EXPECT_NEAR(static_cast<double>(clap - left.begin()) / soundRate, 0.5, 0.001); // 3 - 1.5 - 1
    EXPECT_EQ(left, right);

    // A movie has the same sound, and every picture at its time.
    const std::string movie = folder_.path("seen.mov");
    const auto numbers = [&](const std::string& rate, const std::string& to) {
        const auto made = runWith({"play", clip_.videoPath, clip_.soundPath, "--offset", "-1.5", "--from",
                                   "1", "--to", to, "--rate", rate, "--render", movie, "--json"});
        EXPECT_EQ(made.status, 0) << made.err;
        const auto reader = platform::FrameReader::open(movie);
        std::vector<int> seen;
        for (int i = 0; reader != nullptr && i < reader->facts().pictureCount; ++i) {
            const auto picture = reader->pictureAt({i, 25}, {}, {});
            EXPECT_EQ(picture->time, (platform::MediaTime{i, 25}));
            seen.push_back(test::NumberedClip::numberIn(*picture));
        }
        return seen;
    };
    EXPECT_EQ(numbers("0.5", "1.16"), (std::vector<int>{25, 25, 26, 26, 27, 27, 28, 28}));
    EXPECT_EQ(numbers("-1", "1.16"), (std::vector<int>{29, 28, 27, 26}));
    std::vector<int> all(50);
    std::iota(all.begin(), all.end(), 25);
    EXPECT_EQ(numbers("1", "3"), all) << "over its own rendering";
    const auto sound = platform::AudioFile::open(movie);
    ASSERT_TRUE(sound && sound->channelCount() == 2 && sound->frameCount() == 2 * soundRate);
    std::vector<float> movieLeft(left.size());
    const std::array<float*, 2> movieChannels{movieLeft.data(), right.data()};
    ASSERT_EQ(sound->read(movieChannels, left.size()), left.size());
    EXPECT_EQ(movieLeft, left);
    EXPECT_EQ(runWith({"play", clip_.videoPath, "--render", clip_.videoPath, "--force"}).status, 1);
    EXPECT_EQ(runWith({"play", clip_.videoPath, "--rate", "0"}).status, 2);
    EXPECT_EQ(runWith({"play", clip_.videoPath, "--from", "11", "--render", output, "--force"}).status, 1);
}

/// Each command with a path parameter is either listed here as one that reads the path, or tested as one that
/// writes it.
TEST_F(PlayerServeTest, NoCommandWritesOverWhatMustStay) {
    if (!clip_.isMade) GTEST_SKIP() << "no tool for media";
    const std::set<std::string_view> readers{"setFolders",        "chooseAndAttachAudio", "loadALE",
                                             "loadProject",       "applyReview",          "importShortcuts",
                                             "calibrationMeasure"};
    const std::set<std::string_view> writersToFolders{"buildAtmo"}; // to a file name of its own
    const std::string media = test::WaveMaker().format({}).silence(10).bytes();
    const std::string locked = folder_.write("locked.txt", "mine");
    std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
    const std::string report = folder_.write("day.csv", "Name,Scene\r\nA001C001.mov,12A\r\n");
    call("loadALE", R"({"path":")" + report + "\"}");
    const std::tuple<std::string, bool, const char*> places[] = {
        {report, true, "it is the report '"},
        {folder_.write("foreign.txt", "mine"), false, "or overwrite: true to replace it"},
        {locked, true, "read-only"},
        {folder_.write("disguised.txt", media), true, "media is never replaced"},
        {clip_.soundPath, true, "names a media file"}};
    for (const commands::Command& command : commands::allCommands()) {
        const auto takesPlace = [](const commands::Parameter& one) {
            return one.kind == commands::Parameter::Kind::path;
        };
        const auto place = std::ranges::find_if(command.parameters, takesPlace);
        if (place == command.parameters.end() || readers.contains(command.id) ||
            writersToFolders.contains(command.id))
            continue;
        if (command.id == "playerFrame") call("playerLoad", onFirst());
        if (command.id == "clusterFrame") call("clusterLoad", R"({"groupIDs":[")" + groupID_ + "\"]}");
        for (const auto& [path, overwrites, why] : places) {
            const std::string before = platform::files::readText(path);
            std::string arguments = "{\"" + std::string(place->name) + "\":\"" + path + "\"";
            if (command.isOfOneClip()) arguments += ",\"groupID\":\"" + groupID_ + "\"";
            if (overwrites) arguments += ",\"overwrite\":true";
            const std::string said = failure(std::string(command.id), arguments + "}");
            EXPECT_NE(said.find(why), std::string::npos) << command.id << " " << path << ": " << said;
            EXPECT_EQ(platform::files::readText(path), before) << command.id;
        }
    }
}

} // namespace
} // namespace orvane::cli::rpc
