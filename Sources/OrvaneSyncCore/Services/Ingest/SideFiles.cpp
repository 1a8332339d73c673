#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"

#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace orvane {

namespace {

constexpr std::uint64_t longestFile = std::uint64_t{1} << 22U;
constexpr std::array<std::string_view, 4> suffixes{"m01.xml", ".xml", ".ale", ".xmp"};

/// Names on a card are ASCII, and others are compared as they are.
std::string lowercase(std::string_view name) {
    std::string result(name);
    std::ranges::transform(result, result.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 'a' - 'A') : c;
    });
    return result;
}

std::string_view nameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }
std::string folderOf(const std::string& path) { return path.substr(0, path.size() - nameOf(path).size()); }
std::string_view stemOf(std::string_view name) { return name.substr(0, name.rfind('.')); }

} // namespace

std::optional<StartTimecode> startTimecodeFromLog(std::string_view text, std::string_view stem) {
    try {
        const ALEFile log = ALEParser().parse(text);
        const std::string wanted = lowercase(stem);
        for (std::size_t row = 0; row < log.clipCount(); ++row) {
            const ALEClip clip = log.clip(row);
            const std::string name = lowercase(platform::text::trimmed(clip.cell("Name").value_or("")));
            if (log.clipCount() > 1 && name != wanted && stemOf(name) != wanted) continue;
            const auto label = StatedTimecode::labelIn(clip.cell("Start").value_or(""));
            if (!label) return std::nullopt;
            std::string_view fps = clip.cell("FPS").value_or("");
            if (const auto whole = log.heading().find("FPS"); fps.empty() && whole != log.heading().end())
                fps = whole->second;
            const auto rate = platform::text::decimalNumber(platform::text::trimmed(fps));
            constexpr double highestRate = 120;
            if (!rate || !(*rate >= 1) || *rate > highestRate)
                return StatedTimecode::start(*label, std::nullopt);
            const int base = static_cast<int>(std::lround(*rate));
            return StatedTimecode::start(*label, StatedTimecode::rateOf(base, label->isDrop, rate));
        }
    } catch (const ALEParserError&) {
        // No log.
    }
    return std::nullopt;
}

std::shared_ptr<const SideFiles::Folder> SideFiles::folder(const std::string& path) {
    const std::lock_guard lock(mutex_);
    auto& known = folders_[path];
    if (known) return known;
    auto listed = std::make_shared<Folder>();
    for (std::string& name : platform::files::childNames(path).value_or(std::vector<std::string>())) {
        std::string lower = lowercase(name);
        const auto isSideFile = [&lower](std::string_view suffix) { return lower.ends_with(suffix); };
        if (std::ranges::any_of(suffixes, isSideFile)) listed->emplace(std::move(lower), std::move(name));
    }
    known = std::move(listed);
    return known;
}

std::vector<std::string> SideFiles::beside(const std::string& path) {
    const auto files = folder(folderOf(path));
    if (files->empty()) return {};
    const std::string name = lowercase(nameOf(path)), stem(stemOf(name));
    std::vector<std::string> found;
    const auto look = [&](const std::string& wanted) {
        if (const auto file = files->find(wanted); file != files->end()) found.push_back(file->second);
    };
    for (const std::string_view suffix : suffixes) look(stem + std::string(suffix));
    look(name + ".xmp");
    return found;
}

std::optional<SideFiles::Stated> SideFiles::startTimecode(const std::string& path,
                                                          std::optional<double> pictureRate) {
    for (std::string& name : beside(path)) {
        try {
            const std::string text = platform::files::readText(folderOf(path) + name, longestFile);
            auto start = lowercase(name).ends_with(".ale")
                             ? startTimecodeFromLog(ALEParser::decodeText(text), stemOf(nameOf(path)))
                             : startTimecodeFromXML(text, pictureRate);
            if (start) return Stated{std::move(*start), std::move(name)};
        } catch (const platform::FileError&) {
            // Another one may be readable.
        } catch (const ALEParserError&) {
            // As above.
        }
    }
    return std::nullopt;
}

} // namespace orvane
