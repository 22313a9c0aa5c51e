#include "geometry/ascii_table.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace halvern {

namespace {

template <class Number>
Number held(double number) {
    using Limits = std::numeric_limits<Number>;
    return static_cast<Number>(std::clamp<double>(number, Limits::lowest(), Limits::max()));
}

template <class Number>
bool holds(int compare, Number trace, Number record) {
    switch (compare) {
        case kEqual:
            return trace == record;
        case kNotEqual:
            return trace != record;
        case kLess:
            return trace < record;
        case kLessOrEqual:
            return trace <= record;
        case kGreater:
            return trace > record;
        case kGreaterOrEqual:
            return trace >= record;
        default:
            return false;
    }
}

}  // namespace

AsciiValue::AsciiValue(double number, bool floating)
    : bits_(floating ? std::bit_cast<std::int32_t>(held<float>(number))
                     : held<std::int32_t>(number)) {}

AsciiTable::AsciiTable(std::span<const AsciiField> match, std::span<const AsciiField> data)
    : data_fields_(data.begin(), data.end()), match_fields_(match.begin(), match.end()) {
    for (const AsciiField& field : match_fields_) {
        fields_.push_back({field.compare, field.floating});
    }
    const auto other = std::ranges::find_if_not(
        fields_, [](const MatchField& field) { return field.compare == kEqual; });
    keys_ = static_cast<std::size_t>(other - fields_.begin());
}

int AsciiTable::read(LineReader& lines) {
    const std::size_t matches = match_fields_.size();
    std::vector<AsciiValue> row(matches + data_fields_.size());
    std::string_view line;
    while (lines.next(line)) {
        bool complete = false;
        const auto take = [&](const AsciiField& field, AsciiValue& value) {
            if (!field.applies_to(line)) return;
            value = AsciiValue(field.value(line, lines.ended()), field.floating);
            complete = complete || field.completes();
        };
        for (std::size_t i = 0; i < data_fields_.size(); ++i) {
            take(data_fields_[i], row[matches + i]);
        }
        for (std::size_t i = 0; i < matches; ++i) take(match_fields_[i], row[i]);
        if (!complete) continue;
        if (records_ == std::numeric_limits<int>::max()) return -1;
        ++records_;
        rows_.insert(rows_.end(), row.begin(), row.end());
        std::ranges::fill(row, AsciiValue{});
    }
    return lines.fault() ? -1 : 0;
}

bool AsciiTable::same_keys(int a, int b, std::size_t keys) const {
    const std::size_t stride = fields_.size() + data_fields_.size();
    const AsciiValue* const left = &rows_[static_cast<std::size_t>(a) * stride];
    const AsciiValue* const right = &rows_[static_cast<std::size_t>(b) * stride];
    for (std::size_t i = 0; i < keys; ++i) {
        if (fields_[i].floating ? left[i].real() != right[i].real()
                                : left[i].integer() != right[i].integer()) {
            return false;
        }
    }
    return true;
}

/// Sorts the records first … end - 1 by one field. Fields before it stay where they are; it and all
/// others move along. `sorted` is scratch.
template <class Key>
void AsciiTable::sort_run(int first, int end, std::size_t field, std::vector<Key>& sorted) {
    const auto count = static_cast<std::size_t>(end - first);
    if (count < 2) return;
    const std::size_t stride = fields_.size() + data_fields_.size();
    AsciiValue* const run = &rows_[static_cast<std::size_t>(first) * stride];
    sorted.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        sorted[i] = held<Key>(run[i * stride + field].number(fields_[field].floating));
    }
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), 0u);
    std::ranges::stable_sort(order_, {}, [&](std::uint32_t record) { return sorted[record]; });
    const std::size_t width = stride - field;
    moved_.resize(count * width);
    for (std::size_t i = 0; i < count; ++i) {
        std::copy_n(run + order_[i] * stride + field, width, moved_.begin() + i * width);
    }
    for (std::size_t i = 0; i < count; ++i) {
        std::copy_n(moved_.begin() + i * width, width, run + i * stride + field);
    }
}

