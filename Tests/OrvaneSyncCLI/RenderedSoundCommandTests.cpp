#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCLI/RunCommand.h"
#include "OrvaneSyncCore/Models/Settings.h"
#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"
#include "Platform/AudioFile.h"
#include "Support/Test.h"

#include <cmath>
#include <filesystem>

namespace orvane::cli {
namespace {

/// A clip with a recording of two channels; the second has speech for five seconds, then none.
class RenderedSoundCommand : public testing::Test {
  protected:
    RenderedSoundCommand() {
        constexpr std::uint32_t hz = 8000, tenOClock = 36000;
        test::MovieMaker()
            .video({.frames = 250})
            .timecode({.firstFrame = 25 * tenOClock})
            .writeTo(folder_.write("shoot/A001.mov", ""));
        std::vector<float> samples;
        for (std::uint32_t i = 0; i < 10 * hz; ++i) {
            const double time = static_cast<double>(i) / hz;
            const auto hiss = static_cast<float>(0.0005 * std::sin(i * 2.1));
            const bool speaks = time < 5 && std::fmod(time, 1.0) < 0.6;
            samples.push_back(hiss);
            samples.push_back(hiss + static_cast<float>(speaks ? 0.3 * std::sin(1885 * time) : 0));
        }
        test::WaveMaker()
            .format({.channels = 2, .sampleRate = hz, .samples = test::SampleFormat::float32})
            .bext({.date = "2026-11-20", .timeReference = std::uint64_t{tenOClock} * hz})
            .iXML(test::IXMLText{.scene = "12A"}.text())
            .samples(samples)
            .writeTo(folder_.write("shoot/T01.WAV", ""));
    }

    std::string recording() const { return folder_.path("shoot/T01.WAV"); }
    std::string out() const { return folder_.path("out.wav"); }
    Outcome runs(std::vector<std::string> words) const {
        words.insert(words.end(), {"--json", "--quiet"});
        return runWith(std::move(words));
    }
    std::vector<float> rendered(int channels) const {
        const auto file = platform::AudioFile::open(out());
        EXPECT_EQ(file->channelCount(), channels);
        std::vector<float> samples(static_cast<std::size_t>(file->frameCount()));
        float* const into = samples.data();
        EXPECT_EQ(file->read({&into, 1}, samples.size()), samples.size());
        return samples;
    }

