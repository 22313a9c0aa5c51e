#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "flow/row_table.h"
#include "platform/block_writer.h"
#include "platform/replace_file.h"

namespace halvern {

/// Writes header words, and samples where they are asked for, as columns of a text file: a line a
/// trace, or only where a word changes. The file is written beside its place and renamed at the end
/// of the run; without a trace it is left as it was.
class AsciiOutput final : public OutputFlowItem {
public:
    AsciiOutput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Looks the words up and tries the file. Ends the job on columns that make no sense.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    void EndRun() override;

    std::string RefuseParameters() override;
    std::vector<std::string> FilesWritten() const override { return {file_}; }

protected:
    /// A trace that comes again has its line already.
    bool RepeatsItself() const override { return true; }

private:
    enum Separator { kFixed = 0, kComma = 1 };

    struct Column {
        std::string word;
        int width = 0;
        int decimals = 0;
        static const RowTable<Column> kTable;
    };

    ParameterList Parameters() override;
    bool CheckColumns(const TraceHeaderDefinition& header);
    bool CheckSamples(const LineHeader& line);
    bool Begin();
    void Fail(const std::string& reason);
    void AddNumber(double value, int width, int decimals);
    void AddField(std::string_view text, int width);
    void EndLine();

    std::string file_;
    std::vector<Column> columns_;
    std::vector<std::string> malformed_;  // lines that are no column
    int heading_{};
    int separator_{};          // a Separator
    std::string change_word_;  // or "NONE"
    int samples_{};            // 1: behind the words
    double start_ms_{};
    double end_ms_{};  // 0: the trace's end
    int every_{};      // sample
    int sample_width_{};
    int sample_decimals_{};

    // Of a run.
    std::optional<ReplacedFile> target_;  // from the first line on
    BlockWriter out_;
    std::vector<int> words_;  // [columns] their indexes
    std::string line_;
    int change_index_ = -1;
    double change_value_{};
    bool any_ = false;  // whether a trace came
    std::size_t first_sample_ = 0;
    std::size_t end_sample_ = 0;
    std::int64_t lines_ = 0;
    std::int64_t too_wide_ = 0;
};

}  // namespace halvern
