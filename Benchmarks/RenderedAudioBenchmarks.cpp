#include "RenderedAudioBenchmarks.h"

#include "Process.h"
#include "Table.h"

#include "OrvaneSyncCore/Services/Atmo/QuietAmbientGenerator.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/SmartAudio/SmartAudioRouter.h"
#include "OrvaneSyncCore/Services/Stems/AudioSTFT.h"
#include "Platform/FFT/RealFFT.h"

#include <algorithm>
#include <chrono>
#include <complex>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

namespace orvane::bench {

namespace {

constexpr int runs = 3;

/// The medians of each work's elapsed time, in milliseconds; the works run in turns.
std::vector<double> medians(const std::vector<std::function<void()>>& works) {
    std::vector<std::vector<double>> times(works.size());
    for (int run = 0; run < runs; ++run)
        for (std::size_t i = 0; i < works.size(); ++i) {
            const auto start = std::chrono::steady_clock::now();
            works[i]();
            const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
            times[i].push_back(took.count());
        }
    std::vector<double> result;
    for (auto& own : times) {
        std::ranges::sort(own);
        result.push_back(own[own.size() / 2]);
    }
    return result;
}

/// A different track every two seconds.
std::vector<BlockDecision> changingBlocks(int channels) {
    constexpr int count = 900;
    std::vector<BlockDecision> blocks(count);
    for (int i = 0; i < count; ++i) {
        BlockDecision& block = blocks[static_cast<std::size_t>(i)];
        block.startSeconds = 2 * i;
        block.endSeconds = 2 * (i + 1);
        block.activeTrack = 1 + i % channels;
    }
    return blocks;
}

void printMixdown(const std::string& halfHour, const std::string& folder) {
    const std::string rendered = folder + "/mixdown.wav", copy = folder + "/copy.wav";
    const auto mix = [&] {
        const auto file = platform::AudioFile::open(halfHour);
        platform::AudioFileWriter out(rendered, SmartAudioMixdownRenderer::stereo(*file),
                                      renderingBroadcast());
        SmartAudioMixdownRenderer::mixDown(*file, changingBlocks(file->channelCount()), 0.25, out);
        out.finish();
    };
    mix();
    const std::vector<std::string> cat{"sh", "-c",
                                       "cat '" + halfHour + "' >/dev/null && cat '" + rendered + "' >'" +
                                           copy + "' && sync '" + copy + "'"};
    runProcess(cat);
    const auto took = medians({mix, [&] { runProcess(cat); }});
    printRatio("mixdown of 30 minutes of 8 channels", took[0], took[1], "cat of both files, synced", 2);
    std::filesystem::remove(copy);
}

void printPreview(const std::string& self, const std::string& program, const std::string& folder) {
    const std::string input = folder + "/mixdown.wav", output = folder + "/preview.wav";
    const std::vector<std::string> ours{
        program, "preview",    input,  "-o",           output, "--quiet", "--voice-isolation",
        "0.4",   "--loudness", "0.25", "--uniformity", "0.25", "--gain",  "3"};
    constexpr double mostMegabytes = 64, megabyte = 1048576;
    const double peak = peakBytesOf(self, ours) / megabyte;
    printRow("peak memory of a preview of 30 minutes", text("%.0f MB", peak), "", "", "< 64 MB",
             peak > 0 && peak < mostMegabytes);
    if (!hasProgram("ffmpeg")) return printFailure("preview of 30 minutes", "ffmpeg");
    const std::string filters = "pan=mono|c0=0.5*c0+0.5*c1,highpass=f=96,treble=g=1.2:f=3000,"
                                "acompressor=threshold=-15dB:ratio=2.4:attack=9:release=160,alimiter";
    const std::vector<std::string> theirs{"ffmpeg",
                                          "-v",
                                          "error",
                                          "-y",
                                          "-i",
                                          input,
                                          "-af",
                                          filters,
                                          "-c:a",
                                          "pcm_f32le",
                                          folder + "/ffmpeg.wav"};
    const ProcessCost own = medianRun(ours, runs), other = medianRun(theirs, runs);
    if (!own.succeeded || !other.succeeded) return printFailure("preview of 30 minutes", "ffmpeg");
    printRatio("preview of 30 minutes, time of a core", own.coreSeconds * 1000, other.coreSeconds * 1000,
               "ffmpeg", 4);
    for (const char* made : {"/preview.wav", "/ffmpeg.wav", "/mixdown.wav"})
        std::filesystem::remove(folder + made);
}

void printAtmo(const std::string& halfHour) {
    const auto took = medians(
        {[&] { benchmark::DoNotOptimize(QuietAmbientGenerator().scanCandidates({{halfHour}})); },
         [&] {
             const auto file = platform::AudioFile::open(halfHour);
             benchmark::DoNotOptimize(SmartAudioRouter::listen(
                 *file, file->channelCount(), std::max(std::thread::hardware_concurrency(), 1U), {}, {}, {}));
         }});
    printRatio("room tone scan of 30 minutes of 8 channels", took[0], took[1], "the analysis", 1.5);
}

void printSTFT() {
    constexpr std::size_t samples = 60 * 44100;
    std::vector<float> sound(samples);
    for (std::size_t i = 0; i < samples; ++i) sound[i] = static_cast<float>(i % 1000) / 1000;
    AudioSTFT stft;
    platform::RealFFT bare(AudioSTFT::points);
    const auto took =
        medians({[&] {
                     const auto spectrogram = stft.transform(sound);
                     benchmark::DoNotOptimize(
                         stft.inverse(spectrogram.real, spectrogram.imag, spectrogram.nTime, samples));
                 },
                 [&] {
                     std::vector<std::complex<float>> spectrum(bare.bins());
                     std::vector<float> frame(AudioSTFT::points);
                     for (std::size_t t = 0; t < samples / AudioSTFT::hop + 1; ++t) {
                         const std::size_t at = std::min(t * AudioSTFT::hop, samples - AudioSTFT::points);
                         bare.forward(std::span(sound).subspan(at, AudioSTFT::points), spectrum);
                         bare.inverse(spectrum, frame);
                         benchmark::DoNotOptimize(frame.data());
                     }
                 }});
    printRatio("STFT of 60 s forward and back", took[0], took[1], "the bare transforms", 3);
}

} // namespace

void printRenderedAudioRows(const std::string& self, const std::string& program, const std::string& halfHour,
                            const std::string& folder) {
    printMixdown(halfHour, folder);
    printPreview(self, program, folder);
    printAtmo(halfHour);
    printSTFT();
}

} // namespace orvane::bench
