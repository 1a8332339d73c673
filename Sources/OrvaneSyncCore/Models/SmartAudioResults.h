#pragma once

#include "OrvaneSyncCore/Models/Shared.h"
#include "OrvaneSyncCore/Models/SmartAudioResult.h"
#include "OrvaneSyncCore/Models/UUID.h"

#include <unordered_map>

namespace orvane {

/// The analyses of clips, by group. Copies share them: a copy costs one pointer for each clip.
class SmartAudioResults : public std::unordered_map<UUID, Shared<SmartAudioResult>> {
  public:
    using std::unordered_map<UUID, Shared<SmartAudioResult>>::unordered_map;

    /// Null if the clip was not analysed or nothing of its recording could be decoded.
    const SmartAudioResult* heard(const UUID& group) const {
        const auto found = find(group);
        return found == end() || !found->second->isHeard() ? nullptr : &*found->second;
    }
    /// The list's own copy, for changes.
    SmartAudioResult& operator[](const UUID& group) {
        return try_emplace(group, SmartAudioResult()).first->second.edit();
    }
};

} // namespace orvane
