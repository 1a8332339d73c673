#include "OrvaneSyncCore/Models/SyncGroupDecisions.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "OrvaneSyncCore/Services/Persistence/SessionRecords.h"
#include "OrvaneSyncCore/Services/Persistence/SessionStore.h"
#include "OrvaneSyncCore/Utilities/Base64.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"
#include "Support/Assets.h"
#include "Support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

namespace orvane {
namespace {

SyncGroup edited(std::string_view name) {
    SyncGroup group = test::clip(test::video(std::string(name) + ".mov"), test::audio("s.wav"));
    group.matchStatus = MatchStatus::ambiguous(3);
    group.clipName = "shown";
    group.manualAudioOffsetSeconds = 0.5;
    group.audioAnchorOffsetInAudioSeconds = 2.25;
    group.manualActiveTracks = {3, 1};
    group.algorithmExcludedTracks = {2};
    group.manualBlockOverrides = {{UUID::random(), 1, 2, 3}};
    group.isApproved = group.isPickup = group.isExcludedFromExport = true;
    group.manualClipName = "Hero";
    group.isExcludedFromMulticamFlag = true;
    group.isLocked = true;
    group.masterGainDB = 6;
    return group;
}

OrvaneSyncProject project(const SyncGroupList& groups) {
    return ProjectService().snapshot(FileURL{"/media"}, std::nullopt, FileURL{"/r/\xFF.ale"}, groups, Date{});
}

TEST(ProjectFile, carriesTheEditsToAnotherScan) {
    const SyncGroupList before{edited("a"), edited("b")};
    const auto stored = ProjectService::decoded(ProjectService::encoded(project(before)));
    EXPECT_EQ(stored.videoFolderPath, FileURL{"/media"});
    EXPECT_EQ(stored.audioFolderPath, std::nullopt);
    EXPECT_EQ(stored.aleFilePath, FileURL{"/r/\xFF.ale"}); // not valid text, but restored
    const PersistedGroup& entry = stored.groups.at(0);
    EXPECT_EQ(entry.matchStatusRaw, "ambiguous:3");
    EXPECT_EQ(entry.syncOffsetSeconds, 0.0);
    EXPECT_EQ(entry.audioPaths, (std::vector<FileURL>{{"/media/s.wav"}}));

    SyncGroupList scanned{test::clip(test::video("x.mov"), test::audio("t.wav")),
                          test::clip(test::video("a.mov"), test::audio("t.wav"))};
    const UUID id = scanned[1].id;
    ProjectService().applyEdits(stored, scanned);
    EXPECT_EQ(scanned[0].clipName, "x.mov"); // no entry
    const SyncGroup& group = scanned[1];
    EXPECT_EQ(group.id, id);
    EXPECT_EQ(group.audioMatches.at(0).audio->filename, "t.wav");
    EXPECT_EQ(group.matchStatus, MatchStatus::matched());
    EXPECT_FALSE(group.isLocked);
    EXPECT_EQ(group.masterGainDB, 0);
    // Everything else is restored: a new entry differs only in what the scan found.
    JSON again = toJSON(PersistedGroup(group)), first = toJSON(entry);
    for (const char* scan : {"id", "audioPaths", "matchStatusRaw"})
        for (JSON* json : {&again, &first}) json->remove(scan);
    EXPECT_TRUE(again == first) << again.dump() << first.dump();
}

TEST(ProjectFile, ofSeveralEntriesForOneVideoTheLastCounts) {
    SyncGroup first = edited("a"), last = edited("a");
    last.manualClipName = "Last";
    SyncGroupList groups{test::clip(test::video("a.mov"), test::audio("s.wav"))};
    ProjectService().applyEdits(project({first, last}), groups);
    EXPECT_EQ(groups.front().manualClipName, "Last");
}

TEST(ProjectFile, isRefusedWithAReasonAndNeverHalfWritten) {
    const std::string good = ProjectService::encoded(project({edited("a")}));
    EXPECT_EQ(ProjectService::encoded(ProjectService::decoded(good)), good);
    struct Case {
        const char* name;
        const char* piece;
        std::string instead;
        const char* says; ///< empty: the file opens
    };
    const Case cases[] = {
        {"an unknown key", "\"version\": 1", "\"version\": 1, \"future\": {\"x\": [1]}", ""},
        {"version 0", "\"version\": 1", "\"version\": 0", "Project version 0 is not supported (current: 1)"},
        {"version 2 in another shape", "\"version\": 1", "\"version\": 2, \"groups\": 3",
         "Project version 2 is not supported (current: 1)"},
        {"a version that is no number", "\"version\": 1", "\"version\": \"1\"",
         "version: expected an integer"},
        {"a missing key", "\"savedAt\"", "\"saved\"", "savedAt"},
        {"a date that is none", "1970-01-01T", "1970-13-01T", "savedAt: expected an ISO 8601 date"},
        {"a wrong type in a clip", "\"isApproved\": true", "\"isApproved\": 1", "groups: isApproved"},
        {"a track that is none", "[\n        1,", "[\n        \"1\",", "manualActiveTracks"},
        {"a bookmark that is none", "\"version\": 1", "\"version\": 1, \"videoFolderBookmark\": \"a\"",
         "videoFolderBookmark: expected base64"},
        {"a path that ends early", "\"/media\"", "\"/media\\u0000x\"", "videoFolderPath: expected a path"},
        {"a huge number", "\"syncOffsetSeconds\": 0.0", "\"syncOffsetSeconds\": 1e999", "valid"},
        {"a truncated file", "\"/media\"\n}", "\"/media\"", "valid"},
        {"a list", "{", "[1,", "valid"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string text = good;
        ASSERT_NE(text.find(c.piece), std::string::npos);
        text.replace(text.find(c.piece), std::string_view(c.piece).size(), c.instead);
        try {
            ProjectService::decoded(text);
            EXPECT_STREQ(c.says, "");
        } catch (const ProjectError& error) {
            EXPECT_NE(std::string(error.what()).find(c.says), std::string::npos) << error.what();
            EXPECT_STRNE(c.says, "");
        }
    }
    const test::TemporaryDirectory folder;
    const FileURL file{folder.write("p.orvanesync", good)};
    SyncGroup broken = edited("a");
    broken.manualAudioOffsetSeconds = std::numeric_limits<double>::infinity();
    EXPECT_THROW(ProjectService().save(project({broken}), file), ProjectError);
    EXPECT_THROW(ProjectService().save(project({}), {folder.path("gone/p.orvanesync")}), platform::FileError);
    EXPECT_EQ(folder.read("p.orvanesync"), good);
    EXPECT_THROW(ProjectService().load({folder.path()}), platform::FileError);
}

TEST(SessionFiles, aReusedEncoderWritesTheSameAsANewOne) {
    SyncGroupList groups;
    for (int i = 0; i < 200; ++i) groups.append(edited(std::to_string(i)));
    GroupsEncoder encoder;
    const auto expectRight = [&] {
        const std::string text = encoder.encode(groups);
        EXPECT_EQ(text, toJSONArray(groups).dump(JSON::Layout::pretty) + "\n");
        EXPECT_EQ(GroupsEncoder().encode(groupsFromText(text)), text);
    };
    expectRight();
    groups.update(groups[150].id, [](SyncGroup& group) { group.isApproved = false; });
    expectRight();
    SyncGroupList reordered; // as a re-scan or an undo leaves it
    for (std::size_t i = groups.size(); i-- > 1;) reordered.append(groups.element(i));
    groups = reordered;
    expectRight();
    groups = {};
    expectRight();
}

/// Files of users, as an earlier version of the program wrote them. Never add a key here: a field that was
/// added later may be absent (`addedLater`).
TEST(SessionFiles, recordsOfAnEarlierVersionAreRead) {
    const std::string clip =
        R"([{"id":"AAAAAAAA-0000-4000-8000-000000000001","video":{"id":"AAAAAAAA-0000-4000-8000-000000000002","url":"file:///media/a.mov","kind":"video","filename":"a.mov"},
        "audioMatches":[{"id":"AAAAAAAA-0000-4000-8000-000000000003","audio":{"id":"AAAAAAAA-0000-4000-8000-000000000004","url":"file:///media/s.wav","kind":"audio","filename":"s.wav",
        "ixmlData":{"tracks":[{"channelIndex":1,"name":"Boom"}]}},"syncOffsetSeconds":1.5,"overlapDurationSeconds":2.5}],"matchStatus":{"manual":{}},"clipName":"n",
        "algorithmExcludedTracks":[],"manualActiveTracks":[3],"manualBlockOverrides":[{"id":"AAAAAAAA-0000-4000-8000-000000000005","startSeconds":0.5,"endSeconds":1.5,"trackIndex":2}],
        "manualAudioOffsetSeconds":-0.25,"isApproved":true,"isLocked":true,"syncMethod":"clap","generateNativeMOSClip":false,"isPickup":false,"isExcludedFromExport":true,"masterGainDB":-3.5,"masterGainAuto":false}])";
    const SyncGroup read = groupsFromText(clip).front();
    EXPECT_TRUE(haveSameContents(
        read, fromJSON<SyncGroup>(JSON::parse(clip).elements()->front()))); // both readers agree
    EXPECT_TRUE(read.isLocked && read.matchStatus == MatchStatus::manual());
    const char* project =
        R"({"version":1,"savedAt":"2026-11-24T10:00:00Z","videoFolderPath":"/media","groups":[{"id":"AAAAAAAA-0000-4000-8000-000000000001","videoPath":"/media/a.mov","audioPaths":["/media/s.wav"],
        "clipName":"n","manualAudioOffsetSeconds":-0.25,"manualActiveTracks":[3],"manualBlockOverrides":[],"algorithmExcludedTracks":[],"isApproved":true,"isPickup":false,"isExcludedFromExport":true,
        "isExcludedFromMulticam":true,"matchStatusRaw":"manual"}]})";
    SyncGroupList scanned{test::clip(test::video("a.mov"), test::audio("t.wav"))};
    ProjectService().applyEdits(ProjectService::decoded(project), scanned);
    EXPECT_TRUE(scanned.front().isExcludedFromMulticam() && scanned.front().isApproved);
    const JSON session = JSON::parse(
        R"({"id":"AAAAAAAA-0000-4000-8000-000000000001","name":"n","created":"2026-11-24T10:00:00Z","modified":"2026-11-24T10:00:00Z","groupCount":1,"lockedCount":0})");
    EXPECT_TRUE(fromJSON<SessionInfo>(session).nameAutoDerived);
    fromJSON<SessionFolders>(JSON::parse(R"({"videoFolder":"/media"})"));
    EXPECT_EQ(fromJSON<FolderInfo>(JSON::parse(R"({"name":"Day 1"})")).name, "Day 1");
    const JSON wildTrack = JSON::parse(
        R"({"id":"AAAAAAAA-0000-4000-8000-000000000004","audio":{"id":"AAAAAAAA-0000-4000-8000-000000000004","url":"file:///media/s.wav","kind":"audio","filename":"s.wav"},"customName":"Rain","isApproved":true})");
    EXPECT_EQ(fromJSON<WildTrack>(wildTrack).customName, "Rain");
}

