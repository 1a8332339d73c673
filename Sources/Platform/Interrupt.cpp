#include "Platform/Interrupt.h"

#include "Platform/FileStep.h"
#include "Platform/Files.h"
#include "Platform/Text.h"
#include "Platform/TextMemory.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cxxabi.h>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <new>
#include <poll.h>
#include <semaphore>
#include <string_view>
#include <system_error>
#include <thread>
#include <typeinfo>
#include <unistd.h>
#include <utility>
#include <variant>

namespace orvane::platform {

namespace {

/// The status of a process that a signal ended is this number plus that of the signal.
constexpr int endedBySignal = 128;

struct Termination {
    std::function<void(const EndProcess&)> callback;
    std::chrono::milliseconds timeLimit;
};

std::mutex terminationMutex;
Termination storedTermination;

Termination takeTermination() {
    const std::scoped_lock lock(terminationMutex);
    return std::exchange(storedTermination, {});
}

/// Does not wait for a disk that does not answer.
void discardAnsweringTemporaries() {
    constexpr std::chrono::seconds timeLimit{2};
    try {
        const auto haveEnded = std::make_shared<std::binary_semaphore>(0);
        std::thread([haveEnded] {
            files::discardTemporaries();
            haveEnded->release();
        }).detach();
        if (!haveEnded->try_acquire_for(timeLimit)) return;
    } catch (const std::system_error&) { // no thread can be started
        files::discardTemporaries();
    }
}

[[noreturn]] void endWithStatus(int status, const std::string& exitMessage) {
    discardAnsweringTemporaries();
    // Not through the streams: another thread may be writing to them.
    if (::write(STDERR_FILENO, exitMessage.data(), exitMessage.size()) < 0) ::_exit(1);
    ::_exit(status);
}

[[noreturn]] void endBySignal(int signal, const std::string& exitMessage) {
    endWithStatus(endedBySignal + signal, exitMessage);
}

/// The next signal, or the file whose writing has made no progress for so long.
std::variant<int, std::string> signalWhileWriting(const sigset_t& signals,
                                                  std::chrono::milliseconds timeLimit) {
    constexpr int looks = 10;
    const auto interval = std::chrono::duration_cast<std::chrono::nanoseconds>(timeLimit) / looks;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(interval);
    const timespec pause{seconds.count(), (interval - seconds).count()};
    for (StalledWrites writes;;) {
        if (const int signal = ::sigtimedwait(&signals, nullptr, &pause); signal > 0) return signal;
        if (std::string path = writes.look(looks); !path.empty()) return path;
    }
}

} // namespace

void beforeTermination(std::function<void(const EndProcess&)> callback, std::chrono::milliseconds timeLimit) {
    const std::scoped_lock lock(terminationMutex);
    storedTermination = {std::move(callback), timeLimit};
}

namespace {

/// Allocates nothing, as far as our own code decides that.
[[noreturn]] void endForWantOfMemory() {
    static std::atomic<bool> isEnding = false;
    static thread_local bool isOurs = false;
    if (isOurs) ::_exit(1);
    while (isEnding.exchange(true)) ::pause(); // another thread is ending the process
    isOurs = true;
    constexpr std::string_view message = "error: there is not enough memory\n";
    const bool isSaid = ::write(STDERR_FILENO, message.data(), message.size()) >= 0;
    files::discardTemporaries();
    ::_exit(isSaid ? 1 : 2);
}

} // namespace

void endWithoutMemory() {
    // Ends at the allocation itself: unwinding would have to start threads, resume coroutines and save work,
    // all without memory.
    std::set_new_handler(endForWantOfMemory);
    text::callNewHandlerWithoutMemory();
    std::set_terminate([] {
        // Rethrowing it for inspection would take memory.
        const std::type_info* type = abi::__cxa_current_exception_type();
        if (type == nullptr || *type != typeid(std::bad_alloc)) std::abort(); // a bug of the program
        endForWantOfMemory();                                                 // an allocation of a library
    });
}

void failRefusedWrites() {
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
}

std::optional<int> statusWithoutReader(int descriptor) {
    pollfd output{descriptor, POLLOUT, 0};
    if (::poll(&output, 1, 0) != 1 || (output.revents & POLLERR) == 0) return std::nullopt;
    return endedBySignal + SIGPIPE;
}

void exitOnInterrupt(std::string exitMessage) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&signals, signal);
    }
    // Blocked here, and so in every thread that is started later. One thread waits for them; it may take
    // locks, which a signal handler may not.
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::thread([signals, exitMessage = std::move(exitMessage)] {
        int signal = 0;
        if (::sigwait(&signals, &signal) != 0) return;
        if (signal == SIGINT) endBySignal(signal, exitMessage + "interrupted\n");
        const Termination termination = takeTermination();
        if (!termination.callback) endBySignal(signal, exitMessage);
        termination.callback(
            [signal, exitMessage](const std::string& more) { endBySignal(signal, exitMessage + more); });
        const auto next = signalWhileWriting(signals, termination.timeLimit);
        if (const int* another = std::get_if<int>(&next)) endBySignal(*another, exitMessage);
        endWithStatus(1, exitMessage + "error: can't save " + text::printable(std::get<std::string>(next)) +
                             ": its disk or share does not answer\n");
    }).detach();
}

} // namespace orvane::platform
