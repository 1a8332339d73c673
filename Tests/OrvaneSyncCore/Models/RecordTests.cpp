#include "OrvaneSyncCore/Models/JSONFields.h"
#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "Support/Assets.h"
#include "Support/RandomSeed.h"
#include "Support/Test.h"

namespace orvane {

struct RecordWithAddition {
    double first = 0;
    bool later = true;
};
template <>
struct JSONFields<RecordWithAddition> {
    static constexpr std::tuple list{JSONField{"first", &RecordWithAddition::first},
                                     addedLater(JSONField{"later", &RecordWithAddition::later})};
};

namespace {

constexpr const char* videoText =
    R"({"id":"00000000-0000-4000-8000-000000000001","url":"file:///media/a.mov","kind":"video","filename":"a.mov"})";
constexpr const char* fullAudioText =
    R"({"id":"00000000-0000-4000-8000-000000000002","url":"file:///media/b.wav","kind":"audio","filename":"b.wav",
    "startTimecodeString":"01:00:00:00","timecodeFrameRate":"fps29_97","fileSizeBytes":18446744073709551615,"heldShare":0.5,"isUnclosed":true,"contentMark":9007199254740991,"durationSeconds":1.5,"contentCreatedDate":"2024-05-17T10:00:00Z","dateZoneMinutes":-210,"frameRate":25.5,"width":1,"height":2,"channelCount":3,
    "sampleRate":48000.5,"videoCodecFourCC":"apch","sensorFrameRate":120.5,"projectFrameRate":24.5,"offspeedConfidence":{"confirmed":{"isOffspeed":true,"factor":5.5}},
    "sourceRateDomainOverride":"conformedExternally","bextTimeReference":18446744073709551615,"bextOriginator":"R","ixmlData":{"scene":"1","take":"2","tape":"3","note":"4",
    "project":"5","circled":"6","wildTrack":"7","timecodeRate":"25/1","tracks":[{"channelIndex":1,"name":"Boom"}]}})";

std::string groupText(const std::string& more) {
    return std::string(R"({"id":"00000000-0000-4000-8000-000000000003","video":)") + videoText +
           R"(,"audioMatches":[{"id":"00000000-0000-4000-8000-000000000004","audio":)" + fullAudioText +
           R"(,"syncOffsetSeconds":1.5,"overlapDurationSeconds":2.5}],"matchStatus":{"splitRecording":{"count":2}},"clipName":"n","algorithmExcludedTracks":[1,2],"manualActiveTracks":[3],
           "manualBlockOverrides":[{"id":"00000000-0000-4000-8000-000000000005","startSeconds":0.5,"endSeconds":1.5,"trackIndex":2}],"manualAudioOffsetSeconds":-0.25,"isApproved":true,
           "isLocked":true,"syncMethod":"clap","generateNativeMOSClip":true,"isPickup":true,"isExcludedFromExport":true,"masterGainDB":-3.5,"masterGainAuto":false)" +
           more + "}";
}

constexpr const char* optionalsText =
    R"(,"aleMetadata":{"Scene":"1"},"lockitMetadata":{},"tracksManuallyEdited":true,"audioAnchorOffsetInAudioSeconds":2.5,"pictureClapAnchorSeconds":3.5,
    "lockedAtAudioAnchor":4.5,"lockedAtPictureAnchor":5.5,"lockedAtManualOffset":6.5,"nativeMOSNameSuffix":"m","generateProjectRateClipFlag":false,"projectRateNameSuffix":"p",
    "manualClipName":"Hero","isExcludedFromMulticamFlag":true,"measuredLUFS":-23.5)";

/// A record is read and written again. Without one of the required keys reading fails, and the error names
/// the key; `addedLater` have a default instead, which is written.
template <class Record>
void expectJSONForm(const std::string& text, const std::set<std::string>& optionals,
                    const std::set<std::string>& addedLater = {}) {
    const JSON json = JSON::parse(text);
    EXPECT_EQ(toJSON(fromJSON<Record>(json)), json) << text;
    for (const auto& [key, value] : *json.members()) {
        JSON without = json;
        without.remove(key);
        if (optionals.contains(key)) {
            EXPECT_EQ(toJSON(fromJSON<Record>(without)), without) << key << " is left out when absent";
            continue;
        }
        try {
            const JSON defaulted = toJSON(fromJSON<Record>(without));
            if (addedLater.contains(key))
                EXPECT_NE(defaulted.find(key), nullptr) << key;
            else
                ADD_FAILURE() << "done without \"" << key << "\"";
        } catch (const DecodingError& error) {
            EXPECT_NE(std::string(error.what()).find(key), std::string::npos) << error.what();
        }
    }
}

