#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ControllerTest.h"
#include "OrvaneSyncCore/Models/Settings.h"

#include <cmath>
#include <filesystem>

namespace orvane {
namespace {

/// Two clips of scenes 12A and 2A, each with ten seconds of which the last five are quiet.
class AtmoControllerTest : public test::ControllerTest {
  protected:
    AtmoControllerTest() {
        make("A001", "T01", "12A-3", 0);
        make("A002", "T02", "2A", 600);
        make("A003", "T03", "", 1200);
        std::filesystem::remove(folder_.path("shoot/T03.WAV")); // a clip without sound
        scan(folder("shoot"), std::nullopt);
        finish(controller_->atmo().scanAtmoCandidates());
    }

    void make(const std::string& camera, const std::string& sound, const std::string& scene,
              std::uint32_t start) {
        constexpr std::uint32_t hz = 8000, tenOClock = 36000;
        test::MovieMaker()
            .video({.frames = 250})
            .timecode({.firstFrame = 25 * (tenOClock + start)})
            .writeTo(folder_.write("shoot/" + camera + ".mov", ""));
        std::vector<float> samples;
        for (std::uint32_t i = 0; i < 10 * hz; ++i)
            samples.push_back(static_cast<float>((i < 5 * hz ? 0.1 : 0.0005) * std::sin(i * 0.7)));
        test::WaveMaker()
            .format({.sampleRate = hz})
            .bext({.originator = "OrvaneSync", // rendered on an earlier day
                   .date = "2026-11-20",
                   .timeReference = std::uint64_t{tenOClock + start} * hz})
            .iXML(test::IXMLText{.scene = scene}.text())
            .samples(samples)
            .writeTo(folder_.write("shoot/" + sound + ".WAV", ""));
    }

    AtmoResult build(const std::string& scene) {
        const auto result = std::make_shared<AtmoResult>();
        finish(controller_->atmo().buildAtmo(
            {.scene = scene, .candidates = controller_->atmo().candidates()->at(scene)}, result));
        return *result;
    }
};

TEST_F(AtmoControllerTest, aSceneHasOneRoomToneInTheDocument) {
    const auto& candidates = *controller_->atmo().candidates();
    ASSERT_EQ(candidates.size(), 2U);
    ASSERT_EQ(candidates.at("12A").size(), 1U);
    const AtmoResult long12 = build("12A");
    EXPECT_EQ(long12.durationSeconds, 5);
    EXPECT_TRUE(long12.audioURL.path.starts_with(work_.path("Orvane Tandrel/Atmo/")));
    build("2A");
    const AtmoResult again = build("12A");
    EXPECT_EQ(again.audioURL, long12.audioURL);

    const auto& tracks = controller_->work().wildTracks();
    ASSERT_EQ(tracks.size(), 2U) << "that of 12A is no room tone of 2A, and is there once";
    EXPECT_TRUE(tracks[0].isApproved && tracks[1].isApproved);
    EXPECT_EQ(tracks[1].customName, "12A=Atmo");
    EXPECT_FALSE(controller_->atmo().state().isGenerating);
    ExportSettings settings = controller_->exporting().exportSettings({});
    settings.set(settings::generateRawMediaEvent, false); // the event would contain every file's name again
    const auto document = std::make_shared<ExportResult>();
    finish(controller_->exporting().exportInBackground(std::nullopt, settings, document));
    const std::string& text = document->fcpxmlString;
    EXPECT_EQ(text.find("/12A=Atmo.wav"), text.rfind("/12A=Atmo.wav"));
    EXPECT_NE(text.find("/12A=Atmo.wav"), std::string::npos);

    settings_->setOverride(settings::atmoIncludeInExport, false);
    build("12A");
    EXPECT_FALSE(controller_->work().wildTracks().back().isApproved);
}

TEST_F(AtmoControllerTest, aFailureIsToldAndChangesNothing) {
    const auto result = std::make_shared<AtmoResult>();
    const auto failing = [&](AtmoController::Order order) {
        std::string told;
        const auto task = controller_->atmo().buildAtmo(std::move(order), result);
        task.whenDone([&](const std::exception_ptr& raised) {
            try {
                if (raised) std::rethrow_exception(raised);
            } catch (const std::exception& error) {
                told = error.what();
            }
        });
        finish(task);
        return told;
    };
    EXPECT_TRUE(failing({.scene = "12A", .candidates = {}}).starts_with("No quiet segments"));
    folder_.write("out/12A=Atmo.wav", "somebody else's");
    const auto& candidates = controller_->atmo().candidates()->at("12A");
    EXPECT_NE(failing({.scene = "12A", .candidates = candidates, .outputDirectory = folder_.path("out")}),
              "");
    EXPECT_EQ(folder_.read("out/12A=Atmo.wav"), "somebody else's");
    std::filesystem::create_directory(folder_.path("linked"));
    std::filesystem::create_hard_link(folder_.path("shoot/T01.WAV"), folder_.path("linked/12A=Atmo.wav"));
    EXPECT_TRUE(failing({.scene = "12A", .candidates = candidates, .outputDirectory = folder_.path("linked")})
                    .ends_with("which is being read; give the output another name"));
    EXPECT_TRUE(controller_->work().wildTracks().empty());
    EXPECT_FALSE(controller_->atmo().state().isGenerating);
}

} // namespace
} // namespace orvane
