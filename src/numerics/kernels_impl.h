#pragma once

#include "numerics/kernels.h"

// What the kernels_*.cpp instantiate, each for its own width and with its own compiler flags. For
// that reason nothing in here may be shared between them: everything depends on the number of
// lanes, and no function of the standard library is used that might be compiled into a shared copy.

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

    /// Stores the L columns of 8 rows one behind the other: to[8 c + r] = rows[r][c].
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

template <int L>
struct FftKernels {
    using Ops = Lanes<L>;
    using V = typename Ops::V;
    using Complex = typename Ops::Complex;

    // Real and imaginary parts lie in arrays of their own, so that no arithmetic needs a shuffle.
    // The inverse transform is the forward one with the two arrays in each other's place.
    struct Split {
        double* re;
        double* im;
    };

    [[gnu::always_inline]] static void butterfly4(Complex (&z)[8]) {
        const V ar = z[0].re + z[2].re, ai = z[0].im + z[2].im;
        const V br = z[0].re - z[2].re, bi = z[0].im - z[2].im;
        const V cr = z[1].re + z[3].re, ci = z[1].im + z[3].im;
        const V dr = z[1].re - z[3].re, di = z[1].im - z[3].im;
        z[0] = {ar + cr, ai + ci};
        z[1] = {br + di, bi - dr};
        z[2] = {ar - cr, ai - ci};
        z[3] = {br - di, bi + dr};
    }

    [[gnu::always_inline]] static void butterfly8(Complex (&z)[8]) {
        const V half_root = Ops::broadcast(0.70710678118654752440);
        const V s0r = z[0].re + z[4].re, s0i = z[0].im + z[4].im;
        const V d0r = z[0].re - z[4].re, d0i = z[0].im - z[4].im;
        const V s2r = z[2].re + z[6].re, s2i = z[2].im + z[6].im;
        const V d2r = z[2].re - z[6].re, d2i = z[2].im - z[6].im;
        const V s1r = z[1].re + z[5].re, s1i = z[1].im + z[5].im;
        const V d1r = z[1].re - z[5].re, d1i = z[1].im - z[5].im;
        const V s3r = z[3].re + z[7].re, s3i = z[3].im + z[7].im;
        const V d3r = z[3].re - z[7].re, d3i = z[3].im - z[7].im;
        {
            const V ar = s0r + s2r, ai = s0i + s2i, br = s0r - s2r, bi = s0i - s2i;
            const V cr = s1r + s3r, ci = s1i + s3i, dr = s1r - s3r, di = s1i - s3i;
            z[0] = {ar + cr, ai + ci};
            z[4] = {ar - cr, ai - ci};
            z[2] = {br + di, bi - dr};
            z[6] = {br - di, bi + dr};
        }
        const V p = (d1r + d1i) * half_root, q = (d1i - d1r) * half_root;
        const V s = (d3r + d3i) * half_root, t = (d3i - d3r) * half_root;
        {
            const V br = d0r + d2i, bi = d0i - d2r, cr = p + t, ci = q - s;
            z[1] = {br + cr, bi + ci};
            z[5] = {br - cr, bi - ci};
        }
        {
            const V br = d0r - d2i, bi = d0i + d2r, cr = q + s, ci = t - p;
            z[3] = {br + cr, bi + ci};
            z[7] = {br - cr, bi - ci};
        }
    }

    [[gnu::always_inline]] static Complex times(Complex z, V wr, V wi) {
        return {z.re * wr - z.im * wi, z.re * wi + z.im * wr};
    }

    [[gnu::always_inline]] static void butterfly(Complex (&z)[8], int radix) {
        if (radix == 8) {
            butterfly8(z);
        } else {
            butterfly4(z);
        }
    }

    /// The forward transform's first stage, radix 8 with stride 1, from values whose parts
    /// alternate. The twiddles of L groups lie together, register by register.
    static void enter(const FftStage& stage, const double* x, Split to) {
        const std::size_t m = stage.groups;
        const double* w = stage.twiddles;
        for (std::size_t p = 0; p < m; p += L, w += 14 * L) {
            Complex z[8];
            for (int k = 0; k < 8; ++k) z[k] = Ops::load_complex(x + 2 * (p + m * k));
            butterfly8(z);
            V re[8], im[8];
            for (int k = 0; k < 8; ++k) {
                if (k > 0) {
                    z[k] =
                        times(z[k], Ops::load(w + (2 * k - 2) * L), Ops::load(w + (2 * k - 1) * L));
                }
                re[k] = z[k].re;
                im[k] = z[k].im;
            }
            Ops::store_transposed(to.re + 8 * p, re);
            Ops::store_transposed(to.im + 8 * p, im);
        }
    }

