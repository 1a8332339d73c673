#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "Platform/JSON.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

using platform::JSON;

// The JSON forms of the open work, the same for every front end that speaks JSON.

/// A clip with the doubts about it.
JSON groupJSON(const SyncGroup& group, const SyncDoubts& doubts);
/// How many clips came out how.
JSON countsJSON(const WorkSnapshot& work);
/// Folders' files, assets, clips, wild tracks, names, counts, what Smart Audio heard, and warnings: those
/// that are given, or those of the work's state. `mode`: the one that was asked of Smart Audio.
JSON stateJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode = std::nullopt,
               const std::optional<std::vector<std::string>>& warnings = std::nullopt);
JSON exportJSON(const WorkSnapshot& work, const ExportResult& result, const std::string& output,
                std::optional<SmartAudioMode> mode = std::nullopt);
/// How many clips Smart Audio heard, what it chose, and what it could not hear.
JSON smartAudioJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode);

/// Who is signed in to LockitNetwork, and what came of the last sync; why that can't be where no service is
/// configured. The account must be ready.
JSON lockitStatusJSON(const LockitOAuthService& account, const LockitController& lockit);
/// The catalogue of models, what works without one, the room that they take, and the model of the stems.
JSON modelsJSON(const ModelManager& models);
/// A list for each scene.
JSON candidatesJSON(const AtmoController::Candidates& candidates);

/// What Smart Audio made of all clips.
struct SmartAudioCounts {
    std::int64_t clips = 0, channels = 0, chosen = 0;
    std::int64_t unheardRecordings = 0;
    std::int64_t measured = 0; ///< clips whose loudness is known
};
SmartAudioCounts smartAudioCounts(const WorkSnapshot& work);

} // namespace orvane
