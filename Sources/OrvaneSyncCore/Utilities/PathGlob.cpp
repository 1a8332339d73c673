#include "OrvaneSyncCore/Utilities/PathGlob.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

namespace orvane {

namespace {

constexpr std::string_view anyFolders = "**";
constexpr std::size_t none = std::string_view::npos;

/// Takes the next name off the path, without empty names and "."; empty at its end.
std::string_view takeName(std::string_view& path) {
    while (!path.empty()) {
        const std::size_t slash = path.find('/');
        const std::string_view name = path.substr(0, slash);
        path.remove_prefix(slash == none ? path.size() : slash + 1);
        if (!name.empty() && name != ".") return name;
    }
    return {};
}

/// The number of bytes of the first character. An invalid byte counts as one character.
std::size_t characterLength(std::string_view text) {
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t stated = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : first >= 0xC0 ? 2 : 1;
    std::size_t length = 1;
    while (length < stated && length < text.size() &&
           (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80)
        ++length;
    return length;
}

std::string_view takeCharacter(std::string_view& text) {
    const std::string_view character = text.substr(0, characterLength(text));
    text.remove_prefix(character.size());
    return character;
}

/// Removes the set, "[...]", from the front of the pattern and returns whether the character is in it. Absent
/// if the set has no end: then its bracket is an ordinary character. Bytes can be compared, as UTF-8 keeps
/// the order of the characters.
std::optional<bool> takeSet(std::string_view& pattern, std::string_view character) {
    std::string_view rest = pattern.substr(1);
    const bool isNegated = rest.starts_with('!') || rest.starts_with('^');
    if (isNegated) rest.remove_prefix(1);
    bool isIn = false;
    for (bool isFirst = true; !rest.empty() && (isFirst || rest.front() != ']'); isFirst = false) {
        const std::string_view from = takeCharacter(rest);
        std::string_view to = from;
        if (rest.size() > 1 && rest.front() == '-' && rest[1] != ']') {
            rest.remove_prefix(1);
            to = takeCharacter(rest);
        }
        isIn = isIn || (from <= character && character <= to);
    }
    if (rest.empty()) return std::nullopt;
    pattern = rest.substr(1);
    return isIn != isNegated;
}

/// Removes one character from both; false if they differ.
bool takeOne(std::string_view& pattern, std::string_view& name) {
    if (pattern.empty() || name.empty()) return false;
    const std::string_view character = name.substr(0, characterLength(name));
    name.remove_prefix(character.size());
    if (pattern.front() == '[')
        if (const auto isIn = takeSet(pattern, character)) return *isIn;
    const std::string_view wanted = takeCharacter(pattern);
    return wanted == "?" || wanted == character;
}

bool matchesName(std::string_view pattern, std::string_view name) {
    // After a mismatch the last star takes one more character and matching goes on from there: the pattern
    // behind that star, and the part of the name that it does not cover yet.
    std::string_view behindStar, behindReach;
    bool hasStar = false;
    for (;;) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            hasStar = true;
            behindStar = pattern;
            behindReach = name;
        } else if (pattern.empty() && name.empty()) {
            return true;
        } else if (!takeOne(pattern, name)) {
            if (!hasStar || behindReach.empty()) return false;
            takeCharacter(behindReach);
            pattern = behindStar;
            name = behindReach;
        }
    }
}

} // namespace

PathGlob::PathGlob(std::string_view pattern) {
    while (pattern.ends_with('/')) pattern.remove_suffix(1);
    isForWholePath_ = pattern.find('/') != none;
    for (std::string_view name = takeName(pattern); !name.empty(); name = takeName(pattern))
        names_.emplace_back(name);
    hasAnyFolders_ = std::ranges::find(names_, anyFolders) != names_.end();
}

bool PathGlob::matches(std::string_view path) const { return matches(path, false); }

bool PathGlob::matchesOrHolds(std::string_view path) const { return matches(path, true); }

bool PathGlob::matches(std::string_view path, bool orFolderAbove) const {
    if (names_.empty()) return false;
    if (!isForWholePath_) {
        for (std::string_view name = takeName(path); !name.empty(); name = takeName(path))
            if (matchesName(names_.front(), name)) return true;
        return false;
    }
    if (!hasAnyFolders_) {
        for (const std::string& wanted : names_) {
            const std::string_view name = takeName(path);
            if (name.empty() || !matchesName(wanted, name)) return false;
        }
        return orFolderAbove || takeName(path).empty();
    }
    // reached[i]: the names so far are matched by the first i names of the pattern.
    std::vector<bool> reached(names_.size() + 1);
    const auto skipFolders = [&] {
        for (std::size_t i = 0; i < names_.size(); ++i)
            if (reached[i] && names_[i] == anyFolders) reached[i + 1] = true;
    };
    reached[0] = true;
    skipFolders();
    for (std::string_view name = takeName(path); !name.empty(); name = takeName(path)) {
        std::vector<bool> next(reached.size());
        for (std::size_t i = 0; i < names_.size(); ++i) {
            if (!reached[i]) continue;
            if (names_[i] == anyFolders)
                next[i] = true;
            else if (matchesName(names_[i], name))
                next[i + 1] = true;
        }
        reached = std::move(next);
        skipFolders();
        if (orFolderAbove && reached.back()) return true;
    }
    return reached.back();
}

} // namespace orvane