    /// `enter` backwards: the inverse transform's last stage.
    static void leave(const FftStage& stage, Split from, double* x) {
        const std::size_t m = stage.groups;
        const double* w = stage.twiddles;
        for (std::size_t p = 0; p < m; p += L, w += 14 * L) {
            V re[8], im[8];
            Ops::load_transposed(from.re + 8 * p, re);
            Ops::load_transposed(from.im + 8 * p, im);
            Complex z[8];
            for (int k = 0; k < 8; ++k) {
                z[k] = {re[k], im[k]};
                if (k > 0) {
                    z[k] =
                        times(z[k], Ops::load(w + (2 * k - 2) * L), Ops::load(w + (2 * k - 1) * L));
                }
            }
            butterfly8(z);
            for (int k = 0; k < 8; ++k) Ops::store_complex(x + 2 * (p + m * k), {z[k].im, z[k].re});
        }
    }

    template <int Radix>
    static void middle(const FftStage& stage, Split from, Split to) {
        const std::size_t m = stage.groups;
        const std::size_t s = stage.stride;
        const double* w = stage.twiddles;
        for (std::size_t p = 0; p < m; ++p, w += 2 * (Radix - 1)) {
            for (std::size_t q = 0; q < s; q += L) {
                Complex z[8];
                for (int k = 0; k < Radix; ++k) {
                    const std::size_t i = q + s * (p + m * k);
                    z[k] = {Ops::load(from.re + i), Ops::load(from.im + i)};
                }
                butterfly(z, Radix);
                for (int k = 0; k < Radix; ++k) {
                    if (k > 0) {
                        z[k] =
                            times(z[k], Ops::broadcast(w[2 * k - 2]), Ops::broadcast(w[2 * k - 1]));
                    }
                    const std::size_t i = q + s * (Radix * p + k);
                    Ops::store(to.re + i, z[k].re);
                    Ops::store(to.im + i, z[k].im);
                }
            }
        }
    }

    template <int Radix>
    static void middle_backwards(const FftStage& stage, Split from, Split to) {
        const std::size_t m = stage.groups;
        const std::size_t s = stage.stride;
        const double* w = stage.twiddles;
        for (std::size_t p = 0; p < m; ++p, w += 2 * (Radix - 1)) {
            for (std::size_t q = 0; q < s; q += L) {
                Complex z[8];
                for (int k = 0; k < Radix; ++k) {
                    const std::size_t i = q + s * (Radix * p + k);
                    z[k] = {Ops::load(from.re + i), Ops::load(from.im + i)};
                    if (k > 0) {
                        z[k] =
                            times(z[k], Ops::broadcast(w[2 * k - 2]), Ops::broadcast(w[2 * k - 1]));
                    }
                }
                butterfly(z, Radix);
                for (int k = 0; k < Radix; ++k) {
                    const std::size_t i = q + s * (p + m * k);
                    Ops::store(to.re + i, z[k].re);
                    Ops::store(to.im + i, z[k].im);
                }
            }
        }
    }

    // Z = E + i O holds the spectra of the even and the odd samples, E[k] = (Z[k] + conj Z[m - k])
    // / 2 and i O[k] the same with minus. The real spectrum is X[k] = E[k] + W^k O[k] and X[m - k]
    // = conj(E[k] - W^k O[k]) with W^k = 2 (c - i s), c and s from the tables.

    /// u = Z[k], v = Z[m - k] become X[k], X[m - k].
    template <class Value, class Pair>
    [[gnu::always_inline]] static void separate(Pair& u, Pair& v, Value half, Value c, Value s) {
        const Value er = (u.re + v.re) * half, ei = (u.im - v.im) * half;
        const Value dr = u.re - v.re, di = u.im + v.im;
        const Value tr = c * di - s * dr, ti = c * dr + s * di;
        u = {er + tr, ei - ti};
        v = {er - tr, -(ei + ti)};
    }
    /// u = X[k], v = X[m - k] become Z[k], Z[m - k].
    template <class Value, class Pair>
    [[gnu::always_inline]] static void unite(Pair& u, Pair& v, Value half, Value c, Value s) {
        const Value er = (u.re + v.re) * half, ei = (u.im - v.im) * half;
        const Value tr = u.re - v.re, ti = u.im + v.im;
        const Value odd_re = c * tr - s * ti, odd_im = s * tr + c * ti;
        u = {er - odd_im, ei + odd_re};
        v = {er + odd_im, odd_re - ei};
    }

