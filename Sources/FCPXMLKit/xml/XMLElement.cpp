#include "FCPXMLKit/xml/XMLElement.h"

#include "Platform/Stop.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace orvane::fcpxml {

namespace {

constexpr std::string_view prolog =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<!DOCTYPE fcpxml>\n";
constexpr std::size_t indentWidth = 4;
constexpr std::string_view replacement = "\xEF\xBF\xBD"; // U+FFFD

/// What is written for a byte below 128 in an attribute value: the byte itself, an escape, or the replacement
/// character. Line ends and tabs are written as references, as a reader would turn them into blanks.
std::string_view escapeFor(unsigned char c) {
    switch (c) {
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    case '>':
        return "&gt;";
    case '"':
        return "&quot;";
    case '\n':
        return "&#10;";
    case '\r':
        return "&#13;";
    case '\t':
        return "&#9;";
    default:
        return c < 0x20 ? replacement : std::string_view();
    }
}

constexpr std::array<bool, 256> makePlainTable() {
    std::array<bool, 256> plain{};
    for (std::size_t c = 0x20; c < 0x80; ++c) plain.at(c) = c != '&' && c != '<' && c != '>' && c != '"';
    return plain;
}
constexpr auto isPlain = makePlainTable();

bool isContinuation(std::string_view text, std::size_t at) {
    return at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
}

/// The length of the well-formed character at `at`, or 0 if there is none: no overlong forms, no surrogates,
/// no characters that XML excludes.
std::size_t characterLength(std::string_view text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4) return 0;
    std::uint32_t code = lead & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(text, at + i)) return 0;
        code = (code << 6U) | (static_cast<unsigned char>(text[at + i]) & 0x3FU);
    }
    if (length == 3 && (code < 0x800 || (code >= 0xD800 && code <= 0xDFFF) || code >= 0xFFFE)) return 0;
    if (length == 4 && (code < 0x10000 || code > 0x10FFFF)) return 0;
    return length;
}

/// `asByte` returns the replacement of a byte that is neither plain nor part of a character.
template <class AsByte>
void appendConverted(std::string& out, std::string_view value, const AsByte& asByte) {
    std::size_t copied = 0;
    for (std::size_t i = 0; i < value.size();) {
        const auto c = static_cast<unsigned char>(value[i]);
        if (isPlain[c]) {
            ++i;
            continue;
        }
        const std::size_t length = c < 0x80 ? 0 : characterLength(value, i);
        if (length > 0) {
            i += length;
            continue;
        }
        out.append(value, copied, i - copied);
        out += asByte(i);
        copied = ++i;
    }
    out.append(value, copied);
}

void appendEscaped(std::string& out, std::string_view value) {
    appendConverted(out, value, [&](std::size_t at) {
        const auto c = static_cast<unsigned char>(value[at]);
        return c < 0x80 ? escapeFor(c) : replacement;
    });
}

/// The printed size, without the growth by escapes.
std::size_t plainSize(const XMLElement& element, std::size_t depth) {
    platform::throwIfStopped(element.arena().stopToken());
    const std::size_t indent = depth * indentWidth;
    std::size_t size = indent + element.name().size() + std::string_view("</>\n").size();
    for (const auto& attribute : element.attributes())
        size += attribute.name.size() + attribute.value.size() + std::string_view(" =\"\"").size();
    if (element.children().empty()) return size;
    for (const XMLElement& child : element.children()) size += plainSize(child, depth + 1);
    return size + indent + element.name().size() + std::string_view("<>\n").size();
}

void print(std::string& out, const XMLElement& element, std::size_t depth) {
    platform::throwIfStopped(element.arena().stopToken());
    out.append(depth * indentWidth, ' ').append("<").append(element.name());
    for (const auto& attribute : element.attributes()) {
        out.append(" ").append(attribute.name).append("=\"");
        appendEscaped(out, attribute.value);
        out += '"';
    }
    if (element.children().empty()) {
        out += "/>\n";
        return;
    }
    out += ">\n";
    for (const XMLElement& child : element.children()) print(out, child, depth + 1);
    out.append(depth * indentWidth, ' ').append("</").append(element.name()).append(">\n");
}

void collect(XMLElement& element, std::string_view name, std::vector<XMLElement*>& found) {
    if (element.name() == name) found.push_back(&element);
    for (XMLElement& child : element.children()) collect(child, name, found);
}

