#include "inspect/trace_statistics.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <numeric>

#include "foundation/words.h"

namespace halvern {

void WordRange::add_new(double value) {
    last_ = value;
    if (std::isnan(value)) {
        ++not_numbers_;
        return;
    }
    if (!begun_) {
        begun_ = true;
        minimum_ = maximum_ = first_ = value;
    }
    minimum_ = std::min(minimum_, value);
    maximum_ = std::max(maximum_, value);
    constexpr double kLargestExact = 0x1p53;
    whole_ = whole_ && value == std::floor(value) && std::fabs(value) <= kLargestExact;
    if (whole_ && step_ != 1) {
        const auto apart = static_cast<std::int64_t>(std::fabs(value - first_));
        step_ = std::gcd(step_, apart);
    }
    if (distinct_ <= kMostDistinct) count_distinct(value);
}

void WordRange::count_distinct(double value) {
    // Open addressing; an empty place holds one value's bits, those of a NaN.
    constexpr std::uint64_t kEmpty = ~std::uint64_t{0};
    constexpr std::size_t kPlaces = 2 * kMostDistinct;
    if (seen_.empty()) seen_.assign(kPlaces, kEmpty);
    const auto bits = std::bit_cast<std::uint64_t>(value == 0 ? 0.0 : value);
    auto place = static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15u) >> 51) & (kPlaces - 1);
    while (seen_[place] != kEmpty) {
        if (seen_[place] == bits) return;
        place = (place + 1) & (kPlaces - 1);
    }
    seen_[place] = bits;
    if (++distinct_ > kMostDistinct) seen_ = {};
}

HeaderRanges::HeaderRanges(const TraceHeaderDefinition& definition)
    : definition_(definition), ranges_(static_cast<std::size_t>(definition.count())) {}

void HeaderRanges::add() {
    int word = 0;
    for (WordRange& range : ranges_) range.add(definition_.get_double(word++));
}

void SampleStatistics::add(std::span<const float> trace) {
    // Independent lanes, so that the loop is a few vector instructions for each of them.
    constexpr std::size_t kLanes = 16;
    constexpr float kLargest = std::numeric_limits<float>::max();
    float low[kLanes], high[kLanes];
    double sum[kLanes] = {}, squares[kLanes] = {};
    std::int32_t finite[kLanes] = {}, zeros[kLanes] = {}, nans[kLanes] = {};
    std::fill_n(low, kLanes, kLargest);
    std::fill_n(high, kLanes, -kLargest);
    const auto take = [&](float value, std::size_t lane) {
        const bool is_finite = std::fabs(value) <= kLargest;
        const float kept = is_finite ? value : 0.0f;
        const float for_low = is_finite ? value : kLargest;
        const float for_high = is_finite ? value : -kLargest;
        low[lane] = for_low < low[lane] ? for_low : low[lane];
        high[lane] = for_high > high[lane] ? for_high : high[lane];
        finite[lane] += is_finite ? 1 : 0;
        zeros[lane] += value == 0 ? 1 : 0;
        nans[lane] += value != value ? 1 : 0;
        const double wide = kept;
        sum[lane] += wide;
        squares[lane] += wide * wide;
    };
    const std::size_t whole = trace.size() / kLanes * kLanes;
    for (std::size_t i = 0; i < whole; i += kLanes) {
        for (std::size_t lane = 0; lane < kLanes; ++lane) take(trace[i + lane], lane);
    }
    for (std::size_t i = whole; i < trace.size(); ++i) take(trace[i], i - whole);

    const auto total = [](const auto& lanes) {
        return std::accumulate(std::begin(lanes), std::end(lanes), std::int64_t{0});
    };
    const auto samples = static_cast<std::int64_t>(trace.size());
    const std::int64_t trace_finite = total(finite), trace_zeros = total(zeros);
    if (finite_ == 0) {
        minimum_ = kLargest;
        maximum_ = -kLargest;
    }
    ++traces_;
    samples_ += samples;
    finite_ += trace_finite;
    zeros_ += trace_zeros;
    nans_ += total(nans);
    if (trace_zeros == samples && samples > 0) ++dead_;
    if (trace_finite < samples && first_not_finite_ == 0) first_not_finite_ = traces_;
    minimum_ = std::min(minimum_, *std::min_element(low, low + kLanes));
    maximum_ = std::max(maximum_, *std::max_element(high, high + kLanes));
    sum_ += std::accumulate(sum, sum + kLanes, 0.0);
    squares_ += std::accumulate(squares, squares + kLanes, 0.0);
}

