#pragma once

#include "FCPXMLKit/model/Time.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvane::test {

/// An element of a document, for tests that examine its content.
struct Node {
    std::string name;
    std::map<std::string, std::string> attributes;
    std::vector<Node> children;

    bool has(const std::string& attribute) const { return attributes.contains(attribute); }
    /// Empty if there is no such attribute.
    std::string text(const std::string& attribute) const;
    /// Empty if there is no such attribute or it is not an exact time.
    std::optional<fcpxml::Time> time(const std::string& attribute) const;
    /// Null if there is no such child.
    const Node* child(const std::string& named) const;
    /// All elements of that name below this one, in the order of the document; elements of any name for "".
    std::vector<const Node*> all(const std::string& named) const;
    bool operator==(const Node&) const = default;
};

/// The root of a document. Throws std::runtime_error for a text that is not well-formed.
Node readDocument(const std::string& text);

} // namespace orvane::test
