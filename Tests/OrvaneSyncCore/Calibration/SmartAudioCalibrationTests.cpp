#include "OrvaneSyncCore/Services/Calibration/SmartAudioCalibration.h"

#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncCore/Services/Calibration/CalibrationSource.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioPredictor.h"
#include "OrvaneSyncCore/Services/Takes/ReadFailed.h"
#include "Platform/MediaInspector.h"
#include "Platform/SincResampler.h"
#include "Support/BadDisk.h"
#include "Support/Samples.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Test.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numbers>

namespace orvane {
namespace {

namespace calibration = SmartAudioCalibration;

TEST(CalibrationMatrix, isNamedAndReadFromFileNames) {
    EXPECT_EQ(permsOf(CalibrationMatrix::coarse).size(), 27U);
    const auto sweet = permsOf(CalibrationMatrix::sweetSpot);
    ASSERT_EQ(sweet.size(), 49U);
    EXPECT_EQ(sweet[15], (CalibrationPerm{50, 25, 5})) << "uniformity innermost";
    for (const CalibrationPerm& perm : sweet)
        EXPECT_EQ(parseCalibrationPerm(calibrationClipName(perm)), perm);
    EXPECT_EQ(parseCalibrationPerm("Calib_VI50_L25_U10_dialogue-1"), (CalibrationPerm{50, 25, 10}));
    EXPECT_EQ(parseCalibrationPerm("VI1_VI2_L3__U4"), (CalibrationPerm{2, 3, 4})) << "the later one counts";
    for (const char* other :
         {"Calib_VI50_L25", "Loud", "VI50_L25_U", "VI50_L-5_U1", "VI50_L99999999999_U1", ""})
        EXPECT_FALSE(parseCalibrationPerm(other)) << other;
}

class CalibrationTest : public testing::Test {
  protected:
    /// A tone whose level changes every second; `levels` are peaks in dBFS.
    FileURL recording(const std::string& name, const std::vector<double>& levels,
                      std::uint32_t rate = 48000) {
        std::vector<float> samples;
        for (const double level : levels)
            for (std::uint32_t i = 0; i < rate; ++i)
                samples.push_back(
                    static_cast<float>(std::pow(10, level / 20) * std::sin(2 * std::numbers::pi * 1000 *
                                                                           static_cast<double>(i) / rate)));
        test::WaveMaker()
            .format({.sampleRate = rate, .samples = test::SampleFormat::float32})
            .samples(samples)
            .writeTo(folder_.write(name, ""));
        return {folder_.path(name)};
    }

