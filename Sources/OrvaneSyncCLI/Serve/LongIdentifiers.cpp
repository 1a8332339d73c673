#include "OrvaneSyncCLI/Serve/LongIdentifiers.h"

#include "OrvaneSyncCore/Models/UUID.h"

namespace orvane::cli::rpc {

namespace {

constexpr std::string_view blanks = " \t\r\n", ofNumbers = "+-.0123456789Ee";

std::size_t endOfString(std::string_view line, std::size_t start) {
    for (std::size_t at = start + 1; at < line.size(); ++at) {
        if (line[at] == '\\')
            ++at;
        else if (line[at] == '"')
            return at + 1;
    }
    return line.size();
}

/// Where a number begins that is the value of a member `id`, whose name ends at `at`.
std::size_t startOfValue(std::string_view line, std::size_t at) {
    at = line.find_first_not_of(blanks, at);
    if (at == std::string_view::npos || line[at] != ':') return std::string_view::npos;
    return line.find_first_not_of(blanks, at + 1);
}

/// A number of JSON that only its size keeps from being read.
bool isNumber(std::string_view text) {
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    return !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos &&
           (digits.size() == 1 || digits.front() != '0');
}

bool isReadable(std::string_view number) {
    try {
        platform::JSON::parse(number);
        return true;
    } catch (const platform::JSONError&) {
        return false;
    }
}

} // namespace

LongIdentifiers::LongIdentifiers() : mark_(UUID::random().text() + " ") {}

platform::JSON LongIdentifiers::parsed(const std::string& line) const {
    try {
        return platform::JSON::parse(line);
    } catch (const platform::JSONError&) {
        const std::string tried = quoted(line);
        if (tried == line) throw;
        return platform::JSON::parse(tried);
    }
}

std::string LongIdentifiers::quoted(std::string_view line) const {
    std::string result;
    for (std::size_t at = 0; at < line.size();) {
        const std::size_t end = line[at] == '"' ? endOfString(line, at) : at + 1;
        const std::string_view piece = line.substr(at, end - at);
        result += piece;
        at = end;
        if (piece != "\"id\"") continue;
        const std::size_t start = startOfValue(line, at);
        if (start == std::string_view::npos) continue;
        const std::string_view rest = line.substr(start);
        const std::string_view number = rest.substr(0, rest.find_first_not_of(ofNumbers));
        if (!isNumber(number) || isReadable(number)) continue;
        result.append(line, at, start - at).append("\"").append(mark_).append(number).append("\"");
        at = start + number.size();
    }
    return result;
}

std::string LongIdentifiers::text(const platform::JSON& message) const {
    std::string line = message.dump();
    const std::string opening = "\"" + mark_;
    for (std::size_t at = line.find(opening); at != std::string::npos; at = line.find(opening, at)) {
        line.erase(at, opening.size());
        at = line.find('"', at);
        line.erase(at, 1);
    }
    return line;
}

} // namespace orvane::cli::rpc
