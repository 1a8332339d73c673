#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"

#include "OrvaneSyncCore/Services/Slate/SlateText.h"
#include "OrvaneSyncCore/Services/Takes/TakeAudio.h"
#include "OrvaneSyncCore/Services/Waveform/ClapDetector.h"
#include "Platform/Files.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <utility>
#include <vector>

namespace orvane {

namespace {

using platform::MediaTime;
using platform::Picture;
using platform::PictureSize;
using platform::RecognitionLevel;

constexpr MediaTime windowSeconds{10, 1};
constexpr MediaTime step{1, 4};
constexpr MediaTime tolerance{1, 24};
constexpr int mostSamples = 100; ///< for one window
/// Pixels. In pictures of the first size a slate that is held up for the camera can be recognised; in those
/// of the second size it can be read.
constexpr PictureSize sizeToFind{1280, 1280}, sizeToRead{2560, 2560};

std::vector<std::string> linesIn(platform::TextRecognizer& recognizer, const Picture& picture,
                                 RecognitionLevel level, const std::stop_token& stop) {
    std::vector<std::string> lines;
    for (platform::TextLine& line : recognizer.lines(picture, level, stop))
        lines.push_back(std::move(line.text));
    return lines;
}

struct FrameResult {
    Picture picture;
    float score = 0;
};

/// Searches the pictures of one video.
struct FrameSearch {
    platform::FrameReader& frames;
    platform::TextRecognizer& recognizer;
    const std::function<void(double)>& progress;
    const std::stop_token& stop;

    /// Of equal scores the earlier picture is taken; 1 is the highest score, so the search ends there.
    /// `from`, `to`: the share of the whole progress at start and end.
    std::optional<FrameResult> scanWindow(MediaTime start, MediaTime end, double from, double to) const {
        std::optional<FrameResult> best;
        std::optional<std::int64_t> last;
        for (int i = 0; i < mostSamples; ++i) {
            const MediaTime time = start + step * i;
            if (time >= end) break;
            if (progress) progress(from + (to - from) * (time - start).seconds() / (end - start).seconds());
            platform::throwIfStopped(stop);
            auto picture = frames.pictureAt(time, tolerance, sizeToFind, stop);
            if (!picture || picture->number == last) continue;
            last = picture->number;
            const float score = SlateText::score(linesIn(recognizer, *picture, RecognitionLevel::fast, stop));
            if (score > SlateDetector::scoreOfNoSlate && (!best || score > best->score))
                best = FrameResult{*std::move(picture), score};
            if (best && best->score >= 1) break;
        }
        return best;
    }

    std::optional<FrameResult> detectSlateFrame() const {
        const MediaTime duration = frames.facts().duration;
        const bool hasTail = duration > windowSeconds;
        const double half = hasTail ? 0.5 : 1;
        auto found = scanWindow({0, 1}, std::min(duration, windowSeconds), 0, half);
        if (!found && hasTail) found = scanWindow(duration - windowSeconds, duration, half, 1);
        return found;
    }

    SlateText::OCRResult performSlateOCR(const Picture& found) const {
        const auto whole = frames.pictureAt(found.time, {0, 1}, sizeToRead, stop);
        return SlateText::read(linesIn(recognizer, whole ? *whole : found, RecognitionLevel::accurate, stop));
    }
};

std::optional<double> headClap(const ClapDetector::Search& audio, const std::stop_token& stop) {
    try {
        return ClapDetector::detectAudioTransient(audio, ClapDetector::Part::head, stop);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// A file of the recording that does not exist.
std::optional<FileURL> missingFile(const ClapDetector::Search& audio) {
    for (const TakeSound::File& file : audio.sound.files)
        if (!platform::files::exists(file.url.path)) return file.url;
    return std::nullopt;
}

/// Returns false if the video could not be read.
bool lookForSlate(SlateResult& result, const SlateDetector::Dependencies& dependencies, const FileURL& video,
                  const std::function<void(double)>& progress, const std::stop_token& stop) {
    if (!dependencies.recognizer || !dependencies.openFrames) return true;
    const auto frames = dependencies.openFrames(video.path);
    if (!frames) return platform::files::exists(video.path); // the file may have no picture
    const FrameSearch search{*frames, *dependencies.recognizer, progress, stop};
    const auto found = search.detectSlateFrame();
    if (!found) return true;
    const double time = found->picture.time.seconds();
    if (!result.clapPointSeconds) {
        result.clapPointSeconds = time;
        result.clapMethod = ClapMethod::visualSlate;
    }
    result.slateFrameTime = time;
    SlateText::OCRResult text = search.performSlateOCR(found->picture);
    result.ocrScene = std::move(text.scene);
    result.ocrTake = std::move(text.take);
    result.ocrRoll = std::move(text.roll);
    return true;
}

} // namespace

const SlateDetector::Dependencies& SlateDetector::dependencies() {
    if (!dependencies_) dependencies_ = makeDependencies_();
    return *dependencies_;
}

SlateResult SlateDetector::detect(const FileURL& video, const std::optional<ClapDetector::Search>& audio,
                                  const std::function<void(double)>& progress, const std::stop_token& stop,
                                  std::optional<FileURL>* unread) {
    const std::lock_guard oneAtATime(mutex_);
    SlateResult result;
    if (audio) result.clapPointSeconds = headClap(*audio, stop);
    if (result.clapPointSeconds) result.clapMethod = ClapMethod::audioTransient;
    platform::throwIfStopped(stop);
    std::optional<FileURL> missing =
        audio && !result.clapPointSeconds ? missingFile(*audio) : std::optional<FileURL>();
    try {
        if (!lookForSlate(result, dependencies(), video, progress, stop)) missing = video;
    } catch (const std::exception&) {
        missing = video; // results found before are kept
    }
    if (unread != nullptr) *unread = std::move(missing);
    return result;
}

} // namespace orvane
