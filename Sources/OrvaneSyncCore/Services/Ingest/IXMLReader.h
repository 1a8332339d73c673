#pragma once

#include "OrvaneSyncCore/Models/Date.h"
#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Reads the broadcast chunks "bext" and "iXML" of a recorder's file at any position, without reading the
/// sound: from RIFF/WAVE, its large forms RF64 and BW64, and AIFF. Anything that cannot be read is absent;
/// throws nothing but std::bad_alloc. Stateless; any thread.
class IXMLReader {
  public:
    struct Bext {
        std::optional<std::uint64_t> timeRef;  ///< samples since midnight; 0 is read as absent
        std::optional<Date> originationDate;   ///< noon of the day, in the user's calendar
        std::optional<std::string> originator; ///< ASCII, trimmed
    };
    /// The same value as the time reference of "bext", as stated in the iXML document.
    struct Timestamp {
        std::uint64_t samples = 0;        ///< since midnight, not 0
        std::optional<double> sampleRate; ///< Hz, the rate at which they are counted; absent: the file's own
    };
    struct All {
        std::optional<IXMLData> ixml;
        std::optional<std::uint64_t> bextTimeRef;
    };
    struct Broadcast {
        std::optional<IXMLData> ixml;
        std::optional<Timestamp> timestamp; ///< from the iXML document
        Bext bext;
    };

    /// Each opens the file by its path and scans it once.
    std::optional<IXMLData> read(const std::string& path) const;
    std::optional<std::uint64_t> readBextTimeReference(const std::string& path) const;
    All readAll(const std::string& path) const;
    Bext readBextFull(const std::string& path) const;

    /// Reads both chunks in one scan of a file that is already open.
    Broadcast readBroadcast(platform::RandomAccessFile& file) const;

    /// Parses the iXML document in the bytes of its chunk, up to the first NUL. Absent if it is not
    /// well-formed to its end or declares entities. At most 64 KB of each field are kept.
    static std::optional<IXMLData> parseIXMLContent(std::string_view bytes);

  private:
    struct Document {
        IXMLData data;
        std::optional<Timestamp> timestamp;
    };
    static std::optional<Document> parseDocument(std::string_view bytes);
    static Broadcast readWanted(platform::RandomAccessFile& file, bool wantsBext, bool wantsIXML);
    static Broadcast readWanted(const std::string& path, bool wantsBext, bool wantsIXML);
};

} // namespace orvane