double SampleStatistics::root_mean_square() const {
    return finite_ > 0 ? std::sqrt(squares_ / static_cast<double>(finite_)) : 0;
}

void KeyCounts::add(std::int64_t key) {
    if (last_count_ && key == last_key_) {
        ++*last_count_;
        ++total_;
        return;
    }
    auto found = counts_.find(key);
    if (found == counts_.end()) {
        if (counts_.size() >= kMostKeys) {
            complete_ = false;
            last_count_ = nullptr;
            return;
        }
        found = counts_.emplace(key, 0).first;
    }
    last_key_ = key;
    last_count_ = &found->second;
    ++found->second;
    ++total_;
}

std::int64_t KeyCounts::fewest() const {
    std::int64_t fewest = counts_.empty() ? 0 : std::numeric_limits<std::int64_t>::max();
    for (const auto& [key, count] : counts_) fewest = std::min(fewest, count);
    return fewest;
}

std::int64_t KeyCounts::most() const {
    std::int64_t most = 0;
    for (const auto& [key, count] : counts_) most = std::max(most, count);
    return most;
}

double KeyCounts::mean() const {
    return counts_.empty() ? 0 : static_cast<double>(total_) / static_cast<double>(counts_.size());
}

void SurveyStatistics::Extent::add(double value) {
    if (std::isnan(value)) return;
    low = any ? std::min(low, value) : value;
    high = any ? std::max(high, value) : value;
    any = true;
}

SurveyStatistics::SurveyStatistics(const TraceHeaderDefinition& definition)
    : definition_(definition),
      ffid_(definition.find("FFID")),
      chan_(definition.find("CHAN")),
      cdp_(definition.find("CDPN")),
      offset_(definition.find("OFFSET")),
      inline_(definition.find("INLINE")),
      crossline_(definition.find("XLINE")),
      scalar_(definition.find("COORSCAL")),
      trace_id_(definition.find("TRACEID")),
      source_{definition.find("SRCX"), definition.find("SRCY")},
      receiver_{definition.find("RECX"), definition.find("RECY")},
      midpoint_{definition.find("CDPX"), definition.find("CDPY")} {}

namespace {

// A header word as a whole number; one that is held as a float may be anything.
std::int64_t whole(double value) {
    constexpr double kLeast = -0x1p31, kMost = 0x1p31 - 1;
    return std::isnan(value) ? 0 : static_cast<std::int64_t>(std::clamp(value, kLeast, kMost));
}

std::int64_t pair_key(double a, double b) {
    return whole(a) * (std::int64_t{1} << 32) + (whole(b) & 0xFFFFFFFF);
}

}  // namespace

void SurveyStatistics::add_position(Position& position, double scale) {
    const double x = definition_.get_double(position.x), y = definition_.get_double(position.y);
    position.x_extent.add(x * scale);
    position.y_extent.add(y * scale);
    position.places.add(pair_key(x, y));
}

void SurveyStatistics::add() {
    ++traces_;
    constexpr int kDead = 2;
    if (definition_.get_int(trace_id_) == kDead) ++flagged_dead_;
    const double ffid = definition_.get_double(ffid_), cdp = definition_.get_double(cdp_);
    const double line = definition_.get_double(inline_), cross = definition_.get_double(crossline_);
    ffids_.add(ffid);
    shots_.add(whole(ffid));
    channels_.add(definition_.get_double(chan_));
    cdp_numbers_.add(cdp);
    cdps_.add(whole(cdp));
    offsets_.add(definition_.get_double(offset_));
    inlines_.add(line);
    crosslines_.add(cross);
    bins_.add(pair_key(line, cross));
    const double scale = scalar_factor(definition_.get_double(scalar_));
    add_position(source_, scale);
    add_position(receiver_, scale);
    add_position(midpoint_, scale);
    distances_.add(
        std::hypot(definition_.get_double(source_.x) - definition_.get_double(receiver_.x),
                   definition_.get_double(source_.y) - definition_.get_double(receiver_.y)) *
        scale);
}