    test::TemporaryDirectory folder_, home_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", home_.path().c_str()};
    test::ScopedEnvironment cacheHome_{"XDG_CACHE_HOME", home_.path("cache").c_str()};
};

TEST_F(RenderedSoundCommand, renderWhereTheyAreTold) {
    const Outcome mixdown = runs({"mixdown", recording(), "-o", out()});
    ASSERT_EQ(mixdown.status, 0) << mixdown.err;
    EXPECT_EQ(*mixdown.json().find("durationSeconds")->number(), 10);
    const auto mixed = rendered(2);
    EXPECT_GT(*std::ranges::max_element(mixed), 0.2F) << "the voice is heard";

    ASSERT_EQ(runs({"solo", recording(), "--channel", "1", "-o", out()}).status, 0)
        << "its own output is replaced";
    EXPECT_NEAR(rendered(2)[100], 0.0005 * std::sin(210.0), 1e-7);
    EXPECT_EQ(runs({"solo", recording(), "--channel", "3", "-o", out()}).status, 2);

    ASSERT_EQ(runs({"preview", recording(), "-o", out(), "--voice-isolation", "0.4", "--gain", "-96"}).status,
              0);
    EXPECT_EQ(rendered(1).size(), 80'000U);
    const std::string copy = folder_.path("copy.wav");
    ASSERT_EQ(runs({"preview", recording(), "-o", copy, "--gain", "0"}).status, 0);
    EXPECT_EQ(folder_.read("copy.wav"), folder_.read("shoot/T01.WAV"));
    EXPECT_EQ(runs({"preview", recording(), "-o", out(), "--loudness", "1.5"}).status, 2);
    EXPECT_EQ(runs({"preview", recording(), "-o", out(), "--gain", "-96.5"}).status, 2);

    EXPECT_EQ(runs({"mixdown", recording(), "-o", recording()}).status, 1)
        << "what is read is never replaced";
    EXPECT_EQ(runs({"mixdown", recording(), "-o", folder_.path("x.mov")}).status, 2);
    EXPECT_EQ(runs({"mixdown", recording(), "-o", folder_.path("absent/x.wav")}).status, 1);
    EXPECT_EQ(runs({"mixdown", "--session", "x", "-o", out()}).status, 2);
    EXPECT_EQ(runs({"mixdown", "--session", "x", "--clip", "y", "-o", out()}).status, 1);
}

TEST_F(RenderedSoundCommand, roomToneReachesTheDocumentOnce) {
    const Outcome list = runs({"atmo", folder_.path("shoot"), "--list"});
    ASSERT_EQ(list.status, 0) << list.err;
    ASSERT_EQ(list.json().find("12A")->elements()->size(), 1U);
    const Outcome built = runs({"atmo", folder_.path("shoot"), "--scene", "12A", "-o", folder_.path("tone")});
    ASSERT_EQ(built.status, 0) << built.err;
    EXPECT_TRUE(std::filesystem::exists(folder_.path("tone/12A=Atmo.wav")));
    EXPECT_EQ(runs({"atmo", folder_.path("shoot"), "--scene", "13"}).status, 1);

    const std::string document = folder_.path("out.fcpxml");
    ASSERT_EQ(runs({"sync", folder_.path("shoot"), "-o", document, "--atmo", "--set",
                    std::string(orvane::settings::generateRawMediaEvent.key) + "=false"})
                  .status,
              0);
    const std::string text = folder_.read("out.fcpxml");
    EXPECT_NE(text.find("Orvane%20Tandrel/Atmo/"), std::string::npos);
    EXPECT_NE(text.find("/12A=Atmo.wav"), std::string::npos);
    EXPECT_EQ(text.find("/12A=Atmo.wav"), text.rfind("/12A=Atmo.wav"));
}

TEST_F(RenderedSoundCommand, calibrationAndCachesAnswer) {
    EXPECT_EQ(runs({"calibrate", "show"}).out, "null\n");
    const auto lacksMatrix = [&] {
        return runs({"calibrate", "measure", folder_.path("shoot")})
            .err.starts_with("error: Build the matrix");
    };
    EXPECT_TRUE(lacksMatrix());
    const Outcome built = runs({"calibrate", "build", "--matrix", "coarse"});
    ASSERT_EQ(built.status, 0) << built.err;
    EXPECT_EQ(*built.json().find("clips")->integer(), 27);
    std::filesystem::create_directories(folder_.path("bounced"));
    std::filesystem::copy_file(recording(), folder_.path("bounced/Calib_VI50_L25_U10.wav"));
    EXPECT_EQ(runs({"calibrate", "measure", folder_.path("bounced")})
                  .json()
                  .find("measurements")
                  ->elements()
                  ->size(),
              1U);
    EXPECT_EQ(runs({"calibrate", "show"}).json().find("measurements")->elements()->size(), 1U);
    std::filesystem::remove(SmartAudioCalibration::documentFile().path);
    EXPECT_TRUE(lacksMatrix()) << "its document is not there";

    home_.write("cache/Orvane Tandrel/mixdowns/mixdown_0.wav", "0123456789");
    const Outcome shown = runs({"caches", "show"});
    EXPECT_EQ(*shown.json().find("renderedBytes")->integer(), 10);
    EXPECT_EQ(*shown.json().find("limitGB")->number(), 20);
    EXPECT_GE(*runs({"caches", "clear"}).json().find("removedBytes")->integer(), 10);
    EXPECT_EQ(*runs({"caches"}).json().find("renderedBytes")->integer(), 0);
    EXPECT_EQ(runs({"caches", "burn"}).status, 2);
}

} // namespace
} // namespace orvane::cli
