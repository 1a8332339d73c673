#pragma once

#include "MediaFactory/MovieMaker.h"
#include "MediaFactory/WaveMaker.h"
#include "OrvaneSyncApp/ControllerTest.h"

#include <cmath>
#include <set>
#include <string>
#include <vector>

namespace orvane::test {

/// A shoot of four clips. In every recording there is speech on track 2 only.
class SmartAudioDriverTest : public ControllerTest {
  protected:
    using Tracks = std::set<int>;
    static constexpr std::uint32_t sampleRate = 8000, tenOClock = 36000, seconds = 12;

    SmartAudioDriverTest() {
        makeClip("A001", 0);
        makeClip("B001", 1);
        makeClip("C_MOS", 600);
        makeClip("D001", 1200);
        makeRecording("T01.WAV", 0, 6);        // overlaps A001 and B001
        makeRecording("T02.WAV", 1200, 3);     // covers D001
        makeRecording("T03.WAV", 1200 + 7, 3); // covers too little of D001 to count
        scan(folder("shoot"), std::nullopt);
    }

    void makeClip(const std::string& name, std::uint32_t start) {
        MovieMaker()
            .video({.frames = 25 * 10})
            .timecode({.firstFrame = 25 * (tenOClock + start)})
            .writeTo(folder_.write("shoot/" + name + ".mov", ""));
    }

    void makeRecording(const std::string& name, std::uint32_t start, int channels) {
        std::vector<int> tracks;
        for (int track = 1; track <= channels; ++track) tracks.push_back(track);
        writeRecording(name, std::uint64_t{tenOClock + start} * sampleRate, tracks, 0, seconds * sampleRate);
    }

    /// A recording with speech on some tracks, from one frame to another.
    void writeRecording(const std::string& name, std::uint64_t start, const std::vector<int>& tracks,
                        std::uint32_t first, std::uint32_t end) {
        const std::vector<std::string> all{"Boom", "Lav Anna", "Lav Ben"};
        std::vector<std::string> names;
        for (const int track : tracks)
            if (track <= std::ssize(all)) names.push_back(all[static_cast<std::size_t>(track - 1)]);
        std::vector<float> samples;
        for (std::uint32_t i = first; i < end; ++i) {
            const double time = static_cast<double>(i) / sampleRate;
            const auto hiss = static_cast<float>(0.0005 * std::sin(i * 2.1));
            const double burst = std::fmod(time, 1.0) < 0.6 ? 0.3 : 0;
            for (const int track : tracks)
                samples.push_back(track == 2 ? hiss + static_cast<float>(burst * std::sin(1885 * time))
                                             : hiss);
        }
        WaveMaker()
            .format({.channels = static_cast<int>(tracks.size()),
                     .sampleRate = sampleRate,
                     .samples = SampleFormat::pcm16})
            .bext({.date = "2026-11-20", .timeReference = start + first})
            .iXML(IXMLText{.tracks = names}.text())
            .samples(samples)
            .writeTo(folder_.write("shoot/" + name, ""));
    }

    void analyseAll(bool force = false, SmartAudioMode mode = SmartAudioMode::standard) {
        finish(controller_->smartAudio().runSmartAudioAnalysis(mode, force));
    }
    void analyse(const UUID& id, bool force = false) {
        finish(controller_->smartAudio().runSmartAudioForGroup(id, force));
    }
    /// Waits until the analyses that a change started have ended.
    void settle() {
        ASSERT_TRUE(mainThread_->waitUntil([&] { return !controller_->smartAudio().state().isAnalyzing; }));
    }

    const SmartAudioResult* result(std::string_view name) const {
        const auto& results = controller_->smartAudio().state().results;
        const auto found = results.find(clip(name)->id);
        return found == results.end() ? nullptr : &*found->second;
    }
    Tracks blockTracks(std::string_view name) const {
        Tracks tracks;
        for (const BlockDecision& block : result(name)->blocks) tracks.insert(block.activeTrack);
        return tracks;
    }
    Tracks active(std::string_view name) const { return clip(name)->manualActiveTracks; }
};

} // namespace orvane::test