std::set<std::string> keys(const std::string& text) {
    const JSON json = JSON::parse(text);
    std::set<std::string> result;
    for (const auto& [key, value] : *json.members()) result.insert(key);
    return result;
}

std::set<std::string> difference(std::set<std::string> from, const std::set<std::string>& without) {
    for (const auto& key : without) from.erase(key);
    return from;
}

TEST(Records, JSONForms) {
    expectJSONForm<MediaAsset>(fullAudioText, difference(keys(fullAudioText), keys(videoText)));
    expectJSONForm<MediaAsset>(videoText, {});
    expectJSONForm<SyncGroup>(groupText(optionalsText),
                              difference(keys(groupText(optionalsText)), keys(groupText(""))));
    expectJSONForm<WildTrack>(std::string(R"({"id":"00000000-0000-4000-8000-000000000001","audio":)") +
                                  videoText + R"(,"customName":"Rain","isApproved":true})",
                              {});
    const std::string strayID =
        R"({"id":"00000000-0000-4000-8000-00000000000F","customName":"","isApproved":true,"audio":)";
    const auto track = fromJSON<WildTrack>(JSON::parse(strayID + videoText + "}"));
    EXPECT_EQ(track.id, track.audio.id);
    EXPECT_EQ(keys(groupText(optionalsText)).size(), 31U);

    const std::string group = groupText("");
    const std::pair<const char*, const char*> damages[] = {
        {R"("clap")", R"("guess")"}, {R"("isLocked":true)", R"("isLocked":1)"},
        {R"([1,2])", R"([1,"2"])"},  {R"("manualActiveTracks":[3])", R"("manualActiveTracks":3)"},
        {R"("video")", R"("film")"}, {"file:///media/a.mov", "a.mov"},
        {"000000000003", "3"},       {"18446744073709551615", "-1"},
        {"2024-05-17T", "17 May"},   {"conformedExternally", "other"}};
    for (const auto& [good, bad] : damages) {
        std::string text = group;
        text.replace(text.find(good), std::string_view(good).size(), bad);
        EXPECT_THROW(fromJSON<SyncGroup>(JSON::parse(text)), DecodingError) << bad;
    }
    try {
        JSON inList = JSON::parse(group);
        inList.set("audioMatches", JSON::Array{JSON::object()});
        fromJSON<SyncGroup>(inList);
        ADD_FAILURE();
    } catch (const DecodingError& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with("audioMatches: ")) << error.what();
    }
}

TEST(Records, aSlateHasOnlyTheFieldsThatWereFound) {
    EXPECT_EQ(toJSON(SlateResult{}).dump(), "{}");
    EXPECT_EQ(toJSON(SlateResult{2.25, ClapMethod::visualSlate, {}, "12A", {}, {}}).dump(),
              R"({"clapMethod":"Visual","clapPointSeconds":2.25,"ocrScene":"12A"})");
}

TEST(Records, aFieldAddedLaterMayBeAbsent) {
    const std::pair<const char*, bool> cases[] = {{R"({"first":1})", true},
                                                  {R"({"first":1,"later":null})", true},
                                                  {R"({"first":1,"later":false})", false}};
    for (const auto& [text, later] : cases) {
        const JSON json = JSON::parse(text);
        EXPECT_EQ(madeFromJSON<RecordWithAddition>(json).later, later) << text;
        EXPECT_EQ(filledFromJSON(json, RecordWithAddition{}).later, later) << text;
    }
    EXPECT_THROW(filledFromJSON(JSON::parse(R"({"later":true})"), RecordWithAddition{}), DecodingError);
    EXPECT_THROW(madeFromJSON<RecordWithAddition>(JSON::parse(R"({"first":1,"later":1})")), DecodingError);
}

