#pragma once

#include "OrvaneSyncCore/Services/Stems/AudioStemSeparator.h"
#include "Platform/Models/ModelRuntime.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvane {

/// Separates with the model "BanditV2.onnx", which the user puts into the application's data folder: input
/// "spectrogram" and outputs "speech", "music" and "sfx" of shape 1, 1, 1025, frames, 2, the last axis being
/// real and imaginary part (AudioSTFT). Every call of the model gets a minute; what a recording lacks of its
/// last one is silence. A minute is held in memory at a time.
class BanditStemSeparator : public AudioStemSeparator {
  public:
    static constexpr double modelSampleRate = 44100;
    static constexpr std::size_t chunkSamples = 2'646'000; ///< 60 s

    /// `modelPath`: empty for that of the user account. `runtimeFolders`: where ONNX Runtime is looked for
    /// before the system's folders; the folder of models where none are given.
    explicit BanditStemSeparator(std::string modelPath = {}, std::vector<std::string> runtimeFolders = {});
    static std::string installedModelPath();

    /// What of it this machine has, without loading the model.
    struct Installation {
        std::string modelPath;
        bool hasModel = false;
        std::string runtime; ///< for people; empty without one
        std::string problem; ///< what to do; empty: nothing
    };
    Installation installation() const;
    /// Which runtime runs the model, for people; empty without one.
    std::string runtimeText() const { return installation().runtime; }

    bool isAvailable() const override { return isReady_; }
    std::string whyUnavailable() const override;
    void prepare() override;
    std::optional<SeparatedStems> separate(const TakeSound& audio, const std::string& folder,
                                           const std::stop_token& stop = {}) override;

  private:
    const std::string modelPath_;
    const std::vector<std::string> runtimeFolders_;
    std::atomic<bool> isReady_ = false;
    mutable std::mutex mutex_; ///< over the next three
    std::string problem_;
    std::shared_ptr<platform::ModelRuntime> runtime_;
    std::unique_ptr<platform::Model> model_;
};

} // namespace orvane
