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

/// Looks for the clap of a clapper board: as a loud transient in a recording, and as a picture of a slate,
/// which it then reads. Any thread but the interface thread; several operations of one detector run one after
/// the other. Nothing fails: what cannot be read leaves its fields absent.
class SlateDetector {
  public:
    struct Dependencies {
        /// Null where the file has no picture.
        std::function<std::unique_ptr<platform::FrameReader>(const std::string& path)> openFrames;
        /// Null: no text can be read, so no picture is taken for a slate.
        std::shared_ptr<platform::TextRecognizer> recognizer;
    };
    /// `dependencies` is called once, by the first operation that needs pictures.
    explicit SlateDetector(std::function<Dependencies()> dependencies)
        : makeDependencies_(std::move(dependencies)) {}
    static std::shared_ptr<SlateDetector> ofThisMachine();

    /// Listens to the head of the audio, half a minute, and looks at four pictures a second of the first 10
    /// seconds of the video; where these show no slate, of the last 10. A clap that is heard goes before one
    /// that is seen. `progress` gets the share that is done, 0 to 1, on this thread. `unread`: where it is
    /// given, a file that could not be read, so that what it holds may be missing in the result. Throws
    /// Stopped.
    SlateResult detect(const FileURL& video, const std::optional<ClapDetector::Search>& audio,
                       const std::function<void(double)>& progress = {}, const std::stop_token& stop = {},
                       std::optional<FileURL>* unread = nullptr);

    /// A picture is a slate from above this score on (SlateText::score).
    static constexpr float scoreOfNoSlate = 0.3F;

  private:
    const Dependencies& dependencies();

    std::mutex mutex_;
    std::function<Dependencies()> makeDependencies_;
    std::optional<Dependencies> dependencies_;
};

} // namespace orvane
