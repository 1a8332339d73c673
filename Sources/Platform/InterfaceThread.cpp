#include "Platform/InterfaceThread.h"

#include <cstdlib>
#include <ctime>
#include <cxxabi.h>
#include <memory>
#include <string>
#include <utility>

namespace orvane::platform {

namespace {

InterfaceWatch watching;

struct Piece {
    const char* name = nullptr;
    const std::function<void()>* work = nullptr;
    std::chrono::nanoseconds ofInner{0}; ///< processor time of the nested pieces
};
thread_local Piece* underWay = nullptr;

std::chrono::nanoseconds processorTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

std::string nameOf(const Piece& piece) {
    if (piece.name != nullptr) return piece.name;
    int status = 0;
    const char* const type = piece.work->target_type().name();
    const std::unique_ptr<char, void (*)(void*)> plain(abi::__cxa_demangle(type, nullptr, nullptr, &status),
                                                       std::free);
    return plain ? plain.get() : type;
}

} // namespace

void watchInterfaceWork(const InterfaceWatch& watch) { watching = watch; }

void runAsInterfaceWork(const std::function<void()>& work) {
    Piece piece;
    piece.work = &work;
    struct Restore {
        Piece* outer;
        ~Restore() { underWay = outer; }
    } const restore{std::exchange(underWay, &piece)};
    if (watching.hasRun == nullptr) return work();
    const auto start = processorTime();
    work();
    const auto used = processorTime() - start;
    if (restore.outer != nullptr) restore.outer->ofInner += used;
    watching.hasRun(nameOf(piece).c_str(), used - piece.ofInner);
}

void nameInterfaceWork(const char* name) {
    if (underWay != nullptr) underWay->name = name;
}

void assertMayBlock(const char* what) {
    if (underWay == nullptr || watching.hasBlocked == nullptr) return;
    watching.hasBlocked(what, nameOf(*underWay).c_str());
}

} // namespace orvane::platform
