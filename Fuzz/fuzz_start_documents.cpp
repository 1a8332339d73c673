#include "OrvaneSyncCore/Services/Ingest/SideFiles.h"
#include "OrvaneSyncCore/Services/Ingest/TimecodeDocument.h"
#include "Platform/EmbeddedXML.h"
#include "Timecode/Timecode.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>

namespace {

/// A start is a label that exists at its rate.
void check(const std::optional<orvane::StartTimecode>& start) {
    if (!start) return;
    const auto rate = start->rate.value_or(orvane::TimecodeFrameRate::fps60);
    const auto timecode = orvane::Timecode::fromString(start->text, rate);
    if (!timecode || timecode->components().hours > 23) std::abort();
    if (start->rate && timecode->components().frames >= orvane::timecodeRate::maxFrames(rate)) std::abort();
}

} // namespace

// Any bytes as a document beside a clip, as an Avid log, and as a media file with documents in it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace orvane;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (const double rate : {23.976, 25.0, 59.94}) check(startTimecodeFromXML(text, rate));
    check(startTimecodeFromXML(text, std::nullopt));
    const ClipLog log = ClipLog::read(text);
    check(log.ofClip("A001"));
    check(log.ofOnlyRow());
    auto file = platform::RandomAccessFile::overBytes(std::as_bytes(std::span(data, size)));
    for (const std::string& document : platform::readEmbeddedXML(file)) {
        if (document.size() > size) std::abort();
        check(startTimecodeFromXML(document, std::nullopt));
    }
    return 0;
}
