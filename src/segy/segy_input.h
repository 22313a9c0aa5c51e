#pragma once

#include <memory>
#include <string>

#include "flow/input_flow_item.h"
#include "segy/segy_reader.h"

namespace halvern {

/// What every SEG-Y input shares, whatever the stream comes from: the reader, the description that
/// its traces are read with, and the words about what it finds.
class SegyInput : public InputFlowItem {
public:
    const char* GetInputHeaderName() override { return header_file_.c_str(); }

protected:
    using InputFlowItem::InputFlowItem;

    LineHeader& SourceLine() override { return reader_.line(); }
    TraceHeaderDefinition& SourceHeader() override { return reader_.definition(); }
    TraceSamples& SourceSamples() override { return reader_.samples(); }
    ReadResult ReadNext() override;
    void SourceEnded() override;

    /// Opens the stream that the log knows as `name`: `source`, or else the disk file of that name.
    /// False after an error line and the end of the job.
    bool OpenReader(const std::string& name, std::unique_ptr<SegySource> source = nullptr);

    SegyReader reader_;
    std::string header_file_;

private:
    std::string name_;  // of the stream
};

}  // namespace halvern
