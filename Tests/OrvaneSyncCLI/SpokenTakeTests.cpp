#include "OrvaneSyncCLI/RunCommand.h"

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "Platform/AudioFile.h"
#include "Support/Test.h"

namespace orvane::cli {
namespace {

using platform::JSON;

constexpr std::size_t sampleRate = 22050; // the rate of the synthetic voices
constexpr std::size_t turnSeconds = 12, turns = 3, takeSeconds = turnSeconds * turns;
constexpr std::uint32_t tenOClock = 36000;

using Sound = std::vector<double>;

double linear(double decibels) { return std::pow(10, decibels / 20); }

/// A voice that speaks the sentence; full scale is 1.0.
Sound spoken(const std::string& folder, const std::string& voice, const std::string& sentence) {
    const std::string path = folder + "/" + voice.substr(voice.find('+') + 1) + ".wav";
    const std::string command = "espeak-ng -v " + voice + " -w '" + path + "' '" + sentence + "'";
    if (std::system(command.c_str()) != 0) throw std::runtime_error("espeak-ng is not installed");
    const auto file = platform::AudioFile::open(path);
    if (!file || file->sampleRate() != sampleRate)
        throw std::runtime_error("espeak-ng speaks at another rate");
    std::vector<float> samples(static_cast<std::size_t>(file->frameCount()));
    std::array<float*, 1> channels{samples.data()};
    samples.resize(file->read(channels, samples.size()));
    return {samples.begin(), samples.end()};
}

/// The voice of one person over a whole take, with an RMS of 0 dBFS during speech. The person repeats the
/// sentence in every second turn, from turn number `first` on.
Sound person(const Sound& sentence, std::size_t first) {
    double energy = 0;
    for (const double sample : sentence) energy += sample * sample;
    const double gain = 1 / std::sqrt(energy / static_cast<double>(sentence.size()));
    Sound sound(takeSeconds * sampleRate);
    for (std::size_t turn = first; turn < turns; turn += 2) {
        const std::size_t end = (turn + 1) * turnSeconds * sampleRate;
        for (std::size_t at = turn * turnSeconds * sampleRate; at + sentence.size() < end;
             at += sentence.size())
            for (std::size_t i = 0; i < sentence.size(); ++i) sound[at + i] += gain * sentence[i];
    }
    return sound;
}

/// The level of each person and of the room in a microphone, dBFS. A person who is not near arrives 9 ms
/// later.
struct Microphone {
    const char* name;
    double anna, ben, room;
};

class SpokenTakeTest : public testing::Test {
  protected:
    SpokenTakeTest()
        : anna_(person(spoken(folder_.path(), "en+f3", "We should leave before the rain comes."), 0)),
          ben_(person(spoken(folder_.path(), "en+m3", "Then take the long road and tell nobody."), 1)) {}

    void makeTake(int number, const std::vector<Microphone>& microphones) {
        const std::uint32_t start = tenOClock + 600 * static_cast<std::uint32_t>(number);
        const std::string name = std::to_string(number);
        test::MovieMaker()
            .video({.frames = 25 * 30})
            .timecode({.firstFrame = 25 * (start + 2)})
            .writeTo(folder_.write("shoot/A00" + name + "C001_261120_R1AB.mov", ""));
        std::mt19937 random(1); // one noise signal for all: only the voices differ
        std::normal_distribution<double> noise(0, 1);
        constexpr std::size_t delay = sampleRate * 9 / 1000;
        const auto late = [&](const Sound& sound, std::size_t i) { return i < delay ? 0 : sound[i - delay]; };
        std::vector<float> interleaved;
        for (std::size_t i = 0; i < takeSeconds * sampleRate; ++i)
            for (const Microphone& one : microphones)
                interleaved.push_back(
                    static_cast<float>(linear(one.anna) * (one.anna < one.ben ? late(anna_, i) : anna_[i]) +
                                       linear(one.ben) * (one.ben < one.anna ? late(ben_, i) : ben_[i]) +
                                       linear(one.room) * noise(random)));
        test::IXMLText ixml{.scene = "12", .take = name};
        for (const Microphone& one : microphones) ixml.tracks.emplace_back(one.name);
        test::WaveMaker()
            .format({.channels = static_cast<int>(microphones.size()), .sampleRate = sampleRate})
            .bext({.date = "2026-11-20", .timeReference = std::uint64_t{start} * sampleRate})
            .iXML(ixml.text())
            .samples(interleaved)
            .writeTo(folder_.write("shoot/T0" + name + ".WAV", ""));
    }

