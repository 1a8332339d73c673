#include "OrvaneSyncApp/Controllers/Commands/Readable.h"

#include "OrvaneSyncApp/Controllers/Commands/Command.h"
#include "OrvaneSyncCore/Services/Ingest/ALEParser.h"
#include "Platform/Files.h"
#include "Platform/MediaRecognition.h"
#include "Platform/RandomAccessFile.h"

#include <cerrno>
#include <system_error>
#include <unistd.h>

namespace orvane {

std::string whyUnreadable(const std::string& path, bool mustBeFolder) {
    const auto attributes = platform::files::attributes(path);
    if (!attributes) return std::generic_category().message(errno);
    if (mustBeFolder && !attributes->isDirectory) return "it is not a folder";
    if (!mustBeFolder && attributes->isDirectory) return "it is a folder";
    if (!mustBeFolder && !attributes->isRegularFile) return "it is no regular file";
    const int mode = mustBeFolder ? R_OK | X_OK : R_OK;
    return ::access(path.c_str(), mode) == 0 ? "" : std::generic_category().message(errno);
}

std::string whyNoReport(const std::string& path) {
    const auto file = platform::files::attributes(path);
    const bool isRegular = file && file->isRegularFile;
    if (isRegular && file->size > ALEParser::mostBytes) return "it is larger than 1 GB";
    if (std::string why = whyUnreadable(path, false); !why.empty() || !isRegular) return why;
    auto content = platform::RandomAccessFile::open(path);
    // The bytes of a media file would be read as text and split into columns.
    return content && platform::beginsAsMedia(*content) ? "it is a media file" : "";
}

namespace commands {

namespace {

FileURL readable(const std::string& path, bool isFolder) {
    if (const std::string why = whyUnreadable(path, isFolder); !why.empty())
        throw Error(Refusal::failed, std::string("can't read the ") + (isFolder ? "folder" : "file") + " '" +
                                         path + "': " + why);
    return {platform::files::standardized(path)};
}

} // namespace

FileURL readableFile(const std::string& path) { return readable(path, false); }
FileURL readableFolder(const std::string& path) { return readable(path, true); }
FileURL readableReport(const std::string& path) {
    FileURL file = readableFile(path);
    if (const std::string why = whyNoReport(file.path); !why.empty())
        throw Error(Refusal::failed, "can't read the report '" + file.path + "': " + why);
    return file;
}

} // namespace commands

} // namespace orvane
