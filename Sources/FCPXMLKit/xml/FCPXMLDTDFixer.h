#pragma once

#include "FCPXMLKit/xml/XMLElement.h"

namespace orvane::fcpxml {

/// Puts the children of clip-like elements into the order that the format's type definition prescribes. It
/// only reorders: elements and attributes are not changed, added or removed.
namespace FCPXMLDTDFixer {

/// The number of elements whose children were reordered; 0 for a document without a root. Throws
/// platform::Stopped.
int fix(XMLDocument& document);

} // namespace FCPXMLDTDFixer
} // namespace orvane::fcpxml
