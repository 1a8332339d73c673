#pragma once

#include "OrvaneSyncCore/Models/Date.h"
#include "OrvaneSyncCore/Models/IXMLModels.h"
#include "Platform/RandomAccessFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

/// Reads the broadcast chunks of a recorder's file, "bext" and "iXML", wherever they lie, without touching
/// the sound: of RIFF/WAVE, of its large forms RF64 and BW64, and of AIFF. Whatever cannot be read is absent;
/// throws nothing but std::bad_alloc. Stateless; any thread.
class IXMLReader {
  public:
    struct Bext {
        std::optional<std::uint64_t> timeRef;  ///< samples since midnight; 0 counts as absent
        std::optional<Date> originationDate;   ///< noon of that day in the user's calendar
        std::optional<std::string> originator; ///< ASCII, trimmed
    };
    /// The same as the time reference of "bext", in the document's own words.
    struct Timestamp {
        std::uint64_t samples = 0;        ///< since midnight, not 0
        std::optional<double> sampleRate; ///< Hz, at which they are counted; absent: the file's own
    };
    struct All {
        std::optional<IXMLData> ixml;
        std::optional<std::uint64_t> bextTimeRef;
    };
    struct Broadcast {
        std::optional<IXMLData> ixml;
        std::optional<Timestamp> timestamp; ///< of the iXML document
        Bext bext;
    };

    /// Each opens the file by its path and walks it once.
    std::optional<IXMLData> read(const std::string& path) const;
    std::optional<std::uint64_t> readBextTimeReference(const std::string& path) const;
    All readAll(const std::string& path) const;
    Bext readBextFull(const std::string& path) const;

    /// Both chunks whole, in one walk over a file that is open already.
    Broadcast readBroadcast(platform::RandomAccessFile& file) const;

    /// The iXML document in the bytes of its chunk, which end at the first NUL. Nothing when it is not
    /// well-formed to its end or declares entities. Of each field the first 64 KB are kept.
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
