#include "OrvaneSyncCore/Services/Takes/Take.h"
#include "Shot.h"

namespace orvane::test::doubts {
namespace {

enum class Dates { all, none, half, headersOnly, headersFarWest, headersAlone, wrongRecorder, wrongCamera };

TEST(SyncDoubts, TwoDaysNeverMixSilently) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    const Date first = *dateFromISO8601("2024-05-17T00:00:00Z");
    int wrongInAll = 0;
    std::vector<unsigned> seeds(1, 23014); // with undated takes that collide and share more than half of both
    std::ranges::copy(test::seeds(20), std::back_inserter(seeds));
    for (const unsigned seed : seeds)
        for (const Dates dates :
             {Dates::all, Dates::none, Dates::half, Dates::headersOnly, Dates::headersFarWest,
              Dates::headersAlone, Dates::wrongRecorder, Dates::wrongCamera}) {
            Random random(seed);
            Shot shot;
            const bool isFarWest = dates == Dates::headersFarWest; // headers in UTC, 8 hours ahead
            const bool hasHeaders = isFarWest || dates == Dates::headersOnly || dates == Dates::headersAlone;
            const int takes = dates == Dates::headersAlone ? 5 : 60; // too few for recordings to collide
            shootADay(shot, random, takes, "1", dates == Dates::all ? 1 : 0.85);
            shootADay(shot, random, takes, "2", dates == Dates::all ? 1 : 0.85);
            const auto date = [&](std::vector<MediaAsset>& files, bool isWrong) {
                for (MediaAsset& file : files) {
                    const bool isDated =
                        dates != Dates::none && (dates != Dates::half || within(random, 0, 1) < 0.5);
                    const auto start = file.bextTimeReference
                                           ? static_cast<double>(*file.bextTimeReference) / 48000
                                           : TimecodeUtils::tcToSeconds(*file.startTimecodeString, 25);
                    const int day = (file.filename[1] == '2' ? 1 : 0) + (isWrong ? 1 : 0);
                    const Date when =
                        first + std::chrono::hours(24 * day) + std::chrono::seconds(std::llround(start));
                    const bool inHeader = hasHeaders && file.kind == AssetKind::video;
                    const auto ahead = std::chrono::hours(isFarWest && inHeader ? 8 : 0);
                    if (dates == Dates::headersAlone && !inHeader) continue;
                    if (isDated) (inHeader ? file.headerDate : file.contentCreatedDate) = when + ahead;
                }
            };
            date(shot.videos, dates == Dates::wrongCamera);
            date(shot.audios, dates == Dates::wrongRecorder);
            const auto given = within(random, 0, 1) < 0.5 ? std::optional(dayNumber(first)) : std::nullopt;
            shot.settlesAll = within(random, 0, 1) < 0.5;
            shot.diagnose(dates == Dates::all ? MatchRules() : MatchRules{.soundDay = given});
            int wrong = 0, silent = 0;
            for (const SyncGroup& group : shot.groups) {
                if (group.isMOS()) continue;
                const auto truth = shot.soundOf.find(group.video.filename);
                const bool isRight =
                    truth != shot.soundOf.end() && truth->second == group.primaryAudio()->filename;
                const bool hasOtherDay =
                    std::ranges::any_of(group.audioMatches, [&](const AudioMatch& match) {
                        return match.audio->filename[1] != group.video.filename[1];
                    });
                if (isRight && !hasOtherDay) continue;
                ++wrong;
                const auto own = shot.doubts.byGroup.find(group.id);
                const auto isOfDays = [](const SyncDoubt& doubt) {
                    return doubt.kind == Kind::otherDay || doubt.kind == Kind::otherDateFits ||
                           doubt.kind == Kind::ambiguous;
                };
                if (own == shot.doubts.byGroup.end() || std::ranges::none_of(own->second, isOfDays)) ++silent;
            }
            wrongInAll += wrong;
            EXPECT_EQ(silent, 0) << "seed " << seed << ", dates " << static_cast<int>(dates)
                                 << given.has_value() << shot.settlesAll;
            if (dates != Dates::all) continue;
            EXPECT_EQ(wrong, 0);
            EXPECT_TRUE(shot.doubts.byGroup.empty() && shot.doubts.cards.empty())
                << "a clean shoot: " << shot.doubts.byGroup.begin()->second.front().message;
        }
    EXPECT_GT(wrongInAll, 0) << "nothing was mixed up, so nothing was looked at";
}

TEST(SyncDoubts, AMonoFileThatOtherTakesHaveIsMissed) {
    const std::pair<std::vector<const char*>, int> cases[] = {
        {{"123", "123", "13"}, 1},      {{"123", "23", "123"}, 1},
        {{"123", "12", "1"}, 0},        // fewer channels were armed
        {{"13", "13", "13", "123"}, 0}, // as in most takes
        {{"123", "1b3", "13"}, 1},      // the channel of the empty file was armed
        {{"13", "24", "3"}, 3},
    };
    for (const auto& [takes, doubted] : cases) {
        Shot shot;
        for (std::size_t i = 0; i < takes.size(); ++i) {
            const double start = 36000 + 400 * static_cast<double>(i);
            const std::string name = "T" + std::to_string(i);
            shot.videos.push_back(clipAt("/C/A" + name + ".mov", start + 2, 10));
            for (const char letter : std::string(takes[i])) {
                const bool isEmpty = letter >= 'a';
                const char channel = static_cast<char>(isEmpty ? letter - 'a' + '1' : letter);
                shot.audios.push_back(recordingAt("/S/" + name + "_" + channel + ".wav", start, 20));
                shot.audios.back().channelCount = 1;
                if (!isEmpty) continue;
                shot.audios.back() = MediaAsset(shot.audios.back().url, AssetKind::audio);
                shot.audios.back().heldShare = 0;
            }
        }
        shot.diagnose();
        EXPECT_EQ(shot.count(Kind::missingFile), doubted) << takes.front() << " " << takes.back();
    }
    Shot parts; // parts one after the other
    parts.videos.push_back(clipAt("/C/A.mov", 36005, 40));
    for (const int part : {1, 3, 4})
        parts.audios.push_back(recordingAt("/S/T_" + std::to_string(part) + ".wav", 36000 + 10 * part, 10));
    parts.diagnose();
    EXPECT_EQ(parts.count(Kind::missingFile), 0);
}

TEST(SyncDoubts, ANightOfAnotherDateNeedsNoScanOfItsOwnUnderClipsOfOneDay) {
    Shot night;
    const std::pair<double, const char*> takes[] = {{86000, "2000-01-01"}, {500, "2000-01-02"}};
    for (const auto& [start, date] : takes) {
        const std::string name = std::to_string(night.videos.size());
        night.videos.push_back(clipAt("/C/A" + name + "_240517.mov", start, 10));
        night.audios.push_back(recordingAt("/S/T" + name + ".wav", start - 3, 20));
        night.audios.back().contentCreatedDate = dateFromISO8601(std::string(date) + "T12:00:00Z");
    }
    const auto cure = [&] { return night.doubts.summary(night.groups).front().doubt.cure.text(); };
    night.diagnose();
    EXPECT_TRUE(cure().starts_with("--sound-date 2024-05-17 if")) << cure();
    night.diagnose({.soundDay = dayNumber(*dateFromISO8601("2024-05-17T12:00:00Z"))});
    EXPECT_TRUE(cure().starts_with("--sound-date 2024-05-17 in a scan of")) << cure() << ": it is in force";
    // Names have the shoot day, and the headers of the cameras have the day of the sound.
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const auto& [daysLater, isDoubted] : {std::pair{0, false}, {-1, true}}) {
        for (std::size_t i = 0; i < 2; ++i) {
            const Date day = *dateFromISO8601(i == 0 ? "2024-05-17T00:00:00Z" : "2024-05-18T00:00:00Z");
            night.audios[i].contentCreatedDate = day + std::chrono::hours(12);
            night.videos[i].headerDate =
                day + std::chrono::days(daysLater) + std::chrono::seconds(static_cast<int>(takes[i].first));
        }
        night.diagnose();
        EXPECT_EQ(night.count(Kind::otherDay) > 0, isDoubted);
    }
}

