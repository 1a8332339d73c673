#include "OrvaneSyncCLI/LineReader.h"

namespace orvane::cli {

std::optional<LineReader::Line> LineReader::next() {
    constexpr auto end = std::char_traits<char>::eof();
    Line line;
    for (bool isEmpty = true;; isEmpty = false) {
        const auto byte = in_.rdbuf()->sbumpc();
        if (byte == end && isEmpty) return std::nullopt;
        if (byte == end || byte == '\n') return line;
        if (line.text.size() < longestLine)
            line.text += std::char_traits<char>::to_char_type(byte);
        else
            line.isWhole = false;
    }
}

} // namespace orvane::cli
