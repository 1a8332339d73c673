#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"

#include <optional>
#include <span>
#include <string>
#include <vector>

namespace orvane::cli {

// The controller's state for people.

/// The clips as a table, the recordings without picture, and a line of counts.
std::string stateText(const ImportController& controller, bool bold);
/// The clips that need a decision, with the recordings to choose from; empty if there are none.
std::string issuesText(const ImportController& controller, bool bold);
/// A line about Smart Audio's results; empty if it did not run.
std::string smartAudioText(const ImportController& controller);
/// Each doubt about the clips with its cure, below their number; empty if there are none. Below a cure is the
/// call with its options, each call once.
std::string doubtsText(const WorkSnapshot& work, std::span<const std::string> call);
/// If cameras recorded sound and it was not compared with the recordings, a line that says so; else empty.
std::string notComparedText(const SyncGroupList& groups);
/// What the export sheet of the app shows beside its settings: the events that scenes make, a better name for
/// the event unless one was chosen, and, unless Smart Audio was switched off, the clips that it did not
/// analyse. One line for each that applies.
std::string exportPreviewText(const SyncGroupList& groups, const ExportSettings& settings, bool nameIsChosen,
                              bool wantsSmartAudio);
/// The probed facts of one file.
std::string assetText(const MediaAsset& asset, bool bold);

} // namespace orvane::cli
