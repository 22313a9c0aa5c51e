#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "flow/row_table.h"
#include "trace/ranges.h"

namespace halvern {

/// Keeps, drops, kills or reverses the traces that match: by ranges of header words, by a list of
/// file and channel numbers, by their place. Besides drops dead and bad traces.
class TraceSelect final : public ProcessFlowItem {
public:
    TraceSelect(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Ends the job on a row, a list or a header word that cannot be used.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

    std::string RefuseParameters() override;
    bool PassesEveryTrace() const override;
    std::vector<std::string> FilesRead() const override;

protected:
    /// Every N-th depends on the order of the traces.
    bool RepeatsItself() const override { return every_ <= 1; }

private:
    enum Match { kAll = 0, kAny = 1 };
    enum Action { kKeep = 0, kDrop = 1, kKill = 2, kReverse = 3 };

    struct Row {
        std::string word;
        std::string ranges;
        static const RowTable<Row> kTable;

        std::string line() const { return "SELECT=" + word + "," + ranges; }
    };
    /// A row of a run.
    struct Criterion {
        std::string line;
        int word;
        RangeList ranges;
        std::int64_t matched = 0;
    };
    /// A trace of the list; channel 0 stands for the whole record.
    struct Listed {
        int ffid;
        int channel;
        auto operator<=>(const Listed&) const = default;
    };

    ParameterList Parameters() override;
    bool ReadRow(const Row& row, const TraceHeaderDefinition& header);
    bool ReadList();
    bool Matches(const TraceHeaderDefinition& header);
    bool IsListed(const TraceHeaderDefinition& header) const;
    bool IsEveryNth(const TraceHeaderDefinition& header);
    bool IsDropped(const TraceHeaderDefinition& header, TraceSamples& samples);

    std::vector<Row> rows_;
    std::vector<std::string> malformed_;  // lines that are no row
    int match_{};                         // a Match
    int action_{};                        // an Action
    int drop_dead_{};
    int drop_bad_{};
    std::string list_file_;   // or "NONE"
    int every_{};             // 0 or 1: off
    std::string every_word_;  // or "NONE"

    // Of a run.
    std::vector<Criterion> criteria_;
    std::vector<Listed> list_;  // in order
    int ffid_word_ = -1;
    int chan_word_ = -1;
    int trace_id_word_ = -1;
    int every_index_ = -1;    // of every_word_
    double every_value_{};    // of the run of it that is passing
    std::int64_t place_ = 0;  // of the trace, or of the run, from 1
    std::int64_t listed_ = 0;
    std::int64_t nth_ = 0;
    std::int64_t traces_ = 0;
    std::int64_t matched_ = 0;
    std::int64_t dead_ = 0;
    std::int64_t bad_ = 0;
};

}  // namespace halvern
