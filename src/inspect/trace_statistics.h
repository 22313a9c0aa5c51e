#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "trace/header_definition.h"

// What can be said about a stream of traces after one look at each, in memory that does not grow
// with their number.

namespace halvern {

/// The values that one header word has.
class WordRange {
public:
    /// Distinct values are counted up to this many.
    static constexpr int kMostDistinct = 4096;

    void add(double value) {
        if (value != last_ || count_ == 0) add_new(value);
        ++count_;
    }

    double minimum() const { return minimum_; }
    double maximum() const { return maximum_; }
    /// How many different values there are; kMostDistinct + 1: more than can be counted.
    int distinct() const { return distinct_; }
    /// The largest number that all values are whole multiples of apart: 25 for 100, 150, 225. 0 for
    /// a single value, or when values are not whole numbers.
    double step() const { return whole_ ? static_cast<double>(step_) : 0; }
    bool always_zero() const { return minimum_ == 0 && maximum_ == 0 && not_numbers_ == 0; }
    std::int64_t not_numbers() const { return not_numbers_; }  ///< NaN; in none of the others

private:
    void add_new(double value);
    void count_distinct(double value);

    double last_ = 0;
    double minimum_ = 0;
    double maximum_ = 0;
    double first_ = 0;
    std::int64_t count_ = 0;
    std::int64_t not_numbers_ = 0;
    std::int64_t step_ = 0;
    bool whole_ = true;
    bool begun_ = false;
    int distinct_ = 0;
    std::vector<std::uint64_t> seen_;  // hash table of values' bits; empty until needed
};

/// The ranges of every word of a definition.
class HeaderRanges {
public:
    explicit HeaderRanges(const TraceHeaderDefinition& definition);
    /// The trace whose header is attached.
    void add();
    const WordRange& of(int word) const { return ranges_[static_cast<std::size_t>(word)]; }

private:
    const TraceHeaderDefinition& definition_;
    std::vector<WordRange> ranges_;
};

/// Amplitudes. Minimum, maximum, mean and root mean square are of the samples that are finite.
class SampleStatistics {
public:
    void add(std::span<const float> trace);

    std::int64_t traces() const { return traces_; }
    std::int64_t samples() const { return samples_; }
    std::int64_t zeros() const { return zeros_; }
    std::int64_t nans() const { return nans_; }
    std::int64_t infinities() const { return samples_ - finite_ - nans_; }
    std::int64_t dead_traces() const { return dead_; }  ///< all of whose samples are zero
    /// Number of the first trace, from 1, with a sample that is not finite; 0: none.
    std::int64_t first_not_finite() const { return first_not_finite_; }
    float minimum() const { return finite_ > 0 ? minimum_ : 0; }
    float maximum() const { return finite_ > 0 ? maximum_ : 0; }
    double mean() const { return finite_ > 0 ? sum_ / static_cast<double>(finite_) : 0; }
    double root_mean_square() const;

private:
    std::int64_t traces_ = 0;
    std::int64_t samples_ = 0;
    std::int64_t finite_ = 0;
    std::int64_t zeros_ = 0;
    std::int64_t nans_ = 0;
    std::int64_t dead_ = 0;
    std::int64_t first_not_finite_ = 0;
    float minimum_ = 0;
    float maximum_ = 0;
    double sum_ = 0;
    double squares_ = 0;
};

/// How many traces have each of up to a million keys.
class KeyCounts {
public:
    static constexpr std::size_t kMostKeys = 1'000'000;

    void add(std::int64_t key);
    std::int64_t keys() const { return static_cast<std::int64_t>(counts_.size()); }
    bool complete() const { return complete_; }  ///< false: there are more keys than are counted
    /// Of the traces with one key. 0 when there are none.
    std::int64_t fewest() const;
    std::int64_t most() const;
    double mean() const;

private:
    std::unordered_map<std::int64_t, std::int64_t> counts_;
    std::int64_t* last_count_ = nullptr;  // of last_key_: traces of a shot come together
    std::int64_t last_key_ = 0;
    std::int64_t total_ = 0;
    bool complete_ = true;
};

/// One thing that was found: in words for a person, and its numbers by names of their own.
struct Fact {
    std::string name, text;
    std::vector<std::pair<std::string, double>> numbers;  ///< NaN: the headers do not say
};

/// The geometry that headers hold.
class SurveyStatistics {
public:
    explicit SurveyStatistics(const TraceHeaderDefinition& definition);
    void add();  ///< the trace whose header is attached
    std::vector<Fact> findings() const;

private:
    struct Extent {
        double low = 0, high = 0;
        bool any = false;
        void add(double value);
    };
    struct Position {
        int x, y;  // header words
        Extent x_extent = {}, y_extent = {};
        KeyCounts places = {};
    };
    void add_position(Position& position, double scale);

    const TraceHeaderDefinition& definition_;
    int ffid_, chan_, cdp_, offset_, inline_, crossline_, scalar_, trace_id_;
    Position source_, receiver_, midpoint_;
    KeyCounts shots_, cdps_, bins_;
    Extent ffids_, channels_, cdp_numbers_, offsets_, inlines_, crosslines_, distances_;
    std::int64_t traces_ = 0;
    std::int64_t flagged_dead_ = 0;
};

}  // namespace halvern
