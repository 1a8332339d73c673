#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

/// The kinds of files that are written to places which people choose.
enum class OutputKind : std::uint8_t {
    document,  ///< FCPXML
    project,   ///< .orvanesync
    table,     ///< the clips to review, tab separated
    rendering, ///< sound or a movie: wav, mov
    picture,   ///< png
    shortcuts, ///< key bindings, a JSON list
    mail       ///< a message to the makers: eml
};

/// What messages call such a file: "document".
std::string_view name(OutputKind kind);

/// Who made a rendering: the originator in the `bext` of a WAV, the beginning of the encoder's name in a
/// movie and of the software's in a picture.
inline constexpr std::string_view renderingMark = "OrvaneSync";
/// The first line of a review table, without its end; tables with the first ten columns alone are ours, too.
inline constexpr std::string_view reviewTableHeader =
    "clip\tcamera_file\tsound\tstatus\tdoubt\tchoice\toffset_frames\tname\tskip\tnote\tlock";

/// The first lines of a mail, with their ends.
inline constexpr std::string_view mailHead = "MIME-Version: 1.0\r\nSubject: OrvaneSync feedback\r\n";

/// Whether the file is one that this program wrote as an output of the kind: a rendering or picture by its
/// mark, any other by its form. False for what cannot be read.
/// `path` is in the bytes of the file system.
bool isOwnOutput(OutputKind kind, const std::string& path);

/// Whether the text begins as the documents of this program do, and those of other programs do not.
bool beginsAsOwnDocument(std::string_view text);

} // namespace orvane
