#include "Platform/DesktopScheme.h"

#include "Platform/BrowserSession.h"
#include "Platform/Files.h"
#include "Platform/InterfaceThread.h"

#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <spawn.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace orvane::platform {

namespace {

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

/// Starts a program of the system, which gets only its arguments from us. Gives its exit status if it ends
/// within the time; it may continue to run.
struct Run {
    bool hasStarted = false;
    std::optional<int> status = {};
};
Run run(std::vector<std::string> words, std::chrono::milliseconds longest) {
    assertMayBlock("starting a program");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    ::posix_spawn_file_actions_init(&actions);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&actions, standard, "/dev/null", O_RDWR, 0);
    pid_t process = 0;
    Run result;
    result.hasStarted =
        ::posix_spawnp(&process, arguments.front(), &actions, nullptr, arguments.data(), environ) == 0;
    ::posix_spawn_file_actions_destroy(&actions);
    if (!result.hasStarted) return result;
    constexpr std::chrono::milliseconds step{10};
    for (std::chrono::milliseconds waited{0}; waited < longest; waited += step) {
        int status = 0;
        if (::waitpid(process, &status, WNOHANG) == process) {
            result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            return result;
        }
        std::this_thread::sleep_for(step);
    }
    std::thread([process] { ::waitpid(process, nullptr, 0); }).detach();
    return result;
}

/// Quoted for the line that starts a program.
std::string quoted(const std::string& path) {
    std::string text = "\"";
    for (const char c : path) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') text += '\\';
        if (c == '%') text += '%';
        text += c;
    }
    return text + '"';
}

} // namespace

bool isDesktopThere() { return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY"); }

bool openWithDesktop(const std::string& url) {
    if (!isDesktopThere()) return false;
    const Run opening = run({"xdg-open", url}, std::chrono::seconds(2));
    return opening.hasStarted && opening.status.value_or(0) == 0;
}

void registerScheme(const std::string& scheme) {
    if (!isDesktopThere()) return;
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return;
    const std::string name = scheme + "-callback.desktop", type = "x-scheme-handler/" + scheme;
    const std::string entry = "[Desktop Entry]\nType=Application\nName=OrvaneSync sign-in\nNoDisplay=true\n"
                              "Terminal=false\nExec=" +
                              quoted(program.string()) + " " + std::string(BrowserSession::callbackCommand) +
                              " %u\nMimeType=" + type + ";\n";
    const std::string folder = files::dataHome() + "/applications", path = folder + "/" + name;
    try {
        files::createDirectories(folder);
        if (!files::exists(path) || files::readText(path) != entry) files::writeAtomically(path, entry);
    } catch (const FileError&) {
        return;
    }
    run({"xdg-mime", "default", name, type}, std::chrono::seconds(2));
}

} // namespace orvane::platform
