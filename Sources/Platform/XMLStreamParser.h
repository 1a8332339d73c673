#pragma once

#include <string_view>

namespace orvane::platform {

/// Receives what a stream parser reads. Names and texts are UTF-8 and valid during the call only.
class XMLStreamHandler {
  public:
    virtual ~XMLStreamHandler() = default;
    virtual void startElement(std::string_view name) = 0;
    /// Called for each attribute of an element, after its start and in no order.
    virtual void attribute(std::string_view /*name*/, std::string_view /*value*/) {}
    virtual void endElement(std::string_view name) = 0;
    /// A run of text may come in several pieces.
    virtual void characters(std::string_view text) = 0;
};

/// Reads an untrusted XML document, without resolving external entities and with entity expansion, nesting
/// (256 elements) and the length of one tag or comment (about 1 MB) bounded. False when the document is not
/// well-formed to its end or exceeds a bound; the caller then discards what the handler received. Namespaces
/// are ignored: a prefix is part of the name. Reads UTF-8, UTF-16 and the single-byte encodings by their
/// declaration. An exception of the handler ends the reading and passes through.
bool parseXMLStream(std::string_view document, XMLStreamHandler& handler);

} // namespace orvane::platform
