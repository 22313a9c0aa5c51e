#include "items/attribute.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace halvern {

namespace {
constexpr const char* kNone = "NONE";
constexpr double kDegrees = 180 / std::numbers::pi;
}  // namespace

Attribute::Attribute(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kAttribute, log) {
    Configure(section);
}

ParameterList Attribute::Parameters() {
    const auto measures = [this] { return Measures(); };
    const auto only_for = [this](std::initializer_list<Type> types) {
        return [this, wanted = std::vector<int>(types.begin(), types.end())] {
            return std::ranges::find(wanted, type_) != wanted.end();
        };
    };
    ParameterList list = {
        {.key = "TYPE",
         .format = "%d",
         .value = Bound{&type_, kEnvelope},
         .log = "Attribute = %s\n",
         .field = {.label = "Type",
                   .prompt = "Which attribute?",
                   .help = "The first five replace the trace.  The others measure a window of it "
                           "and write the number into a header word; the trace stays.",
                   .choices = {{"Envelope", kEnvelope},
                               {"Instantaneous phase (degrees)", kPhase},
                               {"Instantaneous frequency (Hz)", kFrequency},
                               {"Cosine of phase", kCosine},
                               {"Running mean square", kMeanSquare},
                               {"RMS", kRms},
                               {"Mean absolute", kMeanMagnitude},
                               {"Maximum absolute", kLargest},
                               {"Time of maximum (ms)", kTimeOfLargest},
                               {"Dominant frequency (Hz)", kDominant},
                               {"Mean frequency (Hz)", kMeanFrequency},
                               {"Bandwidth (Hz)", kBandwidth},
                               {"Zero crossings a second", kZeroCrossings},
                               {"Signal to noise (dB)", kSignalToNoise},
                               {"First break (ms)", kFirstBreak}}}},
        {.key = "WINDOW",
         .format = "%f",
         .value = Bound{&window_ms_, 100.0},
         .log = "Window length = %f\n",
         .field = {.label = "Window",
                   .prompt = "Length of the running window (in msec.)?",
                   .help = "Of the running mean square, and of each of the two windows whose "
                           "energies find the first break.",
                   .applies = only_for({kMeanSquare, kFirstBreak})}},
        {.key = "HEADER",
         .format = "%s",
         .value = Bound{&word_, kNone},
         .log = "Output header = %s\n",
         .field = {.label = "Header",
                   .prompt = "Header word for the number?",
                   .kind = FieldKind::kHeaderWord,
                   .applies = measures}},
        {.key = "SCALE",
         .format = "%f",
         .value = Bound{&scale_, 1.0},
         .log = "Scale = %f\n",
         .field = {.label = "Scale",
                   .prompt = "Factor for the number?",
                   .help = "Words that hold integers keep decimals this way: 1000 keeps three.",
                   .applies = measures}},
    };
    const auto add_window = [&](ParameterList window, const std::function<bool()>& applies) {
        for (Parameter& parameter : window) {
            parameter.field.applies = applies;
            list.push_back(std::move(parameter));
        }
    };
    add_window(signal_.parameters("START", "END", "Start time = %f\n", "End time = %s\n"),
               measures);
    add_window(noise_.parameters("NOISESTART", "NOISEEND", "Noise start time = %f\n",
                                 "Noise end time = %s\n"),
               only_for({kSignalToNoise}));
    list.push_back({.key = "VELOCITY",
                    .format = "%f",
                    .value = Bound{&velocity_, 0.0},
                    .log = "Windows move with velocity = %f\n",
                    .field = {.label = "Velocity",
                              .prompt = "Velocity that the windows move with (in m/s)?",
                              .help = "The windows count from |OFFSET| / velocity.  0: they do not "
                                      "move.",
                              .applies = measures}});
    list.push_back({.key = "ALONG",
                    .format = "%s",
                    .value = Bound{&along_, kNone},
                    .log = "Windows count from header = %s\n",
                    .field = {.label = "Along",
                              .prompt = "Header word with the time that the windows count from?",
                              .help = "In ms from the first sample.  NONE: from the first sample.",
                              .kind = FieldKind::kHeaderWord,
                              .applies = measures}});
    return list;
}