TEST(SessionFiles, clipsOfOneIdGetIdsOfTheirOwn) {
    const SyncGroup a = edited("a");
    SyncGroup b = edited("b");
    b.id = a.id;
    const auto read = groupsFromText(GroupsEncoder().encode({a, b, a}));
    ASSERT_EQ(read.size(), 3U);
    EXPECT_EQ(read[0].id, a.id);
    EXPECT_EQ(read[1].video.filename, "b.mov");
    EXPECT_EQ(std::set<UUID>({read[0].id, read[1].id, read[2].id}).size(), 3U);
    try {
        groupsFromText("[" + toJSON(a).dump() + ",{}]");
        ADD_FAILURE();
    } catch (const DecodingError& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with("clip 2: ")) << error.what();
    }
}

TEST(SessionFiles, wildTracksAreThoseOfTheProcessWhoseClipsAreStored) {
    const test::TemporaryDirectory folder;
    const SessionStore store(folder.path());
    const UUID id = UUID::random();
    folder.write(id.text() + ".orvanesync/groups.json", "[]");
    const auto written = [&](const char* name, bool areOtherClipsOnDisk) {
        const std::vector<WildTrack> tracks{WildTrack(test::audio(name))};
        store.changeWildTracks(id, {std::make_shared<const std::vector<WildTrack>>(tracks), nullptr},
                               areOtherClipsOnDisk);
        return store.readWildTracks(id).record.value().at(0).audio.filename;
    };
    EXPECT_EQ(written("a.wav", true), "a.wav") << "the disk has none";
    EXPECT_EQ(written("b.wav", true), "a.wav") << "those of the other process";
    EXPECT_EQ(written("c.wav", false), "c.wav") << "as after a new scan here";
    std::stop_source source;
    source.request_stop();
    EXPECT_THROW(store.readWildTracks(id, source.get_token()), platform::Stopped);
    for (const char* text : {"{}", "[1", "[{}]"}) {
        folder.write(id.text() + ".orvanesync/wild_tracks.json", text);
        EXPECT_TRUE(store.readWildTracks(id).problem) << text;
    }
}

