#include "Platform/JSONView.h"

#include "Platform/SimdJSON.h"

#include <bit>

namespace orvane::platform {

namespace dom = simdjson::dom;
namespace ondemand = simdjson::ondemand;

namespace {

/// A parser that has read a very large text does not keep its memory for small ones.
constexpr std::size_t largestKept = std::size_t{1} << 20U;

} // namespace

template <class Element>
JSONView::JSONView(const Element& element) : element_(std::bit_cast<decltype(element_)>(element)) {}

template <class Element>
Element JSONView::as() const {
    return std::bit_cast<Element>(element_);
}

bool JSONView::isNull() const { return as<dom::element>().is_null(); }

bool JSONView::isObject() const { return as<dom::element>().is_object(); }

std::optional<std::int64_t> JSONView::integer() const {
    const auto element = as<dom::element>();
    std::int64_t value = 0;
    if (!element.get_int64().get(value)) return value;
    return element.is_number() ? tree(element).integer() : std::nullopt;
}

std::optional<std::uint64_t> JSONView::unsignedInteger() const {
    const auto element = as<dom::element>();
    std::uint64_t value = 0;
    if (!element.get_uint64().get(value)) return value;
    return element.is_number() ? tree(element).unsignedInteger() : std::nullopt;
}

std::optional<double> JSONView::number() const {
    double value = 0;
    if (as<dom::element>().get_double().get(value)) return std::nullopt;
    return value;
}

std::optional<std::string_view> JSONView::string() const {
    std::string_view text;
    if (as<dom::element>().get_string().get(text)) return std::nullopt;
    return text;
}

std::optional<JSONView> JSONView::find(std::string_view key) const {
    dom::element value;
    if (as<dom::element>().at_key(key).get(value)) return std::nullopt;
    return JSONView(value);
}

std::optional<std::vector<JSONView>> JSONView::elements() const {
    dom::array array;
    if (as<dom::element>().get_array().get(array)) return std::nullopt;
    std::vector<JSONView> result;
    result.reserve(array.size());
    for (const dom::element element : array) result.push_back(JSONView(element));
    return result;
}

JSON JSONView::value() const { return tree(as<dom::element>()); }

JSONMembers::JSONMembers(const JSONView& object) : isObject_(object.isObject()) {
    if (!isObject_) return;
    const dom::object fields = object.as<dom::element>().get_object().value_unsafe();
    members_.reserve(fields.size());
    for (const auto field : fields) members_.emplace_back(field.key, JSONView(field.value));
}

std::optional<JSONView> JSONMembers::find(std::string_view key) const {
    for (const auto& [name, value] : members_)
        if (name == key) return value;
    return std::nullopt;
}

struct JSONParser::State {
    dom::parser parser;
};

JSONParser::JSONParser() : state_(std::make_unique<State>()) {}
JSONParser::~JSONParser() = default;

JSONView JSONParser::parse(std::string_view text) {
    if (state_->parser.capacity() > largestKept && text.size() < largestKept) state_->parser = dom::parser();
    return JSONView(parsed(state_->parser, text));
}

void forEachRecord(std::string& text,
                   const std::function<void(std::string_view key, std::string_view record)>& visit) {
    text.reserve(text.size() + simdjson::SIMDJSON_PADDING);
    ondemand::parser parser;
    ondemand::document document = checked(parser.iterate(text.data(), text.size(), text.capacity()));
    for (auto result : checked(document.get_object())) {
        ondemand::field field = checked(std::move(result));
        const std::string_view key = checked(field.unescaped_key());
        ondemand::object record = checked(field.value().get_object());
        visit(key, checked(record.raw_json()));
    }
    if (!document.current_location().error()) throw JSONError("there is text behind the value");
}

} // namespace orvane::platform
