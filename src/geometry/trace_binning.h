#pragma once

#include <array>

#include "flow/header_words.h"
#include "flow/item_checks.h"
#include "flow/process_flow_item.h"

namespace halvern {

/// Assigns every trace to a bin of a rotated rectangular grid by the midpoint between its source
/// and its receiver, and writes inline, crossline and ensemble number and coordinates.
class TraceBinning final : public ProcessFlowItem {
public:
    TraceBinning(const FlowSection& section, LogFlag log);

    /// Looks the header words up and checks the grid. Ends the job on a word that is not defined,
    /// an increment of 0, a range that runs backwards and a bin without a size.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Ends the job on a midpoint outside the grid.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;

private:
    /// Numbers of the bins along one axis.
    struct Numbering {
        int start, end, increment;
    };

    ParameterList Parameters() override;
    bool CheckGrid() const;  // false after an error line
    void RefuseMidpoint(const char* axis, const char* end, double number, int limit,
                        const std::array<double, 4>& coordinates) const;

    double x_origin_{};
    double y_origin_{};
    double x_bin_size_{};
    double y_bin_size_{};
    double rotation_{};  // degrees
    Numbering xline_{};
    Numbering nline_{};

    // From PrepareRun on:
    HeaderWords words_;
    HeaderWarning scalar_{HeaderWarning::kCoordinateScalar};
    double xlines_ = 0;  // how many there are
    double cos_ = 1;
    double sin_ = 0;
};

}  // namespace halvern
