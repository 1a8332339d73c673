#include "OrvaneSyncCore/Utilities/ReportColumns.h"

#include "Platform/Text.h"

#include <algorithm>
#include <array>

namespace orvane::ReportColumns {

namespace {

constexpr std::array<std::string_view, 17> fileNames{
    "name",      "filename",         "file",          "clip",          "clipname", "sourcefile", "source",
    "soundfile", "soundfilename",    "audiofile",     "audiofilename", "wav",      "wavfile",    "wavname",
    "mediafile", "originalfilename", "sourcefilename"};

constexpr std::array<std::string_view, 4> sceneNames{"scene", "slate", "shot", "take"};

constexpr std::array<std::string_view, 71> otherNames{
    "tape",        "reel",       "roll",          "soundroll",   "cameraroll",   "camroll",    "camera",
    "cam",         "card",       "folder",        "path",        "start",        "end",        "in",
    "out",         "starttc",    "endtc",         "tcin",        "tcout",        "tc",         "timecode",
    "starttime",   "endtime",    "starttimecode", "endtimecode", "time",         "timeofday",  "duration",
    "length",      "fps",        "framerate",     "tcrate",      "timecoderate", "samplerate", "bitdepth",
    "bits",        "channels",   "tracks",        "trackcount",  "filetype",     "format",     "codec",
    "resolution",  "size",       "date",          "shootdate",   "shootday",     "day",        "unit",
    "project",     "production", "note",          "notes",       "comment",      "comments",   "remarks",
    "description", "circled",    "circle",        "circletake",  "goodtake",     "wild",       "wildtrack",
    "user",        "userbits",   "ubits",         "lens",        "iso",          "shutter",    "filter",
    "whitebalance"};

template <class Names>
bool has(const Names& names, std::string_view name) {
    return std::ranges::find(names, name) != names.end();
}

/// "T1", "Track 12", "Ch3": the column of a single channel.
bool isOfChannel(std::string_view name) {
    constexpr std::string_view digits = "0123456789";
    const std::size_t number = name.find_first_of(digits);
    if (number == std::string_view::npos || name.find_first_not_of(digits, number) != std::string_view::npos)
        return false;
    constexpr std::array<std::string_view, 7> words{"t", "tr", "trk", "track", "ch", "chan", "channel"};
    return has(words, name.substr(0, number));
}

} // namespace

std::string normalised(std::string_view name) {
    std::string result = platform::text::lowercased(name);
    std::erase_if(result, [](char c) { return c == ' ' || c == '_' || c == '\n'; });
    return result;
}

bool namesFiles(std::string_view name) { return has(fileNames, normalised(name)); }

bool distinguishesRows(std::string_view name) {
    return namesFiles(name) || has(sceneNames, normalised(name));
}

bool isKnown(std::string_view name) {
    const std::string plain = normalised(name);
    return has(fileNames, plain) || has(sceneNames, plain) || has(otherNames, plain) || isOfChannel(plain);
}

} // namespace orvane::ReportColumns
