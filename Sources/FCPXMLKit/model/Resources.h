#pragma once

#include "FCPXMLKit/model/Values.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvane::fcpxml {

/// Frame size and rate of a clip or a timeline.
struct Format {
    static constexpr std::string_view elementName = "format";
    ID id;
    std::optional<std::string> name;
    std::optional<Time> frameDuration;
    std::optional<double> width;  ///< pixels
    std::optional<double> height; ///< pixels
    std::optional<VideoColorSpace> colorSpace;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("id", id);
        writer.attribute("name", name);
        writer.attribute("frameDuration", frameDuration);
        writer.attribute("width", width);
        writer.attribute("height", height);
        writer.attribute("colorSpace", colorSpace);
    }
};

/// One file of an asset.
struct MediaRep {
    static constexpr std::string_view elementName = "media-rep";
    std::optional<std::string> kind; ///< "original-media" or "proxy-media"
    std::optional<std::string> src;  ///< file URL

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("kind", kind);
        writer.required("src", "String", src);
    }
};

/// A media file as the document describes it.
struct Asset {
    static constexpr std::string_view elementName = "asset";
    ID id;
    std::optional<std::string> name;
    std::optional<std::string> src; ///< file URL, in the versions before `mediaReps`
    std::optional<Time> start;
    std::optional<Time> duration;
    std::optional<bool> hasVideo;
    std::optional<IDREF> format;
    std::optional<bool> hasAudio;
    std::optional<int> videoSources;
    std::optional<int> audioSources;
    std::optional<int> audioChannels;
    std::optional<int> audioRate; ///< Hz
    std::vector<MediaRep> mediaReps;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("id", id);
        writer.attribute("name", name);
        writer.attribute("src", src, FCPXMLVersionRange::upTo(FCPXMLVersion::v1_8));
        writer.attribute("start", start);
        writer.attribute("duration", duration);
        writer.attribute("hasVideo", hasVideo);
        writer.attribute("format", format);
        writer.attribute("hasAudio", hasAudio);
        writer.attribute("videoSources", videoSources, FCPXMLVersionRange::from(FCPXMLVersion::v1_9));
        writer.attribute("audioSources", audioSources);
        writer.attribute("audioChannels", audioChannels);
        writer.attribute("audioRate", audioRate);
        writer.children(mediaReps, FCPXMLVersionRange::from(FCPXMLVersion::v1_9));
    }
};

} // namespace orvane::fcpxml
