#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "flow/flow_item.h"

namespace halvern {

/// One header word that an item reads or writes.
struct HeaderWordRow {
    enum Use { kInput, kOutput };
    static constexpr auto kOnlyListed = static_cast<std::size_t>(-1);

    Use use;
    std::size_t word;  ///< the item's enumerator, from 0 without gaps; kOnlyListed: never looked up
    const char* name;
    const char* text = nullptr;  ///< what it means, for the log; null: not listed
};

/// The header words of an item: declared as one table of rows in the order of the log, looked up
/// once a run, then used by their enumerators.
class HeaderWords {
public:
    /// `rows` must outlive the item: a static table.
    explicit HeaderWords(std::span<const HeaderWordRow> rows);

    /// Looks all words up, in the order of their enumerators. False after the job has been ended by
    /// the first one that the definition lacks.
    bool find(const FlowItem& item, const TraceHeaderDefinition& header);
    /// Lists the words of one use, the names filled up to `width` characters.
    void list(const FlowItem& item, HeaderWordRow::Use use, int width = 8) const;

    /// The index of a word in the definition.
    int operator[](std::size_t word) const { return indexes_[word]; }

private:
    std::span<const HeaderWordRow> rows_;
    std::vector<int> indexes_;  // by enumerator
};

}  // namespace halvern
