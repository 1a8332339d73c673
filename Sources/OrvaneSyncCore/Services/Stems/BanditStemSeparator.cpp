#include "OrvaneSyncCore/Services/Stems/BanditStemSeparator.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "OrvaneSyncCore/Services/RenderedAudio/RenderedAudioStore.h"
#include "OrvaneSyncCore/Services/RenderedAudio/SmartAudioMixdownRenderer.h"
#include "OrvaneSyncCore/Services/Stems/AudioSTFT.h"
#include "Platform/AudioFileWriter.h"
#include "Platform/Files.h"
#include "Platform/SincResampler.h"
#include "Platform/Stop.h"
#include "Platform/VectorOps.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orvane {

namespace {

using platform::ModelTensor;

const std::array<std::string, 3> outputNames{"speech", "music", "sfx"};
constexpr std::array<const char*, 3> fileNames{dialogueStemName, musicStemName, effectsStemName};

/// Reads the mean of a recording's channels at the model's rate, chunk by chunk.
class ChunkReader {
  public:
    explicit ChunkReader(platform::AudioFile& file)
        : file_(file), step_(file.sampleRate() / BanditStemSeparator::modelSampleRate),
          total_(static_cast<std::size_t>(std::ceil(static_cast<double>(file.frameCount()) / step_))) {}

    std::size_t total() const { return total_; }
    /// `count` samples from position `at`.
    std::vector<float> read(std::size_t at, std::size_t count, const std::stop_token& stop) {
        // More than the filter of the resampling needs on either side.
        const double margin = 64 * std::max(step_, 1.0);
        const double start = static_cast<double>(at) * step_;
        const auto first = static_cast<std::int64_t>(std::max(0.0, std::floor(start - margin)));
        const auto end =
            static_cast<std::int64_t>(std::ceil(start + static_cast<double>(count) * step_ + margin));
        const std::vector<float> source = mono(first, std::min(end, file_.frameCount()), stop);
        return platform::resampled(source, file_.sampleRate(), BanditStemSeparator::modelSampleRate, count,
                                   start - static_cast<double>(first));
    }

  private:
    std::vector<float> mono(std::int64_t first, std::int64_t end, const std::stop_token& stop) {
        constexpr std::size_t pieceSamples = std::size_t{1} << 18U;
        const auto channels = static_cast<std::size_t>(file_.channelCount());
        const std::size_t pieceFrames = std::max<std::size_t>(pieceSamples / channels, 1);
        std::vector<float> result(static_cast<std::size_t>(std::max<std::int64_t>(end - first, 0)), 0.0F);
        if (!file_.seek(first)) return result;
        std::vector<std::vector<float>> room(channels, std::vector<float>(pieceFrames));
        std::vector<float*> into;
        for (auto& channel : room) into.push_back(channel.data());
        for (std::size_t at = 0; at < result.size();) {
            platform::throwIfStopped(stop);
            const std::size_t wanted = std::min(pieceFrames, result.size() - at);
            const std::size_t got = std::min(file_.read(into, wanted), wanted);
            if (got == 0) break;
            for (float* channel : into) {
                platform::vector::silenceNonFinite({channel, got});
                for (std::size_t i = 0; i < got; ++i)
                    result[at + i] += channel[i] / static_cast<float>(channels);
            }
            at += got;
        }
        return result;
    }

    platform::AudioFile& file_;
    double step_; ///< frames of the recording for each sample
    std::size_t total_;
};

ModelTensor tensorOf(const AudioSTFT::Spectrogram& spectrogram) {
    ModelTensor tensor{
        {1, 1, static_cast<std::int64_t>(AudioSTFT::bins), static_cast<std::int64_t>(spectrogram.nTime), 2},
        std::vector<float>(2 * spectrogram.real.size())};
    for (std::size_t i = 0; i < spectrogram.real.size(); ++i) {
        tensor.values[2 * i] = spectrogram.real[i];
        tensor.values[2 * i + 1] = spectrogram.imag[i];
    }
    return tensor;
}

AudioSTFT::Spectrogram spectrogramOf(const ModelTensor& tensor, std::size_t nTime) {
    AudioSTFT::Spectrogram spectrogram;
    spectrogram.nTime = nTime;
    const std::size_t count = AudioSTFT::bins * nTime;
    if (tensor.values.size() != 2 * count)
        throw platform::ModelError("an output of the model has another shape than its input");
    spectrogram.real.resize(count);
    spectrogram.imag.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        spectrogram.real[i] = tensor.values[2 * i];
        spectrogram.imag[i] = tensor.values[2 * i + 1];
    }
    platform::vector::silenceNonFinite(spectrogram.real);
    platform::vector::silenceNonFinite(spectrogram.imag);
    return spectrogram;
}

} // namespace

