#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvane::cli {

// The controller's state for people.

/// The clips as a table, what was found without picture, and a line of counts.
std::string stateText(const ImportController& controller, bool bold);
/// The clips that wait for a decision, with the recordings to choose from; empty without any.
std::string issuesText(const ImportController& controller, bool bold);
/// A line on what Smart Audio did; empty where it did not run.
std::string smartAudioText(const ImportController& controller);
/// Each doubt about the clips with its cure, below how many there are; empty without any. Below a cure stands
/// the call with its options, each once.
std::string doubtsText(const WorkSnapshot& work, std::span<const std::string> call);
/// Where cameras recorded sound and nothing compared it with the recordings, a line that says so; else empty.
std::string notComparedText(const SyncGroupList& groups);
/// What the export sheet of the app shows beside its settings: the events that scenes make, a better name for
/// the event unless one was chosen, and, where Smart Audio was not switched off, the clips that it did not
/// hear. A line each, where there is something to say.
std::string exportPreviewText(const SyncGroupList& groups, const ExportSettings& settings, bool nameIsChosen,
                              bool wantsSmartAudio);
/// What is known of one file.
std::string assetText(const MediaAsset& asset, bool bold);

} // namespace orvane::cli
