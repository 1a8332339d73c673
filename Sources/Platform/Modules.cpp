#include "Platform/Modules.h"

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
        // Never unloaded: its threads and tables live as long as the process.
        void* module = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (module == nullptr) continue;
        if (void* entry = ::dlsym(module, function)) return entry;
    }
    return nullptr;
}

std::vector<std::string> systemLibraryFolders() {
    return {"/usr/local/lib", "/usr/lib/x86_64-linux-gnu", "/usr/lib/aarch64-linux-gnu", "/usr/lib64",
            "/usr/lib"};
}

} // namespace orvane::platform::modules
