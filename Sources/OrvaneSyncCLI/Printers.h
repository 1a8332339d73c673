#pragma once

#include "OrvaneSyncApp/Controllers/ImportController.h"
#include "Platform/JSON.h"

#include <optional>
#include <string>
#include <vector>

namespace orvane::cli {

// The JSON forms of the controller's state, the same for every face that speaks JSON.

/// How many clips came out how.
JSON countsJSON(const ImportController& controller);
/// Folders' files, assets, clips, wild tracks, names, counts, what Smart Audio heard, and warnings: those
/// that are given, or those of the controller's state. `mode`: the one that was asked of Smart Audio.
JSON stateJSON(const ImportController& controller, std::optional<SmartAudioMode> mode = std::nullopt,
               const std::optional<std::vector<std::string>>& warnings = std::nullopt);
JSON exportJSON(const ImportController& controller, const ExportResult& result, const std::string& output,
                std::optional<SmartAudioMode> mode = std::nullopt);
/// How many clips Smart Audio heard, what it chose, and what it could not hear.
JSON smartAudioJSON(const ImportController& controller, std::optional<SmartAudioMode> mode);

/// What the last scan could not find, what of an opened project stands on no clip, and rates that can hardly
/// be right; a line for each.
std::vector<std::string> scanWarnings(const ImportController& controller);

/// One line for each clip that the document does not hold, and why.
std::vector<std::string> leftOutWarnings(const ImportController& controller);
/// One line for each recording that Smart Audio could not hear, or not to its end, or of which it leaves
/// nothing but timecode switched on.
std::vector<std::string> smartAudioWarnings(const ImportController& controller);
/// Says that a recording ends before the length that its header promises.
std::string earlyEndWarning(const std::string& filename, double heardSeconds, double promisedSeconds);

// The same for people.

/// The clips as a table, what was found without picture, and a line of counts.
std::string stateText(const ImportController& controller, bool bold);
/// A line on what Smart Audio did; empty where it did not run.
std::string smartAudioText(const ImportController& controller);
/// What the export sheet of the app shows beside its settings: the events that scenes make, a better name for
/// the event unless one was chosen, and, where Smart Audio was not switched off, the clips that it did not
/// hear. A line each, where there is something to say.
std::string exportPreviewText(const SyncGroupList& groups, const ExportSettings& settings, bool nameIsChosen,
                              bool wantsSmartAudio);
/// What is known of one file.
std::string assetText(const MediaAsset& asset, bool bold);

} // namespace orvane::cli
