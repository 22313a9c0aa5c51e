#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "flow/process_flow_item.h"
#include "geometry/coordinate_writer.h"
#include "platform/file_lock.h"

namespace halvern {

/// Writes the geometry of all traces that pass as SPS files, a P1/90 file or columns of text. The
/// files are written beside their places and renamed at the end of the run.
class WriteCoordinates final : public OutputFlowItem {
public:
    WriteCoordinates(const FlowSection& section, LogFlag log);

    /// Looks up the header words, and tries the files. Ends the job when a word is not defined or a
    /// file cannot be written.
    void PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples& samples,
                    int input_traces) override;
    /// Ends the job on a number that the format cannot hold.
    int ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                     TraceSamples& samples) override;
    /// Writes the files when a trace came. Ends the job when that fails.
    void EndRun() override;
    std::vector<std::string> FilesWritten() const override { return paths_; }

protected:
    /// What comes again has been taken.
    bool RepeatsItself() const override { return true; }

private:
    enum Type { kSps = 0, kP190 = 1, kColumns = 2 };

    ParameterList Parameters() override;

    // Steps of PrepareRun and EndRun; false after an error line, FindWords after it has ended the
    // job.
    bool CheckChoices() const;
    bool FindWords(const TraceHeaderDefinition& header);
    bool FindFiles();
    bool WriteFiles();

    /// Indexes of the header words of one sort of point; -1 reads as 0.
    struct PointWords {
        int line, point, index, x, y, elevation, depth, water_depth, static_ms, uphole_ms;
    };
    SurveyPoint Point(const TraceHeaderDefinition& header, const PointWords& words) const;
    void AddTime(const TraceHeaderDefinition& header, SurveyPoint& source) const;
    bool ComesBack(const TraceGeometry& trace) const;

    std::string file_;
    int type_{};    // a Type
    int points_{};  // a PointChoice
    std::string survey_;
    std::string date_;
    std::string point_header_;
    std::string channel_header_;
    std::string streamer_header_;

    // From PrepareRun to EndRun:
    std::unique_ptr<CoordinateWriter> writer_;
    std::vector<std::string> paths_;
    std::vector<FileLock> locks_;  // [paths], of files that are there already
    PointWords source_{};
    PointWords receiver_{};
    PointWords midpoint_{};
    PointWords bin_{};
    std::array<int, 11> words_{};  // indexes of the other header words, -1: not used
    double coordinate_unit_ = 1;   // of the trace at hand, as its scalar says
    double elevation_unit_ = 1;
    bool feet_ = false;
    std::int64_t traces_ = 0;
    std::int64_t geographical_ = 0;  // with positions that receiver groups cannot have
    std::int64_t rescaled_ = 0;      // of which a merge would not give the same headers back
};

}  // namespace halvern
