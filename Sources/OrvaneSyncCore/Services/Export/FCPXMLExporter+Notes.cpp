#include "OrvaneSyncCore/Services/Export/ExportClips.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporterStages.h"
#include "Platform/Text.h"

namespace orvane::FCPXMLExporter {

namespace {

const IXMLData* primaryIXML(const SyncGroup& group) {
    const MediaAsset* audio = group.primaryAudio();
    return audio != nullptr && audio->ixmlData ? &*audio->ixmlData : nullptr;
}

std::optional<std::string> reportElseRecorder(const SyncGroup& group, const std::string& column,
                                              std::optional<std::string> IXMLData::*field) {
    if (group.aleMetadata) {
        const auto entry = group.aleMetadata->find(column);
        if (entry != group.aleMetadata->end() && !entry->second.empty()) return entry->second;
    }
    const IXMLData* ixml = primaryIXML(group);
    if (ixml == nullptr || (ixml->*field).value_or("").empty()) return std::nullopt;
    return ixml->*field;
}

void append(std::string& text, std::string_view separator, std::string_view piece) {
    if (!text.empty()) text += separator;
    text += piece;
}

std::string audioFacts(const SyncGroup& group) {
    std::string facts;
    const IXMLData* ixml = primaryIXML(group);
    if (ixml == nullptr) return facts;
    const std::pair<const char*, const std::optional<std::string>*> fields[] = {
        {"Scene ", &ixml->scene}, {"Take ", &ixml->take}, {"Tape ", &ixml->tape}};
    for (const auto& [label, value] : fields)
        if (*value && !(*value)->empty()) append(facts, ", ", label + **value);
    return facts;
}

} // namespace

std::optional<std::string> bestSceneAleIxml(const SyncGroup& group) {
    return reportElseRecorder(group, "Scene", &IXMLData::scene);
}

std::optional<std::string> bestTakeAleIxml(const SyncGroup& group) {
    return reportElseRecorder(group, "Take", &IXMLData::take);
}

std::optional<std::string> buildNotesString(const SyncGroup& group, const ExportSettings& settings,
                                            const std::vector<std::string>& lockitVideoNotes) {
    const NotesSource source = settings.get(settings::notesSource);
    std::string text;
    if ((source == NotesSource::video || source == NotesSource::both) && !lockitVideoNotes.empty())
        text =
            settings.get(settings::notesVideoPrefix) + " " + platform::text::joined(lockitVideoNotes, ", ");
    if (source == NotesSource::audio || source == NotesSource::both) {
        const std::string facts = audioFacts(group);
        if (!facts.empty()) append(text, " | ", settings.get(settings::notesAudioPrefix) + " " + facts);
    }
    return text.empty() ? std::nullopt : std::optional(text);
}

std::optional<std::string> sceneEventName(const SyncGroup& group, const std::string& pattern,
                                          const std::string& eventName) {
    const std::string scene = bestSceneAleIxml(group).value_or("");
    const std::string_view trimmed = platform::text::trimmed(scene);
    if (trimmed.empty()) return std::nullopt;
    return GroupNaming::resolveEventName(pattern, trimmed, eventName);
}

} // namespace orvane::FCPXMLExporter
