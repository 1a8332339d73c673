#include "Platform/JSON.h"

#include <simdjson.h>

namespace orvane::platform {

namespace ondemand = simdjson::ondemand;

namespace {

template <class T>
T checked(simdjson::simdjson_result<T> result) {
    T value;
    if (const auto error = std::move(result).get(value)) throw JSONError(simdjson::error_message(error));
    return value;
}

} // namespace

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
