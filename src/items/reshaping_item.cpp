#include "items/reshaping_item.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

namespace halvern {

namespace {
constexpr int kShortenedTrace = 101;  // TRACEID of a trace that stores fewer samples than the line
constexpr std::int64_t kMostSamples = std::numeric_limits<std::int16_t>::max();
constexpr int kLongestIntervalUs = std::numeric_limits<std::uint16_t>::max();
}  // namespace

bool ReshapingFlowItem::Reshape(const LineHeader& line, const TraceHeaderDefinition& header,
                                std::int64_t samples, SampleInterval interval) {
    if (samples < 1 || samples > kMostSamples) {
        Error("The traces would have %lld samples.  They can have 1 to %lld.\n",
              static_cast<long long>(samples), static_cast<long long>(kMostSamples));
        TerminateJob(kJobError);
        return false;
    }
    if (interval != SampleInterval::of_us(interval.us()) || interval.us() > kLongestIntervalUs) {
        Error(
            "A sample interval of %.6f ms cannot be kept: it must be whole microseconds, at most "
            "%d.\n",
            interval.ms(), kLongestIntervalUs);
        TerminateJob(kJobError);
        return false;
    }
    samples_ = static_cast<int>(samples);
    interval_us_ = interval.us();
    auto reshaped = std::make_unique<LineHeader>(line);
    reshaped->set_sample_interval(interval);
    reshaped->set_samples(samples_, samples_);
    ReplaceLine(std::move(reshaped));
    reshaped_.set_floats(std::vector<float>(static_cast<std::size_t>(samples_)));
    ReplaceSamples(&reshaped_);
    num_samps_ = header.find("NUMSAMPS");
    samp_rate_ = header.find("SAMPRATE");
    delay_ = header.find("DELAY");
    trace_id_ = header.find("TRACEID");
    total_samples_ = header.find("TOTSAMP");
    start_sample_ = header.find("STSAMP");
    delays_rounded_ = delays_kept_ = 0;
    return true;
}

void ReshapingFlowItem::FinishTrace(TraceHeaderDefinition& header, const Moved& moved) {
    reshaped_.set_floats(reshaped_.floats(header));
    header.set_double(num_samps_, samples_);
    header.set_double(samp_rate_, interval_us_);
    if (moved.time != 0 && delay_ >= 0) MoveDelay(header, moved.time);
    if (header.get_int(trace_id_) != kShortenedTrace) return;
    const auto held = [this](std::int64_t count) {
        return static_cast<double>(std::clamp<std::int64_t>(count, 0, samples_));
    };
    header.set_double(total_samples_, held(moved.stored));
    header.set_double(start_sample_, held(moved.start));
}

void ReshapingFlowItem::MoveDelay(TraceHeaderDefinition& header, std::int64_t time) {
    const double delay =
        header.get_double(delay_) + static_cast<double>(time) / SampleInterval::kPerMs;
    const bool stored = header.store(delay_, delay);
    if (IsRepeating()) return;
    delays_kept_ += !stored;
    delays_rounded_ += stored && header.get_double(delay_) != delay;
}

void ReshapingFlowItem::EndRun() {
    if (delays_rounded_ > 0) {
        Warning("DELAY holds whole milliseconds: in %lld traces it was rounded.\n",
                static_cast<long long>(delays_rounded_));
    }
    if (delays_kept_ > 0) {
        Warning("DELAY cannot hold the time of the first sample of %lld traces: it was kept.\n",
                static_cast<long long>(delays_kept_));
    }
    reshaped_ = {};
}

}  // namespace halvern