    struct Scalar {
        double re, im;
    };
    /// c and s of k = q + s i, i < Radix, 0 < q <= s / 2, from the table's part, k <= m / 2.
    template <int Radix>
    [[gnu::always_inline]] static void pair_factors(const FftTables& tables, std::size_t q,
                                                    std::size_t stride, int i, V& c, V& s) {
        // Half a spectrum further on is a quarter turn, which the factors follow exactly.
        const std::size_t at = q + stride * (i % (Radix / 2)) - 1;
        const V cosine = Ops::load(tables.half_cosines + at);
        const V sine = Ops::load(tables.half_sines + at);
        c = i < Radix / 2 ? cosine : -sine;
        s = i < Radix / 2 ? sine : cosine;
    }

    /// The forward transform's last stage, which has one group and no twiddles, and the separation:
    /// columns q and s - q hold each other's counterparts.
    template <int Radix>
    static void separate_last(const FftTables& tables, const FftStage& stage, Split from,
                              double* x) {
        const std::size_t s = stage.stride;
        const V half = Ops::broadcast(0.5);
        {  // Column 0 is its own counterpart; all lanes work on it alike.
            Complex z[8];
            for (int k = 0; k < Radix; ++k) {
                z[k] = {Ops::broadcast(from.re[s * k]), Ops::broadcast(from.im[s * k])};
            }
            butterfly(z, Radix);
            x[0] = z[0].re[0] + z[0].im[0];
            x[1] = z[0].re[0] - z[0].im[0];
            for (int k = 1; k <= Radix / 2; ++k) {
                Scalar u{z[k].re[0], z[k].im[0]};
                Scalar v{z[Radix - k].re[0], z[Radix - k].im[0]};
                separate(u, v, 0.5, tables.half_cosines[s * k - 1], tables.half_sines[s * k - 1]);
                x[2 * s * (Radix - k)] = v.re;
                x[2 * s * (Radix - k) + 1] = v.im;
                x[2 * s * k] = u.re;
                x[2 * s * k + 1] = u.im;
            }
        }
        for (std::size_t q = 1; q <= s / 2; q += L) {
            const std::size_t back = s - q - L + 1;
            Complex a[8], b[8];
            for (int k = 0; k < Radix; ++k) {
                a[k] = {Ops::load(from.re + q + s * k), Ops::load(from.im + q + s * k)};
                b[k] = {Ops::reverse(Ops::load(from.re + back + s * k)),
                        Ops::reverse(Ops::load(from.im + back + s * k))};
            }
            butterfly(a, Radix);
            butterfly(b, Radix);
            for (int k = 0; k < Radix; ++k) {
                V c, sine;
                pair_factors<Radix>(tables, q, s, k, c, sine);
                separate(a[k], b[Radix - 1 - k], half, c, sine);
                Ops::store_complex(x + 2 * (q + s * k), a[k]);
                Ops::store_complex_reversed(x + 2 * (back + s * (Radix - 1 - k)), b[Radix - 1 - k]);
            }
        }
    }

