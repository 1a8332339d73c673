#include "Platform/MediaHelper/HelperProcess.h"

#include "Platform/InterfaceVersion.h"
#include "Platform/Modules.h"
#include "Platform/ReadErrorWatch.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace orvane::platform::helper {

namespace {

/// Longer than the helper's own limit for one read of a file (10 s).
constexpr std::chrono::seconds longestRequest{20};
/// Most free helpers that are kept for the next file.
constexpr std::ptrdiff_t mostFree = 8;
/// The same for helpers for pictures; each player has one. When a player loads another clip, the helpers of
/// the player, of the strip of pictures and of the sync lens become free at nearly the same time and as many
/// are taken again. Starting one takes longer than all other steps between a key and the picture.
constexpr std::ptrdiff_t mostFreeForPictures = 3;

struct Pool {
    std::mutex mutex;
    std::vector<std::unique_ptr<Process>> free;
    std::vector<pid_t> ended; ///< killed, maybe still waiting for a disk
};
Pool& pool() {
    static auto& pool = *new Pool; // files may be closed while the program ends
    return pool;
}

void reapEnded() {
    const std::lock_guard lock(pool().mutex);
    std::erase_if(pool().ended, [](pid_t process) { return ::waitpid(process, nullptr, WNOHANG) != 0; });
}

std::size_t bytesFor(Purpose purpose) {
    return purpose == Purpose::pictures ? pictureMemoryBytes : sharedBytes;
}

std::atomic<int> lastSharingError = 0;

/// Unnamed memory that two processes share; -1 if there is none. It counts as a file, whose size the user may
/// have limited.
int makeSharedMemory(std::size_t bytes) {
    const int memory = ::memfd_create("samples", MFD_CLOEXEC);
    const bool isThere = memory >= 0 && ::ftruncate(memory, static_cast<off_t>(bytes)) == 0;
    lastSharingError = isThere ? 0 : errno;
    if (isThere || memory < 0) return memory;
    ::close(memory);
    return -1;
}

class SpawnActions {
  public:
    SpawnActions() {
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawnattr_init(&attributes);
        // Its own process group: a Ctrl-C at the terminal should reach only the program, which ends its
        // helpers itself.
        ::posix_spawnattr_setflags(&attributes,
                                   POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        sigset_t signals{};
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&attributes, &signals);
    }
    ~SpawnActions() {
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attributes);
    }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

/// 0 if the system starts none.
pid_t startProgram(const std::string& path, Purpose purpose, int socket, int memory) {
    SpawnActions spawn;
    for (const int standard : {0, 1, 2}) // discards what a library prints
        ::posix_spawn_file_actions_addopen(&spawn.actions, standard, "/dev/null", O_RDWR, 0);
    ::posix_spawn_file_actions_adddup2(&spawn.actions, socket, messageDescriptor);
    ::posix_spawn_file_actions_adddup2(&spawn.actions, memory, memoryDescriptor);
    ::posix_spawn_file_actions_addclosefrom_np(&spawn.actions, memoryDescriptor + 1);
    std::string name = path;
    std::string argument = picturesArgument;
    const std::array<char*, 3> arguments{name.data(),
                                         purpose == Purpose::pictures ? argument.data() : nullptr, nullptr};
    pid_t process = 0;
    const int failure =
        ::posix_spawn(&process, path.c_str(), &spawn.actions, &spawn.attributes, arguments.data(), environ);
    return failure == 0 ? process : 0;
}

/// A descriptor above those that the helper gets, so that passing one does not close another.
int movedUp(int descriptor) {
    if (descriptor < 0 || descriptor > memoryDescriptor) return descriptor;
    const int moved = ::fcntl(descriptor, F_DUPFD_CLOEXEC, memoryDescriptor + 1);
    ::close(descriptor);
    return moved;
}

void closeIfOpen(int descriptor) {
    if (descriptor >= 0) ::close(descriptor);
}

} // namespace

namespace {
std::atomic<bool> isStartFailed = false;
} // namespace

bool hasStartFailed() { return isStartFailed; }
void setStartFailed() { isStartFailed = true; }
int sharingError() { return lastSharingError; }

const std::string& programPath() {
    static const std::string path = [] {
        for (const std::string& folder : modules::programFolders())
            if (std::string program = folder + "/orvane_media_helper"; ::access(program.c_str(), X_OK) == 0)
                return program;
        return std::string();
    }();
    return path;
}

