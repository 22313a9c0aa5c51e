#pragma once

#include "numerics/lanes.h"

namespace halvern::numerics {

/// Elementary functions without branches or tables: the argument reduced to a small interval, there
/// a series cut where its terms no longer count.
template <int L>
struct FunctionKernels {
    using Ops = Lanes<L>;
    using V = typename Ops::V;
    using Bits = typename Register<L>::Bits;

    // Added to a number below 2^51, it rounds it to a whole one, which is then in the lowest
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
        static constexpr double kExponential[] = {0x1.af38be34c9e9cp-26, 0x1.2891960d969fep-22,
                                                  0x1.71de0da5c30dbp-19, 0x1.a019b8ff24c9bp-16,
                                                  0x1.a01a01a7c6560p-13, 0x1.6c16c1788f756p-10,
                                                  0x1.11111111109b0p-7,  0x1.5555555553d5ap-5,
                                                  0x1.5555555555556p-3,  0x1.0000000000001p-1};
        x = x > all(710.0) ? all(710.0) : x;
        x = x < all(-746.0) ? all(-746.0) : x;
        const V k = x * all(1.44269504088896340736) + all(kRounder) - all(kRounder);
        const V r = x - k * all(0x1.62e42feep-1) - k * all(0x1.a39ef35793c76p-33);
        // In two steps, for results beyond the normal numbers.
        const V half = k * all(0.5) + all(kRounder) - all(kRounder);
        const V power = all(1.0) + (r + r * r * polynomial(r, kExponential));
        return power * power_of_two(half) * power_of_two(k - half);
    }

    [[gnu::always_inline]] static V logarithm(V x) {
        static constexpr double kLogarithm[] = {
            0x1.2b5a8aca255fdp-3, 0x1.39fe31c77715cp-3, 0x1.7462b61242bb4p-3, 0x1.c71c62e0922bcp-3,
            0x1.2492492df5266p-2, 0x1.99999999952bfp-2, 0x1.5555555555558p-1};
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
        const V rest = z * polynomial(z, kLogarithm);
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
        static constexpr double kSine[] = {0x1.5e0b14d26f956p-33, -0x1.ae600af46a9edp-26,
                                           0x1.71de37967c583p-19, -0x1.a01a019e83a05p-13,
                                           0x1.1111111110bb2p-7,  -0x1.5555555555555p-3};
        static constexpr double kCosine[] = {-0x1.907d9e40228acp-37, 0x1.1eeb68e213e94p-29,
                                             -0x1.27e4fa17d32c5p-22, 0x1.a01a019f4eaacp-16,
                                             -0x1.6c16c16c16967p-10, 0x1.5555555555555p-5};
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
    /// Whether all angles were within kLargestAngle, where the results are exact.
    class Within {
    public:
        [[gnu::always_inline]] void check(V angle) {
            const V size = angle < all(0.0) ? -angle : angle;
            exact_ = size <= all(kLargestAngle) ? exact_ : all(0.0);
        }
        [[gnu::always_inline]] bool all_exact() const {
            for (int lane = 0; lane < L; ++lane) {
                if (exact_[lane] == 0) return false;
            }
            return true;
        }

    private:
        V exact_ = all(1.0);
    };

    static bool sines_and_cosines(const double* x, double* sines, double* cosines,
                                  std::size_t count) {
        Within within;
        each(x, count, [&](V v, std::size_t i, std::size_t n) {
            within.check(v);
            const SineCosine both = sine_and_cosine(v);
            put(sines + i, both.sine, n);
            put(cosines + i, both.cosine, n);
        });
        return within.all_exact();
    }

    // The steps of the minimum-phase design between its transforms, on arrays with room for a last
    // full register.

    static void log_amplitudes(const double* spectrum, double* logarithms, std::size_t bins) {
        for (std::size_t k = 0; k < bins; k += L) {
            const auto z = Ops::load_complex(spectrum + 2 * k);
            const V half = logarithm(z.re * z.re + z.im * z.im) * all(0.5);
            const V bounded = half < all(kLeastLogarithm) ? all(kLeastLogarithm) : half;
            Ops::store(logarithms + k, bounded);
        }
    }

    static bool inverse_spectrum(const double* logarithms, const double* phases, double even,
                                 double odd, double* spectrum, std::size_t bins) {
        V rest = all(even);
        for (int lane = 1; lane < L; lane += 2) rest[lane] = odd;
        Within within;
        for (std::size_t k = 0; k < bins; k += L) {
            const V phase = Ops::load(phases + k);
            within.check(phase);
            const V amplitude = exponential(Ops::load(logarithms + k) * all(-0.5)) * rest;
            const SineCosine both = sine_and_cosine(phase);
            Ops::store_complex(spectrum + 2 * k,
                               {both.cosine * amplitude, -(both.sine * amplitude)});
        }
        return within.all_exact();
    }

    template <class Value>
    [[gnu::always_inline]] static Value mirrored(Value v, bool antisymmetric) {
        return antisymmetric ? -v : v;
    }

    static void fold_symmetric(const double* f, double* x, std::size_t h, bool antisymmetric) {
        std::size_t j = 1;
        for (; j + L <= h / 2 + 1; j += L) {
            const auto here = Ops::load_complex(f + 2 * j);
            const V difference = here.im - Ops::load_complex(f + 2 * j - 1).re;
            Ops::store(x + j, here.re + difference);
            Ops::store(x + h - j - L + 1,
                       Ops::reverse(mirrored(here.re - difference, antisymmetric)));
        }
        for (; j < h / 2; ++j) {
            const double difference = f[2 * j + 1] - f[2 * j - 1];
            x[j] = f[2 * j] + difference;
            x[h - j] = mirrored(f[2 * j] - difference, antisymmetric);
        }
    }

    static void unfold_symmetric(const double* x, const double* weights, double* f, std::size_t h,
                                 bool antisymmetric) {
        std::size_t k = 1;
        for (; k + L <= h / 2 + 1; k += L) {
            const auto z = Ops::load_complex(x + 2 * k);
            const V weight = Ops::load(weights + k);
            const V even = antisymmetric ? z.im : z.re;
            const V odd = (antisymmetric ? -z.re : z.im) * weight;
            Ops::store(f + k, even + odd);
            Ops::store(f + h - k - L + 1, Ops::reverse(mirrored(even - odd, antisymmetric)));
        }
        for (; k < h / 2; ++k) {
            const double even = antisymmetric ? x[2 * k + 1] : x[2 * k];
            const double odd = (antisymmetric ? -x[2 * k] : x[2 * k + 1]) * weights[k];
            f[k] = even + odd;
            f[h - k] = mirrored(even - odd, antisymmetric);
        }
    }
};

}  // namespace halvern::numerics
