#pragma once

#include "OrvaneSyncCore/Services/Stems/AudioStemSeparator.h"
#include "Platform/Models/ModelRuntime.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace orvane {

/// Separates with the model "BanditV2.onnx", which the user puts into the application's data folder. Its
/// input "spectrogram" and its outputs "speech", "music" and "sfx" have the shape 1, 1, 1025, frames, 2; the
/// last axis is real and imaginary part (AudioSTFT). Each call of the model processes one minute; the last
/// one is filled up with silence. One minute is held in memory at a time.
class BanditStemSeparator : public AudioStemSeparator {
  public:
    static constexpr double modelSampleRate = 44100;
    static constexpr std::size_t chunkSamples = 2'646'000; ///< 60 s

    /// `modelPath`: empty for the model of the user's account. `runtimeFolders`: folders that are searched
    /// for ONNX Runtime before those of the system; if empty, the folder of models.
    explicit BanditStemSeparator(std::string modelPath = {}, std::vector<std::string> runtimeFolders = {});
    static std::string installedModelPath();

    /// What is installed on this machine; does not load the model.
    struct Installation {
        std::string modelPath;
        bool hasModel = false;
        std::string runtime; ///< for display; empty if there is none
        std::string problem; ///< what the user must do; empty: nothing
    };
    Installation installation() const;
    /// The runtime that runs the model, for display; empty if there is none.
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
    mutable std::mutex mutex_; ///< protects the next three members
    std::string problem_;
    std::shared_ptr<platform::ModelRuntime> runtime_;
    std::unique_ptr<platform::Model> model_;
};

} // namespace orvane