TEST(Records, variantsHaveOneKey) {
    const std::pair<MatchStatus, std::pair<const char*, const char*>> statuses[] = {
        {MatchStatus::matched(), {R"({"matched":{}})", "Matched"}},
        {MatchStatus::ambiguous(3), {R"({"ambiguous":{"count":3}})", "Ambiguous (3)"}},
        {MatchStatus::splitRecording(2), {R"({"splitRecording":{"count":2}})", "Split Recording (2)"}},
        {MatchStatus::unmatched(), {R"({"unmatched":{}})", "No Match"}},
        {MatchStatus::mos(), {R"({"mos":{}})", "MOS (no audio)"}},
        {MatchStatus::manual(), {R"({"manual":{}})", "Manual"}}};
    for (const auto& [status, forms] : statuses) {
        EXPECT_EQ(toJSON(status).dump(), forms.first);
        EXPECT_EQ(fromJSON<MatchStatus>(JSON::parse(forms.first)), status);
        EXPECT_EQ(status.label(), forms.second);
        EXPECT_EQ(status.isSettled(),
                  status.kind != MatchStatus::Kind::ambiguous && status.kind != MatchStatus::Kind::unmatched);
    }
    EXPECT_EQ(toJSON(OffspeedConfidence::suspectedUnconfirmed(1)).dump(),
              R"({"suspectedUnconfirmed":{"factor":1.0}})");
    EXPECT_EQ(fromJSON<OffspeedConfidence>(JSON::parse(R"({"suspectedUnconfirmed":{"factor":1}})")),
              OffspeedConfidence::suspectedUnconfirmed(1));
    for (const char* text : {"{}", R"({"matched":{},"mos":{}})", R"("matched")", "null"}) {
        const auto message = [&](const auto& read) {
            try {
                read(JSON::parse(text));
            } catch (const DecodingError& error) {
                return std::string(error.what());
            }
            return std::string("read");
        };
        EXPECT_EQ(message([](const JSON& json) { fromJSON<MatchStatus>(json); }),
                  "Invalid number of keys found, expected one.")
            << text;
        EXPECT_EQ(message([](const JSON& json) { fromJSON<OffspeedConfidence>(json); }),
                  "Invalid number of keys found, expected one.")
            << text;
    }
    for (const char* text : {R"({"lost":{}})", R"({"ambiguous":{}})", R"({"ambiguous":2})"})
        EXPECT_THROW(fromJSON<MatchStatus>(JSON::parse(text)), DecodingError) << text;
    for (const SyncMethod method : allSyncMethods) EXPECT_EQ(fromJSON<SyncMethod>(toJSON(method)), method);
    EXPECT_EQ(label(SyncMethod::clap), "Clap-based");
}

TEST(SyncGroup, resolvedClapPoint) {
    SyncGroup group = test::clip(test::video("a.mov"), test::audio("b.wav"));
    group.audioMatches[0].syncOffsetSeconds = 1.5;
    group.manualAudioOffsetSeconds = -0.25;
    EXPECT_EQ(group.resolvedClapPointSeconds(), std::nullopt);
    group.audioAnchorOffsetInAudioSeconds = 2.0;
    EXPECT_EQ(group.resolvedClapPointSeconds(), 3.25);
    group.audioMatches.clear();
    EXPECT_EQ(group.resolvedClapPointSeconds(), 1.75);
    group.pictureClapAnchorSeconds = 9.0;
    EXPECT_EQ(group.resolvedClapPointSeconds(), 9.0);
}

TEST(SyncGroupList, copiesShareWhatDidNotChange) {
    SyncGroupList list{SyncGroup(test::video("a.mov"), {}, MatchStatus::mos()),
                       SyncGroup(test::video("b.mov"), {}, MatchStatus::mos())};
    const SyncGroupList before = list;
    const SyncGroup& held = before[0];
    EXPECT_TRUE(list.update(list[0].id, [](SyncGroup& group) { group.isApproved = true; }));
    EXPECT_FALSE(held.isApproved);
    EXPECT_EQ(list.element(1), before.element(1));
    EXPECT_FALSE(list.update(UUID::random(), [](SyncGroup&) { FAIL() << "there is no such clip"; }));
    EXPECT_EQ(list.find(UUID::random()), nullptr);
    const auto approved = list.filtered([](const SyncGroup& group) { return group.isApproved; });
    EXPECT_EQ(approved.element(0), list.element(0));
}

