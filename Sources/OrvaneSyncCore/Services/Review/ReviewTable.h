#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The table in which people decide about clips in a spreadsheet: a line a clip, tab separated, in UTF-8.
/// Pure; any thread.

/// In the order in which they are written.
enum class ReviewColumn : std::uint8_t {
    clip,         ///< its name in the document
    cameraFile,   ///< by which the clip is found again
    sound,        ///< its recordings, numbered from 1
    status,       ///< of the match, as records name it
    doubt,        ///< for people
    choice,       ///< number of the recording that the clip is to have, or the file name of any recording
    offsetFrames, ///< that the sound is moved by hand, in frames of the picture; later is positive
    name,         ///< that the clip was given by hand
    skip,         ///< "x": not in the document
    note,         ///< what people write for each other
    lock          ///< "x": locked as it is after all else of its line
};
inline constexpr std::size_t reviewColumnCount = 11;

struct ReviewLine {
    /// As a spreadsheet counts the rows; the header is 1.
    std::size_t number = 0;
    /// Absent: the table has no such column.
    std::array<std::optional<std::string>, reviewColumnCount> cells{};

    std::optional<std::string>& operator[](ReviewColumn column) {
        return cells[static_cast<std::size_t>(column)];
    }
    const std::optional<std::string>& operator[](ReviewColumn column) const {
        return cells[static_cast<std::size_t>(column)];
    }
};

/// Why a text is no review table, for people, without the file's name.
class ReviewTableError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The whole file. A text that a spreadsheet would take for a formula has an apostrophe in front, which
/// reading takes away again; control characters are blanks. Numbers stand as they are.
std::string writtenReviewTable(const std::vector<ReviewLine>& lines);
/// Back from a spreadsheet: columns in any order, some of them missing, others among them; cells quoted;
/// delimited by tabs, commas or semicolons. `text`: UTF-8 without a byte order mark. Empty lines are left
/// out. Throws ReviewTableError where the first line names no column `camera_file`.
std::vector<ReviewLine> readReviewTable(std::string_view text);

/// A cell with a number, by whatever habits it is written: "-3", "1.0", "1,5" or with a true minus sign.
/// Nothing for "1,000", which may be one or a thousand.
std::optional<double> reviewNumber(std::string_view cell);
/// The number of a cell that may be two: with its comma as a decimal point.
std::optional<double> reviewNumberByDecimalComma(std::string_view cell);
/// A cell of the column `skip` or `lock`; nothing when it says neither.
std::optional<bool> reviewSwitch(std::string_view cell);
/// The choice that a table states where nobody has made one: the first recording of a clip that is settled.
bool isChoiceOfTable(const ReviewLine& line);
/// Of a table that a new one would replace, the first line with a decision or a note that the new one does
/// not hold; null: nothing would be lost.
const ReviewLine* firstLostDecision(const std::vector<ReviewLine>& old, const std::vector<ReviewLine>& fresh);
/// Frames as a cell states them, to a millionth.
std::string reviewFrames(double frames);

/// A cell of the column `sound`: "1: A.wav; 2: B.wav".
std::string numberedRecordings(const std::vector<std::string>& recordings);
/// The recording of a number in such a cell.
std::optional<std::string> recordingOfNumber(std::string_view cell, int number);

} // namespace orvane
