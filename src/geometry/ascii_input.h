#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "geometry/ascii_field.h"
#include "geometry/ascii_table.h"
#include "geometry/line_reader.h"

namespace halvern {

/// Moves values from the columns of a text file into header words: record by record into the traces
/// as they come (overwrite), from the record that agrees with a trace in the match words (update),
/// or, at the head of a flow, into traces that it makes (create).
class AsciiInput final : public ProcessFlowItem, public RunsFlow {
public:
    AsciiInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Looks the header words up and opens the file; for an update loads and sorts it. Ends the job
    /// on a word that is not defined, fields that are missing or have no columns, a file that
    /// cannot be read, and for an update one without a record.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Every trace is passed on, whether a record was found for it or not.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override { lines_.reset(); }

    /// Makes one trace of zeros for each record of the file; create only.
    void RunInput() override;
    void ResumeInput() override;
    // At the head, what the items behind may ask an input; elsewhere passed on.
    int GetInputTraceCount() override;
    std::int64_t InputTracesRead() override;
    const char* GetInputHeaderName() override;

    // Its file is no input whose records could be written over.
    std::vector<std::string> FilesRead() const override { return {file_}; }

    /// Traces that found a record.
    int matched() const { return matched_; }

protected:
    /// An overwrite takes another record when a trace comes again.
    bool RepeatsItself() const override { return method_ == kUpdate; }

private:
    enum Method { kOverwrite = 0, kUpdate = 1, kCreate = 2 };

    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    Parameter DataParameter();
    Parameter MatchParameter();
    std::vector<std::string> PreviewFile() const;

    // Steps of PrepareRun; false after an error line.
    bool FindWords(const TraceHeaderDefinition& header);
    bool CheckFields() const;
    void PutEqualsFirst();
    bool OpenFile();
    bool LoadRecords();

    bool ReadRecord(TraceHeaderDefinition& header);
    void UpdateTrace(TraceHeaderDefinition& header);
    void CreateTraces();

    int method_{};
    int start_record_{};  // lines to skip
    std::string file_;
    std::string header_file_;
    std::vector<AsciiField> data_;
    std::vector<AsciiField> match_;

    std::optional<LineReader> lines_;  // from PrepareRun to EndRun
    AsciiTable table_;                 // of an update
    std::vector<AsciiValue> values_;   // [match] of the trace that is looked up
    int matched_ = 0;

    /// What a created trace is made of.
    struct Created {
        std::array<std::byte, kTraceHeaderBytes> image{};
        std::vector<std::byte> record;  // of samples, all zero
        LineHeader line;
        TraceHeaderDefinition header;
        TraceSamples samples;
        int expected = 0;  // lines of the file
        int sent = 0;
    };
    std::unique_ptr<Created> created_;  // while the item heads a running flow
};

}  // namespace halvern
