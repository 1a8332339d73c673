#include "FCPXMLKit/model/FCPXML.h"

#include "FCPXMLKit/xml/SlotWriter.h"

namespace orvane::fcpxml {

XMLDocument FCPXML::toXMLDocument(std::optional<FCPXMLVersion> wanted) const {
    const FCPXMLVersion documentVersion = wanted.value_or(version);
    XMLDocument document;
    document.root = XMLElement{elementName, {}, {}};
    SlotWriter writer(*document.root, documentVersion);
    slots(writer);
    document.root->setAttribute("version", std::string(attributeText(documentVersion)));
    return document;
}

} // namespace orvane::fcpxml