    /// The synchronized clips in the document of `sync`, each as text.
    std::vector<std::string> clips(std::vector<std::string> options) {
        options.insert(options.begin(), {"sync", folder_.path("shoot"), "-o", folder_.path("out.fcpxml")});
        outcome_ = runWith(options);
        EXPECT_EQ(outcome_.status, done) << outcome_.err;
        const std::string document = folder_.read("out.fcpxml");
        std::vector<std::string> pieces;
        std::size_t at = document.find("<sync-clip");
        while (at != std::string::npos) {
            const std::size_t end = document.find("</sync-clip>", at);
            pieces.push_back(document.substr(at, end - at));
            at = document.find("<sync-clip", end);
        }
        return pieces;
    }

    static bool isActive(const std::string& clip, const std::string& name) {
        const std::string source = "<audio-role-source role=\"dialogue." + name + "\"";
        const std::size_t at = clip.find(source);
        EXPECT_NE(at, std::string::npos) << name;
        return !clip.substr(at + source.size()).starts_with(" active=\"0\"");
    }
    static std::set<std::string> activeNames(const std::string& clip) {
        std::set<std::string> names;
        for (const char* name : {"Mix", "Boom", "Lav Anna", "Lav Ben"})
            if (isActive(clip, name)) names.insert(name);
        return names;
    }

    /// The tracks that are open three seconds after the start of each turn and three before its end.
    std::vector<int> heard(int number) {
        const JSON result =
            runWith({"analyze", folder_.path("shoot/T0" + std::to_string(number) + ".WAV"), "--json"}).json();
        std::vector<int> tracks;
        for (std::size_t turn = 0; turn < turns; ++turn)
            for (const double within : {3.0, turnSeconds - 3.0}) {
                const double time = static_cast<double>(turn * turnSeconds) + within;
                for (const JSON& block : *result.find("blocks")->elements())
                    if (*block.find("startSeconds")->number() <= time &&
                        time < *block.find("endSeconds")->number())
                        tracks.push_back(static_cast<int>(*block.find("activeTrack")->integer()));
            }
        return tracks;
    }

