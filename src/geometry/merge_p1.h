#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "geometry/merge_item.h"
#include "geometry/p1_file.h"

namespace halvern {

/// Positions by point number, or by line and point number; of equal ones the first in the file.
class P1Index {
public:
    P1Index() = default;
    /// Of `positions`, which outlive the index.
    P1Index(std::span<const P1Position> positions, bool by_line);

    /// Null without one. Fast in any order, fastest in that of the numbers.
    const P1Position* find(int line, int point);
    /// Positions that no number leads to, because one before them has theirs.
    std::int64_t hidden() const { return hidden_; }

private:
    std::span<const P1Position> positions_;
    bool by_line_ = false;
    std::vector<std::uint32_t> order_;  // places in positions_
    std::size_t last_ = 0;              // place in order_ of the one found last
    std::int64_t hidden_ = 0;
};

/// Fills the coordinates of every trace from a P1/90 or P1/84 file: its point number leads to a
/// source, its channel to one of the source's receiver groups.
class MergeP1 final : public MergeFlowItem {
public:
    MergeP1(const FlowSection& section, LogFlag log);

    /// Reads the file and looks up the header words. Ends the job when the file is missing or
    /// cannot be read, or when a word is not defined.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Keeps a trace back that the file has no position for, when that is asked for.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Lists what was not found, and releases the file's contents.
    void EndRun() override;
    std::vector<std::string> FilesRead() const override { return {path_}; }

private:
    ParameterList Parameters() override;

    // Steps of PrepareRun; false after an error line, FindWords after it has ended the job.
    bool ReadFile();
    bool FindWords(const TraceHeaderDefinition& header);
    bool ChooseScalar();

    bool TimeFits(const TraceHeaderDefinition& header, const P1Position& source);
    void WriteWords(TraceHeaderDefinition& header, const P1Position& source, const P1Group* group,
                    const P1Position* midpoint);

    std::string path_;
    std::string point_header_;
    std::string line_header_;
    std::string channel_header_;
    std::string streamer_header_;
    std::string midpoint_header_;
    int group_count_{};  // a GroupCount
    int backwards_{};
    int geographical_{};
    int scalar_{};  // as entered
    int water_depth_{};
    int cable_depth_{};
    int midpoints_{};   // a Midpoints
    int time_check_{};  // a TimeCheck
    double tolerance_s_{};
    double time_shift_s_{};

    // From PrepareRun to EndRun:
    std::optional<P1File> file_;
    P1Index sources_;
    P1Index centres_;
    P1Count count_ = P1Count::kNumber;
    bool receivers_ = false;  // whether receivers are written
    int written_scalar_ = 1;
    double factor_ = 1;            // from a coordinate to a header word
    std::array<int, 21> words_{};  // indexes of the header words, -1: not used
    std::vector<int> beside_;      // of further coordinates
    std::array<MissWords, 4> miss_words_{};
    std::int64_t misfits_ = 0;    // values that no word could hold
    std::int64_t rescaled_ = 0;   // traces of which another coordinate has a new scalar now
    std::int64_t unchecked_ = 0;  // traces without a time
};

}  // namespace halvern
