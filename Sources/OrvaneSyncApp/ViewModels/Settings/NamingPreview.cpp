#include "OrvaneSyncApp/ViewModels/Settings/NamingPreview.h"

#include <chrono>

namespace orvane {

namespace {

SyncGroup madeUpClip() {
    using namespace std::chrono;
    MediaAsset picture(FileURL{"/A001C006_260429.mov"}, AssetKind::video);
    picture.startTimecodeString = "10:23:45:12";
    picture.contentCreatedDate = sys_days{2026y / April / 29} + 12h + 30min;
    MediaAsset sound(FileURL{"/MIX_001.wav"}, AssetKind::audio);
    sound.ixmlData = IXMLData{};
    sound.ixmlData->scene = "023";
    sound.ixmlData->take = "3";
    sound.ixmlData->tape = "A001";
    return {std::move(picture), {AudioMatch(std::move(sound), 0, 1)}, MatchStatus::matched()};
}

} // namespace

NamingPreview namingPreview(const PatternEditor& editor, const SyncGroupList& groups) {
    const bool isMadeUp = groups.empty();
    const SyncGroupList clips = isMadeUp ? SyncGroupList({madeUpClip()}) : groups;
    const std::string& file = clips.front().video.filename;
    std::string name = editor.previewString(clips);
    // A clip whose pattern gives an empty name is named after its file.
    if (name.empty()) name = clips.front().video.filenameStem();
    return {std::move(name), isMadeUp ? "an example, " + file : file};
}

} // namespace orvane
