#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/SmallShoot.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/Controllers/SessionManager.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "Support/Test.h"
#include "Support/VirtualMainThread.h"

#include <filesystem>
#include <set>
#include <tuple>

namespace orvane::cli {
namespace {

/// A scanned shoot, stored in a session and in a project file, and commands on both.
class KeptWork : public testing::Test {
  protected:
    KeptWork() {
        registerStandardDefaults(*settings_);
        test::makeSmallShoot(folder_.path());
        const auto mainThread = std::make_shared<test::VirtualMainThread>();
        const auto controller =
            ImportController::create({mainThread, settings_, nullptr, mainThread->clock()});
        const auto manager = SessionManager::create({mainThread, settings_, "", mainThread->clock()});
        const auto finish = [&](const platform::Task& task) {
            ASSERT_TRUE(mainThread->waitUntil([&] { return task.isDone(); }));
        };
        manager->newSession(*controller);
        controller->scan().setVideoFolderURL(FileURL{folder_.path("camera")});
        controller->scan().setAudioFolderURL(FileURL{folder_.path("sound")});
        finish(controller->scan().startScan());
        for (const SyncGroup& group : controller->work().syncGroups())
            if (group.video.filename.starts_with("A001C001"))
                controller->clips().setManualClipName(group.id, "Hero");
        manager->places().setFolder(*manager->currentSessionId(), "Dreh");
        manager->save(*controller);
        finish(manager->flush());
        manager->folders().setMetadataPrefix("Dreh", "x.");
        settings_->setByName("eventName", "Of the folder");
        manager->places().captureSettings();
        settings_->setByName("eventName", nullptr);
        session_ = manager->currentSessionId()->text();
        finish(controller->project().saveProject({project_}));
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment data_{"XDG_DATA_HOME", folder_.path("data").c_str()};
    std::shared_ptr<platform::MemorySettingsStore> settings_ =
        std::make_shared<platform::MemorySettingsStore>();
    const std::string project_ = folder_.path("day.orvanesync"), output_ = folder_.path("out.fcpxml");
    std::string session_;
};

TEST_F(KeptWork, sessionsAreListedShownExportedAndDeleted) {
    const JSON list = runWith({"session", "list", "--json"}).json();
    ASSERT_EQ(list.elements()->size(), 1U);
    EXPECT_EQ(*list.elements()->front().find("id")->string(), session_);
    EXPECT_EQ(list.elements()->front().find("groupCount")->integer(), 4);
    EXPECT_NE(runWith({"session"}).out.find("camera"), std::string::npos); // its name

    const JSON state = runWith({"session", "show", "camera", "--json"}).json();
    EXPECT_EQ(*state.find("folders")->find("audioFolder")->string(), folder_.path("sound"));
    EXPECT_EQ(*state.find("session")->find("folder")->string(), "Dreh");
    EXPECT_EQ(state.find("syncGroups")->elements()->size(), 4U);
    EXPECT_NE(runWith({"session", "show", session_.substr(0, 6)}).out.find("Hero"), std::string::npos);

    const Outcome exported = runWith({"session", "export", "camera", "-o", output_});
    EXPECT_EQ(exported.status, done);
    EXPECT_NE(exported.out.find("2 clips have not been analyzed for Smart Audio"), std::string::npos);
    EXPECT_NE(folder_.read("out.fcpxml").find("Hero"), std::string::npos);
    EXPECT_NE(folder_.read("out.fcpxml").find("event name=\"Of the folder\""), std::string::npos);
    runWith({"session", "export", "camera", "-o", output_, "--set", "eventName=Mine"});
    EXPECT_NE(folder_.read("out.fcpxml").find("event name=\"Mine\""), std::string::npos);

    SessionStore(AppStorageHelper::sessionsDirectory()).changeFolderInfos({}, [](auto& folders) {
        folders.front().activeSettingsSnapshot = "nonsense";
    });
    const Outcome unset = runWith({"session", "export", "camera", "-o", output_, "--json"});
    EXPECT_EQ(unset.status, done);
    EXPECT_TRUE(unset.err.starts_with("warning: the settings of the folder 'Dreh' can't be read"))
        << unset.err;
    EXPECT_NE(JSON::parse(unset.out).find("warnings")->dump().find("folder 'Dreh'"), std::string::npos);

    const std::string clips = "data/Orvane Tandrel/Sessions/" + session_ + ".orvanesync/groups.json";
    const std::string good = folder_.read(clips);
    folder_.write(clips, good.substr(1));
    const Outcome unreadable = runWith({"session", "show", "camera"});
    EXPECT_EQ(unreadable.status, failed);
    EXPECT_NE(unreadable.err.find("can't be read"), std::string::npos) << unreadable.err;
    EXPECT_EQ(folder_.read(clips), good.substr(1)); // reading changes nothing

    EXPECT_EQ(runWith({"session", "delete", session_}).status, done);
    EXPECT_EQ(runWith({"session", "list"}).out, "No sessions.\n");
    EXPECT_EQ(runWith({"session", "delete", session_}).status, failed);
}

TEST_F(KeptWork, projectsAreShownAndExported) {
    EXPECT_EQ(runWith({"project", "show", project_, "--json"}).out, folder_.read("day.orvanesync"));
    const std::string text = runWith({"project", "show", project_}).out;
    for (const char* piece : {"renamed Hero", "unmatched", "4 clips."})
        EXPECT_NE(text.find(piece), std::string::npos) << text;
    const Outcome exported = runWith({"project", "export", project_, "-o", output_, "--json"});
    EXPECT_EQ(exported.status, done) << exported.err;
    EXPECT_EQ(exported.json().find("syncClipCount")->integer(), 3);
    EXPECT_EQ(exported.json().find("smartAudio")->find("clipsNotAnalyzed")->integer(), 2);
    EXPECT_NE(folder_.read("out.fcpxml").find("Hero"), std::string::npos);

    // With a second recorder, only a scan can decide between the two.
    constexpr std::uint64_t sampleRate = 48000, start = 36008;
    test::WaveMaker()
        .format({.channels = 1, .sampleRate = sampleRate})
        .bext({.originator = "Other", .date = "2026-11-20", .timeReference = start * sampleRate})
        .silence(10 * sampleRate)
        .writeTo(folder_.path("sound/ISO.WAV"));
    const Outcome doubted = runWith({"project", "export", project_, "-o", output_});
    EXPECT_NE(doubted.err.find("2 clips may have the wrong sound; 'orvanesync diagnose'"), std::string::npos);
    EXPECT_EQ(doubted.err.find("--choose"), std::string::npos) << doubted.err;

    const std::string before = folder_.read("day.orvanesync");
    EXPECT_EQ(runWith({"project", "export", project_, "-o", project_, "--force"}).status, failed);
    EXPECT_EQ(folder_.read("day.orvanesync"), before);

    std::filesystem::remove(output_);
    std::filesystem::rename(folder_.path("sound"), folder_.path("away"));
    const Outcome gone = runWith({"project", "export", project_, "-o", output_});
    EXPECT_EQ(gone.status, failed);
    EXPECT_NE(gone.err.find("can't read the project's folder"), std::string::npos) << gone.err;
    EXPECT_FALSE(std::filesystem::exists(output_));
    EXPECT_NE(runWith({"project", "show", project_}).out.find("sound (is not there now)"), std::string::npos);
}

/// All commands that write a file, and the option that permits replacing a file that is not their own.
TEST_F(KeptWork, noCommandWritesOverWhatMustStay) {
    const std::string sound = folder_.path("sound/DAY1_T01.WAV"), video = folder_.path("camera/A001C003.mov");
    const std::string media = test::WaveMaker().format({}).silence(10).bytes();
    // Media with the program's mark is still an input.
    test::WaveMaker().format({}).bext({.originator = "OrvaneSync"}).silence(10).writeTo(sound);
    struct Case {
        const char* extension;
        std::vector<std::string> words; ///< the path is added
    };
    const std::vector<Case> writers{
        {".xml", {"sync", folder_.path("sound"), "-o"}},
        {".tsv", {"scan", folder_.path("sound"), "--review"}},
        {".tsv", {"diagnose", folder_.path("sound"), "--review"}},
        {".xml", {"session", "export", session_, "-o"}},
        {".xml", {"project", "export", project_, "-o"}},
        {".png", {"frame", video, "--at", "0", "-o"}},
        {".png", {"waveform", sound, "--png"}},
        {".wav", {"mixdown", sound, "-o"}},
        {".wav", {"mixdown", "--session", session_, "--clip", "Hero", "-o"}},
        {".wav", {"solo", sound, "--channel", "1", "-o"}},
        {".wav", {"preview", sound, "--gain", "1", "-o"}},
        {".wav", {"play", video, sound, "--render"}},
        {".json", {"shortcuts", "export"}},
    };
    const auto refusal = [&](std::vector<std::string> words, const std::string& place, bool force) {
        words.push_back(place);
        if (force) words.emplace_back("--force");
        const std::string before = folder_.read(place.substr(folder_.path().size() + 1));
        const Outcome outcome = runWith(words);
        EXPECT_NE(outcome.status, done) << words[0];
        EXPECT_EQ(folder_.read(place.substr(folder_.path().size() + 1)), before) << words[0];
        return outcome.err;
    };
    std::set<std::string, std::less<>> tried;
    for (const auto& [extension, words] : writers) {
        tried.insert(words[0]);
        const std::string foreign = folder_.write("foreign" + std::string(extension), "mine"),
                          locked = folder_.write("locked" + std::string(extension), "mine"),
                          disguised = folder_.write("disguised" + std::string(extension), media);
        std::filesystem::permissions(locked, std::filesystem::perms::owner_read);
        const std::tuple<std::string, bool, const char*> places[] = {
            {foreign, false, "or --force to replace it"},
            {locked, true, "read-only"},
            {disguised, true, "media is never replaced"},
            {sound, true,
             std::string_view(extension) == ".wav" ? "which is being read" : "names a media file"}};
        for (const auto& [place, force, why] : places) {
            const std::string said = refusal(words, place, force);
            EXPECT_NE(said.find(why), std::string::npos) << words[0] << " " << place << ": " << said;
        }
    }
    for (const Command* command : allCommands())
        for (const Option& option : command->options)
            EXPECT_TRUE(!option.value.starts_with("OUT") || tried.contains(command->name)) << command->name;
}

TEST_F(KeptWork, wrongUsageIsToldFromFailure) {
    folder_.write("bad.orvanesync", "{}");
    const std::pair<std::vector<std::string>, int> cases[] = {
        {{"session", "burn"}, wrongUsage},
        {{"session", "show"}, wrongUsage},
        {{"session", "show", "nobody"}, failed},
        {{"session", "show", ""}, failed},
        {{"session", "export", session_}, wrongUsage},
        {{"project"}, wrongUsage},
        {{"project", "show", "a", "b"}, wrongUsage},
        {{"project", "show", folder_.path("bad.orvanesync")}, failed},
        {{"project", "export", folder_.path("none"), "-o", output_}, failed},
        {{"project", "export", project_}, wrongUsage}};
    for (const auto& [words, status] : cases) {
        const Outcome outcome = runWith(words);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        EXPECT_TRUE(outcome.err.starts_with("error: "));
    }
}

} // namespace
} // namespace orvane::cli
