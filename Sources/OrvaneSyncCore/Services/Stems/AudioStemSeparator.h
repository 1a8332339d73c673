#pragma once

#include "OrvaneSyncCore/Services/RenderedAudio/RenderResult.h"
#include "OrvaneSyncCore/Services/SmartAudio/StemMeasurement.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"

#include <optional>
#include <stop_token>
#include <string>

namespace orvane {

/// Splits a recording into dialogue, music and effects. Any thread that may wait; `separate` one at a time.
class AudioStemSeparator {
  public:
    virtual ~AudioStemSeparator() = default;
    /// Whether `separate` can work; does not wait for a separation in progress.
    virtual bool isAvailable() const = 0;
    /// Makes the separator available if possible; needed once only.
    virtual void prepare() {}
    /// For display; empty if it is available.
    virtual std::string whyUnavailable() const = 0;
    /// Writes the three stems into the folder, as files with one channel at 44,100 Hz. Absent if the
    /// recording cannot be read. Throws FileError, platform::ModelError and Stopped.
    virtual std::optional<SeparatedStems> separate(const TakeSound& audio, const std::string& folder,
                                                   const std::stop_token& stop = {}) = 0;
};

/// Used when no stems are wanted; never available.
class StubStemSeparator : public AudioStemSeparator {
  public:
    bool isAvailable() const override { return false; }
    std::string whyUnavailable() const override { return "switched off in the settings"; }
    std::optional<SeparatedStems> separate(const TakeSound& /*audio*/, const std::string& /*folder*/,
                                           const std::stop_token& /*stop*/) override {
        return std::nullopt;
    }
};

/// The names of the three files in a folder of stems.
inline constexpr const char* dialogueStemName = "dialogue.wav";
inline constexpr const char* musicStemName = "music.wav";
inline constexpr const char* effectsStemName = "effects.wav";

} // namespace orvane
