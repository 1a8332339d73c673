#pragma once

#include "OrvaneSyncCore/Models/SyncGroupList.h"
#include "OrvaneSyncCore/Models/UUID.h"
#include "OrvaneSyncCore/Models/WildTrack.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <cstdint>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <vector>

namespace orvane {

/// The finished document, its counts and its warnings.
struct ExportResult {
    std::string fcpxmlString;
    /// Sync-clips in events, including those without sound, excluding offspeed variants.
    int syncClipCount = 0;
    int multicamCount = 0;
    int nativeRateCount = 0;           ///< offspeed clips at the sensor's rate, without sound
    int projectRateCount = 0;          ///< offspeed clips at normal speed
    int sourceMediaCount = 0;          ///< whole files in the bin of source media
    int eventCount = 0;                ///< all events of the document
    int sceneEventCount = 0;           ///< events for one scene each; 0 unless events are split
    std::vector<std::string> warnings; ///< one line per skipped or doubtful clip
};

/// Why there is no document at all.
class ExportError : public std::runtime_error {
  public:
    enum class Kind { noGroups };

    static ExportError noGroups() { return {Kind::noGroups, "No sync groups to export"}; }
    Kind kind() const { return kind_; }

  private:
    ExportError(Kind kind, const char* description) : std::runtime_error(description), kind_(kind) {}
    Kind kind_;
};

/// Turns clips into a document. Pure functions of their arguments; any thread.
///
/// Rates are frames per second. A rate that no document can hold (not finite, rounding to 0, beyond a
/// million) counts as absent if there is another one, and as 24 if there is none.
namespace FCPXMLExporter {

/// Leaves out excluded clips; a clip that cannot be built becomes a warning. Throws ExportError if no clip is
/// left, fcpxml::FCPXMLError, and Stopped, which it checks at each clip.
ExportResult exportDocument(const SyncGroupList& groups, const std::vector<WildTrack>& wildTracks,
                            const ExportSettings& settings, const std::stop_token& stop = {});

/// The kind of element that a document has for a clip.
enum class ClipKind : std::uint8_t { none, withSound, withoutSound };
ClipKind clipKind(const SyncGroup& group, const ExportSettings& settings);

/// The names in Final Cut Pro, by group, without the offspeed tag.
using NamesByGroup = std::unordered_map<UUID, std::string>;
NamesByGroup exportClipNames(const SyncGroupList& groups, const ExportSettings& settings);

} // namespace FCPXMLExporter
} // namespace orvane
