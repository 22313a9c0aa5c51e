#pragma once

#include <string>
#include <vector>

#include "flow/header_words.h"
#include "flow/item_checks.h"
#include "geometry/merge_item.h"
#include "geometry/sps_data_set.h"

namespace halvern {

/// Fills the geometry words of every trace from SPS files: the relation file leads from its file
/// and channel number to a source and a receiver point, the point files give what is known of them.
class MergeSps final : public MergeFlowItem {
public:
    MergeSps(const FlowSection& section, LogFlag log);

    /// Reads the three files and looks up the header words. Ends the job when a file is missing or
    /// cannot be read, or when a word is not defined.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Keeps a trace back that has no source and receiver, when that is asked for.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Lists what was not found, and releases the files' contents.
    void EndRun() override;

    std::vector<std::string> FilesRead() const override {
        return {source_file_, receiver_file_, relation_file_};
    }

protected:
    /// Where several relations hold one trace, its geometry depends on the trace before it.
    bool RepeatsItself() const override { return !set_.ambiguous(); }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;

    bool ReadFiles();  // false after an error line

    void WriteWords(TraceHeaderDefinition& header, const SpsPoint& source,
                    const SpsPoint& receiver) const;

    std::string source_file_;
    std::string receiver_file_;
    std::string relation_file_;

    // From PrepareRun to EndRun:
    SpsDataSet set_{*this};
    HeaderWords words_;
    HeaderWarning scalar_{HeaderWarning::kCoordinateScalar};
};

}  // namespace halvern