    /// `separate_last` backwards: the inverse transform's first stage.
    template <int Radix>
    static void unite_first(const FftTables& tables, const FftStage& stage, const double* x,
                            Split to) {
        const std::size_t s = stage.stride;
        const V half = Ops::broadcast(0.5);
        {
            Complex z[8];
            z[0] = {Ops::broadcast((x[0] - x[1]) * 0.5), Ops::broadcast((x[0] + x[1]) * 0.5)};
            for (int k = 1; k <= Radix / 2; ++k) {
                Scalar u{x[2 * s * k], x[2 * s * k + 1]};
                Scalar v{x[2 * s * (Radix - k)], x[2 * s * (Radix - k) + 1]};
                unite(u, v, 0.5, tables.half_cosines[s * k - 1], tables.half_sines[s * k - 1]);
                z[Radix - k] = {Ops::broadcast(v.im), Ops::broadcast(v.re)};
                z[k] = {Ops::broadcast(u.im), Ops::broadcast(u.re)};
            }
            butterfly(z, Radix);
            for (int k = 0; k < Radix; ++k) {
                to.re[s * k] = z[k].re[0];
                to.im[s * k] = z[k].im[0];
            }
        }
        for (std::size_t q = 1; q <= s / 2; q += L) {
            const std::size_t back = s - q - L + 1;
            Complex a[8], b[8];
            for (int k = 0; k < Radix; ++k) {
                Complex u = Ops::load_complex(x + 2 * (q + s * k));
                Complex v = Ops::load_complex_reversed(x + 2 * (back + s * (Radix - 1 - k)));
                V c, sine;
                pair_factors<Radix>(tables, q, s, k, c, sine);
                unite(u, v, half, c, sine);
                a[k] = {u.im, u.re};
                b[Radix - 1 - k] = {v.im, v.re};
            }
            butterfly(a, Radix);
            butterfly(b, Radix);
            for (int k = 0; k < Radix; ++k) {
                Ops::store(to.re + q + s * k, a[k].re);
                Ops::store(to.im + q + s * k, a[k].im);
                Ops::store(to.re + back + s * k, Ops::reverse(b[k].re));
                Ops::store(to.im + back + s * k, Ops::reverse(b[k].im));
            }
        }
    }

    struct Buffers {
        Split now, next;
        explicit Buffers(const FftTables& tables) {
            const std::size_t apart = tables.points + kFftPadding;
            now = {tables.work, tables.work + apart};
            next = {tables.work + 2 * apart, tables.work + 3 * apart};
        }
        void swap() {
            const Split other = now;
            now = next;
            next = other;
        }
    };

    static void forward(const FftTables& tables, double* x) {
        Buffers buffers(tables);
        enter(tables.stage[0], x, buffers.now);
        for (int i = 1; i + 1 < tables.stages; ++i, buffers.swap()) {
            const FftStage& stage = tables.stage[i];
            (stage.radix == 8 ? middle<8> : middle<4>)(stage, buffers.now, buffers.next);
        }
        const FftStage& last = tables.stage[tables.stages - 1];
        separate_last<4>(tables, last, buffers.now, x);
    }

    /// The forward transform's stages in the reverse order, each backwards. With the real and the
    /// imaginary parts in each other's place the same twiddles and butterflies serve.
    static void inverse(const FftTables& tables, double* x) {
        Buffers buffers(tables);
        const FftStage& last = tables.stage[tables.stages - 1];
        unite_first<4>(tables, last, x, buffers.now);
        for (int i = tables.stages - 2; i > 0; --i, buffers.swap()) {
            const FftStage& stage = tables.stage[i];
            (stage.radix == 8 ? middle_backwards<8> : middle_backwards<4>)(stage, buffers.now,
                                                                           buffers.next);
        }
        leave(tables.stage[0], buffers.now, x);
    }
};

/// Sums of products. The order of the terms is the same whatever the width: sixteen at a time, of
/// these every fourth from the first, then from the second and so on, and what is left in its
/// order. Terms that lie a register apart share what is loaded, which otherwise would be the
/// bottleneck.
template <int L>
struct SumKernels {
    using Ops = Lanes<L>;
    using V = typename Ops::V;
    static constexpr int kMaxRegisters = 8;  // of sums; with four factors they fill the sixteen
    static constexpr int kApart = 4;         // terms that are taken together
    static constexpr std::size_t kTerms = 4 * kApart;
    static constexpr int kShift = kApart / L;  // the same in registers

    static std::size_t smaller(std::size_t a, std::size_t b) { return a < b ? a : b; }
    /// a - b, or 0 where that is below.
    static std::size_t beyond(std::size_t a, std::size_t b) { return a > b ? a - b : 0; }

    template <int N>
    struct Count {
        static constexpr int value = N;
    };
    /// Calls work(Count<n>{}) for n in 1 ... Max.
    template <int Max, class Work>
    [[gnu::always_inline]] static void dispatch(std::size_t n, const Work& work) {
        if constexpr (Max > 1) {
            if (n < Max) return dispatch<Max - 1>(n, work);
        }
        work(Count<Max>{});
    }