TEST(SyncGroupList, behavesAsAPlainListDoes) {
    std::mt19937 random(test::randomSeed());
    const auto draw = [&](std::size_t below) {
        return std::uniform_int_distribution<std::size_t>(0, below - 1)(random);
    };
    struct Pair {
        SyncGroupList list;
        std::vector<SyncGroup> plain;
    };
    std::vector<Pair> pairs(1); // copies that are changed independently
    for (int round = 0; round < 8000; ++round) {
        Pair& pair = pairs[draw(pairs.size())];
        const std::size_t kind = draw(20);
        if (pair.plain.empty() || kind < 8) {
            SyncGroup added(test::video("v.mov"), {}, MatchStatus::mos());
            if (!pair.plain.empty() && draw(10) == 0) added.id = pair.plain[draw(pair.plain.size())].id;
            pair.list.append(added);
            pair.plain.push_back(added);
        } else if (kind < 16) {
            const UUID id = pair.plain[draw(pair.plain.size())].id;
            const auto change = [&](SyncGroup& group) { group.manualAudioOffsetSeconds += round; };
            EXPECT_TRUE(pair.list.update(id, change));
            change(*std::ranges::find(pair.plain, id, &SyncGroup::id)); // the first of equal ids
        } else if (kind == 16) {
            const auto isMoved = [](const SyncGroup& group) { return group.manualAudioOffsetSeconds > 2000; };
            const auto approve = [](SyncGroup& group) { group.isApproved = !group.isApproved; };
            const auto count = pair.list.updateWhere(isMoved, approve);
            EXPECT_EQ(count, std::ranges::count_if(pair.plain, isMoved));
            for (SyncGroup& group : pair.plain)
                if (isMoved(group)) approve(group);
        } else if (kind == 17 && draw(10) == 0) {
            const auto stays = [&](const SyncGroup& group) { return group.id.bytes[0] % 4 != round % 4; };
            pair.list = pair.list.filtered(stays);
            std::erase_if(pair.plain, std::not_fn(stays));
        } else {
            pairs.resize(std::min<std::size_t>(pairs.size(), 3));
            pairs.push_back(pairs[draw(pairs.size())]);
        }
    }
    std::size_t longest = 0;
    for (const auto& [list, plain] : pairs) {
        EXPECT_EQ(toJSONArray(list), toJSONArray(plain));
        for (const SyncGroup& group : plain)
            EXPECT_EQ(list.find(group.id)->isApproved,
                      std::ranges::find(plain, group.id, &SyncGroup::id)->isApproved);
        longest = std::max(longest, plain.size());
    }
    EXPECT_GT(longest, 128U) << "several chunks";
}

TEST(UUID, texts) {
    const auto ids = UUID::random(50);
    EXPECT_EQ((std::set<UUID>(ids.begin(), ids.end()).size()), 50U);
    for (const UUID& id : ids) {
        const std::string text = id.text();
        EXPECT_EQ(text.size(), 36U);
        EXPECT_EQ(text[14], '4') << "version";
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << "variant";
        EXPECT_EQ(UUID::fromText(text), id);
    }
    EXPECT_NE(UUID::random(), UUID::random());
    EXPECT_EQ(UUID::fromText("0123456f-89ab-4def-8123-456789abcdef")->text(),
              "0123456F-89AB-4DEF-8123-456789ABCDEF");
    for (const char* bad : {"", "0123456F-89AB-4DEF-8123-456789ABCDE", "0123456F-89AB-4DEF-8123-456789ABCDEG",
                            "0123456F089AB-4DEF-8123-456789ABCDEF", "P123456F-89AB-4DEF-8123-456789ABCDEF",
                            "{123456F-89AB-4DEF-8123-456789ABCDE}"})
        EXPECT_EQ(UUID::fromText(bad), std::nullopt) << bad;
}

} // namespace
} // namespace orvane
