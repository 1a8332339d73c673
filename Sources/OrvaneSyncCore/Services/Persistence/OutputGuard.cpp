#include "OrvaneSyncCore/Services/Persistence/OutputGuard.h"

#include "OrvaneSyncCore/Models/FileURL.h"
#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/Files.h"
#include "Platform/MediaRecognition.h"
#include "Platform/RandomAccessFile.h"
#include "Platform/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

namespace orvane {

namespace files = platform::files;

namespace {

using enum OutputRefused::Reason;

constexpr std::string_view nullDevice = "/dev/null";
constexpr std::string_view otherName = "; give the output another name";

[[noreturn]] void refuse(OutputRefused::Reason reason, const std::string& path, const std::string& why) {
    throw OutputRefused(reason, platform::text::validUTF8("can't write '" + path + "': " + why));
}

std::string extensionOf(const std::string& path) { return FileURL{path}.lowercasedExtension(); }

/// Whether an output of this kind may have this name.
bool isNameOf(OutputKind kind, const std::string& path) {
    const std::string extension = extensionOf(path);
    if (kind == OutputKind::rendering) return extension == "wav" || extension == "mov";
    return kind == OutputKind::picture && extension == "png";
}

bool isForeignMediaName(OutputKind kind, const std::string& path) {
    return platform::isMediaName(path) && !isNameOf(kind, path);
}

bool liesInFolder(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.starts_with(folder) &&
           (folder.ends_with('/') || path[folder.size()] == '/');
}

/// Files that cameras and card copiers write beside their clips and that a scan may read.
bool isSideFileName(const std::string& path) {
    constexpr auto extensions =
        std::to_array<std::string_view>({"ale", "bim", "ccc", "cdl", "cpf", "cpi", "cube", "lut", "mhl",
                                         "mpl", "ppn", "rmd", "rtn", "sidecar", "smi", "srt", "xml", "xmp"});
    return std::ranges::find(extensions, extensionOf(path)) != extensions.end();
}

bool isProgramsOwn(const std::string& path) {
    const std::array homes{files::dataHome(), files::configHome(), files::cacheHome()};
    return std::ranges::any_of(homes, [&](const std::string& home) {
        return liesInFolder(path,
                            files::standardized(home + "/" + std::string(AppStorageHelper::appFolderName)));
    });
}

/// Absent if the file cannot be read.
std::optional<bool> isMedia(const std::string& path) {
    auto file = platform::RandomAccessFile::open(path);
    return file ? std::optional(platform::beginsAsMedia(*file)) : std::nullopt;
}

} // namespace

void RunInputs::addFile(const std::string& path, std::string_view what) {
    if (!path.empty()) files.push_back({files::standardized(files::behindLinks(path)), what});
}

void RunInputs::addFolder(const std::string& path) {
    if (!path.empty()) folders.push_back(files::standardized(files::behindLinks(path)));
}

void RunInputs::add(RunInputs more) {
    std::ranges::move(more.files, std::back_inserter(files));
    std::ranges::move(more.folders, std::back_inserter(folders));
}

OutputGuard::OutputGuard(OutputKind kind, RunInputs inputs, OutputPermission permission)
    : kind_(kind), inputs_(std::move(inputs)), permission_(permission) {}

void OutputGuard::check(const std::string& path) const { look(path); }

void OutputGuard::write(const std::string& path, std::string_view contents) const {
    look(path);
    files::writeAtomically(path, contents, [&] { return decide(path); });
}

files::Existing OutputGuard::decide(const std::string& path) const {
    return look(path) == There::replaceable ? files::Existing::replace : files::Existing::keep;
}

OutputGuard::There OutputGuard::look(const std::string& path) const {
    const std::string kind(name(kind_));
    if (isForeignMediaName(kind_, path))
        refuse(nameOfMedia, path, "it names a media file; give the " + kind + " another name");
    if (path.empty() || path.ends_with('/')) refuse(place, path, "it names a folder, not a file");

    const auto there = files::attributes(path);
    if (const int reason = errno; !there && reason != ENOENT)
        refuse(place, path, std::generic_category().message(reason));
    const std::string target = files::standardized(files::behindLinks(path));
    // The null device alone is allowed: other devices, such as a tape, may hold data.
    if (there && !there->isRegularFile && target == nullDevice) return There::nothing;
    if (isForeignMediaName(kind_, target))
        refuse(place, path, "it leads to the media file '" + target + "'" + std::string(otherName));
    if (const std::string folder = files::folderOf(target), why = files::whyNoNewFile(folder); !why.empty())
        refuse(place, path, folder + ": " + why);
    checkInputs(path, target);
    if (!there) return There::nothing;

    if (there->isDirectory) refuse(place, path, "it is a folder");
    if (!there->isRegularFile) refuse(place, path, "it is a device or a pipe");
    const auto found = files::attributes(target);
    if (!found || found->identity != there->identity) refuse(place, path, "the file there has no name");
    if (isProgramsOwn(target))
        refuse(place, path,
               "it is one of the files that OrvaneSync keeps for itself" + std::string(otherName));
    const bool isOwn = isOwnOutput(kind_, path);
    const auto holdsMedia = isMedia(path);
    if (!isOwn && !holdsMedia) refuse(place, path, "what is there can't be read" + std::string(otherName));
    if (!isOwn && *holdsMedia)
        refuse(place, path, "a media file is there, and media is never replaced" + std::string(otherName));
    if (files::isReadOnly(path)) refuse(place, path, "the file there is read-only" + std::string(otherName));
    if (isOwn) return There::replaceable;
    const bool isScanned = std::ranges::any_of(
        inputs_.folders, [&](const std::string& folder) { return liesInFolder(target, folder); });
    if (isScanned && isSideFileName(target))
        refuse(place, path, "it is among the camera's own files" + std::string(otherName));
    if (!permission_.replacesOthers)
        refuse(place, path,
               "a file is there that is no " + kind + " of OrvaneSync; give the output another name, or " +
                   std::string(permission_.option) + " to replace it");
    return There::replaceable;
}

void OutputGuard::checkInputs(const std::string& path, const std::string& target) const {
    const auto there = files::attributes(path);
    for (const RunInputs::File& input : inputs_.files) {
        bool isSame = input.path == target;
        if (there && !isSame) {
            const auto read = files::attributes(input.path);
            isSame = read && read->identity == there->identity;
        }
        if (isSame)
            refuse(place, path,
                   "it is " + std::string(input.what) + " '" + input.path + "', which is being read" +
                       std::string(otherName));
    }
}

} // namespace orvane
