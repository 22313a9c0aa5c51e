#pragma once

#include "numerics/kernels.h"

// Everything in this header and in the *_kernels.h is instantiated by the kernels_*.cpp, each for
// its own width and with its own compiler flags. For that reason nothing may be shared between
// them: all depends on the number of lanes, and no function of the standard library is used that
// might be compiled into a shared copy.

namespace halvern::numerics {

/// The vector types of L doubles and of their bits. (GCC loses the attribute where its size depends
/// on L.)
template <int L>
struct Register;
template <>
struct Register<2> {
    typedef double V __attribute__((vector_size(16)));
    typedef unsigned long long Bits __attribute__((vector_size(16)));
};
template <>
struct Register<4> {
    typedef double V __attribute__((vector_size(32)));
    typedef unsigned long long Bits __attribute__((vector_size(32)));
};
template <>
struct Register<8> {
    typedef double V __attribute__((vector_size(64)));
    typedef unsigned long long Bits __attribute__((vector_size(64)));
};

/// The moves between registers of L doubles and memory.
template <int L>
struct Lanes {
    using V = typename Register<L>::V;
    struct Complex {
        V re, im;
    };

    [[gnu::always_inline]] static V load(const double* from) {
        V v;
        __builtin_memcpy(&v, from, sizeof v);
        return v;
    }
    [[gnu::always_inline]] static void store(double* to, V v) {
        __builtin_memcpy(to, &v, sizeof v);
    }

    [[gnu::always_inline]] static V broadcast(double x) {
        if constexpr (L == 2) return V{x, x};
        if constexpr (L == 4) return V{x, x, x, x};
        if constexpr (L == 8) return V{x, x, x, x, x, x, x, x};
    }

    [[gnu::always_inline]] static V reverse(V v) {
        if constexpr (L == 2) return __builtin_shufflevector(v, v, 1, 0);
        if constexpr (L == 4) return __builtin_shufflevector(v, v, 3, 2, 1, 0);
        if constexpr (L == 8) return __builtin_shufflevector(v, v, 7, 6, 5, 4, 3, 2, 1, 0);
    }

