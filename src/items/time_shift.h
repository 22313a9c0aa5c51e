#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"

namespace halvern {

/// Moves every trace in time by a fixed amount or by the milliseconds in a header word; a positive
/// amount moves the data later. What moves past an end is lost, zeros come in at the other. The
/// fraction of a sample is interpolated by a natural cubic spline through the shifted samples, or
/// the shift is rounded to the closest sample.
class TimeShift final : public ProcessFlowItem {
public:
    TimeShift(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job on a header word that the definition lacks and on a sample interval below 1 ms.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Says how many traces could not be interpolated, and how many lost samples, if any.
    void EndRun() override;

private:
    enum Type { kAmount = 0, kHeader = 1 };

    ParameterList Parameters() override;

    int type_{};  // kHeader, or anything else for kAmount
    int amount_ms_{};
    std::string word_;
    int interpolate_{};  // 1: does

    int word_index_ = -1;
    std::int64_t interval_ms_ = 0;     // whole milliseconds, as everything here
    std::vector<double> spline_work_;  // [samples]; empty outside a run
    int rounded_ = 0;                  // traces shifted by whole samples for want of numbers
    ShortenedTraces shortened_;
};

}  // namespace halvern
