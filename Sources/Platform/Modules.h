#pragma once

#include "Platform/InterfaceVersion.h"

#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

/// Defined by each loadable module, and by nothing else: its record of functions.
extern "C" __attribute__((visibility("default"))) const void* orvaneModule();

namespace orvane::platform {

/// Heavy libraries are linked by modules of our own (shared objects) that are loaded at their first use. Each
/// defines `orvaneModule`, which returns its record of functions:
///
///     struct NetworkModule {
///         static constexpr const char* fileName = "liborvane_network.so";
///         std::uint64_t version = interfaceVersion;       // first member
///         ...
///     };
///
/// The program and its modules are built together. `interfaceVersion` is a hash of the headers of the
/// platform, so that a module that was built with other headers is refused. Any thread.
namespace modules {

/// The folders of our own modules: the program's folder, and `lib` beside that folder. No other folder is
/// searched, in particular not the working folder, and no environment variable adds one.
std::vector<std::string> programFolders();

/// The function of that name in the first of these files that has it; the file stays loaded until the process
/// ends. Null if none has it. Paths must be absolute: the system would search for a bare name.
void* entryPoint(std::span<const std::string> absolutePaths, const char* function);

/// A module, or why there is none: a clause for people that names the file.
template <class Module>
struct Found {
    const Module* module = nullptr;
    std::string problem;
};

/// The record of the first module of this interface in the folders, as `Found`.
Found<void> find(std::span<const std::string> folders, const char* fileName);

template <class Module>
Found<Module> load(std::span<const std::string> folders) {
    static_assert(std::is_standard_layout_v<Module> &&
                  std::is_same_v<decltype(Module::version), std::uint64_t>);
    const Found<void> found = find(folders, Module::fileName);
    return {static_cast<const Module*>(found.module), found.problem};
}

/// The program's own module, searched for once.
template <class Module>
const Found<Module>& own() {
    static const Found<Module> found = load<Module>(programFolders());
    return found;
}

/// The folders in which the system keeps its libraries, to find a runtime that the user installed.
std::vector<std::string> systemLibraryFolders();

} // namespace modules
} // namespace orvane::platform