    /// L complex values, whose parts alternate in memory.
    [[gnu::always_inline]] static Complex load_complex(const double* from) {
        if constexpr (L == 2) {
            const V a = load(from);
            const V b = load(from + 2);
            return {__builtin_shufflevector(a, b, 0, 2), __builtin_shufflevector(a, b, 1, 3)};
        }
        if constexpr (L == 4) {
            const V a = load(from);
            const V b = load(from + 4);
            const V c = __builtin_shufflevector(a, b, 0, 1, 4, 5);
            const V d = __builtin_shufflevector(a, b, 2, 3, 6, 7);
            return {__builtin_shufflevector(c, d, 0, 4, 2, 6),
                    __builtin_shufflevector(c, d, 1, 5, 3, 7)};
        }
        if constexpr (L == 8) {
            const V a = load(from);
            const V b = load(from + 8);
            return {__builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14),
                    __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15)};
        }
    }
    [[gnu::always_inline]] static void store_complex(double* to, Complex z) {
        if constexpr (L == 2) {
            store(to, __builtin_shufflevector(z.re, z.im, 0, 2));
            store(to + 2, __builtin_shufflevector(z.re, z.im, 1, 3));
        }
        if constexpr (L == 4) {
            const V a = __builtin_shufflevector(z.re, z.im, 0, 4, 2, 6);
            const V b = __builtin_shufflevector(z.re, z.im, 1, 5, 3, 7);
            store(to, __builtin_shufflevector(a, b, 0, 1, 4, 5));
            store(to + 4, __builtin_shufflevector(a, b, 2, 3, 6, 7));
        }
        if constexpr (L == 8) {
            store(to, __builtin_shufflevector(z.re, z.im, 0, 8, 1, 9, 2, 10, 3, 11));
            store(to + 8, __builtin_shufflevector(z.re, z.im, 4, 12, 5, 13, 6, 14, 7, 15));
        }
    }

    /// The same with the last value first.
    [[gnu::always_inline]] static Complex load_complex_reversed(const double* from) {
        if constexpr (L == 8) {
            const V a = load(from);
            const V b = load(from + 8);
            return {__builtin_shufflevector(a, b, 14, 12, 10, 8, 6, 4, 2, 0),
                    __builtin_shufflevector(a, b, 15, 13, 11, 9, 7, 5, 3, 1)};
        } else if constexpr (L == 4) {
            const V a = load(from);
            const V b = load(from + 4);
            const V c = __builtin_shufflevector(a, b, 6, 7, 2, 3);
            const V d = __builtin_shufflevector(a, b, 4, 5, 0, 1);
            return {__builtin_shufflevector(c, d, 0, 4, 2, 6),
                    __builtin_shufflevector(c, d, 1, 5, 3, 7)};
        } else {
            const V a = load(from);
            const V b = load(from + 2);
            return {__builtin_shufflevector(a, b, 2, 0), __builtin_shufflevector(a, b, 3, 1)};
        }
    }
    [[gnu::always_inline]] static void store_complex_reversed(double* to, Complex z) {
        if constexpr (L == 8) {
            store(to, __builtin_shufflevector(z.re, z.im, 7, 15, 6, 14, 5, 13, 4, 12));
            store(to + 8, __builtin_shufflevector(z.re, z.im, 3, 11, 2, 10, 1, 9, 0, 8));
        } else if constexpr (L == 4) {
            const V a = __builtin_shufflevector(z.re, z.im, 0, 4, 2, 6);
            const V b = __builtin_shufflevector(z.re, z.im, 1, 5, 3, 7);
            store(to, __builtin_shufflevector(b, a, 2, 3, 6, 7));
            store(to + 4, __builtin_shufflevector(b, a, 0, 1, 4, 5));
        } else {
            store(to, __builtin_shufflevector(z.re, z.im, 1, 3));
            store(to + 2, __builtin_shufflevector(z.re, z.im, 0, 2));
        }
    }

    /// Stores the L columns of 8 rows one after the other: to[8 c + r] = rows[r][c].
    [[gnu::always_inline]] static void store_transposed(double* to, const V (&rows)[8]) {
        if constexpr (L == 2) {
            for (int r = 0; r < 8; r += 2) {
                store(to + r, __builtin_shufflevector(rows[r], rows[r + 1], 0, 2));
                store(to + 8 + r, __builtin_shufflevector(rows[r], rows[r + 1], 1, 3));
            }
        }
        if constexpr (L == 4) {
            for (int r = 0; r < 8; r += 4) {
                const V a = __builtin_shufflevector(rows[r], rows[r + 1], 0, 4, 2, 6);
                const V b = __builtin_shufflevector(rows[r], rows[r + 1], 1, 5, 3, 7);
                const V c = __builtin_shufflevector(rows[r + 2], rows[r + 3], 0, 4, 2, 6);
                const V d = __builtin_shufflevector(rows[r + 2], rows[r + 3], 1, 5, 3, 7);
                store(to + r, __builtin_shufflevector(a, c, 0, 1, 4, 5));
                store(to + 8 + r, __builtin_shufflevector(b, d, 0, 1, 4, 5));
                store(to + 16 + r, __builtin_shufflevector(a, c, 2, 3, 6, 7));
                store(to + 24 + r, __builtin_shufflevector(b, d, 2, 3, 6, 7));
            }
        }
        if constexpr (L == 8) {
            V a[8];  // columns 0, 2, 4, 6 of two rows, then columns 1, 3, 5, 7 of them
            for (int r = 0; r < 8; r += 2) {
                a[r] = __builtin_shufflevector(rows[r], rows[r + 1], 0, 8, 2, 10, 4, 12, 6, 14);
                a[r + 1] = __builtin_shufflevector(rows[r], rows[r + 1], 1, 9, 3, 11, 5, 13, 7, 15);
            }
            for (int odd = 0; odd < 2; ++odd) {
                const V* const b = a + odd;
                const V p = __builtin_shufflevector(b[0], b[2], 0, 1, 4, 5, 8, 9, 12, 13);
                const V q = __builtin_shufflevector(b[0], b[2], 2, 3, 6, 7, 10, 11, 14, 15);
                const V s = __builtin_shufflevector(b[4], b[6], 0, 1, 4, 5, 8, 9, 12, 13);
                const V t = __builtin_shufflevector(b[4], b[6], 2, 3, 6, 7, 10, 11, 14, 15);
                double* const column = to + 8 * odd;
                store(column, __builtin_shufflevector(p, s, 0, 1, 4, 5, 8, 9, 12, 13));
                store(column + 16, __builtin_shufflevector(q, t, 0, 1, 4, 5, 8, 9, 12, 13));
                store(column + 32, __builtin_shufflevector(p, s, 2, 3, 6, 7, 10, 11, 14, 15));
                store(column + 48, __builtin_shufflevector(q, t, 2, 3, 6, 7, 10, 11, 14, 15));
            }
        }
    }

    /// The reverse: rows[r][c] = from[8 c + r].
    [[gnu::always_inline]] static void load_transposed(const double* from, V (&rows)[8]) {
        if constexpr (L == 2) {
            for (int r = 0; r < 8; r += 2) {
                const V a = load(from + r);
                const V b = load(from + 8 + r);
                rows[r] = __builtin_shufflevector(a, b, 0, 2);
                rows[r + 1] = __builtin_shufflevector(a, b, 1, 3);
            }
        }
        if constexpr (L == 4) {
            for (int r = 0; r < 8; r += 4) {
                const V a = load(from + r), b = load(from + 8 + r);
                const V c = load(from + 16 + r), d = load(from + 24 + r);
                const V p = __builtin_shufflevector(a, c, 0, 1, 4, 5);
                const V q = __builtin_shufflevector(b, d, 0, 1, 4, 5);
                const V s = __builtin_shufflevector(a, c, 2, 3, 6, 7);
                const V t = __builtin_shufflevector(b, d, 2, 3, 6, 7);
                rows[r] = __builtin_shufflevector(p, q, 0, 4, 2, 6);
                rows[r + 1] = __builtin_shufflevector(p, q, 1, 5, 3, 7);
                rows[r + 2] = __builtin_shufflevector(s, t, 0, 4, 2, 6);
                rows[r + 3] = __builtin_shufflevector(s, t, 1, 5, 3, 7);
            }
        }
        if constexpr (L == 8) {
            V a[8];  // of columns c and c + 1 in turn: rows 0, 2, 4, 6 of both, then 1, 3, 5, 7
            for (int c = 0; c < 8; c += 2) {
                const V p = load(from + 8 * c), q = load(from + 8 * c + 8);
                a[c] = __builtin_shufflevector(p, q, 0, 8, 2, 10, 4, 12, 6, 14);
                a[c + 1] = __builtin_shufflevector(p, q, 1, 9, 3, 11, 5, 13, 7, 15);
            }
            for (int odd = 0; odd < 2; ++odd) {
                const V* const b = a + odd;
                const V p = __builtin_shufflevector(b[0], b[2], 0, 1, 4, 5, 8, 9, 12, 13);
                const V q = __builtin_shufflevector(b[0], b[2], 2, 3, 6, 7, 10, 11, 14, 15);
                const V s = __builtin_shufflevector(b[4], b[6], 0, 1, 4, 5, 8, 9, 12, 13);
                const V t = __builtin_shufflevector(b[4], b[6], 2, 3, 6, 7, 10, 11, 14, 15);
                rows[odd] = __builtin_shufflevector(p, s, 0, 1, 4, 5, 8, 9, 12, 13);
                rows[2 + odd] = __builtin_shufflevector(q, t, 0, 1, 4, 5, 8, 9, 12, 13);
                rows[4 + odd] = __builtin_shufflevector(p, s, 2, 3, 6, 7, 10, 11, 14, 15);
                rows[6 + odd] = __builtin_shufflevector(q, t, 2, 3, 6, 7, 10, 11, 14, 15);
            }
        }
    }
};

}  // namespace halvern::numerics
