#pragma once

#include "numerics/lanes.h"

namespace halvern::numerics {

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

    /// `enter` backwards: the inverse transform's last stage, at least as far as the first `wanted`
    /// complex values.
    static void leave(const FftStage& stage, Split from, double* x, std::size_t wanted) {
        const std::size_t m = stage.groups;
        const std::size_t end = wanted < m ? wanted : m;
        const double* w = stage.twiddles;
        for (std::size_t p = 0; p < end; p += L, w += 14 * L) {
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
    static void inverse(const FftTables& tables, double* x, std::size_t wanted) {
        Buffers buffers(tables);
        const FftStage& last = tables.stage[tables.stages - 1];
        unite_first<4>(tables, last, x, buffers.now);
        for (int i = tables.stages - 2; i > 0; --i, buffers.swap()) {
            const FftStage& stage = tables.stage[i];
            (stage.radix == 8 ? middle_backwards<8> : middle_backwards<4>)(stage, buffers.now,
                                                                           buffers.next);
        }
        leave(tables.stage[0], buffers.now, x, wanted);
    }
};

}  // namespace halvern::numerics