// Small enough for blocks to reuse the freed memory of one clip's records: with blocks of 64 KB a large
// export needs a fifth more memory.
constexpr std::size_t blockSize = std::size_t{4} * 1024;

/// Texts of the same length and end share a place: times and identifiers differ in their last digits.
std::size_t recentPlace(std::string_view text, std::size_t places) {
    std::size_t hash = text.size();
    for (std::size_t i = text.size() > 12 ? text.size() - 12 : 0; i < text.size(); ++i)
        hash = hash * 31 + static_cast<unsigned char>(text[i]);
    return hash % places;
}

} // namespace

std::string readBack(std::string_view value) {
    std::string out;
    appendConverted(out, value, [&](std::size_t at) {
        const auto c = static_cast<unsigned char>(value[at]);
        const bool isHeld = c < 0x80 && escapeFor(c) != replacement;
        return isHeld ? value.substr(at, 1) : replacement;
    });
    return out;
}

std::string_view XMLArena::copy(std::string_view text) {
    if (text.empty()) return {};
    std::string_view& recent = recent_.at(recentPlace(text, recent_.size()));
    if (recent == text) return recent;
    char* place = allocate<char>(text.size());
    std::ranges::copy(text, place);
    return recent = {place, text.size()};
}

void* XMLArena::allocateBytes(std::size_t size, std::size_t alignment) {
    void* place = next_;
    if (std::align(alignment, size, place, left_) == nullptr) {
        platform::throwIfStopped(stop_);
        left_ = std::max(blockSize, size + alignment);
        blocks_.push_back(std::make_unique_for_overwrite<std::byte[]>(left_));
        place = blocks_.back().get();
        std::align(alignment, size, place, left_);
    }
    next_ = static_cast<std::byte*>(place) + size;
    left_ -= size;
    return place;
}

const std::string_view* XMLElement::attribute(std::string_view attributeName) const {
    const auto found = std::ranges::find(attributes(), attributeName, &XMLAttribute::name);
    return found == attributes().end() ? nullptr : &found->value;
}

void XMLElement::setAttribute(std::string_view attributeName, std::string_view value) {
    std::vector<XMLAttribute> changed(attributes().begin(), attributes().end());
    const auto found = std::ranges::find(changed, attributeName, &XMLAttribute::name);
    if (found != changed.end())
        found->value = arena_->copy(value);
    else
        changed.push_back({attributeName, arena_->copy(value)});
    setAttributes(changed);
}

void XMLElement::setAttributes(std::span<const XMLAttribute> attributes) {
    if (attributes.size() > attributeCount_) attributes_ = arena_->allocate<XMLAttribute>(attributes.size());
    std::uninitialized_copy(attributes.begin(), attributes.end(), attributes_);
    attributeCount_ = attributes.size();
}

XMLElement& XMLElement::appendChild(std::string_view childName) {
    auto* child = std::construct_at(arena_->allocate<XMLElement>(1), *arena_, childName);
    adoptChild(*child);
    return *child;
}

void XMLElement::adoptChild(XMLElement& child) {
    (lastChild_ == nullptr ? firstChild_ : lastChild_->nextSibling_) = &child;
    lastChild_ = &child;
}

void XMLElement::reorderChildren(std::span<XMLElement* const> order) {
    firstChild_ = lastChild_ = nullptr;
    for (XMLElement* child : order) {
        (lastChild_ == nullptr ? firstChild_ : lastChild_->nextSibling_) = child;
        lastChild_ = child;
        child->nextSibling_ = nullptr;
    }
}

std::vector<XMLElement*> findElements(XMLElement& in, std::string_view named) {
    std::vector<XMLElement*> found;
    collect(in, named, found);
    return found;
}

XMLElement& XMLDocument::makeRoot(std::string_view name) {
    root_ = &makeElement(name);
    return *root_;
}

XMLElement& XMLDocument::makeElement(std::string_view name) {
    return *std::construct_at(arena_->allocate<XMLElement>(1), *arena_, name);
}

std::string XMLDocument::text() const {
    std::string out;
    if (root_ == nullptr) return out;
    // A text that grows while it is written would be in memory twice. Unused room for escapes costs nothing:
    // memory that is never touched is never allocated by the system.
    constexpr std::size_t escapeShare = 16;
    const std::size_t size = prolog.size() + plainSize(*root_, 0);
    out.reserve(size + size / escapeShare);
    out += prolog;
    print(out, *root_, 0);
    return out;
}

} // namespace orvane::fcpxml
