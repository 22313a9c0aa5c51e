#pragma once

#include <functional>

#include "flow/flow_item.h"
#include "tape/tape_device.h"
#include "tape/tape_prompt.h"

namespace halvern {

/// What an input asks at the end of a tape.
inline const TapeQuestion kTapeFinished{
    .text =
        "Tape finished.  To read another tape, insert it and click OK.  Otherwise, click "
        "Cancel."};
inline const TapeQuestion kNoHeaderOnTape{
    .text =
        "No header on tape.  To read another tape, insert it and click READ.  Otherwise, click "
        "QUIT.",
    .accept = "READ",
    .refuse = "QUIT"};

/// Leads an input from one tape to the next. The speaker is the item that messages come from.
class TapeChange {
public:
    /// `eject_wait_s`: how long a stacker is given to load the next tape once the last one has been
    /// ejected; 0: nothing is ejected, the operator changes the tape. An image has no stacker.
    TapeChange(const FlowItem& speaker, TapeDevice& device, int eject_wait_s, bool is_image)
        : speaker_(speaker), device_(device), eject_wait_s_(is_image ? 0 : eject_wait_s) {}

    /// Says that the device is being opened, and opens it. 0 or -1.
    [[nodiscard]] int open();

    /// The tape has ended: ejects it and waits, or asks for the next one with `finished`, until a
    /// tape is there for which `begin` is true; one without a header leads to `no_header`. False
    /// when the operator refuses, which is said.
    [[nodiscard]] bool next(const TapeQuestion& finished, const TapeQuestion& no_header,
                            const std::function<bool()>& begin);

private:
    bool load_from_stacker();

    const FlowItem& speaker_;
    TapeDevice& device_;
    const int eject_wait_s_;
};

/// What a window is refused with when the configuration has no tape device; empty when it has one.
std::string tape_window_obstacle();

}  // namespace halvern
