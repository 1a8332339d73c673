#pragma once

#include "OrvaneSyncCore/Models/ALEFile.h"

#include <cstdint>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>

namespace orvane {

/// Why there is no report. The description is for people and does not name the file.
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

/// Reads camera and sound reports: Avid Log Exchange files and tables delimited by commas, semicolons or
/// tabs, in whatever encoding they come. A line ends at a line feed, a carriage return, or both; in the
/// quoted cells of a table each becomes a line feed. Holds no state; any thread.
class ALEParser {
  public:
    /// A larger file is unreadable. The text as UTF-8 stays below 4 GB.
    static constexpr std::int64_t mostBytes = std::int64_t{1} << 30U;

    /// The encoding is found out: a byte order mark counts, then zero bytes tell UTF-16, then comes UTF-8;
    /// any other text is Windows-1252 or Mac OS Roman, by which reads as words. Throws ALEParserError, also
    /// for a file that cannot be read or is no text, and Stopped. Takes some three times the size of the
    /// file.
    ALEFile parse(const FileURL& url, const std::stop_token& stop = {}) const;
    /// The same for a text in UTF-8.
    ALEFile parse(std::string_view content, const std::stop_token& stop = {}) const;

    /// The bytes of a file as UTF-8, without a byte order mark. Throws ALEParserError and Stopped.
    static std::string decodeText(std::string bytes, const std::stop_token& stop = {});
    /// Whether the text has the sections of an Avid Log Exchange file.
    static bool looksLikeALE(std::string_view text, const std::stop_token& stop = {});
    /// ',', ';' or '\t', by what the first lines hold outside quotes.
    static char detectDelimiter(std::string_view text);

  private:
    static ALEFile parseALESections(std::string_view text, const std::stop_token& stop);
    static ALEFile parseDelimited(std::string_view text, const std::stop_token& stop);
};

} // namespace orvane
