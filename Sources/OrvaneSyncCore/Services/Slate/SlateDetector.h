#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/SlateResult.h"
#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"
#include "Platform/Playback/FrameReader.h"
#include "Platform/TextRecognizer.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

namespace orvane {

/// Searches for the clap of a clapper board: a loud transient in the recording, and a picture that shows a
/// slate, whose text is then read. Any thread but the interface thread; operations of one detector run one
/// after the other. Never fails: what cannot be read leaves its fields absent.
class SlateDetector {
  public:
    struct Dependencies {
        /// Null if the file has no picture.
        std::function<std::unique_ptr<platform::FrameReader>(const std::string& path)> openFrames;
        /// Null: no text can be read, so no slate is found.
        std::shared_ptr<platform::TextRecognizer> recognizer;
    };
    /// `dependencies` is called once, by the first operation that needs pictures.
    explicit SlateDetector(std::function<Dependencies()> dependencies)
        : makeDependencies_(std::move(dependencies)) {}
    static std::shared_ptr<SlateDetector> ofThisMachine();

    /// Searches the first half minute of the audio, and four pictures a second in the first 10 seconds of the
    /// video; if these show no slate, in the last 10 seconds. A clap that is heard takes precedence over one
    /// that is seen. `progress` gets the finished share, 0 to 1, on this thread. `unread`: if not null, is
    /// set to a file that could not be read, so that results may be missing. Throws Stopped.
    SlateResult detect(const FileURL& video, const std::optional<ClapDetector::Search>& audio,
                       const std::function<void(double)>& progress = {}, const std::stop_token& stop = {},
                       std::optional<FileURL>* unread = nullptr);

    /// A picture shows a slate if its score (SlateText::score) is above this one.
    static constexpr float scoreOfNoSlate = 0.3F;

  private:
    const Dependencies& dependencies();

    std::mutex mutex_;
    std::function<Dependencies()> makeDependencies_;
    std::optional<Dependencies> dependencies_;
};

} // namespace orvane
