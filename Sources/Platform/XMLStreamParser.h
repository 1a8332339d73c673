#pragma once

#include <string_view>

namespace orvane::platform {

/// What a stream parser tells while it reads. Names and texts are UTF-8 and valid during the call only.
class XMLStreamHandler {
  public:
    virtual ~XMLStreamHandler() = default;
    virtual void startElement(std::string_view name) = 0;
    virtual void endElement(std::string_view name) = 0;
    virtual void characters(std::string_view text) = 0;
};

/// Reads an untrusted XML document, without resolving external entities and with entity expansion bounded. False
/// when the document is not well-formed to its end; what was told until then is to be thrown away.
bool parseXMLStream(std::string_view document, XMLStreamHandler& handler);

} // namespace orvane::platform
