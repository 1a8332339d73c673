#pragma once

#include <span>
#include <string>
#include <vector>

namespace orvane::platform {

/// Heavy libraries stand behind modules of our own (shared objects) that are loaded at their first use. Each
/// exports one function that gives a record of functions:
///
///     struct NetworkModule {
///         static constexpr unsigned currentVersion = 1;   // raised with every change of the record
///         static constexpr const char* entryPoint = "orvaneNetworkModule";
///         static constexpr const char* fileName = "liborvane_network.so";
///         unsigned version = currentVersion;              // first member
///         ...
///     };
///
/// The program and its modules are built together; the version catches a file that was left over from another
/// build. Any thread.
namespace modules {

/// Where our own modules lie: the program's folder, and `lib` beside that folder. Nowhere else; above all not
/// in the working folder, and no variable of the environment adds a folder.
std::vector<std::string> programFolders();

/// The function of that name in the first of these files that has it, kept loaded for the life of the
/// process; null where there is none. Paths must be absolute: a bare name would be searched for.
void* entryPoint(std::span<const std::string> absolutePaths, const char* function);

/// The first module of this version in the folders; null where there is none.
template <class Module>
const Module* load(std::span<const std::string> folders) {
    for (const std::string& folder : folders) {
        const std::string path = folder + "/" + Module::fileName;
        using EntryPoint = const Module* (*)();
        const auto entry = reinterpret_cast<EntryPoint>(entryPoint({&path, 1}, Module::entryPoint));
        const Module* module = entry == nullptr ? nullptr : entry();
        if (module != nullptr && module->version == Module::currentVersion) return module;
    }
    return nullptr;
}

/// The program's own module, looked for once; null where it is missing or of another build.
template <class Module>
const Module* own() {
    static const Module* const module = load<Module>(programFolders());
    return module;
}

/// The folders in which the system keeps its libraries, for a runtime that the user installed.
std::vector<std::string> systemLibraryFolders();

} // namespace modules
} // namespace orvane::platform
