#pragma once

#include "FCPXMLKit/model/Resources.h"
#include "FCPXMLKit/model/SyncClip.h"

namespace orvane::fcpxml {

using MCAngleItem = std::variant<SyncClip, AssetClip, Gap>;

/// One camera of a multicam clip.
struct MCAngle {
    static constexpr std::string_view elementName = "mc-angle";
    std::optional<std::string> name;
    std::string angleID;
    std::vector<MCAngleItem> items;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("name", name);
        writer.always("angleID", angleID);
        writer.children(items);
    }
};

struct Multicam {
    static constexpr std::string_view elementName = "multicam";
    std::optional<IDREF> format;
    std::optional<Time> duration;
    std::optional<Time> tcStart;
    std::optional<TcFormat> tcFormat;
    std::optional<std::string> renderFormat;
    std::vector<MCAngle> angles;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.attribute("format", format);
        writer.attribute("duration", duration);
        writer.attribute("tcStart", tcStart);
        writer.attribute("tcFormat", tcFormat);
        writer.attribute("renderFormat", renderFormat);
        writer.children(angles);
    }
};

using MediaItem = std::variant<Multicam>;

/// A compound resource.
struct Media {
    static constexpr std::string_view elementName = "media";
    ID id;
    std::optional<std::string> name;
    MediaItem item;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("id", id);
        writer.attribute("name", name);
        writer.child(item);
    }
};

/// The angle that is seen and heard.
struct MCSource {
    static constexpr std::string_view elementName = "mc-source";
    std::string angleID;
    SrcEnable srcEnable = SrcEnable::all;
    std::vector<AudioRoleSource> audioRoleSources;
    AdjustVideo adjust;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("angleID", angleID);
        writer.always("srcEnable", srcEnable);
        writer.children(audioRoleSources);
        writer.embedded(adjust);
    }
};

/// A multicam clip in an event or a timeline.
struct MCClip {
    static constexpr std::string_view elementName = "mc-clip";
    IDREF ref;
    std::optional<int> lane;
    std::optional<Time> offset;
    std::optional<std::string> name;
    std::optional<Time> start;
    std::optional<Time> duration; ///< required
    bool enabled = true;
    SrcEnable srcEnable = SrcEnable::all;
    AdjustAudio adjust;
    std::vector<MCSource> sources;
    std::vector<AnchorItem> anchored;
    std::vector<MarkerItem> markers;
    std::optional<Metadata> metadata;

    template <class Writer>
    void slots(Writer& writer) const {
        writer.always("ref", ref);
        placementSlots(*this, writer);
        writer.attribute("srcEnable", srcEnable, SrcEnable::all);
        writer.embedded(adjust);
        writer.children(sources);
        writer.children(anchored);
        writer.children(markers);
        writer.child(metadata);
    }
};

} // namespace orvane::fcpxml
