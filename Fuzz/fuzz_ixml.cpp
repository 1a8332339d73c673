#include "OrvaneSyncCore/Services/Ingest/IXMLReader.h"
#include "Platform/RandomAccessFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>

// The bytes as a recording, and as the document alone. A document that was read has named tracks only, and
// reads the same if everything after a NUL is removed.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    const IXMLReader::Broadcast broadcast = IXMLReader().readBroadcast(file);
    if (broadcast.bext.timeRef == 0U) std::abort();
    if (broadcast.bext.originator && broadcast.bext.originator->size() > 32) std::abort();

    const std::string_view document(reinterpret_cast<const char*>(data), size);
    const auto read = IXMLReader::parseIXMLContent(document);
    if (read != IXMLReader::parseIXMLContent(document.substr(0, document.find('\0')))) std::abort();
    if (!read) return 0;
    for (const IXMLTrack& track : read->tracks)
        if (track.name.empty()) std::abort();
    return 0;
}
