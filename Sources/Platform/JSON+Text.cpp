#include "Platform/SimdJSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <unordered_map>

namespace orvane::platform {

namespace {

constexpr std::size_t depthLimit = 512;
/// Up to here a linear look for a repeated key is cheaper than a table.
constexpr std::size_t fewMembers = 24;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

JSON::Object members(simdjson::dom::object object) {
    JSON::Object result;
    result.reserve(object.size());
    std::unordered_map<std::string_view, std::size_t> positions;
    const bool many = object.size() > fewMembers;
    for (const auto field : object) {
        std::size_t at = result.size();
        if (many) {
            at = positions.try_emplace(field.key, result.size()).first->second;
        } else {
            const auto found = std::ranges::find(result, field.key, &JSON::Object::value_type::first);
            at = static_cast<std::size_t>(found - result.begin());
        }
        if (at < result.size())
            result[at].second = tree(field.value);
        else
            result.emplace_back(std::string(field.key), tree(field.value));
    }
    return result;
}

JSON::Array elements(simdjson::dom::array array) {
    JSON::Array result;
    result.reserve(array.size());
    for (const auto element : array) result.push_back(tree(element));
    return result;
}

template <class Number>
void writeNumber(std::string& out, Number value) {
    std::array<char, 40> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    out.append(digits.data(), end);
}

void writeDouble(std::string& out, double value) {
    if (!std::isfinite(value)) {
        out += "null";
        return;
    }
    const std::size_t start = out.size();
    writeNumber(out, value);
    // Without a point a reader takes it for an integer, and one of more than 64 bits for an error.
    if (out.find_first_of(".e", start) == std::string::npos) out += ".0";
}

void writeString(std::string& out, std::string_view value) {
    std::string repaired;
    if (!text::isValidUTF8(value)) {
        repaired = text::validUTF8(value);
        value = repaired;
    }
    out += '"';
    std::size_t plainStart = 0;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const auto byte = static_cast<unsigned char>(value[i]);
        if (byte >= 0x20 && byte != '"' && byte != '\\' && byte != 0x7F) continue;
        out.append(value, plainStart, i - plainStart);
        plainStart = i + 1;
        switch (byte) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            constexpr std::string_view hex = "0123456789abcdef";
            out += "\\u00";
            out += hex[byte >> 4U];
            out += hex[byte & 0xFU];
        }
    }
    out.append(value, plainStart);
    out += '"';
}

void breakLine(std::string& out, JSON::Layout layout, std::size_t depth) {
    if (layout == JSON::Layout::compact) return;
    out += '\n';
    out.append(2 * depth, ' ');
}

std::vector<const JSON::Object::value_type*> sortedMembers(const JSON::Object& object) {
    std::vector<const JSON::Object::value_type*> sorted;
    sorted.reserve(object.size());
    for (const auto& member : object) sorted.push_back(&member);
    std::ranges::sort(sorted, {}, [](const auto* member) -> const std::string& { return member->first; });
    return sorted;
}

} // namespace

JSON tree(simdjson::dom::element element) {
    using simdjson::dom::element_type;
    switch (element.type()) {
    case element_type::OBJECT:
        return members(element.get_object().value_unsafe());
    case element_type::ARRAY:
        return elements(element.get_array().value_unsafe());
    case element_type::STRING:
        return std::string(element.get_string().value_unsafe());
    case element_type::INT64:
        return element.get_int64().value_unsafe();
    case element_type::UINT64:
        return element.get_uint64().value_unsafe();
    case element_type::DOUBLE:
        return element.get_double().value_unsafe();
    case element_type::BOOL:
        return element.get_bool().value_unsafe();
    case element_type::NULL_VALUE:
        break;
    }
    return {};
}

simdjson::dom::element parsed(simdjson::dom::parser& parser, std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    simdjson::dom::element root;
    auto error = simdjson::SUCCESS;
    // The smallest capacity that simdjson takes is 32; `parse` copies the text to where it may read past its
    // end.
    if (parser.capacity() < text.size() || parser.capacity() == 0)
        error = parser.allocate(std::max<std::size_t>(text.size(), 64), depthLimit);
    if (!error) error = parser.parse(text.data(), text.size(), true).get(root);
    if (error) throw JSONError(simdjson::error_message(error));
    return root;
}

JSON JSON::parse(std::string_view text) {
    simdjson::dom::parser parser;
    return tree(parsed(parser, text));
}

std::string JSON::dump(Layout layout, std::size_t depth) const {
    std::string out;
    write(out, layout, depth);
    return out;
}

void JSON::write(std::string& out, Layout layout, std::size_t depth) const {
    if (isNull()) {
        out += "null";
    } else if (const auto* flag = std::get_if<bool>(&value_)) {
        out += *flag ? "true" : "false";
    } else if (const auto* whole = std::get_if<std::int64_t>(&value_)) {
        writeNumber(out, *whole);
    } else if (const auto* natural = std::get_if<std::uint64_t>(&value_)) {
        writeNumber(out, *natural);
    } else if (const auto* real = std::get_if<double>(&value_)) {
        writeDouble(out, *real);
    } else if (const std::string* characters = string()) {
        writeString(out, *characters);
    } else if (const Array* array = elements()) {
        out += '[';
        for (const JSON& element : *array) {
            if (&element != array->data()) out += ',';
            breakLine(out, layout, depth + 1);
            element.write(out, layout, depth + 1);
        }
        if (!array->empty()) breakLine(out, layout, depth);
        out += ']';
    } else if (const Object* object = members()) {
        out += '{';
        bool first = true;
        for (const auto* member : sortedMembers(*object)) {
            if (!first) out += ',';
            first = false;
            breakLine(out, layout, depth + 1);
            writeString(out, member->first);
            out += layout == Layout::pretty ? ": " : ":";
            member->second.write(out, layout, depth + 1);
        }
        if (!object->empty()) breakLine(out, layout, depth);
        out += '}';
    }
}

} // namespace orvane::platform
