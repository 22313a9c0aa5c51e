#include "inspect/trace_selection.h"

#include <algorithm>
#include <limits>

namespace halvern {

Fault TraceSelection::parse(const std::string& numbers, const std::string& word) {
    const std::optional<RangeList> traces = parse_ranges(numbers);
    if (!traces) return Fault("'" + numbers + "' is no list of traces such as 1-100,200");
    for (const Range& range : *traces) {
        if (std::min(range.start, range.end) < 1) return Fault("traces are counted from 1");
        if (range.start > range.end) return Fault("'" + numbers + "' runs backwards");
    }
    numbers_ = *traces;
    if (word.empty()) return {};
    const std::size_t equals = word.find('=');
    const std::optional<RangeList> values =
        equals == std::string::npos ? std::nullopt : parse_ranges(word.substr(equals + 1));
    if (!values || values->empty() || equals == 0) {
        return Fault("'" + word + "' is not of the form WORD=RANGES, such as FFID=100-110,120");
    }
    word_ = word.substr(0, equals);
    values_ = *values;
    return {};
}

Fault TraceSelection::start(TraceSource& source) {
    source_ = &source;
    number_ = 0;
    last_ = std::numeric_limits<std::int64_t>::max();
    if (!word_.empty()) {
        index_ = source.definition().find(word_);
        if (index_ < 0) return Fault("the header description has no word '" + word_ + "'");
    }
    if (numbers_.empty()) return {};
    double first = numbers_.front().start, last = 0;
    for (const Range& range : numbers_) {
        first = std::min(first, range.start);
        last = std::max(last, range.end);
    }
    constexpr double kMost = 1e15;  // far beyond any file, and exact as an integer
    last_ = static_cast<std::int64_t>(std::min(last, kMost));
    const auto before = static_cast<std::int64_t>(std::min(first, kMost)) - 1;
    if (const std::int64_t count = source.trace_count(); count >= 0 && before >= count) {
        return Fault("there are only " + std::to_string(count) + " traces");
    }
    if (before > 0 && source.move_to(before)) number_ = before;
    return {};
}

bool TraceSelection::next() {
    while (number_ < last_ && source_->next()) {
        ++number_;
        if (!in_ranges(static_cast<double>(number_), numbers_)) continue;
        if (word_.empty() || in_ranges(source_->definition().get_double(index_), values_)) {
            return true;
        }
    }
    return false;
}

}  // namespace halvern
