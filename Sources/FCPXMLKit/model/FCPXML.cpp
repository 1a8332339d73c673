#include "FCPXMLKit/model/FCPXML.h"

#include "FCPXMLKit/xml/SlotWriter.h"

namespace orvane::fcpxml {

void FCPXML::writeInto(XMLDocument& document, FCPXMLVersion documentVersion) && {
    XMLElement& root = document.makeRoot(elementName);
    SlotWriter::Shared shared(document.arena());
    SlotWriter::write(*this, root, documentVersion, shared);
    root.setAttribute("version", attributeText(documentVersion));
}

XMLDocument FCPXML::toXMLDocument(std::optional<FCPXMLVersion> wanted, std::stop_token stop) && {
    XMLDocument document(std::move(stop));
    const FCPXMLVersion documentVersion = wanted.value_or(version);
    std::move(*this).writeInto(document, documentVersion);
    return document;
}

} // namespace orvane::fcpxml
