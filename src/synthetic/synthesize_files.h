#pragma once

#include <string>
#include <vector>

#include "synthetic/synthesize_line.h"
#include "trace/sample_format.h"

namespace halvern::synthetic {

/// Where a line goes.
struct LineFiles {
    std::string segy;
    SampleFormat format = SampleFormat::kIbm;  ///< kIeee, kIbm or kInt16
    std::string sps;                ///< the SPS files are this + ".s", ".r", ".x"; empty: none
    std::string p190;               ///< the P1/90 file; empty: none
    std::string header_definition;  ///< which words the trace headers have, and where

    /// The files that a line is written to.
    std::vector<std::string> paths() const;
};

/// What keeps a line from being written as SPS, whose columns are narrow.
Fault sps_fault(const SyntheticLine& line);
Fault p190_fault(const SyntheticLine& line);

/// Writes a line without fault, trace by trace: memory does not grow with their number. Files that
/// exist are replaced once all are written; until then a fault leaves them as they were.
Fault write_line(const SyntheticLine& line, const LineFiles& files);

}  // namespace halvern::synthetic
