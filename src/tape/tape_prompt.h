#pragma once

#include <string>

namespace halvern {

/// A question to the operator with a way to go on and a way to refuse.
struct TapeQuestion {
    std::string text;
    const char* accept = "OK";
    const char* refuse = "Cancel";
    const char* title = "Tape Popup Question";
};

/// Puts questions to the operator. Toolkit-neutral: a job that nobody watches has none, the front
/// door brings a terminal or windows, tests a fake.
class TapePrompt {
public:
    virtual ~TapePrompt() = default;
    /// Waits for the answer: true for accept. An operator who is gone has refused.
    virtual bool Ask(const TapeQuestion& question) = 0;
};

/// The process-wide prompt, not owned; null (the start value): nobody to ask.
TapePrompt* CurrentTapePrompt();
void SetTapePrompt(TapePrompt* prompt);

/// Asks through the process-wide prompt. With nobody to ask, the safe answer: no further tape, no
/// data written over.
bool ask_operator(const TapeQuestion& question);

}  // namespace halvern