    /// R registers of lags from k0 on; all that a register holds, but only `wanted` lags are
    /// stored.
    template <int R>
    static void correlate_block(const double* a, std::size_t a_length, const double* b,
                                std::size_t b_length, std::size_t k0, double* out,
                                std::size_t wanted) {
        // Up to here every lag up to the last one finds its partner within b.
        const auto common = [=](std::size_t last_lag) {
            return smaller(a_length, beyond(b_length, last_lag));
        };
        const std::size_t all = common(k0 + R * L - 1);
        V sum[R]{};
        std::size_t i = 0;
        for (; i + kTerms <= all; i += kTerms) {
            for (int s = 0; s < kApart; ++s) {
                const V x[4] = {Ops::broadcast(a[i + s]), Ops::broadcast(a[i + s + kApart]),
                                Ops::broadcast(a[i + s + 2 * kApart]),
                                Ops::broadcast(a[i + s + 3 * kApart])};
                const double* const from = b + k0 + i + s;
                for (int v = 0; v < R + 3 * kShift; ++v) {
                    const V y = Ops::load(from + v * L);
                    for (int u = 0; u < 4; ++u) {
                        const int r = v - u * kShift;
                        if (r >= 0 && r < R) sum[r] += x[u] * y;
                    }
                }
            }
        }
        for (; i < all; ++i) {
            const V x = Ops::broadcast(a[i]);
            for (int r = 0; r < R; ++r) sum[r] += x * Ops::load(b + k0 + i + r * L);
        }
        for (int r = 0; r < R; ++r) {
            const std::size_t first = k0 + static_cast<std::size_t>(r * L);
            const std::size_t whole = common(first + L - 1);
            V total = sum[r];
            for (i = all; i < whole; ++i) total += Ops::broadcast(a[i]) * Ops::load(b + first + i);
            for (std::size_t lane = 0; lane < L && first + lane < k0 + wanted; ++lane) {
                double lag = total[lane];
                for (std::size_t j = i; j < common(first + lane); ++j) {
                    lag += a[j] * b[first + lane + j];
                }
                out[first + lane] = lag;
            }
        }
    }

    static void correlate(const double* a, std::size_t a_length, const double* b,
                          std::size_t b_length, double* out, std::size_t lags) {
        // As many blocks as it takes, all of about the same number of registers.
        std::size_t registers = (lags + L - 1) / L;
        std::size_t blocks = (registers + kMaxRegisters - 1) / kMaxRegisters;
        for (std::size_t k = 0; blocks > 0; --blocks) {
            const std::size_t width = (registers + blocks - 1) / blocks;
            const std::size_t wanted = smaller(width * L, lags - k);
            dispatch<kMaxRegisters>(width, [&](auto count) {
                correlate_block<count.value>(a, a_length, b, b_length, k, out, wanted);
            });
            k += width * L;
            registers -= width;
        }
    }

    /// R registers of outputs from i0 on.
    template <int R>
    static void convolve_block(const double* a, std::size_t a_length, const double* b,
                               std::size_t b_length, std::size_t i0, double* out) {
        constexpr std::size_t kWidth = R * L;
        // Terms j of output i: those with a sample at i - j. Every output of the block has those of
        // [low, high); an output's own others come before and behind.
        const auto first_term = [=](std::size_t i) { return beyond(i + 1, a_length); };
        const auto end_term = [=](std::size_t i) { return smaller(b_length, i + 1); };
        const std::size_t low = first_term(i0 + kWidth - 1);
        const std::size_t high = end_term(i0) > low ? end_term(i0) : low;
        V sum[R]{};
        if (low > 0) {
            for (std::size_t i = i0; i < i0 + kWidth; ++i) {
                double before = 0;
                for (std::size_t j = first_term(i); j < smaller(low, end_term(i)); ++j) {
                    before += b[j] * a[i - j];
                }
                out[i] = before;
            }
            for (int r = 0; r < R; ++r) sum[r] = Ops::load(out + i0 + r * L);
        }
        std::size_t j = low;
        for (; j + kTerms <= high; j += kTerms) {
            for (int s = 0; s < kApart; ++s) {
                const V x[4] = {Ops::broadcast(b[j + s]), Ops::broadcast(b[j + s + kApart]),
                                Ops::broadcast(b[j + s + 2 * kApart]),
                                Ops::broadcast(b[j + s + 3 * kApart])};
                const double* const from = a + (i0 - j - s) - 3 * kApart;
                for (int v = R + 3 * kShift - 1; v >= 0; --v) {
                    const V y = Ops::load(from + v * L);
                    for (int u = 0; u < 4; ++u) {
                        const int r = v - (3 - u) * kShift;
                        if (r >= 0 && r < R) sum[r] += x[u] * y;
                    }
                }
            }
        }
        for (; j < high; ++j) {
            const V x = Ops::broadcast(b[j]);
            for (int r = 0; r < R; ++r) sum[r] += x * Ops::load(a + (i0 - j) + r * L);
        }
        for (int r = 0; r < R; ++r) Ops::store(out + i0 + r * L, sum[r]);
        if (high == b_length) return;
        for (std::size_t i = i0; i < i0 + kWidth; ++i) {
            double rest = out[i];
            for (j = high; j < end_term(i); ++j) rest += b[j] * a[i - j];
            out[i] = rest;
        }
    }

