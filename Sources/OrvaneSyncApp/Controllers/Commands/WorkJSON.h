#pragma once

#include "OrvaneSyncApp/Controllers/WorkSnapshot.h"
#include "Platform/JSON.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

using platform::JSON;

// The JSON forms of the open work, the same in every front end that uses JSON.

/// A clip with the doubts about it.
JSON groupJSON(const SyncGroup& group, const SyncDoubts& doubts);
/// The number of clips by status.
JSON countsJSON(const WorkSnapshot& work);
/// Files of the folders, assets, clips, wild tracks, names, counts, results of Smart Audio, and warnings: the
/// given ones, otherwise those of the work's state. `mode`: the requested mode of Smart Audio.
JSON stateJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode = std::nullopt,
               const std::optional<std::vector<std::string>>& warnings = std::nullopt);
JSON exportJSON(const WorkSnapshot& work, const ExportResult& result, const std::string& output,
                std::optional<SmartAudioMode> mode = std::nullopt);
/// How many clips Smart Audio analysed, what it chose, and which it could not read.
JSON smartAudioJSON(const WorkSnapshot& work, std::optional<SmartAudioMode> mode);

/// Who is signed in to LockitNetwork, and the result of the last sync; if no service is configured, the
/// reason why neither is possible. The account must be ready.
JSON lockitStatusJSON(const LockitOAuthService& account, const LockitController& lockit);
/// The catalogue of models, what works without them, their size on the disk, and the model of the stems.
JSON modelsJSON(const ModelManager& models);
/// A list for each scene.
JSON candidatesJSON(const AtmoController::Candidates& candidates);

/// The results of Smart Audio over all clips.
struct SmartAudioCounts {
    std::int64_t clips = 0, channels = 0, chosen = 0;
    std::int64_t unheardRecordings = 0;
    std::int64_t measured = 0; ///< clips whose loudness is known
};
SmartAudioCounts smartAudioCounts(const WorkSnapshot& work);

} // namespace orvane
