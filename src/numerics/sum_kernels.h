#pragma once

#include "numerics/lanes.h"

namespace halvern::numerics {

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
        V sum[R]{};  // in registers once the loops over them are unrolled, of which Clang is shy
        std::size_t i = 0;
        for (; i + kTerms <= all; i += kTerms) {
            for (int s = 0; s < kApart; ++s) {
                const V x[4] = {Ops::broadcast(a[i + s]), Ops::broadcast(a[i + s + kApart]),
                                Ops::broadcast(a[i + s + 2 * kApart]),
                                Ops::broadcast(a[i + s + 3 * kApart])};
                const double* const from = b + k0 + i + s;
#ifdef __clang__
#pragma clang loop unroll(full)
#endif
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
        // [low, high); an output's own others come before and after.
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
#ifdef __clang__
#pragma clang loop unroll(full)
#endif
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

}  // namespace halvern::numerics
