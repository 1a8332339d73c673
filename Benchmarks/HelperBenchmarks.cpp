#include "HelperBenchmarks.h"

#include "Process.h"
#include "Sound.h"

#include "Platform/AudioFile.h"
#include "Platform/Files.h"
#include "Platform/MediaLibrary/LibraryReaders.h"

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

namespace orvane::bench {

namespace {

using platform::AudioFile;
using Open = std::unique_ptr<AudioFile> (*)(const std::string& path);

struct Kind {
    const char* name;
    const char* work;
    std::vector<std::string> making; ///< options of ffmpeg
    Open withoutHelper;
};

const std::vector<Kind>& kinds() {
    static const std::vector<Kind> all{
        {"aiff", "decode 2 minutes of 8 channels of AIFF", {"-c:a", "pcm_s24be"}, platform::openWithSndfile},
        {"m4a", "decode 2 minutes of AAC", {"-ac", "2", "-c:a", "aac"}, platform::openWithLibav}};
    return all;
}

void readThrough(benchmark::State& state, const std::string& path, Open open) {
    constexpr std::size_t block = 16384; // frames, as in an analysis
    std::int64_t frames = 0;
    for ([[maybe_unused]] auto _ : state) {
        const auto file = open(path);
        if (!file) return state.SkipWithError("it cannot be opened");
        std::vector<std::vector<float>> samples(static_cast<std::size_t>(file->channelCount()),
                                                std::vector<float>(block));
        std::vector<float*> channels;
        for (auto& channel : samples) channels.push_back(channel.data());
        for (std::size_t got = 1; got > 0; frames += static_cast<std::int64_t>(got))
            got = file->read(channels, block);
    }
    if (frames == 0) state.SkipWithError("it has no sound");
}

} // namespace

void registerHelperBenchmarks(const std::string& folder) {
    if (!hasProgram("ffmpeg")) return;
    const std::string recording = folder + "/2-minutes.wav";
    constexpr std::uint32_t sampleRate = 48000;
    makeRecording(recording, 2, sampleRate);
    for (const Kind& kind : kinds()) {
        const std::string path = folder + "/2-minutes." + kind.name;
        std::vector<std::string> words{"ffmpeg", "-nostdin", "-v", "error", "-y", "-i", recording};
        words.insert(words.end(), kind.making.begin(), kind.making.end());
        words.push_back(path);
        if (!platform::files::exists(path) && !runProcess(words).succeeded) continue;
        const auto add = [&](const char* how, Open open) {
            benchmark::RegisterBenchmark(
                (std::string(kind.name) + how).c_str(),
                [path, open](benchmark::State& state) { readThrough(state, path, open); })
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        };
        add("InHelper", [](const std::string& file) { return AudioFile::open(file); });
        add("InProcess", kind.withoutHelper);
    }
}

void printHelperRows(const Medians& results) {
    constexpr double most = 2;
    for (const Kind& kind : kinds()) {
        const auto ours = results.milliseconds.find(std::string(kind.name) + "InHelper");
        const auto other = results.milliseconds.find(std::string(kind.name) + "InProcess");
        if (ours == results.milliseconds.end() || other == results.milliseconds.end())
            printFailure(kind.work, "in this process");
        else
            printRatio(kind.work, ours->second, other->second, "in this process", most);
    }
}

} // namespace orvane::bench
