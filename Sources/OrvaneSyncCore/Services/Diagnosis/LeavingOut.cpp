#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"

#include "OrvaneSyncCore/Services/Diagnosis/NumberRanges.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace orvane {

namespace {

/// Whether one of the paths, sorted by bytes, is in the folder. The folder ends with a slash.
bool hasIn(const std::vector<std::string>& paths, std::string_view folder) {
    const auto first = std::ranges::lower_bound(paths, folder);
    return first != paths.end() && first->starts_with(folder);
}

std::string_view parent(std::string_view folder) {
    return folder.substr(0, folder.substr(0, folder.size() - 1).rfind('/') + 1);
}

std::string_view lastName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

bool isDirectlyIn(std::string_view folder, std::string_view path) {
    return path.starts_with(folder) && path.find('/', folder.size()) == std::string_view::npos;
}

/// The longest common beginning of the names.
std::string commonStem(const std::vector<std::string>& names, std::string_view ending) {
    std::string stem = names.front().substr(0, names.front().size() - ending.size());
    for (const std::string& name : names)
        stem.resize(static_cast<std::size_t>(std::ranges::mismatch(stem, name).in1 - stem.begin()));
    return stem;
}

/// A pattern that fits all names with other digits in the same places.
std::string shapeOf(std::string_view name) {
    std::string shape;
    for (const char c : name) shape += c >= '0' && c <= '9' ? "[0-9]" : escapedInPattern({&c, 1});
    return shape;
}

} // namespace

std::string escapedInPattern(std::string_view path) {
    constexpr char firstPrintable = ' ', deleted = '\x7f';
    std::string pattern;
    for (const char c : path) {
        const bool isControl = (c >= 0 && c < firstPrintable) || c == deleted;
        pattern += isControl                          ? std::string{'?'}
                   : c == '*' || c == '?' || c == '[' ? std::string{'[', c, ']'}
                                                      : std::string{c};
    }
    return pattern;
}

bool PassedOver::leavesOut(const std::string& path) const {
    bool isFound = false;
    for (const std::string& root : roots_) {
        if (!path.starts_with(root)) continue;
        isFound = true;
        if (!glob_.matchesOrHolds(std::string_view(path).substr(root.size()))) return false;
    }
    return isFound;
}

std::vector<CureOption> LeavingOut::Options::options() const {
    std::vector<CureOption> all;
    for (const std::string& glob : globs) all.push_back({CureOption::Kind::exclude, glob});
    for (const std::string& folder : folders) all.push_back({CureOption::Kind::withoutFolder, folder});
    return all;
}

LeavingOut::LeavingOut(const Shoot& shoot) : shoot_(shoot) {
    for (const FileURL& folder : shoot.input.folders)
        roots_.push_back(folder.path + (folder.path.ends_with('/') ? "" : "/"));
    if (!roots_.empty()) return;
    // For work that no scan made: the folder that all its files have in common.
    std::string common;
    const auto take = [&](const MediaAsset& file) {
        const std::string& path = file.url.path;
        const std::size_t same =
            common.empty()
                ? path.size()
                : static_cast<std::size_t>(std::ranges::mismatch(common, path).in1 - common.begin());
        common = path.substr(0, path.substr(0, same).rfind('/') + 1);
    };
    for (const Shoot::Clip& clip : shoot.clips) take(clip.group->video);
    for (const MediaAsset& recording : shoot.input.recordings) take(recording);
    roots_.push_back(common);
}

