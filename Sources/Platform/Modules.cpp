#include "Platform/Modules.h"

#include "Platform/InterfaceThread.h"

#include <dlfcn.h>
#include <filesystem>
#include <system_error>

namespace orvane::platform::modules {

std::vector<std::string> programFolders() {
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return {};
    const auto folder = program.parent_path();
    return {folder.string(), (folder.parent_path() / "lib").string()};
}

void* entryPoint(std::span<const std::string> absolutePaths, const char* function) {
    for (const std::string& path : absolutePaths) {
        if (!path.starts_with('/')) continue;
        assertMayBlock("loading a library");
        // Never unloaded: its threads and tables live as long as the process.
        void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) continue;
        if (void* entry = ::dlsym(module, function)) return entry;
    }
    return nullptr;
}

Found<void> find(std::span<const std::string> folders, const char* fileName) {
    std::string problem = std::string(fileName) + " is missing beside the program";
    for (const std::string& folder : folders) {
        const std::string path = folder + "/" + fileName;
        std::error_code error;
        if (!std::filesystem::exists(path, error)) continue;
        const auto entry = reinterpret_cast<decltype(&orvaneModule)>(entryPoint({&path, 1}, "orvaneModule"));
        if (entry == nullptr) {
            problem = path + " can't be loaded; install OrvaneSync again, with the libraries that it needs";
            continue;
        }
        const void* record = entry();
        if (*static_cast<const std::uint64_t*>(record) == interfaceVersion) return {record, ""};
        problem = path + " is of another build than the program; install OrvaneSync again";
    }
    return {nullptr, problem};
}

std::vector<std::string> systemLibraryFolders() {
    return {"/usr/local/lib", "/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu", "/usr/lib64",
            "/usr/lib"};
}

} // namespace orvane::platform::modules