BanditStemSeparator::BanditStemSeparator(std::string modelPath, std::vector<std::string> runtimeFolders)
    : modelPath_(modelPath.empty() ? installedModelPath() : std::move(modelPath)),
      runtimeFolders_(runtimeFolders.empty()
                          ? std::vector<std::string>{AppStorageHelper::modelStorageDirectory()}
                          : std::move(runtimeFolders)) {}

std::string BanditStemSeparator::installedModelPath() {
    return AppStorageHelper::applicationSupportDirectory() + "/BanditV2.onnx";
}

std::string BanditStemSeparator::whyUnavailable() const {
    if (isReady_) return ""; // need not wait for a separation
    const std::lock_guard lock(mutex_);
    return problem_;
}

BanditStemSeparator::Installation BanditStemSeparator::installation() const {
    Installation found{modelPath_, platform::files::exists(modelPath_), "", ""};
    const auto runtime = platform::ModelRuntime::find(runtimeFolders_);
    if (runtime) found.runtime = "ONNX Runtime " + runtime->version() + " (" + runtime->path() + ")";
    if (!found.hasModel)
        found.problem = "BanditV2.onnx not installed: put it into " + platform::files::folderOf(modelPath_);
    else if (!runtime)
        found.problem = "ONNX Runtime (libonnxruntime.so) is neither in " + runtimeFolders_.front() +
                        " nor among the system's libraries";
    return found;
}

void BanditStemSeparator::prepare() {
    if (isReady_) return; // need not wait for a separation
    const std::lock_guard lock(mutex_);
    if (isReady_) return;
    problem_ = installation().problem;
    if (!problem_.empty()) return;
    try {
        runtime_ = platform::ModelRuntime::find(runtimeFolders_);
        model_ = runtime_->load(modelPath_);
        isReady_ = true;
    } catch (const platform::ModelError& error) {
        problem_ = modelPath_ + " can't be loaded: " + error.what();
    }
}

std::optional<SeparatedStems> BanditStemSeparator::separate(const TakeSound& audio, const std::string& folder,
                                                            const std::stop_token& stop) {
    prepare();
    const std::lock_guard lock(mutex_);
    if (!model_) return std::nullopt;
    const OpenTake take = openTake(audio);
    if (!take || !canBeRendered(*take.audio)) return std::nullopt;
    ChunkReader reader(*take.audio);
    std::vector<platform::AudioFileWriter> writers;
    for (const char* name : fileNames)
        writers.emplace_back(folder + "/" + name,
                             platform::AudioFileWriter::Format{.sampleRate = modelSampleRate, .channels = 1},
                             renderingBroadcast());
    AudioSTFT stft;
    for (std::size_t at = 0; at < reader.total(); at += chunkSamples) {
        const std::size_t count = std::min(chunkSamples, reader.total() - at);
        std::vector<float> chunk = reader.read(at, count, stop);
        chunk.resize(chunkSamples, 0.0F);
        const auto spectrogram = stft.transform(chunk);
        const auto outputs = model_->run("spectrogram", tensorOf(spectrogram), outputNames, stop);
        for (std::size_t i = 0; i < outputs.size(); ++i) {
            const auto separated = spectrogramOf(outputs[i], spectrogram.nTime);
            const auto samples = stft.inverse(separated.real, separated.imag, separated.nTime, count);
            const float* const only = samples.data();
            writers[i].write(std::span(&only, 1), samples.size());
        }
    }
    take.throwIfReadFailed();
    for (auto& writer : writers) writer.finish();
    const auto file = [&](std::size_t i) { return FileURL{folder + "/" + fileNames[i]}; };
    return SeparatedStems{file(0), file(1), file(2), modelSampleRate,
                          static_cast<double>(reader.total()) / modelSampleRate};
}

} // namespace orvane
