#pragma once

namespace halvern {

/// Waiting for drives and stackers, so that a test need not wait.
class TapeClock {
public:
    virtual ~TapeClock() = default;
    /// Wall-clock time in milliseconds from any fixed start; never goes back.
    virtual long long NowMs() = 0;
    virtual void SleepMs(int ms) = 0;
};

/// The process-wide clock: the machine's, until another one (not owned) is set; null: the machine's
/// again.
TapeClock& CurrentTapeClock();
void SetTapeClock(TapeClock* clock);

}  // namespace halvern
