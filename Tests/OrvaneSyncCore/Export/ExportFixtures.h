#pragma once

#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"
#include "Platform/Files.h"
#include "Support/Assets.h"
#include "Support/Test.h"

namespace orvane::test {

inline MediaAsset picture(const std::string& filename = "A003C012_240517.mov") {
    MediaAsset made = asset(AssetKind::video, "cam a/" + filename, "10:00:00:00", 20);
    made.frameRate = made.projectFrameRate = 25.0;
    made.width = 3840;
    made.height = 2160;
    return made;
}

inline IXMLData ixml(const std::string& scene, const std::string& take,
                     const std::vector<std::string>& channelNames = {}) {
    IXMLData data;
    data.scene = scene;
    data.take = take;
    for (std::size_t i = 0; i < channelNames.size(); ++i)
        data.tracks.push_back({static_cast<int>(i) + 1, channelNames[i]});
    return data;
}

/// Begins half a second before the picture.
inline MediaAsset recording(int channels, const std::string& filename = "MIX_012.WAV") {
    MediaAsset made = asset(AssetKind::audio, filename, "", 30);
    made.channelCount = channels;
    made.sampleRate = 48000;
    made.bextTimeReference = 36000ULL * 48000 - 24000;
    return made;
}

inline SyncGroup matched(MediaAsset video, const std::vector<MediaAsset>& sound,
                         MatchStatus status = MatchStatus::matched()) {
    std::vector<AudioMatch> matches;
    for (const MediaAsset& audio : sound) matches.emplace_back(audio, -0.5, 20.0);
    return {std::move(video), std::move(matches), status};
}

/// Without the event of source media, which would list every file again.
inline ExportSettings settingsAt(double fps) {
    ExportSettings settings;
    settings.frameRate = settings.projectFrameRate = fps;
    settings.set(settings::generateRawMediaEvent, false);
    return settings;
}

inline std::string exported(const SyncGroup& group, const ExportSettings& settings = settingsAt(25)) {
    return FCPXMLExporter::exportDocument(SyncGroupList{group}, {}, settings).fcpxmlString;
}

/// Compares with a document that reviewers read; a name without an ending gets ".fcpxml". With
/// ORVANE_UPDATE_GOLDEN set the documents are written again: review the difference before committing it.
inline void expectGolden(const std::string& name, const std::string& document) {
    const std::string ending = name.find('.') == std::string::npos ? ".fcpxml" : "";
    const std::string file =
        std::string(ORVANE_SOURCE_DIR) + "/Tests/OrvaneSyncCore/Export/Golden/" + name + ending;
    if (std::getenv("ORVANE_UPDATE_GOLDEN") != nullptr) platform::files::writeAtomically(file, document);
    EXPECT_EQ(document, platform::files::readText(file)) << name;
    // The program overwrites only documents that it recognises as its own.
    EXPECT_EQ(beginsAsOwnDocument(document), file.ends_with(".fcpxml")) << name;
}

/// The lines of a document that contain the text, without leading blanks.
inline std::vector<std::string> linesWith(const std::string& document, const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < document.size();) {
        const std::size_t end = std::min(document.find('\n', at), document.size());
        std::string line = document.substr(at, end - at);
        if (line.find(text) != std::string::npos) lines.push_back(line.substr(line.find_first_not_of(' ')));
        at = end + 1;
    }
    return lines;
}

/// "-" if there is no such attribute.
inline std::string attributeOf(const std::string& line, const std::string& name) {
    const auto at = line.find(" " + name + "=\"");
    if (at == std::string::npos) return "-";
    const auto from = at + name.size() + 3;
    return line.substr(from, line.find('"', from) - from);
}

/// The events and the clips in them, such as "Day 1: a; b; | Source Media: c;".
inline std::string eventsOf(const std::string& document) {
    std::string events;
    std::istringstream lines(document.substr(document.find("<library")));
    for (std::string line; std::getline(lines, line);) {
        const std::size_t indent = line.find('<');
        if (indent == 8 && line.find("<event") == indent)
            events += (events.empty() ? "" : " | ") + attributeOf(line, "name") + ":";
        if (indent == 12 && line[indent + 1] != '/') events += " " + attributeOf(line, "name") + ";";
    }
    return events;
}

struct Change {
    const char* name;
    std::function<void(SyncGroup&, ExportSettings&)> apply;
};

/// The lines of `first` that `second` does not have, each after the sign.
inline std::string surplus(const std::string& first, const std::string& second, const char* sign) {
    std::map<std::string, int> left;
    for (const std::string& line : linesWith(second, "")) ++left[line];
    std::string text;
    for (const std::string& line : linesWith(first, ""))
        if (left[line]-- <= 0) text += sign + line + "\n";
    return text;
}

/// Compares the effect of each single change on the document of a clip with the golden file: the lines that
/// it removes and those that it adds.
inline void expectGoldenChanges(const std::string& name, const SyncGroup& plain, const ExportSettings& usual,
                                const std::vector<Change>& changes) {
    const std::string before = exported(plain, usual);
    std::string text;
    for (const Change& change : changes) {
        SyncGroup group = plain;
        ExportSettings settings = usual;
        change.apply(group, settings);
        const std::string after = exported(group, settings);
        text += std::string("== ") + change.name + "\n" + surplus(before, after, "- ") +
                surplus(after, before, "+ ");
    }
    expectGolden(name + ".txt", text);
}

inline std::size_t countOf(const std::string& document, const std::string& text) {
    std::size_t count = 0;
    for (auto at = document.find(text); at != std::string::npos; at = document.find(text, at + text.size()))
        ++count;
    return count;
}

} // namespace orvane::test
