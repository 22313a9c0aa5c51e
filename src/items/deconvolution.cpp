#include "items/deconvolution.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numbers>

#include "items/whole_milliseconds.h"
#include "numerics/convolution.h"
#include "numerics/toeplitz.h"
#include "numerics/vector_math.h"

namespace halvern {

namespace {

// The logarithm of the smallest normal number, 2 to the -1022.
constexpr double kLeastLogarithm = -1022 * std::numbers::ln2;

// What can be a sample: neither too large for single precision nor no number at all.
bool all_fit(std::span<const double> values) {
    bool fit = true;
    for (const double value : values) {
        fit &= std::abs(value) <= double{std::numeric_limits<float>::max()};
    }
    return fit;
}

// A packed spectrum's real and imaginary part at a bin between the zero and the Nyquist frequency.
constexpr std::size_t re(std::size_t bin) { return 2 * bin; }
constexpr std::size_t im(std::size_t bin) { return 2 * bin + 1; }

}  // namespace

Deconvolution::Deconvolution(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kDeconvolution, log) {
    Configure(section);
}

ParameterList Deconvolution::Parameters() {
    return {
        {.key = "DOMAIN", .format = "%d", .value = Bound{&domain_, kTime}},
        {.key = "PREWHITEN",
         .format = "%4.2f",
         .value = Bound{&prewhitening_percent_, 0.1f},
         .log = "PreWhitening Noise = %4.2f%%\n",
         .field = {.label = "PreWhiten",
                   .prompt = "Pre-whitening noise?",
                   .help = "Enter the pre-whitening noise(0.0%-100.0%) to avoid zero-power "
                           "singularity.\n"
                           "  Note: 0.1 means 0.1 percent(0.1%) noise.",
                   .position = 3}},
        {.key = "FILTERLEN",
         .format = "%3.1f",
         .value = Bound{&operator_ms_, 94},
         .log = "Filter Length = %3.1f ms\n",
         .field = {.label = "FilterLen",
                   .prompt = "Filter(or operator) length(in msec.)?",
                   .help =
                       "Enter the length of the filter(or operator) you want to use(in msec.).\n"
                       "It should be positive.",
                   .position = 2}},
        {.key = "PRDCTLAG",
         .format = "%d",
         .value = Bound{&lag_, 1},
         .log = "Prediction Lag = %d\n",
         .field = {.label = "PrdctLag",
                   .prompt = "Prediction lag?",
                   .help = "Enter the prediction lag. It should be a positive integer.\n"
                           "Enter 1 for spiking deconvolution.",
                   .position = 1}},
    };
}

void Deconvolution::LogParameters() {
    Message("Domain of Deconvolution = Time Domain\n");  // in either domain, on purpose
    ProcessFlowItem::LogParameters();
}

bool Deconvolution::CheckParameters(int samples, double interval_ms) {
    // Lengths are held against each other in single precision, as they are entered.
    const auto longest_ms = static_cast<float>((samples - 2) * interval_ms);
    const auto trace_ms = static_cast<float>((samples - 1) * interval_ms);
    const auto reach_ms = static_cast<float>(lag_ * interval_ms + double{operator_ms_});
    if (prewhitening_percent_ < 0) {
        Error("\nPre-Whitening noise must be >= 0.0.\n   You entered '%4.2f'.\n",
              double{prewhitening_percent_});
    } else if (operator_ms_ <= 0) {
        Error("\nThe filter(or operator) length must be > 0.\n   You entered '%3.1f'.\n",
              double{operator_ms_});
    } else if (longest_ms < operator_ms_) {
        Error(
            "\nThe filter(or operator) length can't be greater than trace length, %3.1f(ms).\n"
            "   You entered '%3.1f(ms)'.\n",
            double{longest_ms}, double{operator_ms_});
    } else if (domain_ == kTime && lag_ < 1) {
        Error("\nThe prediction lag should be a positive integer.\n   You entered '%d'.\n", lag_);
    } else if (domain_ == kTime && trace_ms < reach_ms) {
        Error(
            "\nThe filter(or operator) length plus (prediction lag)*(sample rate) can't be "
            "greater than trace length, %3.1f(ms).\n"
            "   You entered filter length = '%3.1f(ms)' and prediction lag = '%d'. \n"
            "   The sample rate = '%3.1f(ms)'.\n",
            double{trace_ms}, double{operator_ms_}, lag_, interval_ms);
    } else {
        return true;
    }
    TerminateJob(kJobError);
    return false;
}

void Deconvolution::PrepareRun(LineHeader& line, TraceHeaderDefinition&, TraceSamples&, int) {
    const double interval_ms = whole_milliseconds(*this, line);
    if (interval_ms == 0 || !CheckParameters(line.samples(), interval_ms)) return;
    const auto samples = static_cast<std::size_t>(line.samples());
    const auto length = static_cast<std::size_t>(double{operator_ms_} / interval_ms + 1.0);
    const std::size_t lags = length + static_cast<std::size_t>(domain_ == kTime ? lag_ : 1);
    correlator_ = numerics::Correlator::make(line.samples(), static_cast<std::int64_t>(lags));
    trace_.resize(samples);
    autocorrelation_.resize(lags);
    operator_.resize(length);
    result_.resize(samples);
    lost_ = 0;
    if (domain_ == kTime) {
        solver_work_.resize(numerics::toeplitz_work(length));
        return;
    }
    // From 2 n up to below 4 n, so that what is convolved does not wrap around.
    const std::size_t points = std::bit_floor(4 * samples - 1);
    fft_ = numerics::RealFft::make(static_cast<std::int64_t>(points));
    spectrum_.resize(points);
    for (auto* bins : {&amplitudes_, &sines_, &cosines_}) bins->resize(points / 2 + 1);
    // Measured: three transforms' values and levels against a term of the direct convolution.
    if (samples * length > 7 * points * static_cast<std::size_t>(std::bit_width(points))) {
        trace_spectrum_.resize(points);
    }
}

int Deconvolution::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    std::ranges::copy(trace, trace_.begin());
    correlator_->autocorrelate(trace_, autocorrelation_);
    autocorrelation_[0] *= 1 + double{prewhitening_percent_} / 100;

