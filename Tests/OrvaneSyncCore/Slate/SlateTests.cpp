#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"
#include "OrvaneSyncCore/Services/Slate/SlateProposal.h"
#include "OrvaneSyncCore/Services/Slate/SlateText.h"
#include "Platform/Stop.h"
#include "Support/Assets.h"
#include "Support/SlateFakes.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

namespace orvane {
namespace {

using Lines = std::vector<std::string>;

TEST(SlateText, scoresLines) {
    const Lines ten(10, "x");
    EXPECT_EQ(SlateText::score(Lines{}), 0);
    EXPECT_EQ(SlateText::score(ten), 0.5F);
    EXPECT_EQ(SlateText::score(Lines{"a", "b", "c"}), SlateDetector::scoreOfNoSlate); // not above it
    EXPECT_FLOAT_EQ(SlateText::score(Lines{"scene", "12a"}), 0.45F);
    EXPECT_FLOAT_EQ(SlateText::score(Lines{"Scene SCENE", "12AB", "1 2"}), 0.45F); // once; no bare number
    EXPECT_FLOAT_EQ(SlateText::score(Lines{"Obscene Regie"}), 0.4F); // found within longer words
    EXPECT_EQ(SlateText::score(Lines{"scene take roll prod date director camera", "1"}), 1.0F);
}

TEST(SlateText, readsSceneTakeAndRoll) {
    struct Case {
        Lines lines;
        SlateText::OCRResult result;
    };
    const Case cases[] = {
        {{"Scene: 12A"}, {"12A", {}, {}}},
        {{"Scene 12 A", "TAKE  3"}, {"12 A", "3", {}}},
        {{"SZENE 12A", "Aufnahme: 4", "Kamera B"}, {"12A", "4", "B"}},
        {{" Scene\t", " 12A "}, {"12A", {}, {}}},
        {{"Scene:", "12A"}, {}},
        {{"scene"}, {}},
        {{"T 3", "Camera A"}, {{}, "3", "A"}},
        {{"Tape 4", "Cam: B"}, {{}, {}, "B"}},
        {{"Take 1", "Take: 2", "Take"}, {{}, "2", {}}}, // the last line with a value
        {{"Roll: A: 1", "Take :  "}, {{}, {}, "A: 1"}},
    };
    for (const Case& one : cases)
        EXPECT_EQ(SlateText::read(one.lines), one.result) << testing::PrintToString(one.lines);
}

/// The text of the pictures of a video at 24 a second, by their numbers.
class SlateDetectorTest : public testing::Test {
  protected:
    SlateResult detect(double seconds, std::map<std::int64_t, Lines> texts,
                       const std::optional<FileURL>& audio = std::nullopt,
                       std::int64_t readable = std::numeric_limits<std::int64_t>::max()) {
        video_ = std::make_shared<test::SlateVideo>();
        video_->frames = static_cast<std::int64_t>(seconds * 24);
        video_->texts = std::move(texts);
        video_->readable = readable;
        return test::slateDetector(video_)->detect(FileURL{"/a.mov"}, audio, {}, {}, &unread_);
    }
    FileURL clap(double at) {
        std::vector<float> samples(std::size_t{40} * 8000, 0.001F);
        samples[static_cast<std::size_t>(at * 8000)] = 0.9F;
        return {
            folder_.write("a.wav", test::WaveMaker().format({.sampleRate = 8000}).samples(samples).bytes())};
    }

