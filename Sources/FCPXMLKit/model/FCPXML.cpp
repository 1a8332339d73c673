#include "FCPXMLKit/model/FCPXML.h"

#include "FCPXMLKit/xml/SlotWriter.h"

namespace orvane::fcpxml {

XMLDocument FCPXML::toXMLDocument(std::optional<FCPXMLVersion> wanted, std::stop_token stop) && {
    const FCPXMLVersion documentVersion = wanted.value_or(version);
    XMLDocument document(std::move(stop));
    XMLElement& root = document.makeRoot(elementName);
    SlotWriter::write(*this, root, documentVersion);
    root.setAttribute("version", attributeText(documentVersion));
    return document;
}

} // namespace orvane::fcpxml