namespace {

/// A finding that grows part by part: "4, FFID 3 to 6".
class Growing {
public:
    Growing(std::vector<Fact>& all, const char* name) : found_(all.emplace_back()) {
        found_.name = name;
    }
    void absent() {
        found_.text = "not in the headers";
        found_.numbers.emplace_back(found_.name, std::numeric_limits<double>::quiet_NaN());
    }
    Growing& count(const KeyCounts& counts) {
        found_.text += (counts.complete() ? "" : "more than ") + in_words(counts.keys());
        found_.numbers.emplace_back(found_.name, static_cast<double>(counts.keys()));
        return *this;
    }
    /// `what` names the numbers; it is in the text, too, where another part is before it.
    Growing& span(const std::string& what, double low, double high) {
        if (!found_.text.empty()) found_.text += ", " + what + " ";
        found_.text += in_words(low, 10) + (low == high ? "" : " to " + in_words(high, 10));
        const std::string name = what == found_.name ? what : found_.name + " " + what;
        found_.numbers.emplace_back(name + " minimum", low);
        found_.numbers.emplace_back(name + " maximum", high);
        return *this;
    }
    /// How many traces there are with one key: "48", "1 to 60, 52.3 on average".
    void traces(const KeyCounts& counts) {
        span(found_.name, static_cast<double>(counts.fewest()), static_cast<double>(counts.most()));
        if (counts.fewest() != counts.most()) {
            found_.text += ", " + in_words(counts.mean(), 4) + " on average";
        }
        found_.numbers.emplace_back(found_.name + " mean", counts.mean());
    }

private:
    Fact& found_;
};

}  // namespace

std::vector<Fact> SurveyStatistics::findings() const {
    std::vector<Fact> found;
    if (traces_ == 0) return found;
    const auto set = [](const Extent& extent) { return extent.low != 0 || extent.high != 0; };
    const auto filled = [&](const Position& position) {
        return set(position.x_extent) || set(position.y_extent);
    };
    const auto say = [&](const char* name) { return Growing(found, name); };
    const auto say_place = [&](const char* name, const Position& position) {
        if (!filled(position)) return say(name).absent();
        const Extent &x = position.x_extent, &y = position.y_extent;
        say(name).count(position.places).span("x", x.low, x.high).span("y", y.low, y.high);
    };
    const auto say_span = [&](const char* name, const Extent& extent) {
        say(name).span(name, extent.low, extent.high);
    };
    if (set(ffids_)) {
        say("shots").count(shots_).span("FFID", ffids_.low, ffids_.high);
        say("traces a shot").traces(shots_);
    } else {
        say("shots").absent();
    }
    if (set(channels_)) say_span("channels", channels_);
    say_place("source positions", source_);
    say_place("receiver positions", receiver_);
    if (set(offsets_)) {
        say_span("offsets", offsets_);
    } else {
        say("offsets").absent();
    }
    if (filled(source_) && filled(receiver_)) {
        constexpr const char* kName = "offsets by coordinates";
        say(kName).span(kName, std::round(distances_.low * 10) / 10,
                        std::round(distances_.high * 10) / 10);
    }
    if (set(cdp_numbers_)) {
        say("CDPs").count(cdps_).span("number", cdp_numbers_.low, cdp_numbers_.high);
        say("fold").traces(cdps_);
    } else {
        say("CDPs").absent();
    }
    if (filled(midpoint_)) say_place("CDP positions", midpoint_);
    if (set(inlines_) || set(crosslines_)) {
        say_span("inlines", inlines_);
        say_span("crosslines", crosslines_);
        say("bins").count(bins_);
        say("traces a bin").traces(bins_);
    }
    if (flagged_dead_ > 0) {
        found.push_back({"marked as dead",
                         counted(flagged_dead_, "trace"),
                         {{"marked as dead", static_cast<double>(flagged_dead_)}}});
    }
    return found;
}

}  // namespace halvern