std::unique_ptr<Process> Process::takeFree(Purpose purpose) {
    const std::lock_guard lock(pool().mutex);
    auto& free = pool().free;
    std::erase_if(free, [](const auto& one) { return one->owner_ != ::getpid(); });
    const auto found =
        std::find_if(free.rbegin(), free.rend(), [=](const auto& one) { return one->purpose_ == purpose; });
    if (found == free.rend()) return nullptr;
    std::unique_ptr<Process> process = std::move(*found);
    free.erase(std::next(found).base());
    return process;
}

std::shared_ptr<Process> Process::borrow(Purpose purpose) {
    reapEnded();
    auto process = takeFree(purpose);
    while (process && !process->isAlive()) process = takeFree(purpose);
    if (!process) process = start(purpose);
    if (!process || process->about_.version != helperVersion) {
        setStartFailed();
        return nullptr;
    }
    return {process.release(), [](Process* returned) {
                std::unique_ptr<Process> back(returned);
                const std::lock_guard lock(pool().mutex);
                const auto ofThatPurpose = std::ranges::count_if(
                    pool().free, [&](const auto& one) { return one->purpose_ == back->purpose_; });
                const auto most = back->purpose_ == Purpose::pictures ? mostFreeForPictures : mostFree;
                if (back->isRunning() && back->owner_ == ::getpid() && ofThatPurpose < most)
                    pool().free.push_back(std::move(back));
            }};
}

bool Process::isAlive() const {
    pollfd socket{descriptor_, POLLIN, 0};
    return ::poll(&socket, 1, 0) == 0; // it sends nothing unrequested: readable means that it has ended
}

std::unique_ptr<Process> Process::start(Purpose purpose) {
    if (programPath().empty()) return nullptr;
    std::array<int, 2> sockets{-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) return nullptr;
    const std::size_t bytes = bytesFor(purpose);
    const int own = movedUp(sockets[0]), theirs = movedUp(sockets[1]);
    const int memory = movedUp(makeSharedMemory(bytes));
    const int access = purpose == Purpose::pictures ? PROT_READ | PROT_WRITE : PROT_READ;
    void* shared = memory < 0 ? MAP_FAILED : ::mmap(nullptr, bytes, access, MAP_SHARED, memory, 0);
    const bool isReady = own >= 0 && theirs >= 0 && shared != MAP_FAILED;
    const pid_t process = isReady ? startProgram(programPath(), purpose, theirs, memory) : 0;
    closeIfOpen(theirs);
    closeIfOpen(memory);
    if (process == 0) {
        closeIfOpen(own);
        if (shared != MAP_FAILED) ::munmap(shared, bytes);
        return nullptr;
    }
    std::unique_ptr<Process> started(new Process(purpose, process, own, shared));
    // A missing library is detected here.
    auto about = started->ask<About>(Request::about);
    if (!about) return nullptr;
    started->about_ = std::move(*about);
    return started;
}

std::optional<About> tryToStart() {
    const auto process = Process::start(Purpose::sound);
    return process ? std::optional(process->about_) : std::nullopt;
}

Process::Process(Purpose purpose, pid_t process, int descriptor, void* memory)
    : owner_(::getpid()), process_(process), descriptor_(descriptor), purpose_(purpose), memory_(memory) {}

Process::~Process() {
    end();
    ::munmap(memory_, bytesFor(purpose_));
}

void Process::end() {
    if (descriptor_ < 0) return;
    ::close(std::exchange(descriptor_, -1));
    if (owner_ != ::getpid()) return;
    ::kill(process_, SIGKILL);
    {
        const std::lock_guard lock(pool().mutex);
        pool().ended.push_back(process_);
    }
    reapEnded();
}

std::optional<std::string> Process::ask(const std::string& request) {
    const std::lock_guard lock(mutex_);
    if (descriptor_ < 0 || owner_ != ::getpid()) return std::nullopt;
    const auto start = clock_.now();
    auto answer = send(descriptor_, request) ? receive(descriptor_, longestRequest, clock_) : std::nullopt;
    if (!answer || answer->empty()) {
        wasTooSlow_ = clock_.now() - start >= longestRequest;
        end();
        return std::nullopt;
    }
    if (answer->front() != 0) ReadErrorWatch::report();
    answer->erase(0, 1);
    return answer;
}

} // namespace orvane::platform::helper