    static void convolve(const double* a, std::size_t a_length, const double* b,
                         std::size_t b_length, double* out, std::size_t outputs) {
        std::size_t i = 0;
        const auto block = [&](auto count) {
            convolve_block<count.value>(a, a_length, b, b_length, i, out);
            i += count.value * L;
        };
        // Narrow blocks where the operator runs onto the samples and off them, to have few odd
        // terms.
        while (i + 2 * L <= outputs && i + 1 < b_length) block(Count<2>{});
        while (i + kMaxRegisters * L <= smaller(outputs, a_length)) block(Count<kMaxRegisters>{});
        if (i + L <= smaller(outputs, a_length)) {
            dispatch<kMaxRegisters>((smaller(outputs, a_length) - i) / L, block);
        }
        while (i + 2 * L <= outputs) block(Count<2>{});
        for (; i < outputs; ++i) {
            double sum = 0;
            for (std::size_t j = beyond(i + 1, a_length); j < smaller(b_length, i + 1); ++j) {
                sum += b[j] * a[i - j];
            }
            out[i] = sum;
        }
    }
};

template <int L>
struct SolverKernels {
    using Ops = Lanes<L>;
    using V = typename Ops::V;
    static constexpr std::size_t kTogether = kSolverPadding;  // terms in registers at a time

    /// The sum of a[i] b[i], i < count rounded up: eight partial sums, whatever the width.
    static double product_sum(const double* a, const double* b, std::size_t count) {
        V sum[kTogether / L]{};
        for (std::size_t i = 0; i < count; i += kTogether) {
            for (std::size_t r = 0; r < kTogether / L; ++r) {
                sum[r] += Ops::load(a + i + r * L) * Ops::load(b + i + r * L);
            }
        }
        double part[kTogether];
        for (std::size_t r = 0; r < kTogether / L; ++r) Ops::store(part + r * L, sum[r]);
        return ((part[0] + part[4]) + (part[2] + part[6])) +
               ((part[1] + part[5]) + (part[3] + part[7]));
    }

    static bool levinson(const double* row, const double* right, double* solution,
                         std::size_t length, double* work) {
        // Of the order reached: the prediction-error filter a, a[0] = 1, and the same backwards, b,
        // which begins one place earlier with every order, so that it never has to move. All are
        // followed by zeros, so that the sums may run on to full registers.
        const std::size_t room = length + kTogether;
        for (std::size_t i = 0; i < 4 * room; ++i) work[i] = 0;
        double* const a = work;
        double* b = work + room + length - 1;
        double* const row_backwards = work + 2 * room;
        double* const f = work + 3 * room;
        for (std::size_t i = 0; i < length; ++i) row_backwards[i] = row[length - 1 - i];

        const double least = static_cast<double>(length) * 0x1p-52 * row[0];
        double power = row[0];
        if (!(power > least)) return false;
        a[0] = b[0] = 1;
        f[0] = right[0] / power;
        for (std::size_t n = 1; n < length; ++n) {
            // How far the filter of n terms is from predicting, and the solution from the n'th
            // right-hand side.
            const double* const reaching = row_backwards + (length - 1 - n);
            const double error = product_sum(a, reaching, n);
            const double miss = product_sum(f, reaching, n);
            const double reflection = -error / power;
            power += reflection * error;
            if (!(power > least)) return false;
            const double step = (right[n] - miss) / power;
            --b;
            const V turn = Ops::broadcast(reflection);
            const V stride = Ops::broadcast(step);
            for (std::size_t i = 0; i <= n; i += L) {
                const V forward = Ops::load(a + i);
                const V before = Ops::load(b + i);
                const V backward = before + turn * forward;
                Ops::store(a + i, forward + turn * before);
                Ops::store(b + i, backward);
                Ops::store(f + i, Ops::load(f + i) + stride * backward);
            }
        }
        for (std::size_t i = 0; i < length; ++i) solution[i] = f[i];
        return true;
    }
};

