#pragma once

#include "FCPXMLKit/model/Values.h"

#include <optional>

namespace orvane::fcpxml {

/// How a picture of another size fits its frame. The default leaves the element bare.
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

struct AdjustVolume {
    static constexpr std::string_view elementName = "adjust-volume";
    Decibels amount;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
    }
};

struct AdjustLoudness {
    static constexpr std::string_view elementName = "adjust-loudness";
    double amount = 0;
    double uniformity = 0;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
        writer.always("uniformity", uniformity);
    }
};

struct AdjustVoiceIsolation {
    static constexpr std::string_view elementName = "adjust-voiceIsolation";
    double amount = 0;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("amount", amount);
    }
};

/// Group of a clip with picture and sound.
struct AdjustAudioVideo {
    std::optional<AdjustConform> conform;
    std::optional<AdjustVolume> volume;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(conform);
        writer.child(volume);
    }
};

/// Group of an angle's picture.
struct AdjustVideo {
    std::optional<AdjustConform> conform;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(conform);
    }
};

/// Group of a clip with sound.
struct AdjustAudio {
    std::optional<AdjustVolume> volume;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.child(volume);
    }
};

/// Group of a role source: what Final Cut Pro's audio enhancements do.
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