    test::TemporaryDirectory folder_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", folder_.path().c_str()};
};

TEST_F(CalibrationTest, theSourceIsTheLoudestMinute) {
    std::vector<double> levels(90, -30);
    std::fill(levels.begin() + 18, levels.begin() + 78, -12);
    for (const std::uint32_t rate : {48000U, 96000U}) {
        const auto window = extractWindow(recording("long.wav", levels, rate));
        ASSERT_TRUE(window);
        ASSERT_EQ(window->size(), calibrationFrames);
        const auto peak = [&](std::size_t second) {
            return 20 * std::log10(*std::max_element(
                            window->begin() + static_cast<std::ptrdiff_t>(second * 48000 + 500),
                            window->begin() + static_cast<std::ptrdiff_t>(second * 48000 + 47500)));
        };
        EXPECT_NEAR(peak(0), -12, 0.05) << rate;
        EXPECT_NEAR(peak(59), -12, 0.05) << rate;
    }
    EXPECT_FALSE(extractWindow(recording("short.wav", std::vector<double>(59, -12))));
    EXPECT_FALSE(extractWindow({folder_.path("absent.wav")}));
    // On a failing disk a recording is not reported as too short, and its beginning alone is not measured.
    for (const bool isSource : {true, false}) {
        const FileURL bad = recording("Calib_VI50_L25_U10.wav", std::vector<double>(isSource ? 61 : 2, -12));
        const test::BadDisk disk(bad.path, 3);
        EXPECT_THROW(isSource ? (void)extractWindow(bad)
                              : (void)calibration::measure({folder_.path()}, {}, {}),
                     ReadFailed);
    }

    const auto noise = syntheticCalibrationSource(1);
    EXPECT_EQ(noise.size(), calibrationFrames);
    for (const std::size_t second : {0U, 31U}) {
        const auto from = noise.begin() + static_cast<std::ptrdiff_t>(second * 48000);
        EXPECT_TRUE(std::all_of(from + 28800, from + 48000, [](float one) { return one == 0; })) << "a pause";
        EXPECT_GT(*std::max_element(from + 2400, from + 26400), 0.1F) << "a burst";
    }
}

TEST(Resampling, keepsTonesAndFramesInPlace) {
    std::vector<float> tone(96000);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = static_cast<float>(std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(i) / 96000)) +
                  static_cast<float>(std::sin(2 * std::numbers::pi * 30000 * static_cast<double>(i) / 96000));
    const auto out = platform::resampled(tone, 96000, 44100, 44100);
    for (std::size_t i = 1000; i < 43000; ++i)
        ASSERT_NEAR(out[i], std::sin(2 * std::numbers::pi * 1000 * static_cast<double>(i) / 44100), 2e-4)
            << "what the lower rate cannot hold is gone";
}

TEST_F(CalibrationTest, theDocumentHasAClipForEachCombinationAndThePicturePlays) {
    const auto source = calibration::generateSource(calibration::sourceFile(), std::nullopt, 7);
    EXPECT_EQ(source.durationSeconds, 60);
    const auto again = calibration::sourceInfoOf(source.url);
    ASSERT_TRUE(again);
    EXPECT_NEAR(again->rmsDBFS, source.rmsDBFS, 1e-6);
    EXPECT_EQ(again->integratedLUFS, source.integratedLUFS);
    const auto picture = platform::inspectMedia(source.videoURL.path);
    ASSERT_TRUE(picture && picture->videoTracks.size() == 1);
    EXPECT_EQ(picture->durationSeconds, 60);
    EXPECT_EQ(picture->videoTracks[0].width, 1920);
    EXPECT_EQ(picture->videoTracks[0].codecFourCC, "avc1");
    if (std::system("ffmpeg -version >/dev/null 2>&1") == 0) {
        // No sample of any picture is brighter than black.
        const std::string check =
            "ffmpeg -nostdin -v info -xerror -i '" + source.videoURL.path +
            "' -nostats -vf blackdetect=pic_th=1:pix_th=0 -f null - 2>&1 | "
            "grep -qE 'black_start:0 black_end:(59.9583|60) '"; // start or end of the last of 1440 pictures
        EXPECT_EQ(std::system(check.c_str()), 0) << "not black, or damaged";
    }

    const std::vector<CalibrationPerm> perms{{50, 25, 10}, {50, 0, 50}, {0, 0, 0}};
    std::string document = calibration::buildFCPXML(source.url, source.videoURL, 60, 48000, perms, "Event");
    const auto count = [&](const std::string& text) {
        std::size_t found = 0;
        for (std::size_t at = document.find(text); at != std::string::npos; at = document.find(text, at + 1))
            ++found;
        return found;
    };
    EXPECT_EQ(count("<sync-clip "), 3U);
    EXPECT_EQ(count("<adjust-loudness "), 1U);
    EXPECT_EQ(count("<adjust-voiceIsolation "), 2U);
    EXPECT_EQ(count("role=\"dialogue.Calibration\""), 6U);
    EXPECT_EQ(count("name=\"Calib_VI0_L0_U0\""), 3U);
    EXPECT_EQ(count("duration=\"60s\""), 3U * 4 + 2);
    const auto definition = test::samplesFolder().parent_path() / "dtd" / "FCPXMLv1_14.dtd";
    if (!std::filesystem::exists(definition) || std::system("xmllint --version >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "needs the format's type definition and xmllint";
    const std::string standalone = " standalone=\"yes\"";
    document.erase(document.find(standalone), standalone.size());
    const std::string command = "xmllint --noout --dtdvalid '" + definition.string() + "' '" +
                                folder_.write("document.fcpxml", document) + "'";
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST_F(CalibrationTest, measuresBouncedFilesAgainstTheSource) {
    const calibration::SourceLevels source{-12, -15.01, -15};
    const std::vector<double> louder(3, -9);
    recording("bounced/Calib_VI50_L25_U10.wav", louder);
    recording("bounced/Calib_VI0_L0_U0_x.AIFF", std::vector<double>(3, -12)); // read from its name
    recording("bounced/Calib_VI0_L0_U0.mp3", louder);
    recording("bounced/Loud.wav", louder);
    folder_.write("bounced/VI1_L1_U1.wav", "no sound");
    const auto result = calibration::measure({folder_.path("bounced")}, source, Date());
    ASSERT_EQ(result.measurements.size(), 2U);
    EXPECT_EQ(calibration::unreadFiles({folder_.path("bounced")}, result),
              std::vector{std::string("VI1_L1_U1.wav")});
    const CalibrationMeasurement& loud = result.measurements[1];
    EXPECT_EQ(loud.perm, (CalibrationPerm{50, 25, 10}));
    EXPECT_EQ(loud.bouncedFilename, "Calib_VI50_L25_U10.wav");
    EXPECT_NEAR(loud.peakDeltaDB, 3, 0.01);
    EXPECT_NEAR(loud.rmsDeltaDB, 3, 0.01);
    EXPECT_NEAR(loud.lufsDeltaDB, 3, 0.2);
    EXPECT_NEAR(result.measurements[0].peakDeltaDB, 0, 0.01);
    EXPECT_TRUE(calibration::measure({folder_.path("absent")}, source, Date()).measurements.empty());

    const auto single = calibration::measureSingle(recording("all.wav", {-12, -12, -60, -60, -3}), 2,
                                                   permsOf(CalibrationMatrix::coarse), source, Date());
    ASSERT_EQ(single.measurements.size(), 3U);
    EXPECT_NEAR(single.measurements[1].peakDeltaDB, -48, 0.01);
    EXPECT_NEAR(single.measurements[1].rmsDeltaDB, -48, 0.01) << "nothing of the stretch before it";
    EXPECT_EQ(single.measurements[1].bouncedFilename, "all.wav[2/27]");

    EXPECT_FALSE(calibration::loadSaved());
    calibration::save(result);
    EXPECT_EQ(calibration::loadSaved(), result);
    EXPECT_NEAR(SmartAudioPredictor::loadingFromDisk().lookupLUFSDelta({50, 25, 10, ""}), loud.lufsDeltaDB,
                1e-9);
}

} // namespace
} // namespace orvane
