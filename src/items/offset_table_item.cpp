#include "items/offset_table_item.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "flow/shared_parameters.h"
#include "numerics/offset_table.h"
#include "numerics/paired_sort.h"

namespace halvern {

Parameter OffsetTableItem::TableParameter() {
    return table_.parameter(rows_, *this, {.label = "Spread", .prompt = words_.prompt});
}

Parameter OffsetTableItem::FileParameter() { return table_file_parameter(file_); }

std::vector<std::string> OffsetTableItem::FilesRead() const {
    if (file_ == "NONE") return {};
    return {file_};
}

DialogTexts OffsetTableItem::WindowTexts() const {
    DialogTexts texts = ProcessFlowItem::WindowTexts();
    texts.title = std::string(words_.dialog) + " Parameters";
    texts.already_up = words_.already_up;
    return texts;
}

void OffsetTableItem::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("%s", words_.log_title);
    for (int number = 1; const auto& [offset, value] : rows_) {
        Message("%5d %8.1f %8.1f\n", number++, offset, value);
    }
}

std::string OffsetTableItem::Fault(const OffsetRow& row) const {
    if (!std::isfinite(row.offset) || !std::isfinite(row.value)) return "is not finite";
    if (words_.nonzero && row.value == 0) return "has the value zero";
    return {};
}

void OffsetTableItem::WarnOfNegative(double offset) const {
    Warning(
        "A trace has the offset %3.1f, and the table has no pair for negative offsets.  It is "
        "looked "
        "up as it is, with its sign.\n",
        offset);
}

void OffsetTableItem::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                 int) {
    std::vector<OffsetRow> rows;
    if (!table_.find_rows(*this, rows_, file_, rows)) return;
    if (rows.empty()) {
        Error("There are no %s pairs.  Enter at least one pair before running.\n", words_.pairs);
        return TerminateJob(kJobError);
    }
    offsets_.clear();
    values_.clear();
    for (int number = 1; const OffsetRow& row : rows) {
        if (const std::string fault = Fault(row); !fault.empty()) {
            Error("%s Pair #%d (%3.1f, %3.1f) %s.\n", words_.entry, number, row.offset, row.value,
                  fault.c_str());
            return TerminateJob(kJobError);
        }
        offsets_.push_back(row.offset);
        values_.push_back(row.value);
        ++number;
    }
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    Message("OFFSET   - Source to receiver offset\n");
    offset_word_ = RequireHeaderWord(*this, header, "OFFSET");
    if (offset_word_ < 0 || !RequireSampleInterval(*this, line)) return;
    interval_ms_ = line.sample_interval().ms();
    numerics::paired_heap_sort(std::span(offsets_), std::span(values_));
    offset_floor_ = offsets_.front() < 0 ? std::numeric_limits<double>::lowest() : 0;
    negative_ = {};
    delay_.prepare(header);
}

double OffsetTableItem::TableValue(double offset) const {
    return numerics::look_up(offsets_, values_, offset);
}

double OffsetTableItem::NearestSample(double ms) const {
    return std::floor(ms / interval_ms_ + 0.5);
}

}  // namespace halvern