void Attribute::LogParameters() {
    for (const Parameter& parameter : Parameters()) {
        if (!parameter.field.applies || parameter.field.applies()) LogParameter(parameter.key);
    }
}

bool Attribute::CheckWindow(const TimeWindow& window, const char* what) {
    const std::string fault = TimeWindow::end_fault(window.end);
    if (!fault.empty()) {
        Error("The end time of the %s window %s.\n", what, fault.c_str());
    } else if (const auto end = window.end_ms(); end && *end < window.start_ms) {
        Error("The %s window ends before it starts.\n", what);
    } else {
        return true;
    }
    TerminateJob(kJobError);
    return false;
}

bool Attribute::CheckMeasure(const TraceHeaderDefinition& header) {
    if (!CheckWindow(signal_, "signal")) return false;
    if (type_ == kSignalToNoise && !CheckWindow(noise_, "noise")) return false;
    if (velocity_ < 0) {
        Error("The velocity must not be negative.  You have entered '%f'.\n", velocity_);
        TerminateJob(kJobError);
        return false;
    }
    target_word_ = RequireHeaderWord(*this, header, word_.c_str());
    if (target_word_ < 0) return false;
    if (velocity_ > 0) {
        offset_word_ = RequireHeaderWord(*this, header, "OFFSET");
        if (offset_word_ < 0) return false;
    }
    if (along_ != kNone) {
        along_word_ = RequireHeaderWord(*this, header, along_.c_str());
        if (along_word_ < 0) return false;
    }
    return true;
}

void Attribute::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (!RequireSampleInterval(*this, line)) return;
    interval_ = line.sample_interval();
    target_word_ = along_word_ = offset_word_ = -1;
    not_stored_ = 0;
    shortened_ = {};
    delay_.prepare(header);
    const bool known =
        (type_ >= kEnvelope && type_ <= kMeanSquare) || (type_ >= kRms && type_ <= kFirstBreak);
    if (!known) {
        Error("There is no attribute '%d'.\n", type_);
        return TerminateJob(kJobError);
    }
    if (Measures() && !CheckMeasure(header)) return;
    if (type_ == kMeanSquare || type_ == kFirstBreak) {
        const std::int64_t window = nearest_sample(window_ms_, interval_);
        if (window < 1) {
            Error("The window must hold at least one sample.  You have entered '%f'.\n",
                  window_ms_);
            return TerminateJob(kJobError);
        }
        window_ = static_cast<std::size_t>(window);
    }
    const auto samples = static_cast<std::size_t>(std::max(line.samples(), 0));
    if (samples == 0) return;
    if (type_ <= kMeanSquare) work_.assign(samples + 1, 0.0);
    if (type_ <= kCosine) hilbert_ = numerics::HilbertTransform::make(line.samples());
    if (type_ >= kDominant && type_ <= kBandwidth) {
        spectrum_ = numerics::SpectralMeasurer::make(line.samples());
    }
}

int Attribute::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    if (trace.empty()) return kPassOn;
    if (!Measures()) {
        if (type_ == kMeanSquare) {
            RunningMeanSquare(trace);
        } else {
            Instantaneous(trace);
        }
        if (!IsRepeating()) shortened_.look(samples, trace);
        samples.set_floats(trace);
        return kPassOn;
    }
    delay_.look(*this, header);
    const double number = scale_ * Measure(trace, ReferenceMs(header));
    if (!header.store(target_word_, number) && !IsRepeating()) ++not_stored_;
    return kPassOn;
}

double Attribute::ReferenceMs(const TraceHeaderDefinition& header) const {
    double reference_ms = header.get_double(along_word_);
    if (offset_word_ >= 0) {
        reference_ms += std::fabs(header.get_double(offset_word_)) / velocity_ * 1000;
    }
    return std::isfinite(reference_ms) ? reference_ms : 0;
}

