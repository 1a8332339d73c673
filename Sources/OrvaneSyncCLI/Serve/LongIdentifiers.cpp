#include "OrvaneSyncCLI/Serve/LongIdentifiers.h"

#include "OrvaneSyncCore/Models/UUID.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

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

/// By the grammar of JSON.
bool isNumber(std::string_view text) {
    const auto skipDigits = [&] {
        const std::size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
        text.remove_prefix(count);
        return count;
    };
    if (text.starts_with('-')) text.remove_prefix(1);
    const bool beginsWithZero = text.starts_with('0');
    const std::size_t digits = skipDigits();
    if (digits == 0 || (beginsWithZero && digits > 1)) return false;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        if (skipDigits() == 0) return false;
    }
    if (text.starts_with('e') || text.starts_with('E')) {
        text.remove_prefix(1);
        if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
        if (skipDigits() == 0) return false;
    }
    return text.empty();
}

bool isReadable(std::string_view number) {
    constexpr std::size_t digitsOfAnyInteger = 18;
    if (number.size() <= digitsOfAnyInteger && number.find_first_of("eE") == std::string_view::npos)
        return true;
    try {
        platform::JSON::parse(number);
        return true;
    } catch (const platform::JSONError&) {
        return false;
    }
}

/// As this program writes it.
std::string rounded(std::string_view number) {
    constexpr double largest = std::numeric_limits<double>::max();
    const double value = std::strtod(std::string(number).c_str(), nullptr);
    return platform::JSON(std::clamp(value, -largest, largest)).dump();
}

} // namespace

LongIdentifiers::LongIdentifiers() : mark_(UUID::random().text() + " ") {}

platform::JSON LongIdentifiers::parsed(const std::string& line) const {
    try {
        return platform::JSON::parse(line);
    } catch (const platform::JSONError&) {
        const std::string tried = readable(line);
        if (tried == line) throw;
        return platform::JSON::parse(tried);
    }
}

std::string LongIdentifiers::readable(std::string_view line) const {
    std::string result;
    bool isIdentifier = false; // of the member whose value comes next
    for (std::size_t at = 0; at < line.size();) {
        const bool isText = line[at] == '"';
        const bool mayBeNumber = line[at] == '-' || (line[at] >= '0' && line[at] <= '9');
        std::size_t end = at + 1;
        if (isText) end = endOfString(line, at);
        if (mayBeNumber) end = std::min(line.find_first_not_of(ofNumbers, at), line.size());
        const std::string_view piece = line.substr(at, end - at);
        if (!mayBeNumber || !isNumber(piece) || isReadable(piece))
            result += piece;
        else if (isIdentifier)
            result.append("\"").append(mark_).append(piece).append("\"");
        else
            result += rounded(piece);
        if (piece == "\"id\"")
            isIdentifier = true;
        else if (piece != ":" && blanks.find(piece) == std::string_view::npos)
            isIdentifier = false;
        at = end;
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
