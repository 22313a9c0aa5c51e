#pragma once

#include <memory>
#include <optional>
#include <string>

#include "segy/segy_input.h"
#include "tape/segy_tape_source.h"
#include "tape/tape_change.h"

namespace halvern {

/// Reads SEG-Y from one tape after the other and sends every trace down the flow.
class SegyTapeInput final : public SegyInput {
public:
    SegyTapeInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;

protected:
    /// Ends the job when the drive cannot be opened or the tape does not begin as SEG-Y.
    void OpenSource() override;
    /// Asks for the next tape where one ends, and ends the job where the tape is not as it should.
    ReadResult ReadNext() override;
    void SourceEnded() override;
    bool Reposition(std::int64_t) override { return false; }
    bool CanReposition() const override { return false; }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    std::string WindowObstacle() const override { return tape_window_obstacle(); }

    bool BeginTape(bool first);  // false when the tape has no headers, which is said
    bool NextTape();             // false when there is none
    void LogEnding() const;

    std::string device_name_;
    int traces_to_skip_{};  // after the line header
    int files_to_skip_{};
    int eject_wait_s_{};  // 0: no eject

    std::unique_ptr<TapeDevice> device_;
    std::optional<TapeChange> change_;
    SegyTapeSource* source_ = nullptr;  // the reader's
    int further_lines_said_ = 0;
};

}  // namespace halvern
