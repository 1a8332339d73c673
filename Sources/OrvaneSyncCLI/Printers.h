#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "Platform/JSON.h"

#include <string>
#include <vector>

namespace orvane::cli {

// The JSON forms of the controller's state, the same for every face that speaks JSON.

/// How many clips came out how.
JSON countsJSON(const ImportController& controller);
/// Folders' files, assets, clips, wild tracks, names and counts.
JSON stateJSON(const ImportController& controller);
JSON exportJSON(const ImportController& controller, const ExportResult& result, const std::string& output);

/// One line for each clip that the document does not hold, and why.
std::vector<std::string> leftOutWarnings(const ImportController& controller);
/// One line for each recording that Smart Audio could not hear, or not to its end, or of which it leaves
/// nothing but timecode switched on.
std::vector<std::string> smartAudioWarnings(const ImportController& controller);

// The same for people.

/// The clips as a table, what was found without picture, and a line of counts.
std::string stateText(const ImportController& controller, bool bold);
/// A line on what Smart Audio did; empty where it did not run.
std::string smartAudioText(const ImportController& controller);
/// What the export sheet of the app shows beside its settings: the events that scenes make, a better name for
/// the event unless one was chosen, the clips that an analysis left out. A line each, where there is
/// something to say.
std::string exportPreviewText(const SyncGroupList& groups, const ExportSettings& settings, bool nameIsChosen);
/// What is known of one file.
std::string assetText(const MediaAsset& asset, bool bold);

} // namespace orvane::cli
