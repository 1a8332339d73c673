#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"

#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"
#include "Platform/Files.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <utility>

namespace orvane {

namespace {

constexpr std::uint64_t longestFile = std::uint64_t{1} << 22U;
constexpr std::string_view logSuffix = ".ale";
constexpr std::array<std::string_view, 4> suffixes{"m01.xml", ".xml", logSuffix, ".xmp"};

/// Names on cards are ASCII; other characters are compared unchanged.
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

StartTimecode startOf(const StatedTimecode::Label& label, std::optional<double> fps) {
    constexpr double highestRate = 120;
    if (!fps || !(*fps >= 1) || *fps > highestRate) return StatedTimecode::start(label, std::nullopt);
    const int base = static_cast<int>(std::lround(*fps));
    return StatedTimecode::start(label, StatedTimecode::rateOf(base, label.isDrop, fps));
}

} // namespace

ClipLog ClipLog::read(std::string_view text) {
    ClipLog result;
    try {
        const ALEFile log = ALEParser().parse(text);
        const auto whole = log.heading().find("FPS");
        for (std::size_t row = 0; row < log.clipCount(); ++row) {
            const ALEClip clip = log.clip(row);
            const auto label = StatedTimecode::labelIn(clip.cell("Start").value_or(""));
            if (!label) continue;
            std::string_view fps = clip.cell("FPS").value_or("");
            if (fps.empty() && whole != log.heading().end()) fps = whole->second;
            const auto start = startOf(*label, platform::text::decimalNumber(platform::text::trimmed(fps)));
            if (log.clipCount() == 1) result.only_ = start;
            for (const std::string_view column : {"Name", "Source File"})
                if (const auto name = platform::text::trimmed(clip.cell(column).value_or("")); !name.empty())
                    result.byName_.emplace(lowercase(stemOf(nameOf(name))), start);
        }
    } catch (const ALEParserError&) {
        // The text is not a log.
    }
    return result;
}

std::optional<StartTimecode> ClipLog::ofClip(std::string_view stem) const {
    const auto found = byName_.find(lowercase(stem));
    return found == byName_.end() ? std::nullopt : std::optional(found->second);
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

/// Empty if the log cannot be read.
std::shared_ptr<const ClipLog> SideFiles::log(const std::string& path) {
    const std::lock_guard lock(mutex_);
    auto& known = logs_[path];
    if (known) return known;
    ClipLog read;
    try {
        read = ClipLog::read(ALEParser::decodeText(platform::files::readText(path, longestFile)));
    } catch (const std::runtime_error&) { // reading or decoding failed
    }
    known = std::make_shared<const ClipLog>(std::move(read));
    return known;
}

std::vector<std::string> SideFiles::withNameOf(const std::string& path) {
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

std::optional<SideFiles::Stated> SideFiles::inLogOfRoll(const std::string& path) {
    const std::string inFolder = folderOf(path);
    const std::string_view stem = stemOf(nameOf(path));
    for (const auto& [lower, name] : *folder(inFolder))
        if (lower.ends_with(logSuffix))
            if (auto start = log(inFolder + name)->ofClip(stem)) return Stated{*std::move(start), name};
    return std::nullopt;
}

bool SideFiles::areBeside(const std::string& path) { return !withNameOf(path).empty() || inLogOfRoll(path); }

std::optional<SideFiles::Stated> SideFiles::startTimecode(const std::string& path,
                                                          std::optional<double> pictureRate) {
    for (std::string& name : withNameOf(path)) {
        std::optional<StartTimecode> start;
        if (lowercase(name).ends_with(logSuffix)) {
            const auto own = log(folderOf(path) + name);
            start = own->ofOnlyRow() ? own->ofOnlyRow() : own->ofClip(stemOf(nameOf(path)));
        } else {
            try {
                start = startTimecodeFromXML(platform::files::readText(folderOf(path) + name, longestFile),
                                             pictureRate);
            } catch (const platform::FileError&) { // another side file may be readable
            }
        }
        if (start) return Stated{*std::move(start), std::move(name)};
    }
    return inLogOfRoll(path);
}

} // namespace orvane
