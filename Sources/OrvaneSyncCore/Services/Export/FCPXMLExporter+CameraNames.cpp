#include "OrvaneSyncCore/Models/FilePaths.h"
#include "OrvaneSyncCore/Services/Export/ExportCameras.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "Platform/Text.h"

#include <algorithm>
#include <map>
#include <unordered_set>

namespace orvane::FCPXMLExporter {

namespace {

using Videos = std::vector<const MediaAsset*>;

constexpr std::size_t shortestCameraFilename = 4; // characters; a letter, a number and at least one more

/// "Cam " and the first letter of the file's name, in upper case.
std::optional<std::string> nameByFile(const MediaAsset& from) {
    const std::string filename = platform::text::uppercased(from.filename);
    const auto characters = platform::text::characters(filename);
    if (characters.size() < shortestCameraFilename || !platform::text::isLetter(characters[0]) ||
        !platform::text::isNumber(characters[1]))
        return std::nullopt;
    return "Cam " + std::string(characters[0]);
}

bool isSeparator(char c) { return c == ' ' || c == '_' || c == '-'; }

/// The letter before or after `word`, such as "B" in "CAM_B", "CamB" and "B-Cam". Without a separator only a
/// capital letter that is common for cameras counts: "cams" and "CAMP" are ordinary words.
std::optional<char> letterBeside(std::string_view word, std::string_view folder) {
    const std::string upper = platform::text::uppercased(folder);
    if (upper.size() != folder.size() || upper.size() <= word.size()) return std::nullopt;
    const bool isInFront = upper.starts_with(word);
    if (!isInFront && !upper.ends_with(word)) return std::nullopt;
    std::string_view rest =
        isInFront ? folder.substr(word.size()) : folder.substr(0, folder.size() - word.size());
    constexpr char lastUsual = 'H';
    if (rest.size() == 1)
        return rest[0] >= 'A' && rest[0] <= lastUsual ? std::optional(rest[0]) : std::nullopt;
    if (rest.size() != 2 || !isSeparator(isInFront ? rest[0] : rest[1])) return std::nullopt;
    const char letter = isInFront ? upper.back() : upper.front();
    return letter >= 'A' && letter <= 'Z' ? std::optional(letter) : std::nullopt;
}

/// From the nearest folder above the file that is named after a camera.
std::optional<std::string> nameByFolder(const MediaAsset& from) {
    const auto folders = folderNames(from.url);
    for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
        for (const std::string_view word : {"CAMERA", "CAM"})
            if (const auto letter = letterBeside(word, *folder)) return std::string("Cam ") + *letter;
    return std::nullopt;
}

std::string nameByPlace(std::size_t index) {
    const auto letter = platform::text::utf8('A' + index);
    return "Cam " + letter.value_or(std::to_string(index + 1));
}

/// From the letters of the files, with the folder if several files have the same letter; empty for a file
/// without a letter.
std::vector<std::string> namesByFiles(const Videos& videos) {
    std::vector<std::string> names(videos.size());
    std::map<std::string, std::vector<std::size_t>> byName;
    for (std::size_t i = 0; i < videos.size(); ++i)
        if (auto name = nameByFile(*videos[i])) byName[*std::move(name)].push_back(i);
    for (const auto& [name, places] : byName) {
        std::vector<const FileURL*> files;
        for (const std::size_t place : places) files.push_back(&videos[place]->url);
        const std::vector<std::string> folders = distinguishingFolders(files);
        for (std::size_t i = 0; i < places.size(); ++i)
            names[places[i]] = folders[i].empty() ? name : name + " " + folders[i];
    }
    return names;
}

/// Fills in empty names from a folder whose letter no other camera has.
void addNamesByFolders(const Videos& videos, std::vector<std::string>& names) {
    std::map<std::string, std::vector<std::size_t>> byName;
    for (std::size_t i = 0; i < videos.size(); ++i)
        if (auto name = names[i].empty() ? nameByFolder(*videos[i]) : nameByFile(*videos[i]))
            byName[*std::move(name)].push_back(i);
    for (const auto& [name, places] : byName)
        if (places.size() == 1 && names[places.front()].empty()) names[places.front()] = name;
}

} // namespace

std::string deriveCameraName(const MediaAsset& from, std::size_t index) {
    auto name = nameByFile(from);
    return name ? *std::move(name) : nameByPlace(index);
}

std::string angleID(const std::string& cameraName) {
    std::string id = "angle_" + platform::text::lowercased(cameraName);
    std::ranges::replace(id, ' ', '_');
    return id;
}

std::vector<std::string> cameraNames(const Videos& videos) {
    std::vector<std::string> names = namesByFiles(videos);
    addNamesByFolders(videos, names);
    std::unordered_set<std::string> angles;
    std::unordered_map<std::string, int> numbers; // the last number behind each name
    for (std::string& name : names) {
        if (name.empty()) continue;
        const std::string own = name;
        while (!angles.insert(angleID(name)).second)
            name = own + " " + std::to_string(++numbers.try_emplace(angleID(own), 1).first->second);
    }
    std::size_t next = 0;
    for (std::size_t i = 0; i < names.size(); ++i) {
        if (!names[i].empty()) continue;
        next = std::max(next, i);
        while (!angles.insert(angleID(nameByPlace(next))).second) ++next;
        names[i] = nameByPlace(next);
    }
    return names;
}

} // namespace orvane::FCPXMLExporter
