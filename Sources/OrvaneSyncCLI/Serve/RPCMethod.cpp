#include "OrvaneSyncCLI/Serve/RPCMethod.h"

#include <algorithm>
#include <limits>

namespace orvane::cli::rpc {

namespace {

std::string_view kindText(Parameter::Kind kind) {
    using enum Parameter::Kind;
    switch (kind) {
    case id:
        return "an identifier";
    case text:
    case path:
        return "a text";
    case number:
        return "a number";
    case integer:
        return "a whole number";
    case boolean:
        return "true or false";
    case any:
        break;
    }
    return "a value";
}

bool isOfKind(const JSON& value, Parameter::Kind kind) {
    using enum Parameter::Kind;
    switch (kind) {
    case id:
        return value.string() != nullptr && UUID::fromText(*value.string());
    case text:
    case path:
        return value.string() != nullptr;
    case number:
        return value.number().has_value();
    case integer: {
        const auto whole = value.integer();
        return whole && *whole >= std::numeric_limits<int>::min() &&
               *whole <= std::numeric_limits<int>::max();
    }
    case boolean:
        return value.boolean().has_value();
    case any:
        break;
    }
    return true;
}

/// What is wrong with an argument; nothing when it is as the method wants it.
std::string problemOf(const JSON& value, Parameter::Kind kind) {
    if (!isOfKind(value, kind)) return "must be " + std::string(kindText(kind));
    if (kind != Parameter::Kind::path) return {};
    if (value.string()->empty()) return "is empty";
    // Standard input and output hold the requests and answers.
    if (*value.string() == "-") return "must name a file or a folder, and '-' is none here";
    return value.string()->find('\0') == std::string::npos ? "" : "holds a NUL character";
}

} // namespace

Call::Call(const Method& method, const JSON* params) {
    const std::string said = std::string(method.name) + ": ";
    if (params != nullptr) {
        if (!params->isObject()) throw Error(ErrorCode::invalidParams, said + "arguments go by name");
        params_ = *params;
    }
    for (const Parameter& parameter : method.parameters) {
        const JSON* value = find(parameter.name);
        if (value == nullptr && !parameter.isOptional)
            throw Error(ErrorCode::invalidParams, said + std::string(parameter.name) + " is missing");
        if (value == nullptr) continue;
        if (const std::string problem = problemOf(*value, parameter.kind); !problem.empty())
            throw Error(ErrorCode::invalidParams, said + std::string(parameter.name) + " " + problem);
    }
    if (params_.members() == nullptr) return;
    for (const auto& [name, value] : *params_.members())
        if (std::ranges::find(method.parameters, name, &Parameter::name) == method.parameters.end())
            throw Error(ErrorCode::invalidParams, said + "takes no '" + name + "'");
}

const JSON* Call::find(std::string_view name) const {
    const JSON* value = params_.find(name);
    return value == nullptr || value->isNull() ? nullptr : value;
}

UUID Call::id(std::string_view name) const { return *UUID::fromText(text(name)); }
const std::string& Call::text(std::string_view name) const { return *find(name)->string(); }
double Call::number(std::string_view name) const { return *find(name)->number(); }
int Call::integer(std::string_view name) const { return static_cast<int>(*find(name)->integer()); }
bool Call::boolean(std::string_view name) const { return *find(name)->boolean(); }

std::optional<std::string> Call::textIfPresent(std::string_view name) const {
    return has(name) ? std::optional(text(name)) : std::nullopt;
}

std::optional<double> Call::numberIfPresent(std::string_view name) const {
    return has(name) ? std::optional(number(name)) : std::nullopt;
}

JSON Call::any(std::string_view name) const {
    const JSON* value = find(name);
    return value == nullptr ? JSON() : *value;
}

} // namespace orvane::cli::rpc
