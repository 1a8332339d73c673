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
    /// The settings of an export as the export sheet combines them.
    ExportSettings exportSettings(const Options& options) const;
    /// What the document of an export with these settings would contain.
    ExportPreview::Forecast forecast(const ExportSettings& settings) const;
    /// The number of multicam clips of all settled clips, excluded ones too; the second function runs on any
    /// thread.
    int projectedMulticamCount() const {
        return projectedMulticamCount(work_.syncGroups(), work_.matchRules());
    }
    static int projectedMulticamCount(const SyncGroupList& groups, const MatchRules& rules);

    /// Makes the document off the interface thread, from the clips as they are at the call, and writes it to
    /// `result`. `groupID`: only that clip. Ends with the errors of the two functions below, or with Stopped.
    platform::Task exportInBackground(std::optional<UUID> groupID, ExportSettings settings,
                                      std::shared_ptr<ExportResult> result) const;

    // The same for a program without an interface thread that would have to wait.

    /// All settled clips and the wild tracks as one document. Throws ExportError or FCPXMLError.
    ExportResult exportFCPXML(const ExportSettings& settings) const;
    /// One clip alone, without multicam. Also throws GroupNotFound.
    ExportResult exportSingleClip(const UUID& groupID, ExportSettings settings) const;

  private:
    /// The input of one document. Shares the clips; any thread.
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
