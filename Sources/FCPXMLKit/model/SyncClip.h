#pragma once

#include "FCPXMLKit/model/Clips.h"

namespace orvane::fcpxml {

/// One audio component of a clip, by its role.
struct AudioRoleSource {
    static constexpr std::string_view elementName = "audio-role-source";
    AudioRole role;
    bool active = true;
    bool enabled = true;
    AdjustAudioEnhanced adjust;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("role", role);
        writer.attribute("active", active, true);
        writer.attribute("enabled", enabled, true);
        writer.embedded(adjust);
    }
};

/// The audio components of one side of a synchronized clip.
struct SyncSource {
    static constexpr std::string_view elementName = "sync-source";
    enum class SourceID { storyline, connected };
    SourceID sourceID = SourceID::connected;
    std::vector<AudioRoleSource> audioRoleSources;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("sourceID", sourceID);
        writer.children(audioRoleSources);
    }
};

inline std::string_view attributeText(SyncSource::SourceID id) {
    return id == SyncSource::SourceID::storyline ? "storyline" : "connected";
}

using SyncClipItem = std::variant<AssetClip, Audio, Clip, Gap>;

/// A picture with the sound that belongs to it.
struct SyncClip {
    static constexpr std::string_view elementName = "sync-clip";
    std::optional<int> lane;
    std::optional<Time> offset;
    std::optional<std::string> name;
    std::optional<Time> start;
    std::optional<Time> duration; ///< required
    bool enabled = true;
    std::optional<IDREF> format;
    std::optional<Time> audioStart;
    std::optional<Time> audioDuration;
    std::optional<Time> tcStart;
    std::optional<TcFormat> tcFormat;
    std::optional<DateTime> modDate;
    std::optional<TimeMap> timeMap;
    AdjustAudioVideo adjust;
    SyncClipItem item;
    std::vector<AnchorItem> anchored;
    std::vector<MarkerItem> markers;
    std::vector<SyncSource> syncSources;
    std::optional<Metadata> metadata;

    template <class Writer>
    void slots(Writer& writer) const {
        placementSlots(*this, writer);
        writer.attribute("format", format);
        writer.attribute("audioStart", audioStart);
        writer.attribute("audioDuration", audioDuration);
        writer.attribute("tcStart", tcStart);
        writer.attribute("tcFormat", tcFormat);
        writer.attribute("modDate", modDate);
        writer.child(timeMap);
        writer.embedded(adjust);
        writer.child(item);
        writer.children(anchored);
        writer.children(markers);
        writer.children(syncSources);
        writer.child(metadata);
    }
};

} // namespace orvane::fcpxml
