#pragma once

#include "MediaFactory/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

enum class SampleFormat { pcm8, pcm16, pcm24, pcm32, float32 };

struct WaveFormat {
    int channels = 1;
    std::uint32_t sampleRate = 48000;
    SampleFormat samples = SampleFormat::pcm24;
    bool extensible = false;
};

/// The broadcast extension (EBU Tech 3285). Cut or padded to `bytes`.
struct BroadcastExtension {
    std::string originator = "Recorder";
    std::string date = "2024-03-09";
    std::string time = "10:00:00";
    std::uint64_t timeReference = 0; ///< samples since midnight
    std::string description = {};
    std::size_t bytes = 602;
};

/// Makes a RIFF/WAVE file, chunk by chunk in the order of the calls. Call `format` first, as the data
/// depends on it:
///     WaveMaker().format({.channels = 2}).bext({.timeReference = 172'800'000}).silence(48000).bytes()
class WaveMaker {
  public:
    WaveMaker& format(const WaveFormat& format);
    WaveMaker& bext(const BroadcastExtension& extension);
    WaveMaker& iXML(std::string_view document);
    /// Any chunk, with the pad byte that an odd length needs.
    WaveMaker& chunk(std::string_view id, std::string_view body);
    /// A chunk that states a wrong length; no pad byte.
    WaveMaker& chunkClaiming(std::string_view id, std::uint32_t claimed, std::string_view body);
    /// The data chunk: frames of interleaved samples, full scale 1.0.
    WaveMaker& samples(const std::vector<float>& interleaved);
    WaveMaker& silence(std::uint64_t frames);
    /// A data chunk of silence that states another length.
    WaveMaker& silenceClaiming(std::uint32_t claimed, std::uint64_t frames);
    /// RF64 with the real sizes in a "ds64" chunk before the others; every data chunk states 0xFFFFFFFF.
    WaveMaker& rf64();

    std::string bytes() const { return sparse().str(); }
    /// Throws std::runtime_error.
    void writeTo(const std::string& path) const { sparse().writeTo(path); }
    SparseBytes sparse() const;

  private:
    WaveMaker& data(const SparseBytes& body, std::optional<std::uint32_t> claimed);
    std::uint64_t blockAlign() const;

    WaveFormat format_;
    bool rf64_ = false;
    std::uint64_t dataBytes_ = 0;
    SparseBytes chunks_;
};

/// An iXML document with the usual values of a recorder. An empty text leaves its element out.
struct IXMLText {
    std::string scene = {}, take = {}, tape = {}, note = {}, project = {}, wildTrack = {};
    std::string timecodeRate = "25/1";
    std::vector<std::string> tracks = {}; ///< names, channel and interleave index counting from 1
    std::string text() const;
};

} // namespace orvane::test
