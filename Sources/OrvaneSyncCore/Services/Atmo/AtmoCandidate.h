#pragma once

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "Platform/JSON.h"

#include <cstdint>
#include <string>

namespace orvane {

/// A quiet section of one channel of a file.
struct AtmoCandidate {
    UUID id; ///< unique to this candidate
    FileURL url;
    int channelIndex = 0; ///< of the file, from 0
    std::int64_t startSample = 0;
    std::int64_t endSample = 0; ///< exclusive
    double sampleRate = 0;      ///< of the file, Hz
    float avgRMS = 0;           ///< linear, mean of the windows

    double durationSeconds() const;
    double rmsDBFS() const; ///< -120 for digital silence

    bool operator==(const AtmoCandidate&) const = default;
};

/// A finished room tone.
struct AtmoResult {
    FileURL audioURL;
    std::string sceneName;
    double durationSeconds = 0;
    std::string audioRole;
    double sampleRate = 0; ///< Hz; not part of the JSON form

    bool operator==(const AtmoResult&) const = default;
};

/// Also has the keys `durationSeconds` and `rmsDBFS`.
platform::JSON toJSON(const AtmoCandidate& candidate);
platform::JSON toJSON(const AtmoResult& result);

} // namespace orvane
