#pragma once

#include "OrvaneSyncCore/Models/ALEFile.h"

#include <cstdint>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane {

/// Why a file gives no report. The description is for the user and does not name the file.
class ALEParserError : public std::runtime_error {
  public:
    enum class Kind { noColumns, noTable, unreadable };

    static ALEParserError noColumns();
    static ALEParserError noTable();
    static ALEParserError unreadable();
    Kind kind() const { return kind_; }

  private:
    ALEParserError(Kind kind, const char* description) : std::runtime_error(description), kind_(kind) {}
    Kind kind_;
};

/// Reads camera and sound reports: Avid Log Exchange files, and tables delimited by commas, semicolons or
/// tabs, in any usual encoding. A line ends with a line feed, a carriage return, or both; inside quoted cells
/// each line end becomes a line feed. Has no state; any thread.
class ALEParser {
  public:
    /// A larger file is rejected as unreadable. The text as UTF-8 stays below 4 GB.
    static constexpr std::int64_t mostBytes = std::int64_t{1} << 30U;

    /// Detects the encoding: by a byte order mark, then UTF-16 by its zero bytes, then UTF-8; any other text
    /// is Windows-1252 or Mac OS Roman, whichever gives readable words. Throws ALEParserError, also for a
    /// file that cannot be read or is not a text, and Stopped. Needs about three times the size of the file
    /// in memory.
    ALEFile parse(const FileURL& url, const std::stop_token& stop = {}) const;
    /// The same for a UTF-8 text.
    ALEFile parse(std::string_view content, const std::stop_token& stop = {}) const;

    /// The bytes of a file as UTF-8, without a byte order mark. Throws ALEParserError and Stopped.
    static std::string decodeText(std::string bytes, const std::stop_token& stop = {});
    /// Whether the text has the sections of an Avid Log Exchange file.
    static bool looksLikeALE(std::string_view text, const std::stop_token& stop = {});
    /// ',', ';' or '\t', whichever fits the first lines; delimiters inside quotes do not count.
    static char detectDelimiter(std::string_view text);

  private:
    static ALEFile parseALESections(std::string_view text, const std::stop_token& stop);
    static ALEFile parseDelimited(std::string_view text, const std::stop_token& stop);
};

} // namespace orvane
