#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

/// The table in which users decide about clips in a spreadsheet: one line per clip, separated by tabs, in
/// UTF-8. Pure; any thread.

/// The columns in the order in which they are written.
enum class ReviewColumn : std::uint8_t {
    clip,         ///< its name in the document
    cameraFile,   ///< by which the clip is found when the table is read
    sound,        ///< its recordings, numbered from 1
    status,       ///< of the match, as it is stored
    doubt,        ///< a text for the user
    choice,       ///< number of the recording that the clip is to have, or the file name of any recording;
                  ///< "only" before it removes the clip's other recordings
    offsetFrames, ///< the manual offset of the sound, in frames of the picture; positive is later
    name,         ///< the clip's name, if given by hand
    skip,         ///< "x": not in the document
    note,         ///< a text for other users
    lock          ///< "x": the clip is locked after all other decisions of its line
};
inline constexpr std::size_t reviewColumnCount = 11;

struct ReviewLine {
    /// Number of the row in a spreadsheet; the header is 1.
    std::size_t number = 0;
    /// Absent: the table does not have the column.
    std::array<std::optional<std::string>, reviewColumnCount> cells{};

    std::optional<std::string>& operator[](ReviewColumn column) {
        return cells[static_cast<std::size_t>(column)];
    }
    const std::optional<std::string>& operator[](ReviewColumn column) const {
        return cells[static_cast<std::size_t>(column)];
    }
};

/// Why a text is no review table, for the user, without the file's name.
class ReviewTableError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The whole file. A text that a spreadsheet would take for a formula gets an apostrophe in front, which
/// reading removes; control characters become blanks. Numbers are written unchanged.
std::string writtenReviewTable(const std::vector<ReviewLine>& lines);
/// Reads a table that a spreadsheet saved: columns in any order, columns missing or added, cells quoted,
/// separated by tabs, commas or semicolons. `text`: UTF-8 without a byte order mark. Ignores empty lines.
/// Throws ReviewTableError if the first line has no column `camera_file`.
std::vector<ReviewLine> readReviewTable(std::string_view text, const std::stop_token& stop = {});

/// The number in a cell, in any of the usual notations: "-3", "1.0", "1,5" or with the minus sign U+2212.
/// Absent for "1,000" and "1.000", which may be one or a thousand.
std::optional<double> reviewNumber(std::string_view cell);
/// The same for an ambiguous cell: reads what follows its comma or point as decimals.
std::optional<double> reviewNumberByDecimals(std::string_view cell);
/// What follows "only" in a cell of the column `choice`; absent if it does not begin with that word.
std::optional<std::string> onlyChoice(std::string_view cell);
/// The value of a cell of the column `skip` or `lock`; absent if it is neither on nor off.
std::optional<bool> reviewSwitch(std::string_view cell);
/// Whether the line's choice is the one that the table states without a decision: the first recording of a
/// settled clip.
bool isChoiceOfTable(const ReviewLine& line);
/// The first line of an existing table with a decision or a note that the new table, which would replace it,
/// does not have; null: nothing would be lost.
const ReviewLine* firstLostDecision(const std::vector<ReviewLine>& old, const std::vector<ReviewLine>& fresh);
/// Frames as text for a cell, to a millionth; never with three decimals, which could be thousands.
std::string reviewFrames(double frames);

/// A cell of the column `sound`: "1: A.wav; 2: B.wav".
std::string numberedRecordings(const std::vector<std::string>& recordings);
/// The recording with a number in such a cell.
std::optional<std::string> recordingOfNumber(std::string_view cell, int number);

} // namespace orvane
