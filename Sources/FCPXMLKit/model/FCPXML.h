#pragma once

#include "FCPXMLKit/model/Multicam.h"
#include "FCPXMLKit/xml/XMLElement.h"

namespace orvane::fcpxml {

using ResourceItem = std::variant<Asset, Format, Media>;

struct Resources {
    static constexpr std::string_view elementName = "resources";
    std::vector<ResourceItem> items;
    std::vector<XMLElement*> made = {}; ///< of the same document, written behind the items

    template <class Writer>
    void slots(Writer& writer) {
        writer.consumed(items);
        writer.made(made);
    }
};

using EventItem = std::variant<Clip, MCClip, SyncClip, AssetClip>;

struct Event {
    static constexpr std::string_view elementName = "event";
    std::optional<std::string> name;
    std::vector<EventItem> items = {};
    std::vector<XMLElement*> made = {}; ///< of the same document, written behind the items

    template <class Writer>
    void slots(Writer& writer) {
        writer.attribute("name", name);
        writer.consumed(items);
        writer.made(made);
    }
};

struct Library {
    static constexpr std::string_view elementName = "library";
    std::vector<Event> items;

    template <class Writer>
    void slots(Writer& writer) {
        writer.consumed(items);
    }
};

/// The whole document.
struct FCPXML {
    static constexpr std::string_view elementName = "fcpxml";
    FCPXMLVersion version = latestFCPXMLVersion;
    Resources resources;
    std::vector<Library> items;

    template <class Writer>
    void slots(Writer& writer) {
        writer.child(resources);
        writer.consumed(items);
    }

    /// The element tree, children in the order of the records' slots, in the given version or the record's
    /// own. Empties the record: its items are released one by one. Throws FCPXMLError and platform::Stopped.
    XMLDocument toXMLDocument(std::optional<FCPXMLVersion> version = std::nullopt,
                              std::stop_token stop = {}) &&;
    /// The same for a document whose elements `made` are, in their version. It has no root yet.
    void writeInto(XMLDocument& document, FCPXMLVersion version) &&;
};

} // namespace orvane::fcpxml