TEST(SessionFiles, recordsComeBackAndSayWhatIsMissing) {
    const char* texts[] = {
        R"({"id":"AAAAAAAA-0000-4000-8000-000000000001","name":"n","created":"2024-01-01T00:00:00Z","modified":"2024-01-01T00:00:00.250Z","groupCount":1,"lockedCount":0,"folder":"f","nameAutoDerived":false})",
        R"({"videoFolder":"/v","audioFolder":"/a","videoBookmark":"AAE=","audioBookmark":"/+8="})",
        R"({"name":"n","lockitProjectID":"p","metadataPrefix":"m","activePresetName":"a","activeSettingsSnapshot":"e30="})"};
    const std::set<std::string> optionals{
        "folder",        "nameAutoDerived", "videoFolder",    "audioFolder",      "videoBookmark",
        "audioBookmark", "lockitProjectID", "metadataPrefix", "activePresetName", "activeSettingsSnapshot"};
    const auto rewritten = [&](int kind, const JSON& json) {
        return kind == 0   ? toJSON(fromJSON<SessionInfo>(json))
               : kind == 1 ? toJSON(fromJSON<SessionFolders>(json))
                           : toJSON(fromJSON<FolderInfo>(json));
    };
    for (int kind = 0; kind < 3; ++kind) {
        const JSON json = JSON::parse(texts[kind]);
        EXPECT_TRUE(rewritten(kind, json) == json) << texts[kind];
        EXPECT_THROW(rewritten(kind, JSON::array()), DecodingError);
        for (const auto& [key, value] : *json.members()) {
            JSON without = json;
            without.remove(key);
            if (!optionals.contains(key))
                EXPECT_THROW(rewritten(kind, without), DecodingError) << key;
            else if (key == "nameAutoDerived")
                EXPECT_TRUE(fromJSON<SessionInfo>(without).nameAutoDerived);
            else
                EXPECT_TRUE(rewritten(kind, without) == without) << key;
            JSON wrong = json;
            wrong.set(key, JSON::array());
            EXPECT_THROW(rewritten(kind, wrong), DecodingError) << key;
        }
    }
}

