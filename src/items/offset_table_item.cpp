#include "items/offset_table_item.h"

#include <cmath>

#include "items/checks.h"
#include "numerics/offset_table.h"
#include "numerics/paired_sort.h"

namespace halvern {

Parameter OffsetTableItem::TableParameter() {
    return {.key = words_.key,
            .format = "",
            .value = Rows{
                .clear =
                    [this] {
                        offsets_.clear();
                        values_.clear();
                    },
                .read =
                    [this](const char* rest) {
                        double offset = 0;
                        double value = 0;
                        if (std::sscanf(rest, "%lf,%lf", &offset, &value) != 2) {
                            Warning("The line '%s=%s' is no %s pair.  It is left out.\n",
                                    words_.key, rest, words_.pairs);
                            return false;
                        }
                        offsets_.push_back(offset);
                        values_.push_back(value);
                        return true;
                    },
                .write =
                    [this](std::FILE* stream, const char* key) {
                        for (std::size_t i = 0; i < offsets_.size(); ++i) {
                            std::fprintf(stream, "%s=%3.1f,%3.1f\n", key, offsets_[i], values_[i]);
                        }
                    },
                .columns = words_.sheet.titles(),
                .cells =
                    [this] {
                        NumberSheet::Cells cells;
                        for (std::size_t i = 0; i < offsets_.size(); ++i) {
                            cells.push_back({one_decimal(offsets_[i]), one_decimal(values_[i])});
                        }
                        return cells;
                    },
                .assign =
                    [this](const NumberSheet::Cells& cells) {
                        std::vector<std::vector<double>> rows;
                        std::string wrong = words_.sheet.read(cells, rows);
                        if (!wrong.empty()) return wrong;
                        offsets_.clear();
                        values_.clear();
                        for (const auto& row : rows) {
                            offsets_.push_back(row[0]);
                            values_.push_back(row[1]);
                        }
                        return wrong;
                    }},
            .field = {.label = "Spread", .prompt = words_.prompt}};
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
    for (std::size_t i = 0; i < offsets_.size(); ++i) {
        Message("%5d %8.1f %8.1f\n", static_cast<int>(i) + 1, offsets_[i], values_[i]);
    }
}

std::string OffsetTableItem::Fault(double offset, double value) const {
    if (!std::isfinite(offset) || !std::isfinite(value)) return "is not finite";
    if (words_.nonzero && value == 0) return "has the value zero";
    return {};
}

void OffsetTableItem::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                 int) {
    if (offsets_.empty()) {
        Error("There are no %s pairs.  Enter at least one pair before running.\n", words_.pairs);
        return TerminateJob(kJobError);
    }
    for (std::size_t i = 0; i < offsets_.size(); ++i) {
        const std::string fault = Fault(offsets_[i], values_[i]);
        if (fault.empty()) continue;
        Error("%s Pair #%d (%3.1f, %3.1f) %s.\n", words_.sheet.entry, static_cast<int>(i) + 1,
              offsets_[i], values_[i], fault.c_str());
        return TerminateJob(kJobError);
    }
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    Message("OFFSET   - Source to receiver offset\n");
    offset_word_ = RequireHeaderWord(*this, header, "OFFSET");
    if (offset_word_ < 0 || !RequireSampleInterval(*this, line)) return;
    interval_ms_ = line.sample_interval().ms();
    numerics::paired_heap_sort(std::span(offsets_), std::span(values_));
}

double OffsetTableItem::TableValue(double offset) const {
    return numerics::look_up(offsets_, values_, offset);
}

double OffsetTableItem::NearestSample(double ms) const {
    return std::floor(ms / interval_ms_ + 0.5);
}

}  // namespace halvern