/// One date for the recordings of both days would leave one of the days without sound.
TEST(SyncDoubts, RecordingsOfALostDateAreSuggestedByTheirTimeOfDay) {
    for (const char* date : {"2000-01-0", "2024-05-0"}) {
        Shot shot;
        for (int i = 0; i < 12; ++i) {
            const bool isSecond = i >= 6;
            const double at = 36000 + 410 * i + 17 * i * i - (isSecond ? 2900 : 0);
            const std::string number = std::to_string(100 + i);
            shot.videos.push_back(clipAt("/C/A" + number + ".mov", at, 20));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 5, 40));
        }
        shot.date(shot.videos, "2024-05-17");
        shot.date(shot.videos, "2024-05-18", 6);
        shot.date(shot.audios, (std::string(date) + "1").c_str());
        shot.date(shot.audios, (std::string(date) + "2").c_str(), 6);
        shot.diagnose();
        ASSERT_EQ(shot.count(Kind::otherDateFits), 12);
        for (std::size_t i = 0; i < 12; ++i) {
            const SyncDoubt& doubt = shot.doubts.byGroup[shot.groups[i].id].front();
            const bool isLost = date[0] == '2' && date[3] == '0';
            ASSERT_EQ(doubt.suggestion.has_value(), isLost) << "a day of the same month may be the right one";
            if (!isLost) continue;
            EXPECT_EQ(doubt.suggestion->recordingID, shot.audios[i].id);
            EXPECT_EQ(doubt.suggestion->offsetSeconds, 0);
        }
    }
}

