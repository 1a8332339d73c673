#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Export/ExportPreview.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "Platform/Task.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace orvane {

/// The open work as a document for Final Cut Pro. Interface thread.
class ExportController {
  public:
    ExportController(OpenWork& work, const SmartAudioController& smartAudio)
        : work_(work), smartAudio_(smartAudio) {}

    struct Options {
        std::optional<std::string> eventName; ///< absent: the setting
        std::optional<bool> generateMulticam; ///< absent: the setting
        std::string metadataPrefix;
    };
    /// The settings of an export as the export sheet puts them together.
    ExportSettings exportSettings(const Options& options) const;
    /// What an export with these settings puts into the document.
    ExportPreview::Forecast forecast(const ExportSettings& settings) const;
    /// Multicam clips of all settled clips, also of those that are left out; the second on any thread.
    int projectedMulticamCount() const {
        return projectedMulticamCount(work_.syncGroups(), work_.matchRules());
    }
    static int projectedMulticamCount(const SyncGroupList& groups, const MatchRules& rules);

    /// Makes the document off the interface thread, of the clips as they are at the call, and leaves it in
    /// `result`. `groupID`: of that clip alone. Ends with what the two below throw, or Stopped.
    platform::Task exportInBackground(std::optional<UUID> groupID, ExportSettings settings,
                                      std::shared_ptr<ExportResult> result) const;

    // The same for a program that keeps no interface waiting.

    /// All settled clips and the wild tracks as one document. Throws ExportError or FCPXMLError.
    ExportResult exportFCPXML(const ExportSettings& settings) const;
    /// One clip alone, without multicam. Throws GroupNotFound too.
    ExportResult exportSingleClip(const UUID& groupID, ExportSettings settings) const;

  private:
    /// What one document is made of. Shares the clips; any thread.
    struct Material {
        SyncGroupList groups;
        std::shared_ptr<const std::vector<WildTrack>> wildTracks; ///< null: none
        ExportSettings settings;
        bool isOneClip = false;

        ExportResult document(const std::stop_token& stop = {}) const;
    };
    Material material(const std::optional<UUID>& groupID, ExportSettings settings) const;
    platform::Task exportOnQueue(Material all, std::shared_ptr<ExportResult> result) const;

    OpenWork& work_;
    const SmartAudioController& smartAudio_;
};

} // namespace orvane
