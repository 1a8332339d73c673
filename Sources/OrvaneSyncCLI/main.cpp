#include "OrvaneSyncCLI/Command.h"
#include "OrvaneSyncCore/Services/Persistence/StandardSettings.h"
#include "Platform/BrowserSession.h"
#include "Platform/Interrupt.h"
#include "Platform/MainThread.h"
#include "Platform/Terminal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr int standardOutput = 1;
constexpr int standardError = 2;

bool coloursAreOff() {
    const char* value = std::getenv("NO_COLOR");
    return value != nullptr && *value != '\0';
}

/// Buffered output may reach a full disk only now.
int withOutputWritten(int status) {
    std::cout.flush();
    if (std::cout) return status;
    if (const auto ended = orvane::platform::statusWithoutReader(standardOutput)) return *ended;
    std::cerr << "error: can't write to standard output\n";
    return orvane::cli::failed;
}

/// Every user can read the list of processes, but must not see the address at the end of a sign-in.
void hideCallback(int argc, char** argv) {
    if (argc < 3 || argv[1] != orvane::platform::BrowserSession::callbackCommand) return;
    for (int i = 2; i < argc; ++i) std::fill_n(argv[i], std::strlen(argv[i]), '*');
}

int runProgram(int argc, char** argv) {
    using namespace orvane;
    platform::failRefusedWrites();
    platform::endWithoutMemory();
    namespace terminal = platform::terminal;
    const bool errIsTerminal = terminal::isTerminal(standardError);
    // Clears the progress line.
    platform::exitOnInterrupt(errIsTerminal ? "\r\x1b[K" : "");
    cli::Context context{std::cout, std::cerr};
    context.outIsTerminal = terminal::isTerminal(standardOutput);
    context.errIsTerminal = errIsTerminal;
    context.mayColour = context.outIsTerminal && !coloursAreOff();
    context.outWidth = terminal::width(standardOutput);
    context.errWidth = terminal::width(standardError);
    if (argc > 0) context.programName = argv[0];
    context.settings = openStandardSettings();
    const std::vector<std::string> words(argv + 1, argv + argc);
    hideCallback(argc, argv);
    const int status = withOutputWritten(cli::run(words, context));
    // A hanging read may still return, and would use destroyed objects.
    if (platform::SerialQueue::hasAbandonedWork()) std::_Exit(status);
    return status;
}

} // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    try {
        return runProgram(argc, argv);
    } catch (const std::exception& error) { // out of memory, or no thread can be started
        std::cerr << "error: " << error.what() << "\n";
        return orvane::cli::failed;
    }
}
