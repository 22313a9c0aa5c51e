#include "items/deconvolution.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>

#include "flow/item_checks.h"
#include "numerics/toeplitz.h"

namespace halvern {

namespace {

// By the bits without the sign: an infinity's, or those of what is no number, are the largest. All
// are looked at, which takes less time than stopping at the first.
bool all_finite(std::span<const float> values) {
    constexpr std::int32_t kInfinity = 0x7F800000;
    std::int32_t largest = 0;
    for (const float value : values) {
        largest = std::max(largest, std::bit_cast<std::int32_t>(value) & 0x7FFFFFFF);
    }
    return largest < kInfinity;
}

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
    const double interval_ms = RequireWholeMilliseconds(*this, line);
    if (interval_ms == 0 || !CheckParameters(line.samples(), interval_ms)) return;
    const auto samples = static_cast<std::size_t>(line.samples());
    const auto length = static_cast<std::size_t>(double{operator_ms_} / interval_ms + 1.0);
    const std::size_t lags = length + static_cast<std::size_t>(domain_ == kTime ? lag_ : 1);
    correlator_ = numerics::Correlator::make(line.samples(), static_cast<std::int64_t>(lags));
    convolver_ = numerics::Convolver::make(line.samples(), static_cast<std::int64_t>(length));
    trace_.resize(samples);
    autocorrelation_.resize(lags);
    operator_.resize(length);
    result_.resize(samples);
    output_.resize(samples);
    lost_ = 0;
    if (domain_ == kTime) {
        solver_work_.resize(numerics::toeplitz_work(length));
        return;
    }
    // From 2 n up to below 4 n.
    const std::size_t points = std::bit_floor(4 * samples - 1);
    inverse_ = numerics::MinimumPhaseInverse::make(static_cast<std::int64_t>(points));
}

int Deconvolution::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    std::ranges::copy(samples.floats(header), trace_.begin());
    correlator_->autocorrelate(trace_, autocorrelation_);
    autocorrelation_[0] *= 1 + double{prewhitening_percent_} / 100;

    const bool done = domain_ == kTime ? SubtractPrediction() : Spike();
    std::ranges::transform(result_, output_.begin(),
                           [](double sample) { return static_cast<float>(sample); });
    if (!done || !all_finite(output_)) {
        ReportLoss();
        return kKeepBack;
    }
    samples.set_floats(std::span(output_));
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
    convolver_->convolve(trace_, operator_, {predicted, result_.end()});
    std::ranges::transform(trace_, result_, result_.begin(), std::minus<>());
    return true;
}

bool Deconvolution::Spike() {
    return inverse_->design(autocorrelation_, operator_) &&
           convolver_->convolve(trace_, operator_, result_);
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
    convolver_.reset();
    inverse_.reset();
    for (auto* buffer : {&trace_, &autocorrelation_, &operator_, &result_, &solver_work_}) {
        *buffer = {};
    }
    output_ = {};
}

}  // namespace halvern
