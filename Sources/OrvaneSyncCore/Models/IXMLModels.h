#pragma once

#include "OrvaneSyncCore/Models/JSONCoding.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane {

/// A named channel of a recording.
struct IXMLTrack {
    int channelIndex = 0; ///< as the document gives it, usually from 1; not shifted
    std::string name;     ///< never empty

    bool operator==(const IXMLTrack&) const = default;
};

/// The recorder's metadata in the iXML chunk of one audio file.
struct IXMLData {
    std::optional<std::string> scene;
    std::optional<std::string> take;
    std::optional<std::string> tape; ///< sound roll
    std::optional<std::string> note;
    std::optional<std::string> project;
    std::optional<std::string> circled;      ///< the recorder's flag, as text
    std::optional<std::string> wildTrack;    ///< the recorder's flag, as text
    std::optional<std::string> timecodeRate; ///< such as 30000/1001 or 25/1
    /// How the recorder counts, DF or NDF. Used for doubts alone: timecodes are read by the text of the rate.
    std::optional<std::string> timecodeFlag;
    std::vector<IXMLTrack> tracks; ///< in document order

    bool isCircled() const;
    bool isWildTrack() const;

    bool operator==(const IXMLData&) const = default;
};

JSON toJSON(const IXMLTrack& track);
JSON toJSON(const IXMLData& data);
template <>
IXMLTrack fromJSON<IXMLTrack>(const JSON& json);
template <>
IXMLData fromJSON<IXMLData>(const JSON& json);
template <>
IXMLTrack fromJSON<IXMLTrack>(const JSONView& json);
template <>
IXMLData fromJSON<IXMLData>(const JSONView& json);

} // namespace orvane
