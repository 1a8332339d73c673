#pragma once

#include "OrvaneSyncApp/Controllers/OpenWork.h"
#include "OrvaneSyncApp/Controllers/SmartAudioController.h"
#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"

#include <optional>
#include <string>

namespace orvane {

/// The open work as a document for Final Cut Pro. Interface thread.
class ExportController {
  public:
    ExportController(const OpenWork& work, const SmartAudioController& smartAudio)
        : work_(work), smartAudio_(smartAudio) {}

    struct Options {
        std::optional<std::string> eventName; ///< absent: the setting
        std::optional<bool> generateMulticam; ///< absent: the setting
        std::string metadataPrefix;
    };
    /// The settings of an export as the export sheet puts them together.
    ExportSettings exportSettings(const Options& options) const;
    /// Multicam clips that an export would build.
    int projectedMulticamCount() const;

    /// All settled clips and the wild tracks as one document. Throws ExportError or FCPXMLError.
    ExportResult exportFCPXML(const ExportSettings& settings) const;
    /// One clip alone, without multicam. Throws GroupNotFound too.
    ExportResult exportSingleClip(const UUID& groupID, ExportSettings settings) const;

  private:
    const OpenWork& work_;
    const SmartAudioController& smartAudio_;
};

} // namespace orvane
