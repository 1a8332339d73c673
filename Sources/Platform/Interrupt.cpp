#include "Platform/Interrupt.h"

#include "Platform/Files.h"

#include <csignal>
#include <thread>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

void exitOnInterrupt(std::string lastWords) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&signals, signal);
    }
    // Blocked here, and so in every thread started later; one thread waits for them and may take locks, which
    // a signal handler may not.
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals, lastWords = std::move(lastWords)] {
        int signal = 0;
        if (::sigwait(&signals, &signal) != 0) return;
        files::discardTemporaries();
        // Past the streams, which another thread may be in the middle of.
        if (::write(STDERR_FILENO, lastWords.data(), lastWords.size()) < 0) ::_exit(1);
        constexpr int endedBySignal = 128;
        ::_exit(endedBySignal + signal);
    }).detach();
}

} // namespace orvane::platform