TEST(SyncDoubts, WhatGoesOnBehindMidnightNeedsAnotherRuleOfDays) {
    Shot shot;
    shot.videos.push_back(clipAt("/C/A.mov", 86385, 30));
    shot.audios = {recordingAt("/S/T_1.wav", 86380, 25), recordingAt("/S/T_2.wav", 5, 20)};
    shot.diagnose({.days = MatchingDays::neighbours});
    ASSERT_EQ(shot.count(Kind::shortSound), 1);
    for (const SyncDoubt& doubt : shot.doubts.byGroup.begin()->second)
        EXPECT_TRUE(doubt.cure.text().starts_with("--days auto")) << doubt.message;
    shot.diagnose();
    EXPECT_TRUE(shot.doubts.isEmpty());
}

TEST(SyncDoubts, TakesOfTwoDaysUnderOneClipAreNoClockSetBack) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Shot shot;
    for (int i = 0; i < 10; ++i) {
        const int day = i / 5;
        const double at = 36000 + 600 * (i % 5) + 11 * day;
        const std::string number = std::to_string(i);
        shot.videos.push_back(clipAt("/C/A" + number + ".mov", at, i < 9 ? 15 : 40));
        shot.videos.back().headerDate =
            *dateFromISO8601("2024-05-17T00:00:00Z") + std::chrono::seconds(86400 * day + std::lround(at));
        shot.audios.push_back(
            recordingAt("/S/" + std::to_string(240517 + day) + "-" + number + ".wav", at - 5, 35));
    }
    shot.audios.push_back(recordingAt("/S/240519-W.wav", 60000, 35)); // of a day without clips
    shot.diagnose();
    EXPECT_EQ(shot.count(Kind::otherDay), 10);
    EXPECT_EQ(shot.count(Kind::shortSound), 0) << "the day precedes the length";
    for (const auto& [id, own] : shot.doubts.byGroup)
        for (const SyncDoubt& doubt : own) {
            EXPECT_EQ(doubt.message.find("clock was set back"), std::string::npos) << doubt.message;
            EXPECT_TRUE(doubt.cure.text().ends_with("--days same")) << doubt.cure.text();
        }
    std::unordered_map<UUID, HeardLag> lags;
    for (const auto& [heard, suggested] : {std::pair{2, 5}, {5, 10}}) {
        for (const int clip : {0, 1, heard})
            lags[shot.groups[static_cast<std::size_t>(clip)].audioMatches.front().id] = {.seconds = 0.02};
        const FileNames names;
        DoubtInput input{shot.groups, shot.audios, {}, TrimMode::noTrim, {}, names};
        input.heardLags = &lags;
        const SyncDoubts doubts = SyncDoubts::of(input);
        int found = 0;
        for (const SyncGroup& group : shot.groups)
            if (const auto* own = doubts.suggestionFor(group)) {
                ++found;
                EXPECT_TRUE(own->isAlone && own->recordingID == group.primaryAudio()->id);
            }
        EXPECT_EQ(found, suggested);
    }
    shot.diagnose({.days = MatchingDays::same});
    EXPECT_EQ(shot.doubts.byGroup.size(), 1U);
    EXPECT_EQ(shot.count(Kind::shortSound), 1);
}

