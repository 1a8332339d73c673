#include "OrvaneSyncCore/Services/Persistence/OutputMarks.h"

#include "OrvaneSyncCore/Services/Persistence/ProjectService.h"
#include "OrvaneSyncCore/Utilities/EnumTable.h"
#include "Platform/Files.h"
#include "Platform/JSON.h"
#include "Platform/MediaInspector.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/WaveChunks.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace orvane {

namespace {

using namespace std::string_view_literals;
using platform::ByteCursor;
using platform::RandomAccessFile;

/// Whether the text is the mark, alone or followed by a version.
bool isMark(std::string_view text) {
    return text.starts_with(renderingMark) &&
           (text.size() == renderingMark.size() || text[renderingMark.size()] == ' ' ||
            text[renderingMark.size()] == '\0');
}

bool isOwnWave(RandomAccessFile& file) {
    constexpr std::size_t originatorAt = 256, originatorBytes = 32;
    using platform::WaveChunks;
    if (WaveChunks::formOf(file) != WaveChunks::Form::wave) return false;
    WaveChunks chunks(file);
    while (const auto chunk = chunks.next())
        if (chunk->is("bext"))
            return chunk->size >= originatorAt + originatorBytes &&
                   isMark(file.peek(chunk->body + originatorAt, originatorBytes).text());
    return false;
}

bool isOwnMovie(RandomAccessFile& file) {
    constexpr std::array encoders{"©too"sv, "©swr"sv, "©enc"sv, "com.apple.quicktime.software"sv};
    const auto inspected = platform::inspectMediaHeaders(file);
    return inspected && std::ranges::any_of(inspected->metadata, [&](const auto& item) {
               return std::ranges::find(encoders, item.key) != encoders.end() &&
                      isMark(item.string.value_or(""));
           });
}

bool isOwnPicture(RandomAccessFile& file) {
    constexpr std::string_view signature = "\x89PNG\r\n\x1A\n", keyword = "Software\0"sv;
    constexpr std::uint64_t beforeBody = 8, afterBody = 4; // length and type; checksum
    constexpr int mostChunks = 1000;
    if (file.peek(0, signature.size()).text() != signature) return false;
    std::uint64_t at = signature.size();
    for (int i = 0; i < mostChunks; ++i) {
        const ByteCursor chunk = file.peek(at, beforeBody + keyword.size() + renderingMark.size() + 1);
        const auto length = chunk.u32be(0);
        if (!length || chunk.size() < beforeBody) return false;
        const ByteCursor text = chunk.from(beforeBody);
        const std::size_t count = std::min<std::size_t>(text.size(), *length);
        const std::string_view body = text.text().substr(0, count);
        if (chunk.text().substr(4, 4) == "tEXt" && body.starts_with(keyword))
            return isMark(body.substr(keyword.size()));
        at += beforeBody + *length + afterBody;
    }
    return false;
}

bool isOwnProject(const std::string& path) {
    try {
        ProjectService().load({path});
        return true;
    } catch (const std::runtime_error&) { // the file cannot be read, or is of another version
        return false;
    }
}

/// A list in which texts alternate with objects that have a key and modifiers.
bool isOwnBindings(const std::string& path) {
    constexpr std::uint64_t largest = std::uint64_t{1} << 20U; // bytes
    try {
        const auto json = platform::JSON::parse(platform::files::readText(path, largest));
        const auto* list = json.elements();
        if (list == nullptr || list->empty() || list->size() % 2 != 0) return false;
        for (std::size_t i = 0; i < list->size(); i += 2) {
            const platform::JSON& shortcut = (*list)[i + 1];
            if ((*list)[i].string() == nullptr || shortcut.find("key") == nullptr ||
                shortcut.find("modifiers") == nullptr)
                return false;
        }
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

/// Removes the piece from the front of the text, if it is there.
bool takes(std::string_view& text, std::string_view piece) {
    if (!text.starts_with(piece)) return false;
    text.remove_prefix(piece.size());
    return true;
}

void takeAll(std::string_view& text, std::string_view characters) {
    text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

} // namespace

std::string_view name(OutputKind kind) {
    constexpr std::array names{
        "document"sv, "project"sv, "table"sv, "rendering"sv, "picture"sv, "list of key bindings"sv, "mail"sv};
    return rowOf(names, kind);
}

bool beginsAsOwnDocument(std::string_view text) {
    // Unlike this program, Final Cut Pro writes no "standalone", writes a blank line before the root, and
    // formats in another order.
    constexpr std::string_view blanks = " \n";
    if (!takes(text, "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<!DOCTYPE fcpxml>\n"
                     "<fcpxml version=\"1."))
        return false;
    takeAll(text, "0123456789");
    if (!takes(text, "\">\n")) return false;
    takeAll(text, blanks);
    if (!takes(text, "<resources>\n")) return false;
    takeAll(text, blanks);
    if (!takes(text, "<format id=\"r1\" frameDuration=\"")) return false;
    text.remove_prefix(std::min(text.find("/>"), text.size()));
    if (!takes(text, "/>\n")) return false;
    takeAll(text, blanks);
    return text.starts_with("<format id=\"r2\" name=\"FFVideoFormatRateUndefined\"/>");
}

bool isOwnOutput(OutputKind kind, const std::string& path) {
    constexpr std::size_t headBytes = 4096;
    auto file = RandomAccessFile::open(path);
    if (!file) return false;
    switch (kind) {
    case OutputKind::document:
        return beginsAsOwnDocument(file->peek(0, headBytes).text());
    case OutputKind::project:
        return isOwnProject(path);
    case OutputKind::table: {
        const std::string_view head = file->peek(0, headBytes).text();
        const std::string_view line = head.substr(0, head.find_first_of("\r\n"));
        constexpr std::string_view withoutLock = reviewTableHeader.substr(0, reviewTableHeader.rfind('\t'));
        return line.size() < head.size() && (line == reviewTableHeader || line == withoutLock);
    }
    case OutputKind::rendering:
        return isOwnWave(*file) || isOwnMovie(*file);
    case OutputKind::picture:
        return isOwnPicture(*file);
    case OutputKind::shortcuts:
        return isOwnBindings(path);
    case OutputKind::mail:
        return file->peek(0, mailHead.size()).text() == mailHead;
    }
    return false;
}

} // namespace orvane
