#pragma once

#include <cstddef>
#include <type_traits>

namespace orvane {

/// Gives every member of a record a name. Compiles only for the exact number of members. For records whose
/// members are all public and in one class, with or without constructors.
template <std::size_t count, class Record>
constexpr auto nameMembers(Record& record) {
    static_assert(count <= 40, "a row for this many members is missing below");
// NOLINTNEXTLINE(cppcoreguidelines-macro-usage): the language has no list of names of a given length
#define ORVANE_NAMES(length, ...)                                                                            \
    if constexpr (count == (length)) {                                                                       \
        [[maybe_unused]] auto& [__VA_ARGS__] = record;                                                       \
    }
    ORVANE_NAMES(1, a)
    ORVANE_NAMES(2, a, b)
    ORVANE_NAMES(3, a, b, c)
    ORVANE_NAMES(4, a, b, c, d)
    ORVANE_NAMES(5, a, b, c, d, e)
    ORVANE_NAMES(6, a, b, c, d, e, f)
    ORVANE_NAMES(7, a, b, c, d, e, f, g)
    ORVANE_NAMES(8, a, b, c, d, e, f, g, h)
    ORVANE_NAMES(9, a, b, c, d, e, f, g, h, i)
    ORVANE_NAMES(10, a, b, c, d, e, f, g, h, i, j)
    ORVANE_NAMES(11, a, b, c, d, e, f, g, h, i, j, k)
    ORVANE_NAMES(12, a, b, c, d, e, f, g, h, i, j, k, l)
    ORVANE_NAMES(13, a, b, c, d, e, f, g, h, i, j, k, l, m)
    ORVANE_NAMES(14, a, b, c, d, e, f, g, h, i, j, k, l, m, n)
    ORVANE_NAMES(15, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o)
    ORVANE_NAMES(16, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p)
    ORVANE_NAMES(17, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q)
    ORVANE_NAMES(18, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r)
    ORVANE_NAMES(19, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s)
    ORVANE_NAMES(20, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t)
    ORVANE_NAMES(21, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u)
    ORVANE_NAMES(22, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v)
    ORVANE_NAMES(23, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w)
    ORVANE_NAMES(24, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x)
    ORVANE_NAMES(25, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y)
    ORVANE_NAMES(26, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z)
    ORVANE_NAMES(27, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A)
    ORVANE_NAMES(28, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B)
    ORVANE_NAMES(29, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C)
    ORVANE_NAMES(30, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D)
    ORVANE_NAMES(31, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E)
    ORVANE_NAMES(32, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F)
    ORVANE_NAMES(33, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G)
    ORVANE_NAMES(34, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H)
    ORVANE_NAMES(35, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I)
    ORVANE_NAMES(36, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I, J)
    ORVANE_NAMES(37, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I, J, K)
    ORVANE_NAMES(38, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I, J, K, L)
    ORVANE_NAMES(39, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I, J, K, L, M)
    ORVANE_NAMES(40, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o, p, q, r, s, t, u, v, w, x, y, z, A, B, C, D,
                 E, F, G, H, I, J, K, L, M, N)
#undef ORVANE_NAMES
}

/// Whether all these pointers to members are different.
template <class... Members>
constexpr bool areDistinct(Members... members) {
    const auto isSame = []<class One, class Other>(One one, Other other) {
        if constexpr (std::is_same_v<One, Other>)
            return one == other;
        else
            return false;
    };
    const auto countOf = [&](auto one) { return (int{isSame(one, members)} + ...); };
    return ((countOf(members) == 1) && ...);
}

} // namespace orvane
