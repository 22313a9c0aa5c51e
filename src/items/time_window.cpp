#include "items/time_window.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace halvern {

namespace {
constexpr double kFarthest = 1e15;  // samples; any sum of such numbers fits 64 bits

std::optional<double> parse_time(const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || behind != end || !std::isfinite(value)) return {};
    return value;
}
}  // namespace

std::int64_t nearest_sample(double ms, SampleInterval interval) {
    return static_cast<std::int64_t>(
        std::clamp(std::floor(ms / interval.ms() + 0.5), -kFarthest, kFarthest));
}

ParameterList TimeWindow::parameters(const char* start_key, const char* end_key,
                                     const char* start_log, const char* end_log) {
    return {
        {.key = start_key,
         .format = "%f",
         .value = Bound{&start_ms, 0.0},
         .log = start_log,
         .field = {.label = start_key, .prompt = "Start time of the window (in msec.)?"}},
        {.key = end_key,
         .format = "%s",
         .value = Bound{&end, std::string()},
         .log = end_log,
         .field = {.label = end_key,
                   .prompt = "End time of the window (in msec.)?",
                   .help = "The sample at this time still belongs to the window.\n"
                           "Nothing: the window ends with the trace.",
                   .check = end_fault}},
    };
}

std::optional<double> TimeWindow::end_ms() const { return parse_time(end); }

std::string TimeWindow::end_fault(const std::string& end) {
    return end.empty() || parse_time(end) ? "" : "'" + end + "' is no time in milliseconds";
}

TimeWindow::Samples TimeWindow::samples_of(double reference_ms, SampleInterval interval,
                                           std::size_t samples) const {
    const auto count = static_cast<std::int64_t>(samples);
    const std::optional<double> last_ms = end_ms();
    const std::int64_t first =
        std::clamp<std::int64_t>(nearest_sample(reference_ms + start_ms, interval), 0, count);
    const std::int64_t behind =
        last_ms ? std::clamp<std::int64_t>(nearest_sample(reference_ms + *last_ms, interval) + 1,
                                           first, count)
                : count;
    return {static_cast<std::size_t>(first), static_cast<std::size_t>(behind - first)};
}

}  // namespace halvern
