#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "geometry/ascii_columns.h"
#include "geometry/ascii_table.h"

namespace halvern {

/// The item of an ASCIIINPUT section: AsciiTraces where it creates traces, else AsciiInput.
std::unique_ptr<FlowItem> make_ascii_input(const FlowSection& section, LogFlag log);

/// Moves values from the columns of a text file into header words: record by record into the traces
/// as they come (overwrite), or from the record that agrees with a trace in the match words
/// (update).
class AsciiInput final : public ProcessFlowItem, public RunsFlow {
public:
    AsciiInput(const FlowSection& section, LogFlag log);

    void LogParameters() override { columns_.log(*this); }
    /// Looks the header words up and opens the file; for an update loads and sorts it. Ends the job
    /// on a word that is not defined, fields that are missing or have no columns, a file that
    /// cannot be read, and for an update one without a record.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Every trace is passed on, whether a record was found for it or not.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override { lines_.reset(); }

    /// Ends the job: only the method that creates traces can head a flow.
    void RunInput() override;
    void ResumeInput() override {}
    void Rehearse() override { RunInput(); }

    std::vector<std::string> FilesRead() const override { return {columns_.file}; }

    /// Traces that found a record.
    int matched() const { return matched_; }

protected:
    /// An overwrite takes another record when a trace comes again.
    bool RepeatsItself() const override { return columns_.method == AsciiColumns::kUpdate; }

private:
    ParameterList Parameters() override { return columns_.parameters(); }
    DialogTexts WindowTexts() const override { return AsciiColumns::window_texts(); }

    void PutEqualsFirst();
    bool LoadRecords();  // false after an error line
    void OverwriteTrace(TraceHeaderDefinition& header);
    void UpdateTrace(TraceHeaderDefinition& header);

    AsciiColumns columns_;

    std::optional<LineReader> lines_;  // from PrepareRun to EndRun
    AsciiTable table_;                 // of an update
    std::vector<AsciiValue> values_;   // [match] of the trace that is looked up
    bool scaled_ = false;              // whether coordinates are written
    HeaderWarning scalar_{HeaderWarning::kCoordinateScalar};
    int matched_ = 0;
};

}  // namespace halvern