    test::TemporaryDirectory folder_;
    std::shared_ptr<test::SlateVideo> video_;
    std::optional<FileURL> unread_;
};

TEST_F(SlateDetectorTest, findsTheBestPicture) {
    const Lines slate{"Scene 12A", "Take 3", "Roll A1"};
    SlateResult found = detect(12, {{48, {"Scene"}}, {54, slate}, {60, slate}});
    EXPECT_EQ(found, (SlateResult{2.25, ClapMethod::visualSlate, 2.25, "12A", "3", "A1"}));
    EXPECT_EQ(unread_, std::nullopt);
    EXPECT_EQ(video_->found, 40); // the tail is not searched, and one picture is read closely
    EXPECT_EQ(video_->read, 1);
    // A slate at the tail: the last 10 s of 12 are searched.
    found = detect(12, {{24 * 11, slate}});
    EXPECT_EQ(found.slateFrameTime, 11);
    EXPECT_EQ(video_->found, 80);
    EXPECT_EQ(detect(10, {{30, {"a", "b", "c"}}}), SlateResult{});
    EXPECT_EQ(video_->found, 40);
    EXPECT_EQ(detect(0, {}), SlateResult{});
    EXPECT_EQ(detect(12, {{6, slate}}, std::nullopt, 24).slateFrameTime, 0.25) << "damaged behind it";
    // No score is higher than 1, so the search ends.
    const Lines best{"scene 1", "take 2", "roll 3", "prod", "date", "director", "camera", "7"};
    EXPECT_EQ(detect(8, {{12, best}}).slateFrameTime, 0.5);
    EXPECT_EQ(video_->found, 3);
}

TEST_F(SlateDetectorTest, aClapInTheSoundHasPriority) {
    const Lines slate{"Scene 1", "Take 2"};
    EXPECT_EQ(detect(5, {{24, slate}}, clap(3)),
              (SlateResult{3, ClapMethod::audioTransient, 1, "1", "2", {}}));
    EXPECT_EQ(detect(5, {{24, slate}}, FileURL{"/nowhere.wav"}).clapMethod, ClapMethod::visualSlate);
    EXPECT_EQ(unread_, FileURL{"/nowhere.wav"});
    // If no text can be read, only the clap is found; the tail of the recording is not searched.
    SlateDetector blind([] { return SlateDetector::Dependencies{}; });
    EXPECT_EQ(blind.detect(FileURL{"/a.mov"}, clap(3)), (SlateResult{3, ClapMethod::audioTransient}));
    EXPECT_EQ(blind.detect(FileURL{"/a.mov"}, clap(35)), SlateResult{});
    std::stop_source stopped;
    stopped.request_stop();
    EXPECT_THROW(blind.detect(FileURL{"/a.mov"}, std::nullopt, {}, stopped.get_token()), platform::Stopped);
}

TEST(SlateProposal, offersOnlyMissingValues) {
    using Source = GroupNaming::Source;
    struct Case {
        const char* name;
        std::optional<std::string> recorderScene, recorderTake, reportScene, manualName;
        Source source;
        std::optional<SlateProposal> offered;
    };
    const Case cases[] = {
        {"the recorder said nothing", {}, {}, {}, {}, Source::sceneTake, SlateProposal{"12A", "03", "12A-3"}},
        {"names are those of the camera's files",
         {},
         {},
         {},
         {},
         Source::video,
         SlateProposal{"12A", "03", {}}},
        {"the editor has named it", {}, {}, {}, "Wide", Source::sceneTake, SlateProposal{"12A", "03", {}}},
        {"no take", "012a", " ", {}, {}, Source::sceneTake, SlateProposal{{}, "03", "012a-3"}},
        {"of another scene", "14", {}, {}, {}, Source::sceneTake, {}},
        {"all is known", "12A", "4", {}, {}, Source::sceneTake, {}},
        {"a report knows the scene", {}, {}, "12A", {}, Source::video, SlateProposal{{}, "03", {}}},
    };
    for (const Case& one : cases) {
        SyncGroup group = test::clip(test::video("A.mov"),
                                     test::slated(test::audio("T.wav"), one.recorderScene, one.recorderTake));
        if (one.reportScene) group.aleMetadata = {{"Scene", *one.reportScene}};
        group.manualClipName = one.manualName;
        SlateResult slate;
        slate.ocrScene = "12A";
        slate.ocrTake = "03";
        const auto offered = slateProposal(group, slate, {one.source, {}, "-"});
        EXPECT_EQ(offered, one.offered) << one.name;
        if (!offered) continue;
        accept(*offered, group);
        EXPECT_EQ(slateProposal(group, slate, {one.source, {}, "-"}), std::nullopt) << one.name;
    }
}

TEST(SlateProposal, takesNoLabelForAValue) {
    SlateResult slate;
    slate.ocrScene = "Take 3";
    slate.ocrTake = "3";
    const SyncGroup group = test::clip(test::video("A.mov"), test::audio("T.wav"));
    EXPECT_EQ(slateProposal(group, slate, {}), (SlateProposal{{}, "3", {}}));
}

} // namespace
} // namespace orvane
