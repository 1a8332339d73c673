#include "OrvaneSyncCore/Models/FilePaths.h"

#include "Platform/Text.h"

#include <algorithm>
#include <set>
#include <utility>

namespace orvane {

namespace {

std::string_view folderOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash);
}

std::vector<std::string_view> namesIn(std::string_view folder) {
    std::vector<std::string_view> names;
    while (!folder.empty()) {
        const std::size_t end = std::min(folder.find('/'), folder.size());
        if (end > 0) names.push_back(folder.substr(0, end));
        folder.remove_prefix(std::min(end + 1, folder.size()));
    }
    return names;
}

/// Keys whose order by bytes is the order of the paths. The key of a folder is made once for all its files.
class PathKeys {
  public:
    std::string of(const std::string& path) {
        const std::string_view folder = folderOf(path);
        const auto [known, isNew] = folders_.try_emplace(folder);
        if (isNew)
            for (const std::string_view name : namesIn(folder))
                known->second.append(platform::text::localizedStandardSortKey(name)).push_back('\0');
        // The key of a name contains no zero byte, so one zero keeps names apart; two zeros come before any
        // longer path.
        const std::size_t start = folder.size() + (path.size() > folder.size() ? 1 : 0);
        std::string key = known->second;
        key.append(platform::text::localizedStandardSortKey(std::string_view(path).substr(start)));
        key.append(2, '\0').append(path);
        return key;
    }

  private:
    std::unordered_map<std::string_view, std::string> folders_; ///< names are parts of the sorted paths
};

/// Compares two paths as their keys would compare.
bool isBefore(const std::string& a, const std::string& b) {
    // Start at the first folder whose name differs.
    const auto apart = static_cast<std::size_t>(std::ranges::mismatch(a, b).in1 - a.begin());
    const std::size_t slash = apart == 0 ? std::string::npos : a.rfind('/', apart - 1);
    const std::size_t common = slash == std::string::npos ? 0 : slash + 1;
    std::string_view leftA = std::string_view(a).substr(common), leftB = std::string_view(b).substr(common);
    while (!leftA.empty() && !leftB.empty()) {
        const std::string_view nameA = leftA.substr(0, leftA.find('/')),
                               nameB = leftB.substr(0, leftB.find('/'));
        const bool isFileA = nameA.size() == leftA.size(), isFileB = nameB.size() == leftB.size();
        if (const int order = platform::text::compareLocalizedStandard(nameA, nameB); order != 0)
            return order < 0;
        if (isFileA != isFileB) return isFileA;
        leftA.remove_prefix(std::min(nameA.size() + 1, leftA.size()));
        leftB.remove_prefix(std::min(nameB.size() + 1, leftB.size()));
    }
    return a < b;
}

template <class Item, class PathOf>
void sortByKeys(std::vector<Item>& items, PathOf pathOf) {
    // Cameras number their files with a fixed number of digits. Then the order by bytes is the right one:
    // comparing neighbours proves it, which costs less than making keys.
    std::ranges::sort(items, {}, pathOf);
    const auto isUnordered = [&](const Item& a, const Item& b) { return isBefore(pathOf(b), pathOf(a)); };
    if (std::ranges::adjacent_find(items, isUnordered) == items.end()) return;

    PathKeys keys;
    std::vector<std::pair<std::string, std::size_t>> order;
    order.reserve(items.size());
    for (const Item& item : items) order.emplace_back(keys.of(pathOf(item)), order.size());
    std::ranges::sort(order);
    std::vector<Item> sorted;
    sorted.reserve(items.size());
    for (const auto& [key, place] : order) sorted.push_back(std::move(items[place]));
    items = std::move(sorted);
}

using Folder = std::vector<std::string_view>;

/// How many names all folders have in common at the front or, with reversed iterators, at the end.
template <class Begin, class End>
std::size_t commonNames(const std::set<Folder>& folders, Begin begin, End end) {
    const Folder& first = *folders.begin();
    std::size_t common = first.size();
    for (const Folder& folder : folders) {
        const auto apart = std::mismatch(begin(first), end(first), begin(folder), end(folder)).first;
        common = std::min(common, static_cast<std::size_t>(apart - begin(first)));
    }
    return common;
}

/// The names of a folder that are shown: from `first` on, without the last `behind` names, at most `most`.
Folder middle(const Folder& folder, std::size_t first, std::size_t behind, std::size_t most) {
    const std::size_t end = std::max(first, folder.size() - behind);
    const auto at = [&](std::size_t place) { return folder.begin() + static_cast<std::ptrdiff_t>(place); };
    return {at(first), at(std::min(end, first + most))};
}

} // namespace

void sortByPath(std::vector<FileURL>& files) {
    sortByKeys(files, [](const FileURL& file) -> const std::string& { return file.path; });
}

void sortByPath(std::vector<const MediaAsset*>& assets) {
    sortByKeys(assets, [](const MediaAsset* asset) -> const std::string& { return asset->url.path; });
}

std::vector<std::string_view> folderNames(const FileURL& file) { return namesIn(folderOf(file.path)); }

std::vector<std::string> distinguishingFolders(const std::vector<const FileURL*>& files) {
    std::vector<Folder> own;
    own.reserve(files.size());
    for (const FileURL* file : files) own.push_back(folderNames(*file));
    const std::set<Folder> folders(own.begin(), own.end());
    if (folders.size() < 2) return std::vector<std::string>(files.size());

    std::size_t first = commonNames(
        folders, [](const Folder& f) { return f.begin(); }, [](const Folder& f) { return f.end(); });
    std::size_t behind = commonNames(
        folders, [](const Folder& f) { return f.rbegin(); }, [](const Folder& f) { return f.rend(); });
    // Names that are common at both ends of a short path count once.
    for (const Folder& folder : folders) behind = std::min(behind, folder.size() - first);
    // A file in the folder above the others is distinguished by that folder.
    const auto isAbove = [&](const Folder& folder) { return folder.size() <= first + behind; };
    if (first > 0 && std::ranges::any_of(folders, isAbove)) --first;

    // One name is enough if it differs for all.
    std::set<std::string_view> names;
    for (const Folder& folder : folders)
        if (!isAbove(folder)) names.insert(folder[first]);
    const std::size_t most = names.size() == folders.size() ? 1 : std::string::npos / 2;

    std::vector<std::string> texts;
    texts.reserve(own.size());
    for (const Folder& folder : own) {
        std::string text;
        for (const std::string_view name : middle(folder, first, behind, most))
            text.append(text.empty() ? "" : "/").append(name);
        texts.push_back(platform::text::validUTF8(text));
    }
    return texts;
}

void FileNames::add(const FileURL& file) {
    const auto [own, isNew] = files_.insert(file);
    if (isNew) byName_[file.lastPathComponent()].push_back(&*own);
}

bool FileNames::isRepeated(const FileURL& file) const {
    const auto namesakes = byName_.find(file.lastPathComponent());
    return namesakes != byName_.end() && namesakes->second.size() > 1;
}

std::string FileNames::of(const FileURL& file) const {
    std::string name = file.lastPathComponent();
    if (!isRepeated(file)) return name;
    if (!folders_.contains(file)) {
        const auto& files = byName_.at(name);
        const std::vector<std::string> folders = distinguishingFolders(files);
        for (std::size_t i = 0; i < files.size(); ++i) folders_[*files[i]] = folders[i];
    }
    const std::string& folder = folders_[file];
    return folder.empty() ? name : folder + "/" + name;
}

} // namespace orvane