TEST(SyncDoubts, FewClipsAreDoubtedByTheirHeadersOneByOne) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        int clips;
        double headerLater; ///< seconds
        const char* recorded;
        Kind kind;
        int doubted;
    };
    for (const Case& one : {Case{"a card of one clip", 1, 10, "2024-05-17", Kind::otherDay, 1},
                            {"two folders of one clip", 2, 10, "2024-05-17", Kind::otherDay, 2},
                            {"three, which tell by themselves", 3, 10, "2024-05-17", Kind::otherDateFits, 3},
                            {"a header of a program", 1, 20'000, "2024-05-17", Kind::otherDay, 0},
                            {"in UTC, still of the day before, and that day's sound", 1, -39'600,
                             "2024-05-17", Kind::otherDay, 1},
                            {"in UTC, and its own day's sound", 1, -39'600, "2024-05-18", Kind::otherDay, 0},
                            {"its own day", 1, 10, "2024-05-18", Kind::otherDay, 0}}) {
        Shot shot;
        for (int i = 0; i < one.clips; ++i) {
            const double at = 36000 + 3600 * i;
            const std::string number = std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/C" + number + "/A.mov", at, 8));
            shot.videos.back().headerDate = *dateFromISO8601("2024-05-18T00:00:00Z") +
                                            std::chrono::seconds(std::llround(at + one.headerLater));
            shot.audios.push_back(recordingAt("/S/T" + number + ".wav", at - 3, 14));
        }
        shot.date(shot.audios, one.recorded);
        shot.diagnose();
        EXPECT_EQ(shot.count(one.kind), one.doubted) << one.name;
        EXPECT_EQ(std::ssize(shot.doubts.byGroup), one.doubted) << one.name;
        if (one.clips < 3) continue;
        EXPECT_EQ(shot.card(one.kind)->doubt.message.substr(0, 23), "the clips in '/CAM' are");
    }
}

TEST(SyncDoubts, ADateThatFitsTheClipMayBeWrong) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    Shot shot; // the second day's recorder has the first day's date, and two clips lost their sound
    for (const int day : {0, 1})
        for (int i = 0; i < 6; ++i) {
            const double at = 36000 + 300 * i + 4 * day;
            const std::string name = std::to_string(day + 1) + std::to_string(i);
            shot.videos.push_back(clipAt("/CAM/D" + std::to_string(day) + "/A" + name + ".mov", at, 8));
            shot.videos.back().headerDate = *dateFromISO8601("2024-05-17T00:00:00Z") +
                                            std::chrono::seconds(86400 * day + std::lround(at));
            if (day == 0 && i > 3) continue;
            shot.audios.push_back(
                recordingAt("/S/D" + std::to_string(day) + "/T" + name + ".wav", at - 3, 14));
        }
    shot.date(shot.audios, "2024-05-17");
    shot.diagnose();
    for (const SyncGroup& group : shot.groups) {
        const bool isRight = group.primaryAudio()->filename.substr(1, 2) == group.video.filename.substr(1, 2);
        const auto own = shot.doubts.byGroup.find(group.id);
        ASSERT_NE(own, shot.doubts.byGroup.end());
        EXPECT_EQ(std::ranges::count_if(own->second,
                                        [](const SyncDoubt& doubt) {
                                            return doubt.kind == Kind::otherDay ||
                                                   doubt.kind == Kind::otherDateFits;
                                        }),
                  1)
            << group.video.filename << (isRight ? ": what lies beside its sound" : "");
        if (group.video.filename != "A15.mov") continue;
        EXPECT_EQ(own->second.back().cure.text(), "--sound-date 2024-05-18 in a scan of this day alone "
                                                  "(--video '/CAM/D1' --audio '/S/D1')");
    }

    for (MediaAsset& video : shot.videos) std::swap(video.contentCreatedDate, video.headerDate);
    shot.diagnose();
    EXPECT_EQ(shot.count(Kind::otherDay), 6) << "cameras with dates: sound of the day before is left out";
    ASSERT_TRUE(shot.card(Kind::otherDateFits));
    EXPECT_EQ(shot.card(Kind::otherDateFits)->groupIDs.size(), 6U);

    Shot copied; // the second day's sound is in the folder of the first day, with its date
    for (const int day : {0, 1})
        for (int i = 0; i < 4; ++i) {
            const double at = 36000 + 300 * i + 9 * i * i + 4 * day;
            const std::string number = std::to_string(i);
            copied.videos.push_back(
                clipAt(day == 0 ? "/D2/CAM/A" + number + ".mov" : "/D3/CAM/B" + number + ".mov", at, 8));
            copied.date(copied.videos, day == 0 ? "2024-05-17" : "2024-05-18", copied.videos.size() - 1);
            copied.audios.push_back(
                recordingAt((day == 0 ? "/D2/SND/T" : "/D2/SND/U") + number + ".wav", at - 3, 14));
            copied.audios.back().channelCount = 1;
        }
    copied.date(copied.audios, "2024-05-17");
    copied.diagnose();
    SmartAudioResult result;
    result.bestTrackIndex = 1;
    result.tracks.resize(2);
    for (const bool isBeside : {false, true}) {
        TrackAdjustment& track = result.tracks[isBeside ? 1 : 0];
        track.trackIndex = isBeside ? 2 : 1;
        track.averageLevelDB = isBeside ? -20 : -40;
        track.speechRatio = 0.3F;
    }
    SmartAudioResults results;
    for (const SyncGroup& group : copied.groups) results.emplace(group.id, result);
    const std::string alone =
        "--sound-date 2024-05-18 in a scan of this day alone (--exclude 'D2/CAM' --exclude 'D2/SND/T*.wav')";
    FileNames names;
    copied.doubts = SyncDoubts::of(
        {copied.groups, copied.audios, {}, TrimMode::noTrim, results, names, nullptr, {{"/"}}});
    EXPECT_EQ(copied.count(Kind::otherDay), 4) << "what lies beside the sound of the first day";
    EXPECT_TRUE(copied.card(Kind::otherDateFits)
                    ->doubt.cure.text()
                    .starts_with(alone + "; one of the two dates is wrong"));
    for (const SyncGroup& group : copied.groups) {
        if (group.isMOS()) continue;
        EXPECT_EQ(copied.doubts.byGroup.at(group.id).back().cure.text(), alone + "; take it off this clip");
        EXPECT_FALSE(copied.doubts.has(group.id, {Kind::mutedSpeech})) << "it would be switched on";
    }

    for (const bool areLong : {false, true}) {
        Shot evening; // the recorder changes its date four hours early
        for (int i = 0; i < 6; ++i) {
            const double at = 68400 + 900 * i + 13 * i * i;
            evening.videos.push_back(clipAt("/CAM/A" + std::to_string(i) + ".mov", at, 10));
            evening.audios.push_back(
                recordingAt("/S/T" + std::to_string(i) + ".wav", at - 3, areLong ? 890 : 20));
            evening.date(evening.audios, i < 2 ? "2024-05-17" : "2024-05-18", evening.audios.size() - 1);
        }
        evening.date(evening.videos, "2024-05-17");
        evening.diagnose();
        EXPECT_EQ(evening.count(Kind::otherDateFits), areLong ? 0 : 4)
            << "two have the sound of their day, and long recordings lie under any clips";
    }

    Shot night; // dated with the evening before, beside the night before that
    night.videos.push_back(clipAt("/CAM/A.mov", 1803, 8));
    night.audios = {recordingAt("/S/T007.wav", 1800, 14), recordingAt("/S/T099.wav", 1801, 14)};
    for (const bool sameFolder : {true, false}) {
        night.date(night.videos, "2024-05-17");
        night.date(night.audios, "2024-05-17");
        night.diagnose();
        EXPECT_EQ(night.count(Kind::otherDay), sameFolder ? 1 : 0) << "a second recorder has its own folder";
        night.audios.back().url.path = "/R/T099.wav";
    }
}

