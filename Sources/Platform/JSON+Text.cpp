#include "Platform/SimdJSON.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numeric>
#include <vector>

namespace orvane::platform {

namespace {

constexpr std::size_t depthLimit = 512;

namespace ondemand = simdjson::ondemand;

/// Up to this number of members it is cheaper to compare all keys of an object than to sort them.
constexpr std::size_t fewMembers = 24;

/// Growing leaves up to half of a list's memory unused.
template <class List>
List fitted(List list) {
    if (list.capacity() - list.size() > list.size() / 4) list.shrink_to_fit();
    return list;
}

bool hasRepeated(const JSON::Object& object) {
    for (std::size_t i = 1; i < object.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (object[i].first == object[j].first) return true;
    return false;
}

/// If a key occurs again, the first member keeps its place and gets the last value.
void joinRepeated(JSON::Object& object) {
    if (object.size() <= fewMembers && !hasRepeated(object)) return;
    std::vector<std::uint32_t> order(object.size());
    std::iota(order.begin(), order.end(), 0U);
    std::ranges::sort(order, [&](std::uint32_t a, std::uint32_t b) {
        const int difference = object[a].first.compare(object[b].first);
        return difference != 0 ? difference < 0 : a < b;
    });
    std::vector<std::uint32_t> repeated;
    for (std::size_t i = 1, first = 0; i < order.size(); ++i) {
        if (object[order[i]].first != object[order[first]].first) {
            first = i;
            continue;
        }
        object[order[first]].second = std::move(object[order[i]].second);
        repeated.push_back(order[i]);
    }
    std::ranges::sort(repeated, std::greater{});
    for (const std::uint32_t at : repeated) object.erase(object.begin() + at);
}

JSON treeOf(ondemand::value value, std::size_t depth);

JSON::Object membersOf(ondemand::object members, std::size_t depth) {
    JSON::Object object;
    for (auto result : members) {
        ondemand::field field = checked(std::move(result));
        std::string key(checked(field.unescaped_key()));
        object.emplace_back(std::move(key), treeOf(field.value(), depth + 1));
    }
    joinRepeated(object);
    return fitted(std::move(object));
}

JSON::Array elementsOf(ondemand::array elements, std::size_t depth) {
    JSON::Array array;
    for (auto result : elements) array.push_back(treeOf(checked(std::move(result)), depth + 1));
    return fitted(std::move(array));
}

/// A value, or a document that is one number.
JSON numberOf(auto& value) {
    // `get_number` returns 0 for a number with a point that has more digits than 64 bits hold.
    if (checked(value.get_number_type()) == ondemand::number_type::floating_point_number)
        return checked(value.get_double());
    const ondemand::number number = checked(value.get_number());
    return number.is_int64() ? JSON(number.get_int64()) : JSON(number.get_uint64());
}

JSON treeOf(ondemand::value value, std::size_t depth) {
    if (depth > depthLimit) throw JSONError(simdjson::error_message(simdjson::DEPTH_ERROR));
    switch (checked(value.type())) {
    case ondemand::json_type::object:
        return membersOf(checked(value.get_object()), depth);
    case ondemand::json_type::array:
        return elementsOf(checked(value.get_array()), depth);
    case ondemand::json_type::string:
        return checked(value.get_string());
    case ondemand::json_type::number:
        return numberOf(value);
    case ondemand::json_type::boolean:
        return checked(value.get_bool());
    case ondemand::json_type::null:
        if (checked(value.is_null())) return {};
        break;
    }
    throw JSONError(simdjson::error_message(simdjson::TAPE_ERROR));
}

constexpr bool beginsValue(char sign) { return (sign == ',') | (sign == '[') | (sign == '{'); }

/// In short blocks, whose count fits into a byte, so that compilers use vector instructions.
std::size_t mostValues(std::string_view text) {
    constexpr std::size_t block = 255;
    std::size_t count = 0;
    for (; !text.empty(); text.remove_prefix(std::min(block, text.size()))) {
        std::uint8_t inBlock = 0;
        for (const char sign : text.substr(0, block))
            inBlock = static_cast<std::uint8_t>(inBlock + (beginsValue(sign) ? 1 : 0));
        count += inBlock;
    }
    return count;
}

/// The least number of values in the text: each begins after one of these characters. Those in strings do not
/// count.
std::size_t countValues(std::string_view text) {
    std::size_t count = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char sign = text[i];
        if (sign == '"') isInString = !isInString;
        if (!isInString)
            count += beginsValue(sign) ? 1U : 0U;
        else if (sign == '\\')
            ++i;
    }
    return count;
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
    // Without a point it would be read as an integer, and as an error beyond 64 bits.
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

namespace {

JSON::Object members(simdjson::dom::object members) {
    JSON::Object object;
    object.reserve(members.size());
    for (const auto member : members) object.emplace_back(std::string(member.key), tree(member.value));
    joinRepeated(object);
    return object;
}

JSON::Array elements(simdjson::dom::array elements) {
    JSON::Array array;
    array.reserve(elements.size());
    for (const auto element : elements) array.push_back(tree(element));
    return array;
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

void refuseTinyValues(std::string_view text) {
    if (text.size() <= JSON::fewValues) return;
    const std::size_t most = std::max(JSON::fewValues, text.size() / JSON::densestText);
    // Almost every text passes by the number of these characters, in strings too: a loop without branches.
    if (text.size() / 2 > most && mostValues(text) > most && countValues(text) > most)
        throw JSONError("the text holds too many values for its size");
}

simdjson::dom::element parsed(simdjson::dom::parser& parser, std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    refuseTinyValues(text);
    simdjson::dom::element root;
    auto error = simdjson::SUCCESS;
    // The smallest capacity that simdjson accepts is 32; `parse` copies the text into memory in which it may
    // read past the text's end.
    if (parser.capacity() < text.size() || parser.capacity() == 0)
        error = parser.allocate(std::max<std::size_t>(text.size(), 64), depthLimit);
    if (!error) error = parser.parse(text.data(), text.size(), true).get(root);
    if (error) throw JSONError(simdjson::error_message(error));
    return root;
}

JSON JSON::parse(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    refuseTinyValues(text);
    const simdjson::padded_string padded(text);
    ondemand::parser parser;
    ondemand::document document = checked(parser.iterate(padded));
    if (checked(document.is_scalar())) {
        simdjson::dom::parser scalars; // the other reader does not read a number alone as a document
        return tree(parsed(scalars, text));
    }
    JSON result = treeOf(checked(document.get_value()), 1);
    if (!document.current_location().error()) throw JSONError("there is text behind the value");
    return result;
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
