#pragma once
#pragma GCC system_header // no warnings about the comparisons below

// The switches of the mutants that mutate.py compiles into the sources. ORVANE_MUTANT holds the number of the
// mutant that is on. ORVANE_MUTANTS_REACHED names a file of one byte for each number; a mutant that is
// evaluated sets its byte. The file is mapped into memory, so child processes and loaded libraries set bytes
// of the same file.

#include <algorithm>
#include <cstdlib>
#include <type_traits>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace orvane_mutation {

inline constexpr int mostMutants = 1 << 16;
inline int active = 0;
inline unsigned char* reached = nullptr;

/// Runs before the constructors of global objects.
[[gnu::constructor(101)]] static void readSwitches() {
    if (const char* number = std::getenv("ORVANE_MUTANT")) active = std::atoi(number);
    const char* path = std::getenv("ORVANE_MUTANTS_REACHED");
    if (path == nullptr || reached != nullptr) return;
    const int file = ::open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) return;
    void* memory = ::mmap(nullptr, mostMutants, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    ::close(file);
    if (memory != MAP_FAILED) reached = static_cast<unsigned char*>(memory);
}

inline bool isOn(int number) {
    if (reached != nullptr) reached[number] = 1;
    return active == number;
}

} // namespace orvane_mutation

/// Whether the mutant is on. Constant expressions compile as without it; with a negative number the call is
/// no constant expression, so the initial value of a constant is computed at run time and can change.
constexpr bool orvane_mutant(int number) {
    if (number < 0) return orvane_mutation::isOn(-number);
    if (std::is_constant_evaluated()) return false;
    return orvane_mutation::isOn(number);
}

namespace orvane_mutation {

// `a < b` is compiled as `a < Less<n>{} < b`: the same operator on both sides keeps the precedence. The
// result has the type of the result without the mutant; a place where the other operator has another type
// does not compile.
#define ORVANE_MUTATION_OPERATOR(name, op, other)                                                            \
    template <int N>                                                                                         \
    struct name {};                                                                                          \
    template <int N, class A>                                                                                \
    struct name##Left {                                                                                      \
        A&& a;                                                                                               \
    };                                                                                                       \
    template <class A, int N>                                                                                \
    constexpr name##Left<N, A> operator op(A&& a, name<N>&&) {                                               \
        return {static_cast<A&&>(a)};                                                                        \
    }                                                                                                        \
    template <int N, class A, class B>                                                                       \
    constexpr auto operator op(name##Left<N, A>&& left, B&& b) {                                             \
        using Result = decltype(static_cast<A&&>(left.a) op static_cast<B&&>(b));                            \
        using Other = decltype(static_cast<A&&>(left.a) other static_cast<B&&>(b));                          \
        static_assert(std::is_same_v<Result, Other>);                                                        \
        if (orvane_mutant(N)) return static_cast<A&&>(left.a) other static_cast<B&&>(b);                     \
        return static_cast<A&&>(left.a) op static_cast<B&&>(b);                                              \
    }
ORVANE_MUTATION_OPERATOR(Less, <, <=)
ORVANE_MUTATION_OPERATOR(LessEqual, <=, <)
ORVANE_MUTATION_OPERATOR(Greater, >, >=)
ORVANE_MUTATION_OPERATOR(GreaterEqual, >=, >)
ORVANE_MUTATION_OPERATOR(Equal, ==, !=)
ORVANE_MUTATION_OPERATOR(NotEqual, !=, ==)
ORVANE_MUTATION_OPERATOR(Plus, +, -)
ORVANE_MUTATION_OPERATOR(Minus, -, +)
ORVANE_MUTATION_OPERATOR(Times, *, /)
ORVANE_MUTATION_OPERATOR(Divided, /, *)
#undef ORVANE_MUTATION_OPERATOR

/// std::min as a mutant, and std::max as another.
template <int N, class T>
constexpr T min(const T& a, const T& b) {
    return orvane_mutant(N) ? std::max(a, b) : std::min(a, b);
}
template <int N, class T>
constexpr T max(const T& a, const T& b) {
    return orvane_mutant(N) ? std::min(a, b) : std::max(a, b);
}

} // namespace orvane_mutation

// The mutants cause these; in the sources themselves other builds report them.
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wfloat-conversion"
#pragma GCC diagnostic ignored "-Wnarrowing"
#pragma GCC diagnostic ignored "-Wparentheses"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wint-in-bool-context"
#pragma GCC diagnostic ignored "-Wbool-operation"
#pragma GCC diagnostic ignored "-Wbool-compare"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wempty-body"
#pragma GCC diagnostic ignored "-Wmisleading-indentation"
#pragma GCC diagnostic ignored "-Wdangling-else"
#pragma GCC diagnostic ignored "-Wimplicit-fallthrough"
#pragma GCC diagnostic ignored "-Wunused-value"
#pragma GCC diagnostic ignored "-Wreturn-type"