std::optional<LeavingOut::Options> LeavingOut::of(const std::function<bool(const MediaAsset&)>& isLeftOut,
                                                  std::size_t mostByNumber) const {
    std::vector<std::string> left, kept;
    const auto take = [&](const MediaAsset& file) {
        (isLeftOut(file) ? left : kept).push_back(file.url.path);
    };
    for (const Shoot::Clip& clip : shoot_.clips) take(clip.group->video);
    for (const MediaAsset& recording : shoot_.input.recordings) take(recording);
    std::ranges::sort(kept);
    std::set<std::string> folders; // the highest folders that contain nothing else
    std::set<std::pair<std::string, std::string>>
        endings; // for other files: their folder, and the end of their name
    for (const std::string& path : left) {
        std::string_view folder = std::string_view(path).substr(0, path.rfind('/') + 1);
        if (hasIn(kept, folder)) {
            const std::string_view name = lastName(path);
            const std::size_t point = name.rfind('.');
            if (point == std::string_view::npos) return std::nullopt;
            endings.emplace(folder, name.substr(point));
            continue;
        }
        while (std::ranges::find(roots_, folder) == roots_.end() && folder.size() > 1 &&
               !hasIn(kept, parent(folder)))
            folder = parent(folder);
        folders.emplace(folder);
    }
    Options options;
    const auto propose = [&](const std::string& pattern, const auto& isMeant) {
        platform::throwIfStopped(shoot_.stop);
        const PassedOver trial(roots_, pattern);
        const auto isPassedOver = [&](const std::string& path) { return trial.leavesOut(path); };
        if (std::ranges::any_of(kept, isPassedOver)) return false;
        if (!std::ranges::all_of(
                left, [&](const std::string& path) { return !isMeant(path) || isPassedOver(path); }))
            return false;
        options.globs.push_back(pattern);
        return true;
    };
    const auto below = [&](const std::string& folder) -> std::optional<std::string> {
        for (const std::string& root : roots_)
            if (folder.starts_with(root))
                return escapedInPattern(std::string_view(folder).substr(root.size()));
        return std::nullopt;
    };
    for (const std::string& folder : folders) {
        const auto holdsIt = [&](const std::string& root) { return folder.starts_with(root); };
        const bool isNamed = std::ranges::find(roots_, folder) != roots_.end();
        if (isNamed && folder.size() > 1 && std::ranges::count_if(roots_, holdsIt) == 1) {
            options.folders.push_back(folder.substr(0, folder.size() - 1));
            continue;
        }
        const auto path = below(folder);
        if (!path || path->empty()) return std::nullopt;
        const std::string whole = path->substr(0, path->size() - 1);
        const auto isIn = [&](const std::string& file) { return file.starts_with(folder); };
        // A pattern of a name alone works below every folder of the scan.
        if (!propose(std::string(lastName(whole)), isIn) &&
            !propose(whole.find('/') == std::string::npos ? "./" + whole : whole, isIn))
            return std::nullopt;
    }
    for (const auto& [folder, ending] : endings) {
        const auto path = below(folder);
        if (!path) return std::nullopt;
        const std::string own = path->empty() ? "./" : *path;
        std::vector<std::string> names;
        for (const std::string& file : left)
            if (isDirectlyIn(folder, file) && file.ends_with(ending)) names.emplace_back(lastName(file));
        const auto isMeant = [&](const std::string& file) {
            return isDirectlyIn(folder, file) && file.ends_with(ending);
        };
        if (propose(own + "*" + escapedInPattern(ending), isMeant)) continue;
        const std::string stem = commonStem(names, ending);
        if (!stem.empty() && propose(own + escapedInPattern(stem) + "*" + escapedInPattern(ending), isMeant))
            continue;
        std::set<std::string> shapes;
        for (const std::string& name : names) shapes.insert(shapeOf(name));
        constexpr std::size_t most = 4;
        const std::size_t before = options.globs.size();
        if (shapes.size() <= most && std::ranges::all_of(shapes, [&](const std::string& shape) {
                const auto isOfShape = [&](const std::string& file) {
                    return isMeant(file) && shapeOf(lastName(file)) == shape;
                };
                if (propose(own + shape, isOfShape)) return true;
                std::vector<std::string> alike;
                std::ranges::copy_if(names, std::back_inserter(alike),
                                     [&](const std::string& name) { return shapeOf(name) == shape; });
                const std::string begin = commonStem(alike, ending);
                return !begin.empty() &&
                       propose(own + escapedInPattern(begin) + "*" + escapedInPattern(ending), isOfShape);
            }))
            continue;
        options.globs.resize(before);
        // Neighbours by number: a few are named, more are left out as those before or after the others.
        constexpr std::size_t mostNames = 4;
        if (names.size() <= mostNames && std::ranges::all_of(names, [&](const std::string& name) {
                return propose(own + escapedInPattern(name), [&](const std::string& file) {
                    return isMeant(file) && lastName(file) == name;
                });
            }))
            continue;
        if (mostByNumber == 0) return std::nullopt;
        options.globs.resize(before);
        std::vector<std::string> others;
        for (const std::string& file : kept)
            if (isMeant(file)) others.emplace_back(lastName(file));
        const auto ranges = numberRanges(names, others);
        const bool areFew = !ranges.empty() && options.count() + ranges.size() <= mostByNumber;
        if (!areFew || !std::ranges::all_of(ranges, [&](const NumberRange& range) {
                return propose(own + range.pattern, [&](const std::string& file) {
                    return isMeant(file) && std::ranges::binary_search(range.names, lastName(file));
                });
            }))
            return std::nullopt;
    }
    return options;
}

} // namespace orvane
