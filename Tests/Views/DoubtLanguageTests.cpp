#include "OrvaneSyncApp/ViewModels/Results/DoubtCures.h"
#include "OrvaneSyncCore/Diagnosis/Shot.h"
#include "Views/AllWindows.h"

#include <QRegularExpression>

#include <set>
#include <utility>

namespace orvane::views {

namespace {

using test::doubts::clipAt;
using test::doubts::recordingAt;
using test::doubts::Shot;
using DoubtKind = SyncDoubt::Kind;

double startOfTake(std::size_t take) {
    const auto number = static_cast<double>(take);
    return 36000 + 400 * number + 11 * number * number;
}

/// Takes of 20 s by one camera, and a recorder whose clock is late by `secondsLate`.
Shot takes(std::initializer_list<double> secondsLate, const char* filmed = nullptr,
           const char* recorded = nullptr) {
    Shot shot;
    for (const double late : secondsLate) {
        const std::size_t take = shot.videos.size();
        const double at = startOfTake(take);
        shot.videos.push_back(clipAt("/CAM/A" + std::to_string(take) + ".mov", at, 20));
        shot.audios.push_back(recordingAt("/S/T" + std::to_string(take) + ".wav", at - 4 + late, 29));
    }
    if (filmed != nullptr) shot.date(shot.videos, filmed);
    if (recorded != nullptr) shot.date(shot.audios, recorded);
    return shot;
}

template <class Change>
Shot changed(Shot shot, const Change& change) {
    change(shot);
    return shot;
}

std::vector<Shot> doubtedShoots() {
    const Shot right = takes({0, 0, 0, 0});
    const auto ofRight = [&](const auto& change) { return changed(right, change); };
    return {
        takes({4037, 4037, 4037, 4037, 4037}),
        takes({0, 0, 0, 0, -7200, -7200, -7200, -7200}),
        takes({0, 0, 0, 0}, "2024-05-17", "2000-01-01"),
        takes({-913, -913, -913, -913, -913}, "2024-05-17", "2000-01-01"),
        takes({0, 0, 0}, "2024-05-17", "2024-05-18"),
        ofRight([](Shot& shot) { // a second camera, with another clock
            for (std::size_t i = 0; i < 5; ++i)
                shot.videos.push_back(clipAt("/B/B" + std::to_string(i) + ".mov", startOfTake(i) + 4200, 20));
        }),
        ofRight([](Shot& shot) { // two days
            shot.date(shot.videos, "2024-05-17");
            for (const MediaAsset& video : std::vector(shot.videos)) {
                shot.videos.push_back(video);
                shot.videos.back().id = UUID::random();
                shot.videos.back().url.path += "_2.mov";
            }
            shot.date(shot.videos, "2024-05-18", 4);
        }),
        ofRight([](Shot& shot) { shot.audios.push_back(recordingAt("/S/U.wav", startOfTake(0) + 12, 40)); }),
        ofRight([](Shot& shot) { shot.audios.push_back(recordingAt("/R/U.wav", startOfTake(0) - 5, 29)); }),
        ofRight([](Shot& shot) { // another unit, which recorded during the first take
            for (auto* files : {&shot.videos, &shot.audios})
                for (MediaAsset& file : *files) file.url.path = "/U1" + file.url.path;
            for (std::size_t i = 0; i < 4; ++i) {
                const double at = startOfTake(i) + (i == 0 ? 2 : 100);
                shot.videos.push_back(clipAt("/U2/CAM/B" + std::to_string(i) + ".mov", at, 20));
                shot.audios.push_back(recordingAt("/U2/S/U" + std::to_string(i) + ".wav", at - 4, 29));
            }
        }),
        ofRight([](Shot& shot) { shot.audios[0].durationSeconds = 9; }),
        ofRight([](Shot& shot) { shot.audios[0].heldShare = 0.4; }),
        ofRight([](Shot& shot) { // a copy that broke off
            shot.audios.push_back(recordingAt("/S2/T0.wav", startOfTake(0) - 4, 12));
            shot.audios.back().heldShare = 0.4;
        }),
        ofRight([](Shot& shot) { // a recorder without a clock
            for (MediaAsset& audio : shot.audios) audio.bextTimeReference.reset();
        }),
        ofRight([](Shot& shot) { shot.videos[0].startTimecodeString = "10:00:00:27"; }),
        ofRight([](Shot& shot) {
            shot.audios[0] = recordingAt("/S/T_1.wav", startOfTake(0) - 4, 10);
            shot.audios.push_back(recordingAt("/S/T_2.wav", startOfTake(0) + 8, 20));
        }),
        ofRight([](Shot& shot) { // timecode that counts only while the camera records
            for (std::size_t i = 0; i < shot.videos.size(); ++i) {
                MediaAsset& video = shot.videos[i];
                video = clipAt(video.url.path, 36000 + 20.0 * static_cast<double>(i), 20);
                video.headerDate = *dateFromISO8601("2024-05-17T10:00:00Z") + std::chrono::minutes(7 * i);
            }
        }),
        ofRight([](Shot& shot) { // takes in three mono files each, except the first one
            shot.audios.clear();
            for (std::size_t take = 0; take < shot.videos.size(); ++take)
                for (const char* channel : {"1", "2", "3"}) {
                    if (take == 0 && *channel == '2') continue;
                    const std::string name = "/S/T" + std::to_string(take) + "_" + channel + ".wav";
                    shot.audios.push_back(recordingAt(name, startOfTake(take) - 4, 29));
                    shot.audios.back().channelCount = 1;
                }
        }),
        ofRight([](Shot& shot) {
            for (MediaAsset& video : shot.videos) video.timecodeFrameRate = TimecodeFrameRate::fps29_97d;
            for (MediaAsset& audio : shot.audios) {
                audio.timecodeFrameRate = TimecodeFrameRate::fps29_97;
                audio.ixmlData.emplace().timecodeRate = "30000/1001 NDF";
            }
        }),
    };
}

/// Whether the text has English words that do not exist in German.
bool hasEnglish(QString text) {
    static const QRegularExpression names(QStringLiteral("'[^']*'"));
    static const QRegularExpression words(
        QStringLiteral("\\b(the|of|and|or|with|for|to|is|are|by|which|that|only|clip|recordings?)\\b"));
    return words.match(text.remove(names)).hasMatch();
}

void expectGerman(const std::vector<CardDoubt>& told) {
    for (const CardDoubt& one : told)
        for (const std::string& text : {messageInWords(one.doubt), cureInWords(one.doubt.cure).text})
            EXPECT_FALSE(hasEnglish(translatedSentence(text))) << text << "\n"
                                                               << translatedSentence(text).toStdString();
}

} // namespace

TEST(DoubtLanguageTest, SaysWhatSpeaksForAGivenHour) {
    const test::Spoken german(QStringLiteral("de"));
    Shot shot = takes({0, 0, 0});
    for (MediaAsset& video : shot.videos) video.channelCount = 2;
    shot.audios = {recordingAt("/S/LAV.wav", 28800, 20000)};
    const MatchRules rules{.soundOffsetSeconds = 3600};
    shot.diagnose(rules);
    const FileNames names;
    DoubtInput input{shot.groups, shot.audios, rules, TrimMode::noTrim, {}, names};
    const std::unordered_map<UUID, HeardLag> nothing;
    HeardClaims atStated;
    for (const SyncGroup& group : shot.groups) {
        const double place = group.audioMatches.front().syncOffsetSeconds - 3600;
        atStated[SoundClaim{group.id, shot.audios.front().id, place, 0}.key()] = {place, true};
    }
    for (const bool isMeasured : {false, true})
        for (const HeardClaims* claims :
             {static_cast<const HeardClaims*>(nullptr), &std::as_const(atStated)}) {
            input.heardLags = isMeasured ? &nothing : nullptr;
            input.heardClaims = claims;
            const auto told = SyncDoubts::of(input).summary(shot.groups);
            EXPECT_EQ(std::ranges::count(told, DoubtKind::constantOffset,
                                         [](const CardDoubt& one) { return one.doubt.kind; }),
                      1);
            expectGerman(told);
        }
}

TEST(DoubtLanguageTest, SaysEveryKindOfDoubtAndItsCureInGerman) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const test::Spoken german(QStringLiteral("de"));
    std::set<DoubtKind> kinds;
    for (Shot& shot : doubtedShoots()) {
        shot.diagnose();
        SmartAudioResults results; // speech on a channel that is switched off
        std::unordered_map<UUID, HeardLag> heard;
        for (const SyncGroup& group : shot.groups) {
            SmartAudioResult result;
            result.bestTrackIndex = 1;
            result.tracks.resize(2);
            for (int track : {1, 2}) result.tracks[track - 1].trackIndex = track;
            result.tracks[0].averageLevelDB = -40;
            result.tracks[1].speechRatio = 0.3F;
            results[group.id] = result;
            if (!group.audioMatches.empty()) heard[group.audioMatches.front().id] = {-0.3, -0.001};
        }
        const FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::commonDuration, results, names};
        std::vector<CardDoubt> told = SyncDoubts::of(input).summary(shot.groups);
        input.heardLags = &heard;
        std::ranges::copy(SyncDoubts::of(input).summary(shot.groups), std::back_inserter(told));
        shot.groups.update(shot.groups.front().id,
                           [](SyncGroup& group) { group.manualAudioOffsetSeconds = 1; });
        std::ranges::copy(SyncDoubts::of(input).summary(shot.groups), std::back_inserter(told));
        expectGerman(told);
        for (const CardDoubt& one : told) kinds.insert(one.doubt.kind);
    }
    for (std::size_t kind = 0; kind < doubtKinds.size(); ++kind)
        EXPECT_TRUE(kinds.contains(static_cast<DoubtKind>(kind))) << doubtKinds[kind].name;
}

} // namespace orvane::views
