#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orvane {

/// The kinds of files that are written to places which the user chooses.
enum class OutputKind : std::uint8_t {
    document,  ///< FCPXML
    project,   ///< .orvanesync
    table,     ///< the clips to review, tab separated
    rendering, ///< sound or a movie: wav, mov
    picture,   ///< png
    shortcuts, ///< key bindings, a JSON list
    mail       ///< a message to the developers: eml
};

/// The name of such a file in messages: "document".
std::string_view name(OutputKind kind);

/// The mark of a rendering: the originator in the `bext` chunk of a WAV file, the beginning of the encoder's
/// name in a movie and of the software's name in a picture.
inline constexpr std::string_view renderingMark = "OrvaneSync";
/// The first line of a review table, without its line end. Tables with only the first ten columns are the
/// program's own as well.
inline constexpr std::string_view reviewTableHeader =
    "clip\tcamera_file\tsound\tstatus\tdoubt\tchoice\toffset_frames\tname\tskip\tnote\tlock";

/// The first lines of a mail, with their line ends.
inline constexpr std::string_view mailHead = "MIME-Version: 1.0\r\nSubject: OrvaneSync feedback\r\n";

/// Whether this program wrote the file as an output of this kind: a rendering or picture is recognised by its
/// mark, any other by its form. False if the file cannot be read. `path` has the bytes of the file system.
bool isOwnOutput(OutputKind kind, const std::string& path);

/// Whether the text begins like the documents of this program and unlike those of other programs.
bool beginsAsOwnDocument(std::string_view text);

} // namespace orvane
