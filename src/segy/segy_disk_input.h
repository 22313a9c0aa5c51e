#pragma once

#include <optional>
#include <string>

#include "segy/segy_input.h"
#include "trace/ranges.h"

namespace halvern {

/// Reads one SEG-Y file from disk and sends its traces down the flow: all of them, or those whose
/// value in one header word falls in a list of ranges.
class SegyDiskInput final : public SegyInput {
public:
    SegyDiskInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    const char* GetInputName() override { return file_.c_str(); }
    std::vector<std::string> FilesRead() const override { return {file_}; }
    bool PassesEveryTrace() const override { return select_word_ < 0 || ranges_.empty(); }

protected:
    /// Ends the job when the file is missing or not valid, its header description cannot be loaded
    /// or the ranges cannot be parsed.
    void OpenSource() override;
    ReadResult ReadNext() override;
    std::int64_t SourceTraceCount() override { return reader_.trace_count(); }
    bool Reposition(std::int64_t index) override { return reader_.move_to(index); }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    void StartSelection();
    void FastForward();

    std::string file_;
    int read_all_ = 1;
    std::string select_header_;  // a header word, or "NONE"
    std::string select_range_;   // as entered

    RangeList ranges_;
    int select_word_ = -1;              // index; -1: every trace passes
    std::optional<double> forward_to_;  // number of the next trace, which a fast-forward went to
};

}  // namespace halvern
