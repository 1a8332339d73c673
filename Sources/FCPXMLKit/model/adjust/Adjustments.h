#pragma once

#include "FCPXMLKit/model/Values.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane::fcpxml {

/// How a picture of another size fits its frame. With the default the element has no attributes.
struct AdjustConform {
    static constexpr std::string_view elementName = "adjust-conform";
    enum class Type { fit, fill, none };
    Type type = Type::fit;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("type", type, Type::fit);
    }
};

inline std::string_view attributeText(AdjustConform::Type type) {
    return type == AdjustConform::Type::fill ? "fill" : type == AdjustConform::Type::none ? "none" : "fit";
}

/// A point of an animated level. The line to the next point is straight, in decibels.
struct Keyframe {
    static constexpr std::string_view elementName = "keyframe";
    Time time; ///< on the time axis of the adjusted element, which begins at its `start`
    Decibels value;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("time", time);
        writer.always("value", value);
        writer.always("interp", std::string_view("linear"));
    }
};

struct KeyframeAnimation {
    static constexpr std::string_view elementName = "keyframeAnimation";
    std::vector<Keyframe> keyframes; ///< their times are strictly ascending

    template <class Writer>
    void slots(Writer& writer) const {
        writer.children(keyframes);
    }
};

/// A parameter of an adjustment that changes over time.
struct Param {
    static constexpr std::string_view elementName = "param";
    std::string name;
    std::optional<KeyframeAnimation> animation;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("name", name);
        writer.child(animation);
    }
};

struct AdjustVolume {
    static constexpr std::string_view elementName = "adjust-volume";
    Decibels amount;
    std::vector<Param> params{};

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
        writer.children(params);
    }
};

struct AdjustLoudness {
    static constexpr std::string_view elementName = "adjust-loudness";
    double amount = 0;     ///< percent
    double uniformity = 0; ///< percent

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
        writer.always("uniformity", uniformity);
    }
};

struct AdjustVoiceIsolation {
    static constexpr std::string_view elementName = "adjust-voiceIsolation";
    double amount = 0; ///< percent

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
    }
};

/// The adjustments of a clip with picture and sound.
struct AdjustAudioVideo {
    std::optional<AdjustConform> conform;
    std::optional<AdjustVolume> volume;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(conform);
        writer.child(volume);
    }
};

/// The adjustments of an angle's picture.
struct AdjustVideo {
    std::optional<AdjustConform> conform;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(conform);
    }
};

/// The adjustments of a clip with sound.
struct AdjustAudio {
    std::optional<AdjustVolume> volume;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(volume);
    }
};

/// The adjustments of a role source: Final Cut Pro's audio enhancements.
struct AdjustAudioEnhanced {
    std::optional<AdjustLoudness> loudness;
    std::optional<AdjustVoiceIsolation> voiceIsolation; ///< since version 1.11
    std::optional<AdjustVolume> volume;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(loudness);
        writer.child(voiceIsolation, FCPXMLVersionRange::from(FCPXMLVersion::v1_11));
        writer.child(volume);
    }
};

} // namespace orvane::fcpxml