/// Two days at the same hours, in mono files; one take of the second day was not recorded.
TEST(SyncDoubts, ARecorderThatLostItsDateGetsItsDaysInOrder) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    for (const auto& [second, isByHeader, suggestions] :
         {std::tuple{"2000-01-02", false, 11},
          {"2000-01-01", false, 0}, // it began again each morning
          {"2000-01-02", true, 10}, // the clips have recordings of both days, but for two
          {"2000-01-01", true, 0}}) {
        Shot shot;
        for (int i = 0; i < 12; ++i) {
            const std::string number = std::to_string(10 + i);
            const double at = 32400 + 400 * (i % 6) + (i < 6 ? 0 : 3);
            shot.videos.push_back(clipAt("/K/P" + number + ".mov", at, 12));
            for (const char* channel : {"_1.wav", "_2.wav"}) {
                if (i == 8) continue;
                shot.audios.push_back(recordingAt("/T/M" + number + channel, at - 4, 22));
                shot.date({&shot.audios.back(), 1}, i < 6 ? "2000-01-01" : second);
            }
        }
        shot.date(shot.videos, "2027-02-27");
        shot.date(shot.videos, "2027-02-28", 6);
        for (MediaAsset& video : shot.videos)
            if (isByHeader) {
                const auto at = TimecodeUtils::tcToSeconds(*video.startTimecodeString, 25);
                video.headerDate = *video.contentCreatedDate + std::chrono::seconds(std::lround(at));
                video.contentCreatedDate.reset();
            }
        shot.diagnose();
        int suggested = 0;
        for (const SyncGroup& group : shot.groups) {
            const auto* suggestion = shot.doubts.suggestionFor(group);
            if (suggestion == nullptr) continue;
            ++suggested;
            EXPECT_EQ(suggestion->isAlone, isByHeader);
            const auto own = std::ranges::find(shot.audios, suggestion->recordingID, &MediaAsset::id);
            EXPECT_EQ(own->filename.substr(1, 2), group.video.filename.substr(1, 2));
        }
        EXPECT_EQ(suggested, suggestions);
    }
}