/// Elementary functions without branches or tables: the argument reduced to a small interval, there
/// a series cut where its terms no longer count.
template <int L>
struct FunctionKernels {
    using Ops = Lanes<L>;
    using V = typename Ops::V;
    using Bits = typename Register<L>::Bits;

    // Added to a number below 2^51, it rounds it to a whole one, which then stands in the lowest
    // bits.
    static constexpr double kRounder = 0x1.8p52;

    [[gnu::always_inline]] static V all(double x) { return Ops::broadcast(x); }
    [[gnu::always_inline]] static Bits bits(V v) { return reinterpret_cast<Bits>(v); }
    [[gnu::always_inline]] static V number(Bits b) { return reinterpret_cast<V>(b); }

    /// The polynomial with these coefficients, the highest power's first: four interleaved ones in
    /// x^4, whose chains of operations are short and run side by side.
    template <std::size_t N>
    [[gnu::always_inline]] static V polynomial(V x, const double (&coefficients)[N]) {
        const V square = x * x;
        const V fourth = square * square;
        V part[4];
        for (std::size_t p = 0; p < 4; ++p) {  // powers p, p + 4, ..., N - 1 at most
            std::size_t power = (N - 1 - p) / 4 * 4 + p;
            part[p] = all(coefficients[N - 1 - power]);
            while (power >= 4) {
                power -= 4;
                part[p] = part[p] * fourth + all(coefficients[N - 1 - power]);
            }
        }
        return (part[0] + x * part[1]) + square * (part[2] + x * part[3]);
    }

    /// 2^k for a whole k within the exponents of normal numbers.
    [[gnu::always_inline]] static V power_of_two(V k) {
        return number((bits(k + all(kRounder)) << 52) + bits(all(1.0)));
    }

    [[gnu::always_inline]] static V exponential(V x) {
        static constexpr double kTaylor[] = {1 / 6227020800.0, 1 / 479001600.0, 1 / 39916800.0,
                                             1 / 3628800.0,    1 / 362880.0,    1 / 40320.0,
                                             1 / 5040.0,       1 / 720.0,       1 / 120.0,
                                             1 / 24.0,         1 / 6.0,         1 / 2.0};
        x = x > all(710.0) ? all(710.0) : x;
        x = x < all(-746.0) ? all(-746.0) : x;
        const V k = x * all(1.44269504088896340736) + all(kRounder) - all(kRounder);
        const V r = x - k * all(0x1.62e42feep-1) - k * all(0x1.a39ef35793c76p-33);
        // In two steps, for results beyond the normal numbers.
        const V half = k * all(0.5) + all(kRounder) - all(kRounder);
        const V power = all(1.0) + (r + r * r * polynomial(r, kTaylor));
        return power * power_of_two(half) * power_of_two(k - half);
    }

    [[gnu::always_inline]] static V logarithm(V x) {
        static constexpr double kSeries[] = {2 / 23.0, 2 / 21.0, 2 / 19.0, 2 / 17.0,
                                             2 / 15.0, 2 / 13.0, 2 / 11.0, 2 / 9.0,
                                             2 / 7.0,  2 / 5.0,  2 / 3.0};
        constexpr double kSmallest = 0x1p-1022;
        constexpr double kInfinity = __builtin_inf();
        const auto tiny = x < all(kSmallest);
        const V y = tiny ? x * all(0x1p54) : x;
        // y = m 2^k with m from about the root of 1/2 to the root of 2.
        constexpr unsigned long long kRootOfHalf = 0x3fe6a09e00000000;
        const Bits shifted = bits(y) + (0x3ff0000000000000 - kRootOfHalf);
        const V m = number((shifted & 0x000fffffffffffff) + kRootOfHalf);
        V k = number((shifted >> 52) | 0x4330000000000000) - all(0x1p52 + 1023);
        k = tiny ? k - all(54.0) : k;
        const V f = m - all(1.0);
        const V s = f / (all(2.0) + f);
        const V z = s * s;
        const V square = all(0.5) * f * f;
        const V rest = z * polynomial(z, kSeries);
        V result = k * all(0x1.62e42feep-1) -
                   ((square - (s * (square + rest) + k * all(0x1.a39ef35793c76p-33))) - f);
        result = x == all(kInfinity) ? x : result;
        result = x == all(0.0) ? all(-kInfinity) : result;
        return x >= all(0.0) ? result : all(__builtin_nan(""));
    }

