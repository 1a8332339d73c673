#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::fcpxml {

/// One attribute. Names are string literals of this program and are never copied.
struct XMLAttribute {
    std::string_view name;
    std::string value; ///< plain text; escaping happens when the document is printed
};

/// One element of a document that is being written: its attributes lie side by side, its children too. The
/// name is a string literal.
struct XMLElement {
    std::string_view name;
    std::vector<XMLAttribute> attributes;
    std::vector<XMLElement> children;

    const std::string* attribute(std::string_view attributeName) const;
    void setAttribute(std::string_view attributeName, std::string value);
    XMLElement& appendChild(std::string_view childName);
};

/// All elements of that name, depth first, each before its children, the given one included.
std::vector<XMLElement*> findElements(XMLElement& in, std::string_view named);

struct XMLDocument {
    std::optional<XMLElement> root;

    /// UTF-8 with declaration and document type, one element a line, four spaces a level. Always well-formed:
    /// what XML cannot hold (control characters, invalid UTF-8) is printed as U+FFFD. Empty without a root.
    std::string text() const;
};

} // namespace orvane::fcpxml
