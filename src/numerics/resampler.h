#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace halvern::numerics {

/// Brings traces to another sample interval: out[k] is the value at time k new_interval of the
/// band-limited function whose samples are given.
///
/// Refined, and without `antialias`, the function is that below the Nyquist frequency of the
/// samples: every value is a sum over 64 samples, weighted by a sinc in a Kaiser window, which
/// gives samples that coincide exactly and passes frequencies up to 0.9 of Nyquist within 1e-5.
/// Made coarser with `antialias`, the sinc's cut-off lies below the new Nyquist frequency:
/// frequencies up to `corner` of it pass within 1e-4, from it on they are down by 90 dB, in phase
/// everywhere. The operator is finite, so that nothing rings further than half of it; near the ends
/// of a trace the weights inside it are brought to a sum of 1, as they have elsewhere, and a
/// constant stays a constant.
/// Literature: Kaiser, in: System Analysis by Digital Computer (1966); Crochiere and Rabiner,
/// Multirate Digital Signal Processing (1983).
class Resampler {
public:
    struct Change {
        std::int64_t samples = 0;       ///< of a trace
        std::int64_t old_interval = 0;  ///< in any unit, the same for both
        std::int64_t new_interval = 0;
        bool antialias = true;
        double corner = 0.8;  ///< above 0, at most kLargestCorner
    };
    static constexpr double kLargestCorner = 0.98;

    /// As many samples as fit into the time of the old ones: floor((n - 1) old / new) + 1.
    static std::int64_t samples_after(const Change& change);

    /// Nothing when a number is out of its range, or the operator would be longer than a million
    /// samples.
    [[nodiscard]] static std::optional<Resampler> make(const Change& change);

    std::int64_t outputs() const { return static_cast<std::int64_t>(scales_.size()); }

    /// `in` has the samples that were planned, `out` the outputs(). Allocates nothing; one thread
    /// at a time.
    void resample(std::span<const float> in, std::span<float> out);

private:
    Resampler() = default;
    void make_weights(double cutoff, double beta);
    void make_scales();
    void make_phases();

    /// Sum of the products of one output's weights with the samples: the plain way.
    double value(std::int64_t output) const;
    /// The outputs of each phase together, as correlations.
    void resample_by_phases(std::span<float> out);
    std::int64_t first_sample(std::int64_t output) const { return output * step_ / phases_; }
    std::int64_t samples() const { return static_cast<std::int64_t>(padded_.size()) - 2 * half_; }

    std::int64_t half_ = 0;        // samples on each side that an output sees
    std::int64_t step_ = 0;        // an output follows the one before by step_ / phases_ samples
    std::int64_t phases_ = 0;      // different places of outputs between two samples
    std::int64_t rows_ = 0;        // of weights; between two of them when there are more phases
    std::vector<double> weights_;  // [rows_ + 1][2 half_]
    std::vector<double> scales_;   // [outputs] what brings the weights inside the trace to 1
    std::vector<double> padded_;   // [half_ + samples + half_] zeros at both ends

    // Where the ratio is one of small numbers: every step_-th sample makes a stream, and a phase's
    // outputs are the sum over the streams of correlations with every step_-th weight.
    struct Part {
        std::vector<double> weights;
        std::size_t stream;
        std::size_t first;  // in the stream, of the first output
    };
    struct Phase {
        bool copies = false;  // its outputs coincide with samples
        std::vector<Part> parts;
    };
    std::vector<Phase> phase_;     // [phases_], empty where the plain way is taken
    std::vector<double> streams_;  // [step_][stream_length_]
    std::size_t stream_length_ = 0;
    std::vector<double> sums_;  // [outputs of a phase]
    std::vector<double> part_;  // likewise
};

}  // namespace halvern::numerics