    test::TemporaryDirectory folder_, work_;
    test::ScopedEnvironment dataHome_{"XDG_DATA_HOME", work_.path().c_str()};
    Outcome outcome_;
    Sound anna_, ben_;
};

TEST_F(SpokenTakeTest, theDocumentOpensTheMicrophonesOfWhoSpeaks) {
    // With a mix that was recorded low and a boom far away, the lavs are chosen, in spite of their bleed.
    makeTake(1, {{"Mix", -40, -40, -66},
                 {"Boom", -37, -37, -62},
                 {"Lav Anna", -18, -42, -70},
                 {"Lav Ben", -42, -18, -70}});
    // A good mix, steadier than all other tracks, is open throughout.
    makeTake(2, {{"Mix", -20, -20, -55},
                 {"Boom", -24, -34, -62},
                 {"Lav Anna", -18, -42, -70},
                 {"Lav Ben", -42, -18, -70}});
    EXPECT_EQ(heard(1), (std::vector{3, 3, 4, 4, 3, 3}));
    EXPECT_EQ(heard(2), std::vector(6, 1));

    using Names = std::set<std::string>;
    const Names lavs{"Lav Anna", "Lav Ben"}, all{"Mix", "Boom", "Lav Anna", "Lav Ben"};
    const std::string report = "Orvane Tandrel/diagnostics/orvane_routing_debug.txt";
    // `loudness`: of the tracks with speech; empty: no effect
    const auto check = [&](const std::vector<std::string>& options, const Names& first, const Names& second,
                           const std::string& loudness) {
        SCOPED_TRACE(options.empty() ? "" : options.back());
        work_.write(report, "");
        const auto found = clips(options);
        ASSERT_EQ(found.size(), 2U);
        EXPECT_EQ(activeNames(found[0]), first);
        EXPECT_EQ(activeNames(found[1]), second);
        const std::string effect = "<adjust-loudness " + loudness;
        EXPECT_EQ(found[0].find(effect) == std::string::npos, loudness.empty());
        // Each recording is analysed once, and the report says so if one exists already.
        const std::string text = work_.read(report);
        std::size_t count = 0;
        for (std::size_t at = text.find("Take-default: T"); at != std::string::npos;
             at = text.find("Take-default: T", at + 1))
            ++count;
        EXPECT_EQ(count, loudness.empty() ? 0U : 2U) << text;
        const bool saysSo =
            outcome_.out.find("Smart Audio: 2 clips heard, 3 of 8 channels chosen.") != std::string::npos;
        EXPECT_EQ(saysSo, !loudness.empty()) << outcome_.out;
    };
    check({}, lavs, {"Mix"}, "amount=\"30\"");
    check({"--set", "smartAudioMode=studio"}, lavs, {"Mix"}, "amount=\"50\"");
    check({"--set", "smartAudioMode=studio", "--smart-audio", "Cinematic"}, lavs, {"Mix"}, "amount=\"60\"");
    check({"--set", "smartAudioMode=custom", "--set", "smartAudio.loudness=0.42"}, lavs, {"Mix"},
          "amount=\"42\"");
    check({"--set", "smartAudioMode=off"}, all, all, "");
    check({"--set", "smartAudioMode=studio", "--no-smart-audio"}, all, all, "");
    check({"--smart-audio", "off"}, all, all, "");
}

TEST_F(SpokenTakeTest, saysWhatSmartAudioDidNotHear) {
    const auto outcomes = [&] {
        const std::string shoot = folder_.path("shoot");
        const std::vector<std::string> sync{"sync", shoot, "-o", folder_.path("out.fcpxml"), "--no-cache"};
        auto inJSON = sync;
        inJSON.emplace_back("--json");
        return std::tuple(runWith(sync),
                          runWith({"scan", shoot, "--no-cache", "--set", "smartAudioMode=standard"}),
                          *runWith(inJSON).json().find("smartAudio"));
    };
    const auto check = [&](const char* name, const std::vector<Microphone>& microphones,
                           const std::function<void(std::string & wave)>& harm, const char* warning,
                           const char* count) {
        SCOPED_TRACE(name);
        makeTake(1, microphones);
        if (harm) {
            std::string wave = folder_.read("shoot/T01.WAV");
            harm(wave);
            folder_.write("shoot/T01.WAV", wave);
        }
        const auto [sync, scan, inJSON] = outcomes();
        EXPECT_EQ(*inJSON.find("mode")->string(), "standard");
        EXPECT_EQ(inJSON.find("clipsHeard")->integer(), count[0] - '0');
        const auto& problems = *inJSON.find("problems")->elements();
        ASSERT_EQ(problems.size(), *warning == '\0' ? 0U : 1U);
        for (const JSON& problem : problems)
            EXPECT_NE(problem.string()->find(warning), std::string::npos) << *problem.string();
        for (const Outcome& outcome : {sync, scan}) {
            EXPECT_EQ(outcome.status, done);
            EXPECT_NE(outcome.out.find(count), std::string::npos) << outcome.out;
            if (*warning == '\0')
                EXPECT_EQ(outcome.err, "");
            else
                EXPECT_NE(outcome.err.find(warning), std::string::npos) << outcome.err;
        }
    };
    check("none", {{"Boom", -18, -18, -62}, {"TCM", -40, -40, -66}}, nullptr, "", "1 clip heard, 1 of 2");
    check("only timecode is steady", {{"Boom", -60, -60, -66}, {"LTC", -20, -20, -22}}, nullptr,
          "of T01.WAV only channel 2 is switched on, by its name timecode", "1 clip heard, 1 of 2");
    check(
        "a card that was pulled", {{"Boom", -18, -18, -62}, {"Lav", -40, -40, -66}},
        [](std::string& wave) { wave.resize(wave.size() / 2); },
        "T01.WAV ends early: ", "1 clip heard, 1 of 2");
    check(
        "a format that nothing decodes", {{"Boom", -18, -18, -62}, {"Lav", -40, -40, -66}},
        [](std::string& wave) { wave.replace(wave.find("fmt ") + 8, 2, "\x00\x20", 2); },
        "Smart Audio can't read the sound of T01.WAV; only its channel 1 stays switched on",
        "0 clips heard, 0 of 0 channels chosen; 1 recording can't be read");
}

TEST_F(SpokenTakeTest, saysWhereARecordingIsTooLongToBeHeardWhole) {
    constexpr std::uint32_t slow = 1000;
    for (const auto& [seconds, isWhole] : {std::pair(2500U, true), std::pair(2502U, false)}) {
        makeTake(1, {{"Boom", -18, -18, -62}});
        test::WaveMaker()
            .format({.channels = 1, .sampleRate = slow, .samples = test::SampleFormat::pcm16})
            .bext({.date = "2026-11-20", .timeReference = std::uint64_t{tenOClock + 600} * slow})
            .samples(std::vector<float>(std::size_t{seconds} * slow, 0.1F))
            .writeTo(folder_.path("shoot/T01.WAV"));
        const Outcome outcome =
            runWith({"sync", folder_.path("shoot"), "-o", folder_.path("out.fcpxml"), "--no-cache"});
        const std::string warning = "analyzed only the first 41:40 of the 41:42 of T01.WAV";
        EXPECT_EQ(outcome.err.find(warning) == std::string::npos, isWhole) << outcome.err << outcome.out;
    }
}

} // namespace
} // namespace orvane::cli
