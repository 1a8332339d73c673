#include "OrvaneSyncCore/Services/Diagnosis/LeavingOut.h"

#include "OrvaneSyncCore/Services/Diagnosis/NumberRanges.h"
#include "Platform/Stop.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <utility>

namespace orvane {

namespace {

using Paths = std::vector<std::string_view>;

/// Whether one of the paths, sorted by bytes, is in the folder. The folder ends with a slash.
bool hasIn(const Paths& paths, std::string_view folder) {
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

/// The longest common beginning of the files' names, without their ending.
std::string_view commonStem(const Paths& files, std::string_view ending) {
    std::string_view stem = lastName(files.front());
    stem.remove_suffix(ending.size());
    for (const std::string_view file : files)
        stem = stem.substr(
            0, static_cast<std::size_t>(std::ranges::mismatch(stem, lastName(file)).in1 - stem.begin()));
    return stem;
}

/// A pattern that fits all names with other digits in the same places.
std::string shapeOf(std::string_view name) {
    std::string shape;
    for (const char c : name) shape += c >= '0' && c <= '9' ? "[0-9]" : escapedInPattern({&c, 1});
    return shape;
}

/// Names that differ only in their digits have one shape.
std::map<std::string, Paths> byShape(const Paths& files) {
    std::map<std::string, Paths> sameDigits; // by the names with zeros for all digits
    Paths* last = nullptr;                   // most names have the form of the one before
    for (const std::string_view file : files) {
        const std::string_view name = lastName(file);
        if (last == nullptr || !haveOneForm(lastName(last->back()), name)) {
            std::string form(name);
            for (char& c : form)
                if (c >= '0' && c <= '9') c = '0';
            last = &sameDigits[form];
        }
        last->push_back(file);
    }
    std::map<std::string, Paths> shapes;
    for (const auto& [name, alike] : sameDigits) {
        Paths& all = shapes[shapeOf(name)];
        all.insert(all.end(), alike.begin(), alike.end());
    }
    return shapes;
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

bool PassedOver::leavesOut(std::string_view path) const {
    bool isFound = false;
    for (const std::string& root : roots_) {
        if (!path.starts_with(root)) continue;
        isFound = true;
        if (!glob_.matchesOrHolds(path.substr(root.size()))) return false;
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
    for (const std::string_view folder : shoot.folders) {
        const std::size_t same =
            common.empty()
                ? folder.size()
                : static_cast<std::size_t>(std::ranges::mismatch(common, folder).in1 - common.begin());
        common = folder.substr(0, folder.substr(0, same).rfind('/') + 1);
    }
    roots_.push_back(common);
}

std::optional<LeavingOut::Options> LeavingOut::of(const std::function<bool(const MediaAsset&)>& isLeftOut,
                                                  std::size_t mostByNumber) const {
    platform::throwIfStopped(shoot_.stop);
    std::vector<const Shoot::File*> left;
    Paths kept;
    std::vector<bool> hasKept(shoot_.folders.size()); // directly in the folder
    for (const Shoot::File& file : shoot_.files) {
        if (isLeftOut(*file.asset)) {
            left.push_back(&file);
            continue;
        }
        kept.push_back(file.asset->url.path);
        hasKept[file.folder] = true;
    }
    Paths keptFolders; // sorted by bytes
    for (std::size_t i = 0; i < hasKept.size(); ++i)
        if (hasKept[i]) keptFolders.push_back(shoot_.folders[i]);
    std::vector<bool> holdsKept; // anywhere below the folder
    for (const std::string_view folder : shoot_.folders) holdsKept.push_back(hasIn(keptFolders, folder));
    std::map<std::string_view, Paths> whole; // by the highest folder that contains nothing else
    std::map<std::pair<std::size_t, std::string_view>, Paths>
        mixed; // in other folders: by the folder and the end of the name
    std::vector<std::string_view> highest(shoot_.folders.size());
    auto latest = mixed.end(); // where the file before is; most are of its folder and have its ending
    for (const Shoot::File* file : left) {
        const std::string_view path = file->asset->url.path;
        if (holdsKept[file->folder]) {
            const std::string_view name = lastName(path);
            const std::size_t point = name.rfind('.');
            if (point == std::string_view::npos) return std::nullopt;
            const std::pair place(file->folder, name.substr(point));
            if (latest == mixed.end() || latest->first != place) latest = mixed.try_emplace(place).first;
            latest->second.push_back(path);
            continue;
        }
        std::string_view& folder = highest[file->folder];
        if (folder.empty()) {
            folder = shoot_.folders[file->folder];
            while (std::ranges::find(roots_, folder) == roots_.end() && folder.size() > 1 &&
                   !hasIn(keptFolders, parent(folder)))
                folder = parent(folder);
        }
        whole[folder].push_back(path);
    }
    Options options;
    // `reachable`: those of the files to keep that the pattern may fit.
    const auto propose = [&](Paths& reachable, const std::string& pattern, const Paths& meant) {
        platform::throwIfStopped(shoot_.stop);
        const PassedOver trial(roots_, pattern);
        const auto isPassedOver = [&](std::string_view path) { return trial.leavesOut(path); };
        if (const auto wrong = std::ranges::find_if(reachable, isPassedOver); wrong != reachable.end()) {
            std::swap(*wrong, reachable.front()); // it often refutes the next pattern as well
            return false;
        }
        if (!std::ranges::all_of(meant, isPassedOver)) return false;
        options.globs.push_back(pattern);
        return true;
    };
    const auto below = [&](std::string_view folder) -> std::optional<std::string> {
        for (const std::string& root : roots_)
            if (folder.starts_with(root)) return escapedInPattern(folder.substr(root.size()));
        return std::nullopt;
    };
    for (const auto& [folder, files] : whole) {
        const auto holdsIt = [&](const std::string& root) { return folder.starts_with(root); };
        const bool isNamed = std::ranges::find(roots_, folder) != roots_.end();
        if (isNamed && folder.size() > 1 && std::ranges::count_if(roots_, holdsIt) == 1) {
            options.folders.emplace_back(folder.substr(0, folder.size() - 1));
            continue;
        }
        const auto path = below(folder);
        if (!path || path->empty()) return std::nullopt;
        const std::string pattern = path->substr(0, path->size() - 1);
        // A pattern of a name alone works below every folder of the scan.
        if (!propose(kept, std::string(lastName(pattern)), files) &&
            !propose(kept, pattern.find('/') == std::string::npos ? "./" + pattern : pattern, files))
            return std::nullopt;
    }
    for (const auto& [place, files] : mixed) {
        const auto& [folder, ending] = place;
        const auto path = below(shoot_.folders[folder]);
        if (!path) return std::nullopt;
        const std::string own = path->empty() ? "./" : *path;
        // Below one root, a pattern that begins with a folder's name fits files in this folder only.
        const std::string_view in = shoot_.folders[folder];
        Paths reachable = kept;
        if (roots_.size() == 1 && *path == in.substr(roots_.front().size()))
            std::erase_if(reachable, [&](std::string_view file) { return !file.starts_with(in); });
        const auto proposeHere = [&](const std::string& pattern, const Paths& meant) {
            return propose(reachable, pattern, meant);
        };
        if (proposeHere(own + "*" + escapedInPattern(ending), files)) continue;
        const auto proposeBeginning = [&](const Paths& alike) {
            const std::string_view stem = commonStem(alike, ending);
            return !stem.empty() &&
                   proposeHere(own + escapedInPattern(stem) + "*" + escapedInPattern(ending), alike);
        };
        if (proposeBeginning(files)) continue;
        constexpr std::size_t most = 4;
        const std::size_t before = options.globs.size();
        const auto shapes = byShape(files);
        if (shapes.size() <= most && std::ranges::all_of(shapes, [&](const auto& entry) {
                const auto& [shape, alike] = entry;
                return proposeHere(own + shape, alike) || proposeBeginning(alike);
            }))
            continue;
        options.globs.resize(before);
        // Neighbours by number: a few are named, more are left out as those before or after the others.
        constexpr std::size_t mostNames = 4;
        if (files.size() <= mostNames && std::ranges::all_of(files, [&](std::string_view file) {
                return proposeHere(own + escapedInPattern(lastName(file)), {file});
            }))
            continue;
        options.globs.resize(before);
        if (options.count() >= mostByNumber) return std::nullopt;
        Paths sorted = files;
        if (!std::ranges::is_sorted(sorted)) std::ranges::sort(sorted);
        const auto nameOf = [&](std::string_view file) { return file.substr(in.size()); };
        Paths names, others;
        for (const std::string_view file : sorted) names.push_back(nameOf(file));
        for (const std::string_view file : reachable)
            if (isDirectlyIn(in, file) && file.ends_with(ending)) others.push_back(nameOf(file));
        const auto ranges = numberRanges(names, others, mostByNumber - options.count());
        if (ranges.empty() || !std::ranges::all_of(ranges, [&](const NumberRange& range) {
                Paths meant;
                std::ranges::set_intersection(sorted, range.names, std::back_inserter(meant), {}, nameOf);
                return proposeHere(own + range.pattern, meant);
            }))
            return std::nullopt;
    }
    return options;
}

} // namespace orvane
