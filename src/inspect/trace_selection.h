#pragma once

#include <cstdint>
#include <string>

#include "inspect/trace_source.h"
#include "platform/fault.h"
#include "trace/ranges.h"

namespace halvern {

/// Which traces of a source are looked at: by their numbers, counted from 1, by a header word, by
/// both, or all.
class TraceSelection {
public:
    /// `numbers` is a range list, `word` is "WORD=RANGES"; either may be empty.
    Fault parse(const std::string& numbers, const std::string& word);

    /// Selects from `source`, which must stay. A fault: it has no such word, or not so many traces.
    Fault start(TraceSource& source);
    /// Reads the next trace that is selected.
    bool next();
    std::int64_t number() const { return number_; }  ///< of the current trace, from 1
    /// Why there was no trace at all.
    std::string nothing() const {
        return everything() ? "it holds no trace" : "no trace is selected";
    }
    bool everything() const { return numbers_.empty() && word_.empty(); }

private:
    RangeList numbers_;
    RangeList values_;
    std::string word_;
    int index_ = -1;  // of word_ in the source's definition
    std::int64_t last_ = 0;
    std::int64_t number_ = 0;
    TraceSource* source_ = nullptr;
};

}  // namespace halvern
