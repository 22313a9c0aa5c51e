#include "items/time_shift.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "flow/item_checks.h"
#include "numerics/spline.h"

namespace halvern {

namespace {

// Rounded down; the divisor is positive.
std::int64_t floor_divide(std::int64_t dividend, std::int64_t divisor) {
    return dividend / divisor - (dividend % divisor < 0 ? 1 : 0);
}

// Moves the samples `count` places towards the start, or towards the end when it is negative.
void move_samples(std::span<float> trace, std::int64_t count) {
    const auto n = static_cast<std::int64_t>(trace.size());
    const auto kept = static_cast<std::ptrdiff_t>(std::max<std::int64_t>(n - std::abs(count), 0));
    if (count < 0) {
        std::copy_backward(trace.begin(), trace.begin() + kept, trace.end());
        std::fill(trace.begin(), trace.end() - kept, 0.0f);
    } else if (count > 0) {
        std::copy(trace.end() - kept, trace.end(), trace.begin());
        std::fill(trace.begin() + kept, trace.end(), 0.0f);
    }
}

}  // namespace

TimeShift::TimeShift(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kTimeShift, log) {
    Configure(section);
}

ParameterList TimeShift::Parameters() {
    return {
        {.key = "TYPE",
         .format = "%d",
         .value = Bound{&type_, kAmount},
         .field = {.label = "Type",
                   .prompt = "Type of time shift?",
                   .choices = {{"HEADER", kHeader}, {"AMOUNT", kAmount}}}},
        {.key = "AMOUNT",
         .format = "%d",
         .value = Bound{&amount_ms_, -100},
         .log = "Shift time = %d\n",
         .field = {.label = "Amount", .prompt = "Amount of time shift (in msec.)?", .position = 2}},
        {.key = "HEADER",
         .format = "%s",
         .value = Bound{&word_, "NONE"},
         .log = "Shift header = %s\n",
         .field = {.label = "Header",
                   .prompt = "Header to use for start time.",
                   .kind = FieldKind::kHeaderWord,
                   .position = 1}},
        {.key = "INTERPON",
         .format = "%d",
         .value = Bound{&interpolate_, 1},
         .field = {.label = "Interp",
                   .prompt = "Use Interpolation?",
                   .help = "When the amount of time shifted is not an integer multiple of sample "
                           "rate, choose\n"
                           "    YES: use interpolation to compute the trace value at sample "
                           "points.\n"
                           "    NO : round off the amount shifted to the closest integer",
                   .choices = {{"YES", 1}, {"NO", 0}},
                   .position = 3}},
    };
}

void TimeShift::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("Trace values will %sbe interpolated.\n", interpolate_ == 1 ? "" : "NOT ");
}

void TimeShift::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (type_ == kHeader) {
        word_index_ = RequireHeaderWord(*this, header, word_.c_str());
        if (word_index_ < 0) return;
    }
    interval_ms_ = RequireWholeMilliseconds(*this, line);
    if (interval_ms_ == 0) return;
    spline_work_.resize(static_cast<std::size_t>(line.samples()));
    rounded_ = 0;
    shortened_ = {};
}

int TimeShift::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const std::span<float> trace = samples.floats(header);
    // Towards the start from here on; 64 bits, as the smallest of 32 has no negative.
    const std::int64_t shift_ms =
        -std::int64_t{type_ == kHeader ? header.get_int(word_index_) : amount_ms_};

    std::int64_t count = floor_divide(shift_ms, interval_ms_);
    std::int64_t rest_ms = shift_ms - interval_ms_ * count;
    bool splined = interpolate_ == 1 && rest_ms != 0;
    if (splined && !std::ranges::all_of(trace, [](float s) { return std::isfinite(s); })) {
        splined = false;  // one such sample would spoil the whole spline
        if (!IsRepeating()) ++rounded_;
    }
    if (!splined) count = floor_divide(2 * shift_ms + interval_ms_, 2 * interval_ms_);

    move_samples(trace, count);
    if (splined) {
        if (shift_ms <= 0 && !IsRepeating()) {
            Message("offSet = %f, shiftIndex = %d, shiftAmount = %d\n",
                    static_cast<double>(rest_ms), static_cast<int>(count),
                    static_cast<int>(shift_ms));
        }
        const double fraction = static_cast<double>(rest_ms) / static_cast<double>(interval_ms_);
        static_cast<void>(numerics::shift_by_spline(trace, fraction, spline_work_));
    }
    if (!IsRepeating()) shortened_.look(samples, trace);
    samples.set_floats(trace);
    return kPassOn;
}

void TimeShift::EndRun() {
    if (rounded_ > 0) {
        Warning("Traces with samples that are not finite, shifted by whole samples = %d\n",
                rounded_);
    }
    shortened_.report(*this);
    spline_work_ = {};
}

}  // namespace halvern
