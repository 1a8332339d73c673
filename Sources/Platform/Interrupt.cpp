#include "Platform/Interrupt.h"

#include "Platform/Files.h"
#include "Platform/TextMemory.h"

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <string_view>
#include <thread>
#include <typeinfo>
#include <unistd.h>
#include <utility>

namespace orvane::platform {

namespace {

using TerminationCallback = std::function<void(const EndProcess&)>;

std::mutex terminationMutex;
TerminationCallback storedTerminationCallback;

TerminationCallback takeTerminationCallback() {
    const std::scoped_lock lock(terminationMutex);
    return std::exchange(storedTerminationCallback, nullptr);
}

[[noreturn]] void endBySignal(int signal, const std::string& lastWords) {
    files::discardTemporaries();
    // Past the streams, which another thread may be in the middle of.
    if (::write(STDERR_FILENO, lastWords.data(), lastWords.size()) < 0) ::_exit(1);
    constexpr int endedBySignal = 128;
    ::_exit(endedBySignal + signal);
}

} // namespace

void beforeTermination(TerminationCallback callback) {
    const std::scoped_lock lock(terminationMutex);
    storedTerminationCallback = std::move(callback);
}

namespace {

/// Allocates nothing, in as far as that is in our hands.
[[noreturn]] void endForWantOfMemory() {
    static std::atomic<bool> isEnding = false;
    static thread_local bool isOurs = false;
    if (isOurs) ::_exit(1);
    while (isEnding.exchange(true)) ::pause(); // another thread is at it
    isOurs = true;
    constexpr std::string_view message = "error: there is not enough memory\n";
    const bool isSaid = ::write(STDERR_FILENO, message.data(), message.size()) >= 0;
    files::discardTemporaries();
    ::_exit(isSaid ? 1 : 2);
}

} // namespace

void endWithoutMemory() {
    // At the allocation itself: what unwinds would have to start threads, resume coroutines and save work in
    // the memory that is not there.
    std::set_new_handler(endForWantOfMemory);
    text::callNewHandlerWithoutMemory();
    std::set_terminate([] {
        // Throwing it again to look at it would take memory.
        const std::type_info* type = abi::__cxa_current_exception_type();
        if (type == nullptr || *type != typeid(std::bad_alloc)) std::abort(); // a fault of the program
        endForWantOfMemory();                                                 // a library's own allocation
    });
}

void failRefusedWrites() {
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
}

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
        for (int signal = 0; ::sigwait(&signals, &signal) == 0;) {
            const TerminationCallback callback = signal == SIGINT ? nullptr : takeTerminationCallback();
            if (!callback) endBySignal(signal, lastWords);
            callback([signal, lastWords](const std::string& more) { endBySignal(signal, lastWords + more); });
        }
    }).detach();
}

} // namespace orvane::platform
