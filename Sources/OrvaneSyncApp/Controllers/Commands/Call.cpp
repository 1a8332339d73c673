#include "OrvaneSyncApp/Controllers/Commands/Call.h"

#include "OrvaneSyncApp/Controllers/Commands/Command.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>

namespace orvane::commands {

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
    case texts:
    case paths:
        return "a list of texts";
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
    case integer:
        return value.integer().has_value();
    case boolean:
        return value.boolean().has_value();
    case texts:
    case paths: {
        const auto* elements = value.elements();
        return elements != nullptr &&
               std::ranges::all_of(*elements, [](const JSON& one) { return one.string() != nullptr; });
    }
    case any:
        break;
    }
    return true;
}

/// Of a whole number also what an `int` holds.
struct Range {
    std::optional<double> lowest, highest;

    explicit Range(const Parameter& parameter) : lowest(parameter.lowest), highest(parameter.highest) {
        if (parameter.kind != Parameter::Kind::integer) return;
        using Int = std::numeric_limits<int>;
        if (!lowest) lowest = Int::min();
        if (!highest) highest = Int::max();
    }
    bool holds(double number) const {
        return (!lowest || number >= *lowest) && (!highest || number <= *highest);
    }
    std::string text() const {
        using platform::text::formatted;
        constexpr const char* digits = "%.15g"; // 10000000, not 1e+07
        if (!highest) return formatted(digits, *lowest) + " or more";
        if (!lowest) return formatted(digits, *highest) + " or less";
        return formatted(digits, *lowest) + " to " + formatted(digits, *highest);
    }
};

std::string problemOfPath(const std::string& path) {
    if (path.empty()) return "is empty";
    // Standard input and output hold the requests and answers.
    if (path == "-") return "must name a file or a folder; '-' is not allowed here";
    return path.find('\0') == std::string::npos ? "" : "holds a NUL character";
}

/// What is wrong with an argument; nothing when it is as the command wants it.
std::string problemOf(const JSON& value, const Parameter& parameter) {
    if (!isOfKind(value, parameter.kind)) return "must be " + std::string(kindText(parameter.kind));
    const Range range(parameter);
    if (const auto number = value.number(); number && !range.holds(*number)) return "must be " + range.text();
    if (!parameter.choices.empty() &&
        std::ranges::find(parameter.choices, *value.string()) == parameter.choices.end())
        return "must be one of " +
               platform::text::joined({parameter.choices.begin(), parameter.choices.end()}, ", ");
    if (parameter.kind == Parameter::Kind::path) return problemOfPath(*value.string());
    if (parameter.kind == Parameter::Kind::paths)
        for (const JSON& path : *value.elements())
            if (std::string problem = problemOfPath(*path.string()); !problem.empty())
                return "holds a path that " + problem;
    return {};
}

} // namespace

std::string_view name(Parameter::Kind kind) {
    constexpr std::array<std::string_view, 9> names{"id",      "text", "path",  "number", "integer",
                                                    "boolean", "any",  "texts", "paths"};
    return rowOf(names, kind);
}

Call::Call(const Command& command, const JSON* params) : command_(&command) {
    const std::string said = std::string(command.id) + ": ";
    if (params != nullptr) {
        if (!params->isObject())
            throw Error(Refusal::invalidArguments, said + "params must be an object with named members");
        params_ = *params;
    }
    for (const Parameter& parameter : command.parameters) {
        const JSON* value = find(parameter.name);
        if (value == nullptr && !parameter.isOptional)
            throw Error(Refusal::invalidArguments, said + std::string(parameter.name) + " is missing");
        if (value == nullptr) continue;
        if (const std::string problem = problemOf(*value, parameter); !problem.empty())
            throw Error(Refusal::invalidArguments, said + std::string(parameter.name) + " " + problem);
    }
    if (params_.members() == nullptr) return;
    for (const auto& [name, value] : *params_.members())
        if (std::ranges::find(command.parameters, name, &Parameter::name) == command.parameters.end())
            throw Error(Refusal::invalidArguments, said + "takes no '" + name + "'");
}

const JSON* Call::memberNamed(std::string_view name) const {
    if (std::ranges::find(command_->parameters, name, &Parameter::name) == command_->parameters.end())
        throw std::logic_error(std::string(command_->id) + " has no parameter " + std::string(name));
    return params_.find(name);
}

const JSON* Call::find(std::string_view name) const {
    const JSON* value = memberNamed(name);
    return value == nullptr || value->isNull() ? nullptr : value;
}

bool Call::names(std::string_view name) const {
    const auto parameter = std::ranges::find(command_->parameters, name, &Parameter::name);
    return parameter != command_->parameters.end() && parameter->kind == Parameter::Kind::id && has(name);
}

UUID Call::id(std::string_view name) const { return *UUID::fromText(text(name)); }
const std::string& Call::text(std::string_view name) const { return *find(name)->string(); }
std::vector<UUID> Call::ids(std::string_view name) const {
    std::vector<UUID> found;
    for (const std::string& text : texts(name)) {
        const auto id = UUID::fromText(text);
        if (!id)
            throw Error(Refusal::invalidArguments, std::string(name) + ": '" + text + "' is no identifier");
        if (std::ranges::find(found, *id) == found.end()) found.push_back(*id);
    }
    return found;
}

std::vector<std::string> Call::texts(std::string_view name) const {
    std::vector<std::string> result;
    for (const JSON& element : *find(name)->elements()) result.push_back(*element.string());
    return result;
}
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

} // namespace orvane::commands
