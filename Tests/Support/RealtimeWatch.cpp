#include "Support/RealtimeWatch.h"

#include "Platform/Realtime/RealtimeScope.h"
#include "Support/AllocatedWork.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <dlfcn.h>
#include <new>
#include <pthread.h>
#include <semaphore.h>
#include <time.h>

#ifdef ORVANE_SANITIZED
// From the sanitizer's runtime; not every compiler has the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*, std::size_t),
                                                         void (*)(const volatile void*));
#endif

namespace orvane::test {

namespace {

std::atomic<const char*> violation = nullptr;

void report(const char* call) noexcept {
    if (!platform::RealtimeScope::isActive()) return;
    const char* none = nullptr;
    violation.compare_exchange_strong(none, call);
}

constexpr const char* allocation = "allocation";
constexpr const char* release = "release";

#ifdef ORVANE_SANITIZED

// A sanitizer has its own allocator, which reports its calls.
const int hooks =
    __sanitizer_install_malloc_and_free_hooks([](const volatile void*, std::size_t) { report(allocation); },
                                              [](const volatile void*) { report(release); });

#else

void* allocated(std::size_t size) {
    report(allocation);
    AllocatedWork::add();
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

#endif

} // namespace

bool RealtimeWatch::seesLocks() {
#ifdef ORVANE_SANITIZED
    return false;
#else
    return true;
#endif
}

std::string RealtimeWatch::firstViolation() {
    const char* call = violation;
    return call == nullptr ? "" : call;
}

void RealtimeWatch::reset() { violation = nullptr; }

} // namespace orvane::test

#ifndef ORVANE_SANITIZED

void* operator new(std::size_t size) { return orvane::test::allocated(size); }
void* operator new[](std::size_t size) { return orvane::test::allocated(size); }
void operator delete(void* memory) noexcept {
    orvane::test::report(orvane::test::release);
    std::free(memory);
}
void operator delete[](void* memory) noexcept { operator delete(memory); }
void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

// All code of the process uses the program's own definition instead of that of the C library.
#define ORVANE_WATCHED(name, parameters, arguments)                                                          \
    extern "C" int name parameters {                                                                         \
        static const auto next = reinterpret_cast<decltype(name)*>(dlsym(RTLD_NEXT, #name));                 \
        orvane::test::report(#name);                                                                         \
        return next arguments;                                                                               \
    }

ORVANE_WATCHED(pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex))
ORVANE_WATCHED(pthread_cond_signal, (pthread_cond_t * condition), (condition))
ORVANE_WATCHED(pthread_cond_broadcast, (pthread_cond_t * condition), (condition))
ORVANE_WATCHED(pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex), (condition, mutex))
ORVANE_WATCHED(pthread_rwlock_rdlock, (pthread_rwlock_t * lock), (lock))
ORVANE_WATCHED(pthread_rwlock_wrlock, (pthread_rwlock_t * lock), (lock))
ORVANE_WATCHED(sem_wait, (sem_t * semaphore), (semaphore))
ORVANE_WATCHED(nanosleep, (const timespec* wanted, timespec* left), (wanted, left))

#endif