double Attribute::Measure(std::span<const float> trace, double reference_ms) {
    const auto part = [&](const TimeWindow& window) {
        const auto [first, count] = window.samples_of(reference_ms, interval_, trace.size());
        return trace.subspan(first, count);
    };
    const std::span<const float> window = part(signal_);
    const auto time_ms = [&](std::size_t index) {
        return static_cast<double>(window.data() - trace.data() +
                                   static_cast<std::ptrdiff_t>(index)) *
               interval_.ms();
    };
    const double interval_s = interval_.ms() / 1000;
    switch (type_) {
        case kRms:
            return numerics::root_mean_square(window);
        case kMeanMagnitude:
            return numerics::mean_magnitude(window);
        case kLargest:
            return numerics::largest_magnitude(window).magnitude;
        case kTimeOfLargest: {
            const numerics::Extreme largest = numerics::largest_magnitude(window);
            return largest.magnitude > 0 ? time_ms(largest.index) : 0;
        }
        case kDominant:
            return spectrum_->measure(window, interval_s).dominant_hz;
        case kMeanFrequency:
            return spectrum_->measure(window, interval_s).mean_hz;
        case kBandwidth:
            return spectrum_->measure(window, interval_s).bandwidth_hz;
        case kZeroCrossings:
            if (window.size() < 2) return 0;
            return static_cast<double>(numerics::zero_crossings(window)) /
                   (static_cast<double>(window.size() - 1) * interval_s);
        case kSignalToNoise:
            return numerics::decibels(numerics::root_mean_square(window),
                                      numerics::root_mean_square(part(noise_)));
        default: {
            const auto found = numerics::first_break(window, window_);
            return found ? time_ms(*found) : 0;
        }
    }
}

void Attribute::Instantaneous(std::span<float> trace) {
    const std::span<double> quadrature(work_.data(), trace.size());
    hilbert_->transform(trace, quadrature);
    const auto phase = [&](std::size_t i) {
        return std::atan2(quadrature[i], static_cast<double>(trace[i]));
    };
    switch (type_) {
        case kEnvelope:
            for (std::size_t i = 0; i < trace.size(); ++i) {
                const double real = trace[i];
                trace[i] =
                    static_cast<float>(std::sqrt(real * real + quadrature[i] * quadrature[i]));
            }
            return;
        case kPhase:
            for (std::size_t i = 0; i < trace.size(); ++i) {
                trace[i] = static_cast<float>(phase(i) * kDegrees);
            }
            return;
        case kCosine:
            for (std::size_t i = 0; i < trace.size(); ++i) {
                trace[i] = static_cast<float>(std::cos(phase(i)));
            }
            return;
        default: {
            // To the next sample; the last sample has the increment of the one before.
            const double to_hz = 1000 / (2 * std::numbers::pi * interval_.ms());
            double here = phase(0);
            for (std::size_t i = 0; i + 1 < trace.size(); ++i) {
                const double next = phase(i + 1);
                const double increment = std::remainder(next - here, 2 * std::numbers::pi);
                trace[i] = static_cast<float>(increment * to_hz);
                here = next;
            }
            trace.back() = trace.size() > 1 ? trace[trace.size() - 2] : 0.0f;
        }
    }
}

void Attribute::RunningMeanSquare(std::span<float> trace) {
    // Sums up to each sample: of the squares, relative to nothing, in double precision.
    const std::span<double> sums(work_.data(), trace.size() + 1);
    sums[0] = 0;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        sums[i + 1] = sums[i] + static_cast<double>(trace[i]) * static_cast<double>(trace[i]);
    }
    const std::size_t before = window_ / 2, after = (window_ + 1) / 2;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        const std::size_t first = i - std::min(i, before);
        const std::size_t end = std::min(i + after, trace.size());
        trace[i] = static_cast<float>((sums[end] - sums[first]) / static_cast<double>(end - first));
    }
}

void Attribute::EndRun() {
    if (not_stored_ > 0) {
        Warning("'%s' cannot hold the number of %lld traces: it was left as it was.\n",
                word_.c_str(), static_cast<long long>(not_stored_));
    }
    shortened_.report(*this);
    hilbert_.reset();
    spectrum_.reset();
    work_ = {};
}

}  // namespace halvern
