#pragma once

#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "items/number_sheet.h"

namespace halvern {

/// What a kind calls its table of pairs.
struct OffsetTableWords {
    const char* key;        ///< of its flow file lines
    const char* pairs;      ///< "offset/time"
    const char* log_title;  ///< above the pairs in the log
    const char* prompt;     ///< above the sheet
    const char* dialog;     ///< the kind's name in its window's title
    const char* already_up;
    NumberSheet sheet;  ///< offset, then value
    bool nonzero;       ///< whether a value of zero makes no sense
};

/// What the items that look a value up by offset share: the table of pairs with its lines and its
/// sheet, the header word OFFSET and the line's sample interval.
class OffsetTableItem : public ProcessFlowItem {
public:
    /// The parameters, then the pairs.
    void LogParameters() override;

    /// Checks the pairs and brings them into the order of their offsets. Ends the job when there
    /// are none, when one is not usable, without the header word OFFSET or a sample interval.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;

protected:
    /// `words` must outlive the item.
    OffsetTableItem(FlowItemKind kind, LogFlag log, const OffsetTableWords& words)
        : ProcessFlowItem(kind, log), words_(words) {}

    /// The table as a parameter.
    Parameter TableParameter();
    DialogTexts WindowTexts() const override;

    /// Of the trace whose header is attached; as signed as it stands there.
    double OffsetOf(const TraceHeaderDefinition& header) const {
        return header.get_double(offset_word_);
    }
    /// The table's value at an offset: linear between the pairs, constant beyond them.
    double TableValue(double offset) const;
    /// A duration in whole samples, rounded half up; exact in doubles however large.
    double NearestSample(double ms) const;

private:
    std::string Fault(double offset, double value) const;

    const OffsetTableWords& words_;
    std::vector<double> offsets_;  // [pairs]; ascending from PrepareRun on
    std::vector<double> values_;   // [pairs]
    int offset_word_ = -1;
    double interval_ms_{};
};

}  // namespace halvern