/// Nights at the same hours.
TEST(SyncDoubts, ARecorderThatKeepsTheDateOfTheEveningIsReported) {
    for (const auto& [nights, isStuck] :
         {std::pair<std::size_t, bool>{2, true}, {1, true}, {2, false}, {1, false}}) {
        SCOPED_TRACE(nights);
        constexpr std::size_t evening = 4, takes = 10;
        Shot shot;
        const char* const days[] = {"2027-02-27", "2027-02-28", "2027-03-01"};
        for (std::size_t i = 0; i < nights * takes; ++i) {
            const std::size_t night = i / takes, take = i % takes;
            const bool isMorning = take >= evening;
            const std::string number = std::to_string(10 + i);
            const double at = (isMorning ? 1200 + 600 * double(take - evening) : 79200 + 600 * double(take)) +
                              3 * double(night);
            shot.videos.push_back(clipAt("/K/N" + number + ".mov", at, 12));
            shot.audios.push_back(recordingAt("/T/T" + number + ".wav", at - 4, 22));
            shot.date({&shot.videos.back(), 1}, days[night + (isMorning ? 1 : 0)]);
            shot.date({&shot.audios.back(), 1}, days[night + (isMorning && !isStuck ? 1 : 0)]);
        }
        shot.diagnose();
        if (!isStuck) {
            EXPECT_TRUE(shot.doubts.isEmpty());
            continue;
        }
        EXPECT_EQ(shot.doubts.byGroup.size(), nights * (takes - evening)) << "those after midnight";
        for (const SyncGroup& group : shot.groups) {
            const auto* suggestion = shot.doubts.suggestionFor(group);
            ASSERT_EQ(suggestion != nullptr, shot.doubts.byGroup.contains(group.id));
            if (suggestion == nullptr) continue;
            const auto own = std::ranges::find(shot.audios, suggestion->recordingID, &MediaAsset::id);
            EXPECT_EQ(own->filename.substr(1, 2), group.video.filename.substr(1, 2));
        }
    }
}

