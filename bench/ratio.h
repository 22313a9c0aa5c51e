#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <limits>

namespace halvern {

/// Times `work` and `limit` in turn, so that both meet the same machine, and reports the best round
/// of each: "us" and "limit_us" for one call, and "ratio", the first over the second. `calls` of
/// either make a round.
template <class Work, class Limit>
void compare(benchmark::State& state, Work work, Limit limit, int calls = 50) {
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;
    double best_work = std::numeric_limits<double>::infinity();
    double best_limit = best_work;
    for ([[maybe_unused]] auto round : state) {
        const auto start = Clock::now();
        for (int i = 0; i < calls; ++i) limit();
        const auto between = Clock::now();
        for (int i = 0; i < calls; ++i) work();
        const auto end = Clock::now();
        best_limit = std::min(best_limit, Seconds(between - start).count() / calls);
        best_work = std::min(best_work, Seconds(end - between).count() / calls);
    }
    state.counters["us"] = best_work * 1e6;
    state.counters["limit_us"] = best_limit * 1e6;
    state.counters["ratio"] = best_work / best_limit;
}

}  // namespace halvern
