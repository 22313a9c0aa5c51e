#include "flow/header_words.h"

#include <algorithm>

#include "flow/item_checks.h"

namespace halvern {

HeaderWords::HeaderWords(std::span<const HeaderWordRow> rows)
    : rows_(rows),
      indexes_(rows.size() - static_cast<std::size_t>(std::ranges::count(
                                 rows, HeaderWordRow::kOnlyListed, &HeaderWordRow::word)),
               -1) {}

bool HeaderWords::find(const FlowItem& item, const TraceHeaderDefinition& header) {
    for (std::size_t word = 0; word < indexes_.size(); ++word) {
        const auto row = std::ranges::find(rows_, word, &HeaderWordRow::word);
        indexes_[word] = RequireHeaderWord(item, header, row->name);
        if (indexes_[word] < 0) return false;
    }
    return true;
}

void HeaderWords::list(const FlowItem& item, HeaderWordRow::Use use, int width) const {
    for (const HeaderWordRow& row : rows_) {
        if (row.use != use || !row.text) continue;
        item.Message("  %-*s - %s\n", width, row.name, row.text);
    }
}

}  // namespace halvern
