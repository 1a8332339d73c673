#include "OrvaneSyncCore/Services/Shortcuts/ShortcutFiles.h"

#include "OrvaneSyncCore/Services/Persistence/AppStorageHelper.h"
#include "Platform/FileLock.h"
#include "Platform/Files.h"

#include <algorithm>

namespace orvane {

namespace files = platform::files;

namespace {

constexpr std::string_view extension = ".json";
constexpr std::uint64_t largestFile = std::uint64_t{1} << 20U; // bytes; 37 actions take about 2000

} // namespace

ShortcutFiles::ShortcutFiles(std::string folder) {
    if (folder.empty()) folder = files::dataHome() + "/" + std::string(AppStorageHelper::appFolderName);
    bindingsFile_ = folder + "/keyboard-bindings.json";
    profilesDir_ = folder + "/keyboard-profiles";
}

ShortcutBindings ShortcutFiles::read(const std::string& path) {
    const std::string text = files::readText(path, largestFile);
    std::string why;
    try {
        return fromJSON<ShortcutBindings>(JSON::parse(text));
    } catch (const platform::JSONError& error) {
        why = error.what();
    } catch (const DecodingError& error) {
        why = error.what();
    }
    throw ShortcutFileError("'" + path + "' holds no key bindings: " + why);
}

std::string ShortcutFiles::written(const ShortcutBindings& bindings) { return toJSON(bindings).dump(); }

std::string ShortcutFiles::exported(const ShortcutBindings& bindings) {
    return toJSON(bindings).dump(JSON::Layout::pretty) + "\n";
}

ShortcutFiles::Kept ShortcutFiles::readOrKeepBeside() const {
    if (!files::exists(bindingsFile_)) return {};
    Kept kept;
    try {
        kept.bindings = read(bindingsFile_);
        return kept;
    } catch (const std::runtime_error& error) {
        kept.problem = error.what();
    }
    try {
        const std::string beside = files::keepBeside(bindingsFile_, files::unreadableSuffix);
        *kept.problem += "; the file was kept as '" + beside + "'";
    } catch (const platform::FileError&) {
        // It could not be kept; the new file replaces it all the same.
    }
    return kept;
}

ShortcutFiles::Kept ShortcutFiles::change(const std::function<void(ShortcutBindings&)>& edit,
                                          const ShortcutBindings& otherwise) const {
    files::createDirectories(files::folderOf(bindingsFile_));
    const auto lock = platform::FileLock::ofFile(bindingsFile_ + ".lock");
    Kept kept = readOrKeepBeside();
    if (!kept.bindings) kept.bindings = otherwise;
    edit(*kept.bindings);
    files::writeAtomically(bindingsFile_, written(*kept.bindings));
    return kept;
}

std::string ShortcutFiles::state() const {
    const auto file = files::attributes(bindingsFile_);
    if (!file) return {};
    return std::to_string(file->identity.first) + " " + std::to_string(file->identity.second) + " " +
           std::to_string(file->modificationSinceReference) + " " + std::to_string(file->size);
}

std::vector<std::string> ShortcutFiles::profiles() const {
    std::vector<std::string> names;
    for (std::string& name : files::childNames(profilesDir_).value_or(std::vector<std::string>())) {
        if (!name.ends_with(extension) || name.size() == extension.size()) continue;
        name.resize(name.size() - extension.size());
        names.push_back(std::move(name));
    }
    std::ranges::sort(names);
    return names;
}

void ShortcutFiles::saveProfile(const std::string& name, const ShortcutBindings& bindings) const {
    const std::string path = profilePath(name);
    files::createDirectories(profilesDir_);
    files::writeAtomically(path, written(bindings));
}

ShortcutBindings ShortcutFiles::readProfile(const std::string& name) const {
    return read(knownProfile(name));
}

void ShortcutFiles::deleteProfile(const std::string& name) const { files::remove(knownProfile(name)); }

std::string ShortcutFiles::knownProfile(const std::string& name) const {
    std::string path = profilePath(name);
    if (!files::exists(path)) throw ShortcutFileError("there is no profile '" + name + "'");
    return path;
}

std::string ShortcutFiles::profilePath(const std::string& name) const {
    if (name.find_first_of(std::string_view("/\0", 2)) != std::string::npos)
        throw ProfileNameError("the name of a profile can't hold '/' or the character NUL");
    return profilesDir_ + "/" + name + std::string(extension);
}

} // namespace orvane
