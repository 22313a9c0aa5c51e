#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "synthetic/synthesize_line.h"

namespace halvern::synthetic {

struct Train;  // of ground roll

/// Draws the traces of a line one by one, in any order: every trace depends on the line and on its
/// shot and channel alone. Wavelets and noise are made once, so that a trace is a few additions.
class TraceMaker {
public:
    explicit TraceMaker(const SyntheticLine& line);

    /// Fills `trace` [line's samples]. A dead trace is zero.
    void make(int shot, int channel, std::span<float> trace) const;

private:
    void add_noise(int shot, int channel, std::span<float> trace) const;
    void add_wavelet(double time_ms, double amplitude, std::span<float> trace) const;
    void add_train(const Train& train, int offset_m, double delay_s, double amplitude,
                   std::span<float> trace) const;

    const SyntheticLine& line_;
    int reach_;  // samples of a wavelet before and after its middle
    std::vector<float>
        wavelets_;              // [kPhases + 1][2 x reach_ + 2], each a fraction of a sample later
    std::vector<float> noise_;  // [2 x kNoisePeriod], the second half repeats the first
    std::vector<float> taper_;  // [samples], rising from 0: how the ground roll begins and ends
};

}  // namespace halvern::synthetic