TEST(SessionFiles, aRemovalThatWasInterruptedEndsWithTheNext) {
    const test::TemporaryDirectory folder;
    const SessionStore store(folder.path());
    const UUID id = UUID::random();
    const std::string interrupted = "." + UUID::random().text() + ".deleted", foreign = ".notes.deleted";
    for (const std::string& name : {interrupted, foreign, id.text() + ".orvanesync"})
        folder.write(name + "/groups.json", "[]");
    store.remove(id);
    EXPECT_EQ(platform::files::childNames(folder.path()), std::vector{foreign});
    folder.write("folders.json", R"([{"name":"b"},{"name":"a"}])");
    EXPECT_EQ(store.readFolderInfos().record.value().front().name, "a");
}

TEST(ScanScopes, areStoredInProjectsAndSessionsOnlyWhereChosen) {
    const ScanScope scope{{FileURL{"/b"}, FileURL{"/c\xFF"}}, {"Proxy", "**/*_p.mov"}};
    OrvaneSyncProject without = project({}), with = without;
    const auto corrections = SourceCorrections::fromTexts("-01:00:00:00", "2026-11-20", "29.97DF");
    with.scanScope = scope;
    with.sourceCorrections = corrections;
    const OrvaneSyncProject read = ProjectService::decoded(ProjectService::encoded(with));
    EXPECT_EQ(read.scanScope, scope);
    EXPECT_EQ(read.sourceCorrections, corrections);
    EXPECT_EQ(ProjectService::encoded(without).find("orrections"), std::string::npos);
    EXPECT_EQ(ProjectService::encoded(without).find("more"), std::string::npos);
    EXPECT_EQ(ProjectService::encoded(without).find("exclude"), std::string::npos);
    const OrvaneSyncProject old = ProjectService::decoded(ProjectService::encoded(without));
    EXPECT_TRUE(old.scanScope.isEmpty() && old.sourceCorrections.isEmpty());
    SessionFolders folders;
    folders.videoFolder = FileURL{"/old"};
    EXPECT_EQ(fromJSON<SessionFolders>(toJSON(folders)), folders) << "without any of the optional keys";
    folders.videoFolder.reset();
    folders.scope = scope;
    folders.corrections = corrections;
    EXPECT_EQ(defaultName(folders, Date{}), "b");
    folders.videoFolder = FileURL{"/a"};
    EXPECT_EQ(fromJSON<SessionFolders>(toJSON(folders)), folders);
    EXPECT_THROW(scanScopeFrom(JSON::parse(R"({"moreFolders":["/a",7]})")), DecodingError);
    // A program that has not chosen the scope keeps the stored one.
    SessionFoldersChange{.hasAudio = true}.apply(folders);
    EXPECT_EQ(folders.scope, scope);
    EXPECT_EQ(folders.corrections, corrections);
    SessionFoldersChange{.hasScope = true, .hasCorrections = true}.apply(folders);
    EXPECT_TRUE(folders.corrections.isEmpty());
    EXPECT_TRUE(folders.scope.isEmpty());
}

TEST(Base64, isReversibleForEveryLengthAndRefusesTheRest) {
    std::string bytes;
    for (int i = 0; i < 70; ++i) {
        EXPECT_EQ(base64::decoded(base64::encoded(bytes)), bytes);
        bytes += static_cast<char>(i * 37);
    }
    EXPECT_EQ(base64::encoded("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64::encoded("fooba"), "Zm9vYmE=");
    EXPECT_EQ(base64::encoded("foob"), "Zm9vYg==");
    for (const char* bad : {"Zg", "Zg=", "Z===", "Zm9v\n", "Zm9_", "====", "Zg==Zg=="})
        EXPECT_EQ(base64::decoded(bad), std::nullopt) << bad;
}

} // namespace
} // namespace orvane