TEST(SyncDoubts, LooksAtEachClip) {
    const auto with = [](MediaAsset asset, const auto& change) {
        change(asset);
        return asset;
    };
    const auto rate = [](TimecodeFrameRate own, const char* text = nullptr, const char* flag = "") {
        return [=](MediaAsset& asset) {
            asset.timecodeFrameRate = own;
            if (text != nullptr) asset.ixmlData.emplace().timecodeRate = text;
            if (text != nullptr) asset.ixmlData->timecodeFlag = flag;
        };
    };
    const auto ten = clipAt("/C/A.mov", 36000, 60);
    const auto sound = [](double start, double seconds, const char* name = "/S/T.wav") {
        return recordingAt(name, start, seconds);
    };
    const auto dropped = clipAt("/C/A.mov", 36000, 60, TimecodeFrameRate::fps29_97d);
    struct Case {
        const char* name;
        MediaAsset clip;
        std::vector<MediaAsset> sounds;
        std::set<Kind> kinds;
        MatchRules rules = {};
        TrimMode trim = TrimMode::commonDuration;
    };
    using enum Kind;
    const std::vector<Case> cases{
        {"sound under all of it", ten, {sound(35990, 90)}, {}},
        {"half a second at either end", ten, {sound(36000.4, 59.6)}, {}},
        {"a card that was pulled early", ten, {sound(35990, 40)}, {shortSound, cutByTrim}},
        {"sound behind all that is kept", ten, {sound(36014, 9)}, {shortSound}},
        {"sound of less than a frame", ten, {sound(36000, 0.03)}, {shortSound}},
        {"sound that begins late", ten, {sound(36004, 90)}, {shortSound}},
        {"a gap between two parts",
         ten,
         {sound(35990, 40, "/S/T_1.wav"), sound(36030.3, 40, "/S/T_2.wav")},
         {splitGap}},
        {"a gap of seconds between two parts",
         ten,
         {sound(35990, 30, "/S/T_1.wav"), sound(36024, 50, "/S/T_2.wav")},
         {splitGap}},
        {"parts that adjoin", ten, {sound(35990, 40, "/S/T_1.wav"), sound(36030, 40, "/S/T_2.wav")}, {}},
        {"two recordings", ten, {sound(35990, 90), sound(36050, 90, "/S/U.wav")}, {ambiguous}},
        {"two recorders that ran as long",
         ten,
         {sound(35990, 90), sound(35995, 90, "/R/U.wav")},
         {ambiguous}},
        {"one of them for three quarters", ten, {sound(35990, 90), sound(36015, 90, "/R/U.wav")}, {}},
        {"its own unit's for three quarters",
         clipAt("/U1/A.mov", 36000, 60),
         {sound(35990, 90, "/U2/U.wav"), sound(36015, 90, "/U1/S/T.wav")},
         {ambiguous}},
        {"the same by a piece of the folders' names",
         clipAt("/A_CAM/A.mov", 36000, 60),
         {sound(35990, 90, "/B_SOUND/U.wav"), sound(36015, 90, "/a-sound/T.wav")},
         {ambiguous}},
        {"another unit's for three quarters",
         clipAt("/U1/A.mov", 36000, 60),
         {sound(35990, 90, "/U1/S/T.wav"), sound(36015, 90, "/U2/U.wav")},
         {}},
        {"a recorder that knows no time",
         ten,
         {with(sound(0, 90), [](auto& a) { a.bextTimeReference.reset(); })},
         {noTimecode}},
        {"frame 27 of 25",
         with(ten, [](auto& a) { a.startTimecodeString = "10:00:00:27"; }),
         {sound(35990, 90)},
         {timecodeRate}},
        {"drop frame and non-drop",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "29.97ND"))},
         {}},
        {"drop frame and non-drop by both files",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "30000/1001 NDF"))},
         {dropMix}},
        {"drop frame, and non-drop by the recorder's flag",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97d, "30000/1001", "NDF"))},
         {dropMix}},
        {"drop frame, as the recorder's flag says",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97d, "30000/1001", "DF"))},
         {}},
        {"drop frame and 30 keep to one clock",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps30, "30/1", "NDF"))},
         {}},
        {"30 and a flag for non-drop",
         clipAt("/C/A.mov", 36000, 60, TimecodeFrameRate::fps30),
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97d, "30000/1001", "NDF"))},
         {timecodeRate}},
        {"drop frame and non-drop, cured",
         dropped,
         {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "30000/1001 NDF"))},
         {},
         {.timecodeRate = TimecodeFrameRate::fps29_97d}},
        {"non-drop that was meant to be drop frame",
         clipAt("/C/A.mov", 36036, 20, TimecodeFrameRate::fps29_97),
         {with(sound(35990, 40), rate(TimecodeFrameRate::fps29_97d))},
         {dropMix}},
        {"24 and 23.976",
         clipAt("/C/A.mov", 3600, 60, TimecodeFrameRate::fps24),
         {with(sound(3590, 90), rate(TimecodeFrameRate::fps23_976, "24000/1001"))},
         {timecodeRate}},
        {"24 and 23.976 half a minute after midnight",
         clipAt("/C/A.mov", 30, 60, TimecodeFrameRate::fps24),
         {with(sound(20, 90), rate(TimecodeFrameRate::fps23_976, "24000/1001"))},
         {}},
        {"cut to the sound", ten, {sound(35990, 40)}, {}, {}, TrimMode::overlap},
        {"a gap while a second recorder ran",
         ten,
         {sound(35990, 40, "/S/T_1.wav"), sound(36030.3, 40, "/S/T_2.wav"),
          with(sound(36000.8, 80, "/R/MIX.wav"), [](auto& a) { a.bextOriginator = "two"; })},
         {splitGap, ambiguous}},
        {"a gap on one of two channels",
         ten,
         {sound(35990, 40, "/S/T1-001_1.wav"), sound(35990, 40, "/S/T1-001_2.wav"),
          sound(36030, 40, "/S/T1-002_1.wav"), sound(36030.3, 40, "/S/T1-002_2.wav")},
         {splitGap}},
        {"a part with another name",
         ten,
         {sound(35990, 20, "/S/T_1.wav"), sound(36010, 20, "/S/New.wav"), sound(36030, 50, "/S/T_3.wav")},
         {}},
        {"two takes under one clip",
         ten,
         {sound(35990, 35, "/S/T05.wav"), sound(36035, 40, "/S/T06.wav")},
         {splitGap}},
        {"two takes that say so",
         ten,
         {test::slated(sound(35990, 35, "/S/T_5.wav"), "1", "5"),
          test::slated(sound(36035, 40, "/S/T_6.wav"), "1", "6")},
         {splitGap}},
        {"a clip by itself", ten, {}, {}},
    };
    for (const Case& one : cases) {
        Shot shot{{one.clip}, one.sounds, {}};
        shot.diagnose(one.rules, one.trim);
        std::set<Kind> kinds;
        for (const auto& [id, own] : shot.doubts.byGroup)
            for (const SyncDoubt& doubt : own) {
                kinds.insert(doubt.kind);
                EXPECT_NE(doubt.message.find('\''), std::string::npos) << "names a file: " << doubt.message;
                EXPECT_FALSE(doubt.cure.isEmpty());
            }
        EXPECT_EQ(kinds, one.kinds) << one.name;
    }
    Shot moved{{dropped}, {with(sound(35990, 90), rate(TimecodeFrameRate::fps29_97, "30000/1001 NDF"))}, {}};
    moved.diagnose();
    EXPECT_EQ(moved.count(dropMix), 1);
    moved.groups.update(moved.groups.front().id, [](SyncGroup& own) {
        own.matchStatus = MatchStatus::manual();
        own.manualAudioOffsetSeconds = -36;
    });
    moved.derive();
    EXPECT_EQ(moved.count(dropMix), 0) << "the editor attached and moved it";
    for (const auto& sounds :
         {std::vector{sound(36004, 90)},
          std::vector{sound(35990, 40, "/S/T_1.wav"), sound(36030.3, 40, "/S/T_2.wav")}}) {
        Shot locked{{ten}, sounds, {}};
        locked.locks = "A.mov";
        locked.diagnose();
        EXPECT_TRUE(locked.doubts.isEmpty());
    }
}

