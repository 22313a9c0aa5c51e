#pragma once

#include <string>

#include "flow/input_flow_item.h"
#include "segy/segy_reader.h"
#include "trace/ranges.h"

namespace halvern {

/// Reads one SEG-Y file from disk and sends its traces down the flow: all of them, or those whose
/// value in one header word falls in a list of ranges.
class SegyDiskInput final : public InputFlowItem {
public:
    SegyDiskInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    const char* GetInputName() override { return file_.c_str(); }
    const char* GetInputHeaderName() override { return header_file_.c_str(); }
    /// Not when a later item writes over this very file: its records are no longer what they were.
    bool CanReplayInput() override;

protected:
    /// Ends the job when the file is missing or not valid, its header description cannot be loaded
    /// or the ranges cannot be parsed.
    void OpenSource() override;
    LineHeader& SourceLine() override { return reader_.line(); }
    TraceHeaderDefinition& SourceHeader() override { return reader_.definition(); }
    TraceSamples& SourceSamples() override { return reader_.samples(); }
    ReadResult ReadNext() override;
    int SourceTraceCount() override;
    bool Reposition(int index) override { return reader_.move_to(index); }
    void SourceEnded() override;

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    void StartSelection();
    void FastForward();

    std::string file_;
    std::string header_file_;
    int read_all_ = 1;
    std::string select_header_;  // a header word, or "NONE"
    std::string select_range_;   // as entered

    SegyReader reader_;
    RangeList ranges_;
    int select_word_ = -1;  // index; -1: every trace passes
};

}  // namespace halvern
