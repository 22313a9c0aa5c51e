#pragma once

#include <memory>
#include <optional>
#include <string>

#include "flow/input_flow_item.h"
#include "segy/segy_reader.h"
#include "tape/segy_tape_source.h"

namespace halvern {

/// Reads SEG-Y from one tape after the other and sends every trace down the flow.
class SegyTapeInput final : public InputFlowItem {
public:
    SegyTapeInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;
    const char* GetInputHeaderName() override { return header_file_.c_str(); }

protected:
    /// Ends the job when the drive cannot be opened or the tape does not begin as SEG-Y.
    void OpenSource() override;
    LineHeader& SourceLine() override { return reader_.line(); }
    TraceHeaderDefinition& SourceHeader() override { return reader_.definition(); }
    TraceSamples& SourceSamples() override { return reader_.samples(); }
    ReadResult ReadNext() override {
        return reader_.read_next() == 1 ? ReadResult::kTrace : ReadResult::kEnd;
    }
    bool Reposition(int) override { return false; }
    bool CanReposition() const override { return false; }
    void SourceEnded() override;

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    std::string WindowObstacle() const override { return tape_window_obstacle(); }

    std::string device_name_;
    std::string header_file_;
    int traces_to_skip_{};  // behind the line header
    int files_to_skip_{};
    int eject_wait_s_{};  // 0: no eject

    std::unique_ptr<TapeDevice> device_;
    std::optional<TapeChange> change_;
    SegyReader reader_;
};

}  // namespace halvern
