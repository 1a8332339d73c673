#pragma once

#include "OrvaneSyncCore/Services/Slate/SlateDetector.h"

#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvane::test {

/// A video of 24 pictures a second: the text in each picture, and how often text was looked for.
struct SlateVideo {
    std::int64_t frames = 0; ///< 0: it cannot be opened
    std::map<std::int64_t, std::vector<std::string>> texts;
    std::int64_t readable = std::numeric_limits<std::int64_t>::max(); ///< pictures from there on are damaged
    int found = 0; ///< pictures in which text was looked for
    int read = 0;  ///< pictures that were read closely
};

class SlateVideoFrames : public platform::FrameReader {
  public:
    explicit SlateVideoFrames(const SlateVideo& video) : readable_(video.readable) {
        facts_.duration = {video.frames, 24};
    }
    const platform::VideoFacts& facts() const override { return facts_; }
    std::optional<platform::Picture> pictureAt(platform::MediaTime time, platform::MediaTime /*tolerance*/,
                                               platform::PictureSize /*limit*/,
                                               const std::stop_token& /*stop*/) override {
        const std::int64_t number = time.value * 24 / time.scale;
        if (number >= readable_) return std::nullopt;
        platform::Picture picture;
        picture.time = {number, 24};
        picture.number = number;
        return picture;
    }

  private:
    platform::VideoFacts facts_;
    std::int64_t readable_;
};

class SlateVideoRecognizer : public platform::TextRecognizer {
  public:
    explicit SlateVideoRecognizer(std::shared_ptr<SlateVideo> video) : video_(std::move(video)) {}
    std::vector<platform::TextLine> lines(const platform::Picture& picture, platform::RecognitionLevel level,
                                          const std::stop_token& /*stop*/) override {
        ++(level == platform::RecognitionLevel::fast ? video_->found : video_->read);
        std::vector<platform::TextLine> lines;
        if (const auto texts = video_->texts.find(picture.number); texts != video_->texts.end())
            for (const std::string& text : texts->second) lines.push_back({text, 1});
        return lines;
    }

  private:
    const std::shared_ptr<SlateVideo> video_;
};

inline std::shared_ptr<SlateDetector> slateDetector(const std::shared_ptr<SlateVideo>& video) {
    return std::make_shared<SlateDetector>([video] {
        return SlateDetector::Dependencies{[video](const std::string&) {
                                               return video->frames > 0
                                                          ? std::make_unique<SlateVideoFrames>(*video)
                                                          : nullptr;
                                           },
                                           std::make_shared<SlateVideoRecognizer>(video)};
    });
}

} // namespace orvane::test
