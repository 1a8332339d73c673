#pragma once

#include "FCPXMLKit/model/Values.h"
#include "FCPXMLKit/model/adjust/Adjustments.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace orvane::fcpxml {

struct Audio;
struct Clip;
/// An element that is connected above or below another element, on a lane.
using AnchorItem = std::variant<Audio, Clip>;
using ClipItem = std::variant<Audio>;

/// A point of a time map: `time` on the clip's timeline, `value` in its source.
struct Timept {
    static constexpr std::string_view elementName = "timept";
    enum class InterpolationType { smooth2, linear, smooth };
    Time time;
    Time value;
    std::optional<InterpolationType> interp;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("time", time);
        writer.always("value", value);
        writer.attribute("interp", interp);
    }
};

inline std::string_view attributeText(Timept::InterpolationType type) {
    using enum Timept::InterpolationType;
    return type == linear ? "linear" : type == smooth ? "smooth" : "smooth2";
}

/// A retime.
struct TimeMap {
    static constexpr std::string_view elementName = "timeMap";
    FrameSampling frameSampling = FrameSampling::floor;
    bool preservesPitch = true;
    std::vector<Timept> points;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("frameSampling", frameSampling, FrameSampling::floor);
        writer.attribute("preservesPitch", preservesPitch, true);
        writer.children(points);
    }
};

struct Keyword {
    static constexpr std::string_view elementName = "keyword";
    std::string value; ///< a comma-separated list

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("value", value);
    }
};
using MarkerItem = std::variant<Keyword>;

/// One value about a clip, under a reverse-domain key.
struct MetadataItem {
    static constexpr std::string_view elementName = "md";
    std::string key;
    std::optional<std::string> value;
    bool editable = false;
    std::optional<std::string> type;
    std::optional<std::string> displayName;
    std::optional<std::string> description;
    std::optional<std::string> source;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("key", key);
        writer.attribute("value", value);
        writer.attribute("editable", editable, false);
        writer.attribute("type", type);
        writer.attribute("displayName", displayName);
        writer.attribute("description", description);
        writer.attribute("source", source);
    }
};

struct Metadata {
    static constexpr std::string_view elementName = "metadata";
    std::vector<MetadataItem> items;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.children(items);
    }
};

enum class DurationIs { required, optional };

/// The place of a clip, its name and whether it is heard and seen, in the order of every clip element.
template <class Record, class Writer>
void placementSlots(const Record& record, Writer& writer, DurationIs durationIs = DurationIs::required) {
    writer.attribute("lane", record.lane);
    writer.attribute("offset", record.offset);
    writer.attribute("name", record.name);
    writer.attribute("start", record.start);
    if (durationIs == DurationIs::required)
        writer.required("duration", "Time", record.duration);
    else
        writer.attribute("duration", record.duration);
    writer.attribute("enabled", record.enabled, true);
}

/// Channels of an audio asset.
struct Audio {
    static constexpr std::string_view elementName = "audio";
    IDREF ref;
    std::optional<int> lane;
    std::optional<Time> offset;
    std::optional<std::string> name;
    std::optional<Time> start;
    std::optional<Time> duration;
    bool enabled = true;
    int srcID = 1;
    std::optional<AudioRole> role;
    std::vector<int> srcCh; ///< from 1
    std::optional<std::string> outCh;
    AdjustAudio adjust;
    std::vector<AnchorItem> anchored;

    template <class Writer>
    void slots(Writer& writer) const;
};

/// A container of items of the storyline.
struct Clip {
    static constexpr std::string_view elementName = "clip";
    std::optional<int> lane;
    std::optional<Time> offset;
    std::optional<std::string> name;
    std::optional<Time> start;
    std::optional<Time> duration;
    bool enabled = true;
    std::optional<IDREF> format;
    std::optional<TcFormat> tcFormat;
    AdjustAudioVideo adjust;
    std::vector<ClipItem> items;
    std::vector<AnchorItem> anchored;
    std::vector<MarkerItem> markers;

    template <class Writer>
    void slots(Writer& writer) const {
        placementSlots(*this, writer);
        writer.attribute("format", format);
        writer.attribute("tcFormat", tcFormat);
        writer.embedded(adjust);
        writer.children(items);
        writer.children(anchored);
        writer.children(markers);
    }
};

template <class Writer>
void Audio::slots(Writer& writer) const {
    writer.always("ref", ref);
    placementSlots(*this, writer);
    writer.always("srcID", srcID);
    writer.attribute("role", role);
    writer.always("srcCh", srcCh);
    writer.attribute("outCh", outCh);
    writer.embedded(adjust);
    writer.children(anchored);
}

/// A whole asset as a clip.
struct AssetClip {
    static constexpr std::string_view elementName = "asset-clip";
    IDREF ref;
    std::optional<int> lane;
    std::optional<Time> offset;
    std::optional<std::string> name;
    std::optional<Time> start;
    std::optional<Time> duration;
    bool enabled = true;
    SrcEnable srcEnable = SrcEnable::all;
    std::optional<IDREF> format;
    std::optional<TcFormat> tcFormat;
    std::optional<AudioRole> audioRole;
    std::optional<VideoRole> videoRole;
    std::optional<TimeMap> timeMap;
    AdjustAudioVideo adjust;
    std::vector<AnchorItem> anchored;
    std::vector<MarkerItem> markers;
    std::optional<Metadata> metadata;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("ref", ref);
        placementSlots(*this, writer, DurationIs::optional);
        writer.attribute("srcEnable", srcEnable, SrcEnable::all);
        writer.attribute("format", format);
        writer.attribute("tcFormat", tcFormat);
        writer.attribute("audioRole", audioRole);
        writer.attribute("videoRole", videoRole);
        writer.child(timeMap);
        writer.embedded(adjust);
        writer.children(anchored);
        writer.children(markers);
        writer.child(metadata);
    }
};

/// A gap without media.
struct Gap {
    static constexpr std::string_view elementName = "gap";
    std::optional<std::string> name;
    std::optional<Time> offset;
    std::optional<Time> start;
    std::optional<Time> duration; ///< required
    bool enabled = true;
    std::vector<AnchorItem> anchored;
    std::vector<MarkerItem> markers;
    std::optional<Metadata> metadata;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("name", name);
        writer.attribute("offset", offset);
        writer.attribute("start", start);
        writer.required("duration", "Time", duration);
        writer.attribute("enabled", enabled, true);
        writer.children(anchored);
        writer.children(markers);
        writer.child(metadata);
    }
};

} // namespace orvane::fcpxml
