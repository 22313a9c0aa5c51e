#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <string>
#include <vector>

#include "flow/header_words.h"
#include "flow/item_checks.h"
#include "flow/process_flow_item.h"
#include "geometry/sps_data_set.h"

namespace halvern {

/// Numbers, or pairs of numbers, that were looked for in vain: each once, in ascending order, up to
/// a limit beyond which nothing is kept.
class MissList {
public:
    static constexpr std::size_t kRoom = 1000;

    struct Entry {
        int first;
        int second;  // 0 where an entry is one number
        auto operator<=>(const Entry&) const = default;
    };

    /// Empty, with room for all entries.
    void clear();
    /// Adds an entry unless it is there. True for the first one that there is no room for.
    [[nodiscard]] bool add(Entry entry);
    const std::vector<Entry>& entries() const { return entries_; }

private:
    std::vector<Entry> entries_;
    bool overflowed_ = false;
};

/// Fills the geometry words of every trace from SPS files: the relation file leads from its file
/// and channel number to a source and a receiver point, the point files give what is known of them.
class MergeSps final : public ProcessFlowItem {
public:
    MergeSps(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    /// Reads the three files and looks up the header words. Ends the job when a file is missing or
    /// cannot be read, or when a word is not defined.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Keeps a trace back that has no source and receiver, when that is asked for.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Lists what was not found, and releases the files' contents.
    void EndRun() override;

    bool PassesEveryTrace() const override { return kill_bad_ == 0; }
    std::vector<std::string> FilesRead() const override {
        return {source_file_, receiver_file_, relation_file_};
    }

protected:
    /// Where several relations hold one trace, its geometry depends on the trace before it.
    bool RepeatsItself() const override { return !set_.ambiguous(); }

private:
    enum Miss { kNoFfid, kNoRelation, kNoSource, kNoReceiver, kMisses };

    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;

    bool ReadFiles();  // false after an error line

    void AddMiss(Miss kind, MissList::Entry entry);
    void ListMisses(Miss kind) const;
    void WriteWords(TraceHeaderDefinition& header, const SpsPoint& source,
                    const SpsPoint& receiver) const;

    std::string source_file_;
    std::string receiver_file_;
    std::string relation_file_;
    int kill_bad_{};

    // From PrepareRun to EndRun:
    SpsDataSet set_{*this};
    HeaderWords words_;
    HeaderWarning scalar_{HeaderWarning::kCoordinateScalar};
    std::array<MissList, kMisses> misses_;
};

}  // namespace halvern