    bool done = true;
    if (domain_ == kTime) {
        done = SubtractPrediction();
    } else {
        DesignSpikingOperator();
        ApplyOperator();
    }
    if (!done || !all_fit(result_)) {
        ReportLoss();
        return kKeepBack;
    }
    std::ranges::transform(result_, trace.begin(),
                           [](double sample) { return static_cast<float>(sample); });
    samples.set_floats(trace);
    return kPassOn;
}

bool Deconvolution::SubtractPrediction() {
    const auto lag = static_cast<std::size_t>(lag_);
    const std::span<const double> lags = autocorrelation_;
    const std::size_t length = operator_.size();
    if (!numerics::solve_toeplitz(lags.first(length), lags.subspan(lag, length), operator_,
                                  solver_work_)) {
        return false;
    }
    const auto predicted = result_.begin() + lag_;
    std::fill(result_.begin(), predicted, 0.0);
    numerics::convolve(trace_, operator_, {predicted, result_.end()});
    std::ranges::transform(trace_, result_, result_.begin(), std::minus<>());
    return true;
}

void Deconvolution::DesignSpikingOperator() {
    const std::span<double> p = spectrum_;
    const std::size_t points = p.size();
    const std::size_t half = points / 2;
    const std::size_t length = operator_.size();

    // Negative lags stand one place behind their own, on purpose: -2 at the end, -1 nowhere.
    std::ranges::fill(std::ranges::copy(autocorrelation_, p.begin()).out, p.end(), 0.0);
    for (std::size_t lag = 2; lag <= length; ++lag) p[points + 1 - lag] = autocorrelation_[lag];
    fft_->transform(p, 1);

    // Logarithm of the amplitude. A bin without energy counts as the smallest normal number.
    const std::span<double> amplitude = amplitudes_;  // [half + 1], as the next two
    amplitude[0] = p[0] * p[0];
    amplitude[half] = p[1] * p[1];
    for (std::size_t k = 1; k < half; ++k) amplitude[k] = p[re(k)] * p[re(k)] + p[im(k)] * p[im(k)];
    numerics::logarithms(amplitude, amplitude);
    const auto bounded = [](double log) { return std::max(0.5 * log, kLeastLogarithm); };
    p[0] = bounded(amplitude[0]);
    p[1] = bounded(amplitude[half]);
    for (std::size_t k = 1; k < half; ++k) {
        p[re(k)] = bounded(amplitude[k]);
        p[im(k)] = 0;
    }

    // The cepstrum, folded to positive times, all of it taken -1/2 times.
    fft_->transform(p, -1);
    const double scale = -0.5 / static_cast<double>(half);
    p[0] *= scale;
    for (std::size_t i = 1; i <= half; ++i) p[i] *= 2 * scale;
    std::ranges::fill(p.subspan(half + 1), 0.0);
    fft_->transform(p, 1);

    // One over the amplitude; the phase enters whole, not by half as the amplitude's logarithm.
    const std::span<double> sine = sines_;
    const std::span<double> cosine = cosines_;
    amplitude[0] = p[0];
    amplitude[half] = p[1];
    for (std::size_t k = 1; k < half; ++k) {
        amplitude[k] = p[re(k)];
        sine[k] = 2 * p[im(k)];
    }
    numerics::exponentials(amplitude, amplitude);
    numerics::sines_and_cosines(sine, sine, cosine);
    p[0] = amplitude[0];
    p[1] = amplitude[half];
    for (std::size_t k = 1; k < half; ++k) {
        p[re(k)] = amplitude[k] * cosine[k];
        p[im(k)] = amplitude[k] * sine[k];
    }
    fft_->transform(p, -1);
    for (std::size_t i = 0; i < length; ++i) operator_[i] = p[i] / static_cast<double>(half);
}

