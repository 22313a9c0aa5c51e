#pragma once

#include <cstddef>
#include <cstdint>

// The inner loops, once per register width. Internal to this room: callers use the functions of the
// other headers. Every width rounds every result alike, since a width changes only how many
// results are worked on at a time, never the order of operations that leads to one of them.

namespace halvern::numerics {

/// Doubles between the four arrays of a transform, which would otherwise all be a power of two
/// apart and fall on the same few lines of the cache.
inline constexpr std::size_t kFftPadding = 16;

/// One pass of a Stockham transform: `radix` inputs, a stride of `stride` between outputs.
struct FftStage {
    int radix;               ///< 4 or 8
    std::size_t groups;      ///< butterflies with different twiddles
    std::size_t stride;      ///< butterflies that share a twiddle; 1 in the first stage
    const double* twiddles;  ///< see make_tables; null in the last stage, which needs none
};

/// A complex transform of `points`, and what turns it into a real one of twice the length.
struct FftTables {
    static constexpr int kMaxStages = 16;
    std::size_t points;
    int stages;
    FftStage stage[kMaxStages];
    const double* half_cosines;  ///< cos(pi k / points) / 2 for k = 1 ... points / 2
    const double* half_sines;    ///< sin(pi k / points) / 2 likewise
    double* work;                ///< 4 x (points + kFftPadding) doubles
};

struct Kernels {
    const char* name;
    int lanes;  ///< doubles in a register
    void (*fft_forward)(const FftTables& tables, double* values);
    /// At least the first `wanted` of the complex values that hold pairs of real ones.
    void (*fft_inverse)(const FftTables& tables, double* values, std::size_t wanted);
    /// out[i] = sum over j of longer[i - j] shorter[j] for i = 0 ... outputs - 1.
    void (*convolve)(const double* longer, std::size_t longer_length, const double* shorter,
                     std::size_t shorter_length, double* out, std::size_t outputs);
    /// out[k] = sum over i of a[i] b[i + k] for k = 0 ... lags - 1.
    void (*correlate)(const double* a, std::size_t a_length, const double* b, std::size_t b_length,
                      double* out, std::size_t lags);
    /// As solve_toeplitz, the lengths already checked.
    bool (*levinson)(const double* row, const double* right, double* solution, std::size_t length,
                     double* work);

    // The elementary functions that the next kernels are made of, by themselves. The error is below
    // 2 units in the last place. Results may replace the arguments; else they do not overlap.
    // Literature: Cody and Waite, Software Manual for the Elementary Functions (1980).

    /// Natural logarithms; -infinity of 0, NaN of what is below 0 or not a number.
    void (*logarithms)(const double* x, double* out, std::size_t count);
    /// Infinity above 709.78, denormal numbers and then 0 below -708.4.
    void (*exponentials)(const double* x, double* out, std::size_t count);
    /// Of angles in radians; near the zeros the error is 1e-20 absolute. False when an angle was
    /// above kLargestAngle or not finite, where the results are not exact.
    bool (*sines_and_cosines)(const double* x, double* sines, double* cosines, std::size_t count);

    // Of MinimumPhaseInverse, on arrays padded by kBinPadding; h is a power of two from 2 up.

    /// Of `bins` complex values: logarithms[k] = log |spectrum[k]|, at least kLeastLogarithm.
    void (*log_amplitudes)(const double* spectrum, double* logarithms, std::size_t bins);
    /// spectrum[k] = rest exp(-logarithms[k] / 2 - i phases[k]), rest even or odd by k. False when
    /// a phase was above kLargestAngle.
    bool (*inverse_spectrum)(const double* logarithms, const double* phases, double even,
                             double odd, double* spectrum, std::size_t bins);
    /// x[j] = f[2j] + (f[2j+1] - f[2j-1]) for 0 < j < h / 2, x[h - j] the same for the symmetric or
    /// antisymmetric continuation of f[0 ... h]. x[h / 2] is overwritten.
    void (*fold_symmetric)(const double* f, double* x, std::size_t h, bool antisymmetric);
    /// f[k] and f[h - k], 0 < k < h / 2, from the packed spectrum x of what fold_symmetric made;
    /// f[h / 2] is overwritten.
    void (*unfold_symmetric)(const double* x, const double* weights, double* f, std::size_t h,
                             bool antisymmetric);
    /// As the function.
    void (*moveout)(const double* times_squared, double offset_squared,
                    const double* velocities_squared, double interval, double* moved,
                    std::int32_t* sources, std::size_t count);
};

/// Up to here a product of the number of quarter turns with a part of one is exact.
inline constexpr double kLargestAngle = 1e5;

/// The natural logarithm of the smallest normal number, 2^-1022.
inline constexpr double kLeastLogarithm = -708.39641853226410622;

/// What an array of bins has room for after its last one.
inline constexpr std::size_t kBinPadding = 8;

/// Zeros after every array of the solver, so that its sums may end in full registers.
inline constexpr std::size_t kSolverPadding = 8;

enum class KernelChoice { kBaseline, kAvx2, kAvx512 };

/// The kernels of a width, or null when this processor (or this build) does not have it.
const Kernels* kernels_of(KernelChoice choice);

/// The fastest kernels that this processor runs.
const Kernels& kernels();

const Kernels& baseline_kernels();
const Kernels& avx2_kernels();
const Kernels& avx512_kernels();

}  // namespace halvern::numerics
