#pragma once

#include <memory>
#include <optional>
#include <string>

#include "segy/segy_input.h"
#include "tape/segy_tape_source.h"

namespace halvern {

/// Reads SEG-Y from one tape after the other and sends every trace down the flow.
class SegyTapeInput final : public SegyInput {
public:
    SegyTapeInput(const FlowSection& section, LogFlag log);

    void LogParameters() override;

protected:
    /// Ends the job when the drive cannot be opened or the tape does not begin as SEG-Y.
    void OpenSource() override;
    bool Reposition(int) override { return false; }
    bool CanReposition() const override { return false; }

private:
    ParameterList Parameters() override;
    DialogTexts WindowTexts() const override;
    std::string WindowObstacle() const override { return tape_window_obstacle(); }

    std::string device_name_;
    int traces_to_skip_{};  // behind the line header
    int files_to_skip_{};
    int eject_wait_s_{};  // 0: no eject

    std::unique_ptr<TapeDevice> device_;
    std::optional<TapeChange> change_;
};

}  // namespace halvern