void Deconvolution::ApplyOperator() {
    if (trace_spectrum_.empty()) return numerics::convolve(trace_, operator_, result_);
    const std::span<double> p = spectrum_;
    const std::span<double> w = trace_spectrum_;
    std::ranges::fill(std::ranges::copy(operator_, p.begin()).out, p.end(), 0.0);
    std::ranges::fill(std::ranges::copy(trace_, w.begin()).out, w.end(), 0.0);
    fft_->transform(p, 1);
    fft_->transform(w, 1);
    w[0] *= p[0];
    w[1] *= p[1];
    for (std::size_t k = 2; k < w.size(); k += 2) {
        const double re = w[k] * p[k] - w[k + 1] * p[k + 1];
        w[k + 1] = w[k] * p[k + 1] + w[k + 1] * p[k];
        w[k] = re;
    }
    fft_->transform(w, -1);
    const double scale = 2 / static_cast<double>(w.size());
    for (std::size_t i = 0; i < result_.size(); ++i) result_[i] = w[i] * scale;
}

void Deconvolution::ReportLoss() {
    ++lost_;
    if (domain_ == kTime) {
        Error(
            "This trace can't be deconvolved by Wiener filter with operator length = %3.1f ms, "
            "prediction lag = %d and percent prewhitening = %f%%\n",
            double{operator_ms_}, lag_, double{prewhitening_percent_});
    } else {
        Error(
            "This trace can't be deconvolved by minimum-phase filter with operator length = "
            "%3.1f ms and percent prewhitening = %f%%\n",
            double{operator_ms_}, double{prewhitening_percent_});
    }
}

void Deconvolution::EndRun() {
    if (lost_ > 0) Message("Traces that could not be deconvolved = %d\n", lost_);
    correlator_.reset();
    fft_.reset();
    for (auto* buffer : {&trace_, &autocorrelation_, &operator_, &result_, &solver_work_,
                         &spectrum_, &trace_spectrum_, &amplitudes_, &sines_, &cosines_}) {
        *buffer = {};
    }
}

}  // namespace halvern
