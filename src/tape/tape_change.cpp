#include "tape/tape_change.h"

#include "foundation/global_config.h"

namespace halvern {

int TapeChange::open() {
    speaker_.Message("Attempting to open tape drive: %s\n", device_.name().c_str());
    return device_.open();
}

bool TapeChange::load_from_stacker() {
    if (eject_wait_s_ <= 0) return false;
    if (device_.unload() != 0) return false;
    speaker_.Message("Waiting %d seconds for the next tape.\n", eject_wait_s_);
    for (int second = 0; second < eject_wait_s_ && !JobStopRequested(); ++second) {
        CurrentTapeClock().SleepMs(1000);
    }
    return !JobStopRequested() && open() == 0;
}

bool TapeChange::next(const TapeQuestion& finished, const TapeQuestion& no_header,
                      const std::function<bool()>& begin) {
    const TapeQuestion* question = &finished;
    bool ready = load_from_stacker();
    for (;;) {
        if (ready) {
            if (begin()) return true;
            question = &no_header;
        }
        (void)device_.close();
        if (JobStopRequested() || !ask_operator(*question)) {
            speaker_.Message("Last tape has been read!!!\n");
            return false;
        }
        ready = open() == 0;
    }
}

std::string tape_window_obstacle() {
    const GlobalConfig& config = CurrentConfig();
    if (!config.tape_devices().empty()) return {};
    return "There are no defined tape drives in your configuration file '" + config.path() + "'.";
}

}  // namespace halvern
