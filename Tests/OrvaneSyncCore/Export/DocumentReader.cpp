#include "OrvaneSyncCore/Export/DocumentReader.h"

#include "Platform/XMLStreamParser.h"

#include <stdexcept>

namespace orvane::test {

namespace {

struct Nothing : platform::XMLStreamHandler {
    void startElement(std::string_view) override {}
    void endElement(std::string_view) override {}
    void characters(std::string_view) override {}
};

std::string unescaped(std::string text) {
    const std::pair<const char*, const char*> entities[] = {{"&lt;", "<"},  {"&gt;", ">"},   {"&quot;", "\""},
                                                            {"&#9;", "\t"}, {"&#10;", "\n"}, {"&amp;", "&"}};
    for (const auto& [entity, character] : entities)
        for (auto at = text.find(entity); at != std::string::npos; at = text.find(entity, at + 1))
            text.replace(at, std::string(entity).size(), character);
    return text;
}

/// Reads a document that a parser has found to be well-formed: elements and attributes, but no text between
/// them.
class Reader {
  public:
    explicit Reader(const std::string& text) : text_(text) {}

    Node element() {
        at_ = text_.find('<', at_) + 1;
        Node node;
        node.name = until(" />");
        while (text_[at_] == ' ') {
            ++at_;
            std::string attribute = until("=");
            at_ += 2;
            node.attributes.emplace(std::move(attribute), unescaped(until("\"")));
            ++at_;
        }
        if (text_[at_] == '/') return node;
        for (at_ = text_.find('<', at_); text_[at_ + 1] != '/'; at_ = text_.find('<', at_))
            node.children.push_back(element());
        at_ = text_.find('>', at_);
        return node;
    }

  private:
    std::string until(const char* ends) {
        const std::size_t from = at_;
        at_ = text_.find_first_of(ends, at_);
        return text_.substr(from, at_ - from);
    }

    const std::string& text_;
    std::size_t at_ = text_.find("<fcpxml");
};

void collect(const Node& node, const std::string& named, std::vector<const Node*>& found) {
    for (const Node& child : node.children) {
        if (named.empty() || child.name == named) found.push_back(&child);
        collect(child, named, found);
    }
}

} // namespace

std::string Node::text(const std::string& attribute) const {
    const auto found = attributes.find(attribute);
    return found == attributes.end() ? "" : found->second;
}

std::optional<fcpxml::Time> Node::time(const std::string& attribute) const {
    const std::string value = text(attribute);
    const auto read = fcpxml::Time::fromString(value);
    return read && read->description() == value ? read : std::nullopt;
}

const Node* Node::child(const std::string& named) const {
    for (const Node& node : children)
        if (node.name == named) return &node;
    return nullptr;
}

std::vector<const Node*> Node::all(const std::string& named) const {
    std::vector<const Node*> found;
    collect(*this, named, found);
    return found;
}

Node readDocument(const std::string& text) {
    Nothing nothing;
    if (!platform::parseXMLStream(text, nothing)) throw std::runtime_error("not well-formed: " + text);
    return Reader(text).element();
}

} // namespace orvane::test