    struct SineCosine {
        V sine, cosine;
    };
    [[gnu::always_inline]] static SineCosine sine_and_cosine(V x) {
        static constexpr double kSine[] = {
            1 / 355687428096000.0, -1 / 1307674368000.0, 1 / 6227020800.0, -1 / 39916800.0,
            1 / 362880.0,          -1 / 5040.0,          1 / 120.0,        -1 / 6.0};
        static constexpr double kCosine[] = {
            -1 / 6402373705728000.0, 1 / 20922789888000.0, -1 / 87178291200.0, 1 / 479001600.0,
            -1 / 3628800.0,          1 / 40320.0,          -1 / 720.0,         1 / 24.0};
        const V shifted = x * all(0.63661977236758134308) + all(kRounder);
        const V quarters = shifted - all(kRounder);
        // A quarter turn in three parts, the first two short enough for exact products; what the
        // remainder r loses by rounding is kept as its error e.
        const V most = x - quarters * all(0x1.921fb544p0);
        const V second_part = quarters * all(0x1.0b4611a6p-34);
        const V near = most - second_part;
        const V low = ((most - near) - second_part) - quarters * all(0x1.3198a2e037073p-69);
        const V r = near + low;
        const V e = (near - r) + low;
        const V z = r * r;
        const V half = all(0.5) * z;
        const V sine = r + (r * z * polynomial(z, kSine) + e * (all(1.0) - half));
        const V cosine = all(1.0) - (half - (z * z * polynomial(z, kCosine) - r * e));
        const Bits quarter = bits(shifted);
        const Bits swapped = Bits{} - (quarter & 1);
        const V first = number((bits(sine) & ~swapped) | (bits(cosine) & swapped));
        const V second = number((bits(cosine) & ~swapped) | (bits(sine) & swapped));
        return {number(bits(first) ^ ((quarter & 2) << 62)),
                number(bits(second) ^ (((quarter + 1) & 2) << 62))};
    }

    /// The function of L values at a time, the last ones filled up with ones.
    template <class Function>
    [[gnu::always_inline]] static void each(const double* x, std::size_t count, Function apply) {
        std::size_t i = 0;
        for (; i + L <= count; i += L) apply(Ops::load(x + i), i, L);
        if (i < count) {
            V last = all(1.0);
            for (std::size_t lane = 0; i + lane < count; ++lane) last[lane] = x[i + lane];
            apply(last, i, count - i);
        }
    }
    [[gnu::always_inline]] static void put(double* to, V v, std::size_t count) {
        if (count == L) return Ops::store(to, v);
        for (std::size_t lane = 0; lane < count; ++lane) to[lane] = v[lane];
    }

    static void logarithms(const double* x, double* out, std::size_t count) {
        each(x, count, [=](V v, std::size_t i, std::size_t n) { put(out + i, logarithm(v), n); });
    }
    static void exponentials(const double* x, double* out, std::size_t count) {
        each(x, count, [=](V v, std::size_t i, std::size_t n) { put(out + i, exponential(v), n); });
    }
    static bool sines_and_cosines(const double* x, double* sines, double* cosines,
                                  std::size_t count) {
        V exact = all(1.0);
        each(x, count, [&](V v, std::size_t i, std::size_t n) {
            const V size = v < all(0.0) ? -v : v;
            exact = size <= all(kLargestAngle) ? exact : all(0.0);
            const SineCosine both = sine_and_cosine(v);
            put(sines + i, both.sine, n);
            put(cosines + i, both.cosine, n);
        });
        for (int lane = 0; lane < L; ++lane) {
            if (exact[lane] == 0) return false;
        }
        return true;
    }
};

template <int L>
constexpr Kernels kernel_table(const char* name) {
    return {.name = name,
            .lanes = L,
            .fft_forward = FftKernels<L>::forward,
            .fft_inverse = FftKernels<L>::inverse,
            .convolve = SumKernels<L>::convolve,
            .correlate = SumKernels<L>::correlate,
            .levinson = SolverKernels<L>::levinson,
            .logarithms = FunctionKernels<L>::logarithms,
            .exponentials = FunctionKernels<L>::exponentials,
            .sines_and_cosines = FunctionKernels<L>::sines_and_cosines};
}

}  // namespace halvern::numerics
