#pragma once

#include <string>
#include <vector>

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "flow/row_table.h"

namespace halvern {

/// A row of a table by offset, as entered.
struct OffsetRow {
    double offset;
    double value;
};

/// What a kind calls its table of pairs.
struct OffsetTableWords {
    const char* pairs;      ///< "offset/time"
    const char* entry;      ///< "Offset/Time"
    const char* log_title;  ///< above the pairs in the log
    const char* prompt;     ///< above the sheet
    const char* dialog;     ///< the kind's name in its window's title
    const char* already_up;
    bool nonzero;  ///< whether a value of zero makes no sense
};

/// What the items that look a value up by offset share: the table of pairs with its lines and its
/// sheet, the header word OFFSET and the line's sample interval.
class OffsetTableItem : public ProcessFlowItem {
public:
    /// The parameters, then the pairs.
    void LogParameters() override;

    std::vector<std::string> FilesRead() const override;

    /// Checks the pairs and brings them into the order of their offsets. Ends the job when there
    /// are none, when one is not usable, without the header word OFFSET or a sample interval.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;

protected:
    /// `words` and `table` must outlive the item.
    OffsetTableItem(FlowItemKind kind, LogFlag log, const OffsetTableWords& words,
                    const RowTable<OffsetRow>& table)
        : ProcessFlowItem(kind, log), words_(words), table_(table) {}

    /// The table as a parameter.
    /// The file that holds it instead.
    Parameter FileParameter();
    Parameter TableParameter();
    DialogTexts WindowTexts() const override;

    /// Of the trace whose header is attached; as signed as it is there. Warns once a run of a
    /// negative offset that the table has no pair for, and of a first sample that is not at time 0.
    double OffsetOf(const TraceHeaderDefinition& header) {
        delay_.look(*this, header);
        const double offset = header.get_double(offset_word_);
        if (offset < offset_floor_ && negative_()) WarnOfNegative(offset);
        return offset;
    }
    /// The table's value at an offset: linear between the pairs, constant beyond them.
    double TableValue(double offset) const;
    /// A duration in whole samples, rounded half up; exact in doubles however large.
    double NearestSample(double ms) const;

private:
    std::string Fault(const OffsetRow& row) const;
    void WarnOfNegative(double offset) const;

    const OffsetTableWords& words_;
    const RowTable<OffsetRow>& table_;
    std::vector<OffsetRow> rows_;  // as entered
    std::string file_;             // that the rows are in instead, or "NONE"

    // Of a run.
    std::vector<double> offsets_;  // [rows of the run], ascending
    std::vector<double> values_;   // [rows]
    int offset_word_ = -1;
    double interval_ms_{};
    double offset_floor_ = 0;  // 0, or far below where the table has a pair on that side
    Once negative_;
    HeaderWarning delay_{HeaderWarning::kDelay};
};

}  // namespace halvern
