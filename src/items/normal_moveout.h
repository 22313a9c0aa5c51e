#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "flow/header_words.h"
#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "flow/row_table.h"

namespace halvern {

/// Removes the normal moveout of a trace: output time t0 takes the sample at sqrt(t0² + x²/V²), the
/// sample that this time falls into, with no interpolation. V comes from a table in time and
/// place; between the table's places it is weighted by the inverse square of their distances, in
/// bins, to the nearest one in each quadrant. Samples that the moveout stretches too much are
/// zeroed where a limit is set.
class NormalMoveout final : public ProcessFlowItem {
public:
    NormalMoveout(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    std::vector<std::string> FilesRead() const override;

    /// Spreads the table over the samples: locations x samples velocities. Ends the job on a table
    /// that is empty or that no moveout can be made of, and without the header words.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

private:
    struct Entry {
        double time_ms;
        double velocity;  // in the offset's unit a second
        int crossline;
        int in_line;
    };
    /// A place that the table has entries for.
    struct Location {
        int crossline;
        int in_line;
        std::vector<double> times_ms;    // [entries], as in the table
        std::vector<double> velocities;  // [entries]
    };

    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    static const RowTable<Entry>& Table();

    bool CheckEntries();
    void GroupEntries();
    void SpreadVelocities(const Location& location, std::span<double> velocities) const;
    void MoveTo(int crossline, int in_line);
    void FindSources(double offset);
    void MuteStretched(double offset_squared);

    float mute_percent_{};      // stretch mute as entered; 0: none
    std::vector<Entry> typed_;  // the table as entered
    std::string file_;          // that it is in instead, or "NONE"

    // Of a run.
    std::vector<Entry> entries_;
    HeaderWords words_;
    HeaderWarning delay_{HeaderWarning::kDelay};
    double stretch_limit_{};  // a fraction; 0: none
    double interval_ms_{};
    double interval_s_{};
    std::vector<Location> locations_;       // in the order of their first entries
    std::vector<double> velocities_;        // [locations][samples]
    std::vector<double> times_squared_;     // [samples] output time squared
    std::vector<double> previous_squared_;  // [samples] the same, one interval earlier
    std::vector<double> rises_;             // [samples] the difference of the two
    std::vector<double> moved_times_;       // [samples] of the trace in hand, in seconds
    std::vector<std::int32_t> sources_;     // [samples] where a sample comes from; samples: nowhere
    std::vector<float> input_;              // [samples + 1] the trace, and a zero after it

    bool placed_ = false;  // whether the next three belong to a trace
    int crossline_{};
    int in_line_{};
    std::vector<double> velocity_squared_;  // [samples] at this place
};

}  // namespace halvern