TEST(SyncDoubts, AnHourThatComesTwiceNeverMixesSilently) {
    const test::ScopedEnvironment zone("TZ", "UTC");
    struct Case {
        const char* name;
        bool isDated;
        double start, seconds; ///< of the second hour's sound, relative to its clip; 0 seconds: none
        int doubted;
    };
    for (const Case& one : {Case{"both hours alike", false, -3, 20, 8},
                            {"later in its clip", false, 2, 17, 8},
                            {"the same with dates", true, 2, 17, 8},
                            {"earlier", true, -5, 17, 8},
                            {"no sound of the second hour", true, 0, 0, 8}}) {
        Shot shot;
        for (int i = 0; i < 8; ++i) {
            const bool isSecond = i >= 4;
            const double at = 7200 + 307 * (i % 4);
            shot.videos.push_back(clipAt("/CAM/A00" + std::to_string(i) + ".mov", at, 10));
            if (isSecond && one.seconds == 0) continue;
            shot.audios.push_back(recordingAt("/S/T00" + std::to_string(i) + ".wav",
                                              at + (isSecond ? one.start : -3), isSecond ? one.seconds : 20));
        }
        if (one.isDated) shot.date(shot.audios, "2024-10-27");
        shot.diagnose();
        EXPECT_EQ(std::ssize(shot.doubts.byGroup), one.doubted) << one.name;
    }
}

TEST(SyncDoubts, SaysWhichPartOfAClipHasNoSound) {
    Shot shot{{clipAt("/C/A.mov", 36000, 8)}, {recordingAt("/S/T.wav", 35990, 30)}, {}};
    shot.diagnose();
    struct Case {
        double moved;
        const char* message;
        bool canBeTrimmed;
    };
    for (const Case& one : {Case{12, "the first 2.0 s have no sound", true},
                            {77, "lies outside of it: no sound is heard", false},
                            {-40, "lies outside of it: no sound is heard", false}}) {
        shot.groups.update(shot.groups.front().id,
                           [&](SyncGroup& group) { group.manualAudioOffsetSeconds = one.moved; });
        const auto doubts = SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, {}, FileNames()});
        ASSERT_EQ(std::ssize(doubts.byGroup), 1);
        const SyncDoubt& said = doubts.byGroup.begin()->second.front();
        EXPECT_NE(said.message.find(one.message), std::string::npos) << said.message;
        EXPECT_EQ(said.cure.text().find("--set") != std::string::npos, one.canBeTrimmed) << said.cure.text();
    }

    // Parts of a night, with dates that have no time of day.
    Shot night{{clipAt("/C/A.mov", 86385, 30)},
               {recordingAt("/S/T_1.wav", 86380, 25), recordingAt("/S/T_2.wav", 5, 20)},
               {}};
    for (auto* files : {&night.videos, &night.audios}) night.date(*files, "2024-05-17");
    night.date(night.audios, "2024-05-18", 1);
    for (const TrimMode trim : {TrimMode::commonDuration, TrimMode::overlap, TrimMode::videoDuration}) {
        night.diagnose({}, trim);
        EXPECT_TRUE(night.doubts.isEmpty()) << "the second part begins behind midnight";
        EXPECT_EQ(takeOf(night.groups.front(), 2).durationSeconds, 45);
    }
}

TEST(SyncDoubts, HearsSpeechOnAChannelThatIsOff) {
    Shot shot{{clipAt("/C/A.mov", 36000, 60)}, {recordingAt("/S/T.wav", 35990, 90)}, {}};
    shot.diagnose();
    const auto channel = [&](float offLevel, float speech, std::set<int> byHand) -> std::optional<int> {
        shot.groups.update(shot.groups.front().id,
                           [&](SyncGroup& group) { group.manualActiveTracks = byHand; });
        SmartAudioResult result;
        result.bestTrackIndex = 1;
        result.tracks.resize(2);
        result.tracks[0].trackIndex = 1;
        result.tracks[0].averageLevelDB = -40;
        result.tracks[1].trackIndex = 2;
        result.tracks[1].averageLevelDB = offLevel;
        result.tracks[1].speechRatio = speech;
        const SmartAudioResults results{{shot.groups.front().id, result}};
        const auto doubts =
            SyncDoubts::of({shot.groups, shot.audios, {}, TrimMode::noTrim, results, FileNames()});
        return doubts.byGroup.empty() ? std::nullopt : doubts.byGroup.begin()->second.front().channel;
    };
    EXPECT_EQ(channel(-28, 0.3F, {}), 2);
    EXPECT_EQ(channel(-28, 0.3F, {1}), 2);
    EXPECT_EQ(channel(-28.5F, 0.3F, {}), std::nullopt) << "11.5 dB";
    EXPECT_EQ(channel(-28, 0.01F, {}), std::nullopt) << "no speech";
    EXPECT_EQ(channel(-28, 0.3F, {2}), std::nullopt) << "it is on";
}

} // namespace
} // namespace orvane::test::doubts
