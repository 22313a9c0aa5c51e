#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "numerics/aligned.h"
#include "numerics/kernels.h"

namespace halvern::numerics {

/// The discrete Fourier transform of N real values, in place, N a power of two from 2 up.
///
/// Forward (sign 1), unscaled:        X[k] = sum over j of x[j] exp(-2 pi i j k / N)
/// Inverse (sign -1), unscaled:       x[j] N / 2
/// so a forward transform followed by an inverse one multiplies by N / 2.
///
/// The spectrum of real values is conjugate-symmetric, and its N numbers are packed as
///     x[0]      X[0], which is real
///     x[1]      X[N / 2] (the Nyquist frequency), which is real
///     x[2k]     real part of X[k]          for k = 1 ... N / 2 - 1
///     x[2k+1]   imaginary part of X[k]
/// A delay thus turns the phase backwards, and a causal sequence whose spectrum's logarithm is
/// transformed back gives a cepstrum that is causal when the sequence is of minimum phase.
///
/// The N values are taken as N / 2 complex ones, transformed by a self-sorting (Stockham)
/// decimation in frequency with radices 8 and 4, and separated by symmetry. Literature: Cooley and
/// Tukey, Math. Comp. 19 (1965); Cochran et al., Proc. IEEE 55 (1967), for the self-sorting form;
/// Sorensen et al., IEEE Trans. ASSP 35 (1987), for real values; Van Loan, Computational Frameworks
/// for the Fast Fourier Transform (1992), for all of these. The error grows with log2 N: the
/// root mean square relative error is about 1e-16 log2 N.
///
/// All tables and the work space are made with the plan; a transform allocates nothing. A plan
/// serves one thread at a time.
class RealFft {
public:
    static constexpr std::int64_t kMaxLength = std::int64_t{1} << 30;

    /// A plan for transforms of `length` values, or nothing unless that is a power of two from 2
    /// to kMaxLength.
    [[nodiscard]] static std::optional<RealFft> make(std::int64_t length);

    /// The smallest length that `make` takes and that holds `values` values; 0 if there is none.
    [[nodiscard]] static std::int64_t length_for(std::int64_t values);

    RealFft(RealFft&&) = default;
    RealFft& operator=(RealFft&&) = default;

    [[nodiscard]] std::int64_t length() const { return length_; }

    /// Transforms `values` in place. False, and nothing done, unless it holds length() values and
    /// `sign` is 1 or -1.
    bool transform(std::span<double> values, int sign);

    /// The inverse transform where only its first `count` values matter: the others are then not
    /// what they should be, and up to a tenth of the time is saved. False as above.
    bool inverse_start(std::span<double> values, std::size_t count);

    /// `transform` by the textbook's radix-2 algorithm: slower, differing by rounding only. It is
    /// what the fast one is checked against.
    bool transform_plain(std::span<double> values, int sign);

    /// Runs the transforms with these kernels instead of the processor's fastest.
    void use(const Kernels& kernels);

private:
    explicit RealFft(std::int64_t length);
    void make_tables();

    std::int64_t length_{};
    const Kernels* kernels_{};  // null: too short for them
    AlignedDoubles roots_;      // [length / 2] cos(2 pi k / length), then as many sin
    AlignedDoubles twiddles_;   // what tables_ points into
    AlignedDoubles work_;       // [2 length]
    FftTables tables_{};
};

}  // namespace halvern::numerics