void AsciiTable::sort() {
    std::vector<float> reals;
    std::vector<std::int32_t> integers;
    const auto sort_records = [&](int first, int end, std::size_t field) {
        if (fields_.front().floating) {
            sort_run(first, end, field, reals);
        } else {
            sort_run(first, end, field, integers);
        }
    };
    for (std::size_t field = 0; field < keys_; ++field) {
        int first = 0;
        for (int record = 1; record + 1 < records_; ++record) {
            if (same_keys(first, record, field)) continue;
            sort_records(first, record, field);
            first = record;
        }
        sort_records(first, records_, field);
    }

    const std::size_t matches = fields_.size();
    const std::size_t data = data_fields_.size();
    match_.reserve(static_cast<std::size_t>(records_) * matches);
    data_.reserve(static_cast<std::size_t>(records_) * data);
    for (auto row = rows_.begin(); row != rows_.end(); row += matches + data) {
        match_.insert(match_.end(), row, row + matches);
        data_.insert(data_.end(), row + matches, row + matches + data);
    }
    rows_ = {};
    moved_ = {};
    order_ = {};
    ascending_ = keys_ > 0;
    for (int record = 1; record < records_ && ascending_; ++record) {
        const std::size_t before = static_cast<std::size_t>(record - 1) * matches;
        ascending_ = compare_keys(std::span(match_).subspan(before, matches), record) < 0;
    }
}

int AsciiTable::compare_keys(std::span<const AsciiValue> trace, int record) const {
    const AsciiValue* const values = &match_[static_cast<std::size_t>(record) * fields_.size()];
    for (std::size_t i = 0; i < keys_; ++i) {
        if (fields_[i].floating) {
            if (trace[i].real() < values[i].real()) return -1;
            if (trace[i].real() > values[i].real()) return 1;
        } else {
            if (trace[i].integer() < values[i].integer()) return -1;
            if (trace[i].integer() > values[i].integer()) return 1;
        }
    }
    return 0;
}

int AsciiTable::search_start(std::span<const AsciiValue> trace) const {
    // Traces mostly come in the order of the records. Where no two records have the same keys and
    // all are in order, the search would end at the one that has the trace's.
    if (ascending_) {
        for (const int record : {last_found_ + 1, last_found_}) {
            if (record < 0 || record >= records_) continue;
            if (compare_keys(trace, record) == 0) return record;
        }
    }
    int low = 0;
    int high = records_ - 1;
    while (high - low > 1) {
        const int probe = low + (high - low) / 2;
        const int order = compare_keys(trace, probe);
        if (order == 0) return probe;
        (order < 0 ? high : low) = probe;
    }
    const int with_low = compare_keys(trace, low);
    if (with_low <= 0) return with_low < 0 ? low - 1 : low;
    if (high == low) return high;
    return compare_keys(trace, high) < 0 ? high - 1 : high;
}

AsciiTable::Test AsciiTable::test(std::span<const AsciiValue> trace, int record) const {
    const AsciiValue* const values = &match_[static_cast<std::size_t>(record) * fields_.size()];
    for (std::size_t i = 0; i < fields_.size(); ++i) {
        const auto [compare, floating] = fields_[i];
        const bool fits = floating ? holds(compare, trace[i].real(), values[i].real())
                                   : holds(compare, trace[i].integer(), values[i].integer());
        if (!fits) return compare == kEqual ? Test::kFailsKey : Test::kFails;
    }
    return Test::kFits;
}

int AsciiTable::find(std::span<const AsciiValue> trace) {
    if (records_ == 0) return -1;
    const int start = search_start(trace);
    for (int record = start; record >= 0; --record) {
        const Test result = test(trace, record);
        if (result == Test::kFits) return last_found_ = record;
        if (result == Test::kFailsKey) break;
    }
    for (int record = start + 1; record < records_; ++record) {
        const Test result = test(trace, record);
        if (result == Test::kFits) return last_found_ = record;
        if (result == Test::kFailsKey) break;
    }
    return -1;
}

}  // namespace halvern
