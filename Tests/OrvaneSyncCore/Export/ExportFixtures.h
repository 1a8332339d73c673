#pragma once

#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "Platform/Files.h"
#include "Support/Assets.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

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

/// Without the bin of source media, which repeats every file.
inline ExportSettings settingsAt(double fps) {
    ExportSettings settings;
    settings.frameRate = settings.projectFrameRate = fps;
    settings.generateRawMediaEvent = false;
    return settings;
}

inline std::string exported(const SyncGroup& group, const ExportSettings& settings = settingsAt(25)) {
    return FCPXMLExporter::exportDocument(SyncGroupList{group}, {}, settings).fcpxmlString;
}

/// Whole documents for a reviewer to read. With ORVANE_UPDATE_GOLDEN set they are written anew; look at the
/// difference before it is committed.
inline void expectGolden(const std::string& name, const std::string& document) {
    const std::string file =
        std::string(ORVANE_SOURCE_DIR) + "/Tests/OrvaneSyncCore/Export/Golden/" + name + ".fcpxml";
    if (std::getenv("ORVANE_UPDATE_GOLDEN") != nullptr) platform::files::writeAtomically(file, document);
    EXPECT_EQ(document, platform::files::readText(file)) << name;
}

/// The lines of a document that hold the text, without the blanks in front.
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

/// What one change to a plain clip does to the document.
struct Change {
    const char* name;
    std::function<void(SyncGroup&, ExportSettings&)> apply;
    const char* where; ///< text of the lines that are looked at
    std::vector<std::string> lines;
};

inline void expect(const std::vector<Change>& changes, const SyncGroup& plain, const ExportSettings& usual) {
    for (const Change& change : changes) {
        SyncGroup group = plain;
        ExportSettings settings = usual;
        change.apply(group, settings);
        EXPECT_EQ(linesWith(exported(group, settings), change.where), change.lines) << change.name;
    }
}

inline std::size_t countOf(const std::string& document, const std::string& text) {
    std::size_t count = 0;
    for (auto at = document.find(text); at != std::string::npos; at = document.find(text, at + text.size()))
        ++count;
    return count;
}

} // namespace orvane::test
