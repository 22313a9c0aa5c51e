#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "flow/input_flow_item.h"
#include "geometry/ascii_columns.h"

namespace halvern {

/// The head of a flow that makes one trace of zeros for each record of a text file, with the header
/// words that the record sets. A word that it does not set stays as the trace before had it.
class AsciiTraces final : public InputFlowItem {
public:
    AsciiTraces(const FlowSection& section, LogFlag log);

    void LogParameters() override { columns_.log(*this); }
    /// Ends the job where another item is the input.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    void Rehearse() override;
    const char* GetInputHeaderName() override { return columns_.header_file.c_str(); }
    // Its file is no input whose records could be written over.
    std::vector<std::string> FilesRead() const override { return {columns_.file}; }

private:
    ParameterList Parameters() override { return columns_.parameters(); }
    DialogTexts WindowTexts() const override { return AsciiColumns::window_texts(); }

    /// Ends the job on a header description or a file that cannot be read, and on what AsciiColumns
    /// refuses.
    void OpenSource() override;
    LineHeader& SourceLine() override { return line_; }
    TraceHeaderDefinition& SourceHeader() override { return header_; }
    TraceSamples& SourceSamples() override { return samples_; }
    /// Takes one line.
    ReadResult ReadNext() override;
    std::int64_t SourceTraceCount() override { return expected_; }
    bool Reposition(std::int64_t) override { return false; }
    bool CanReposition() const override { return false; }
    void SourceEnded() override { lines_.reset(); }
    void BlankSamples();

    AsciiColumns columns_;

    std::optional<LineReader> lines_;  // until the end of the data
    std::array<std::byte, kTraceHeaderBytes> image_{};
    std::vector<std::byte> record_;  // of samples, all zero
    LineHeader line_;
    TraceHeaderDefinition header_;
    TraceSamples samples_;
    std::int64_t expected_ = 0;  // lines of the file
};

}  // namespace halvern
