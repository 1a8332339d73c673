#pragma once

#include "FCPXMLKit/model/Model.h"
#include "FCPXMLKit/xml/SlotWriter.h"
#include "OrvaneSyncCore/Models/MediaAsset.h"
#include "OrvaneSyncCore/Services/Export/ExportSettings.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

/// The resources of clips: files and formats. Pure, except for changes of the list; any thread.
namespace orvane::FCPXMLExporter {

/// The resources of a document that is being made, and the only source of their identifiers.
class ResourceList {
  public:
    explicit ResourceList(fcpxml::ElementMaker& maker) : maker_(maker) {}

    /// "r1", "r2" and so on.
    std::string nextID();
    template <class R>
    void add(const R& resource) {
        elements_.push_back(maker_.make(resource));
    }
    std::vector<fcpxml::XMLElement*> take() { return std::move(elements_); }

  private:
    fcpxml::ElementMaker& maker_;
    int counter_ = 0;
    std::vector<fcpxml::XMLElement*> elements_;
};

/// Sets the file of an asset, in the form that the document's version requires.
void setMedia(fcpxml::Asset& asset, const FileURL& url, const ExportSettings& settings);
/// On its own timecode, in frames of `clipRate`.
fcpxml::Asset videoAsset(const MediaAsset& video, std::string id, std::string formatID,
                         const ExportSettings& settings);
/// The file's own rate and size.
fcpxml::Format nativeFormat(const MediaAsset& video, std::string id, const ExportSettings& settings);
/// Without name, start and duration.
fcpxml::Asset audioAsset(const MediaAsset& audio, std::string id, int channelsIfUnknown,
                         const ExportSettings& settings);
/// A recording on its own timecode.
fcpxml::Asset recordingAsset(const MediaAsset& audio, std::string id, const ExportSettings& settings);
/// Whole Hz; 48000 if the file does not state it.
int audioRate(const MediaAsset& audio);

} // namespace orvane::FCPXMLExporter
