#include "OrvaneSyncCore/Services/Export/FCPXMLExporter.h"
#include "OrvaneSyncCore/Services/Persistence/GroupsCoding.h"
#include "Platform/XMLStreamParser.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

class Nothing : public orvane::platform::XMLStreamHandler {
    void startElement(std::string_view /*name*/) override {}
    void endElement(std::string_view /*name*/) override {}
    void characters(std::string_view /*text*/) override {}
};

} // namespace

// Clips of any contents, as in a session file: the document is well-formed whatever they contain, or there is
// none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    try {
        const SyncGroupList groups = groupsFromText(std::string(reinterpret_cast<const char*>(data), size));
        const ExportResult result = FCPXMLExporter::exportDocument(groups, {}, ExportSettings());
        Nothing nothing;
        if (!platform::parseXMLStream(result.fcpxmlString, nothing)) std::abort();
    } catch (const platform::JSONError&) {
        // Not a session.
    } catch (const DecodingError&) {
        // No clip of it can be exported.
    } catch (const ExportError&) {
        // No clip of it can be exported.
    }
    return 0;
}
