#include "tape/tape_prompt.h"

namespace halvern {

namespace {
TapePrompt* current_prompt = nullptr;
}

TapePrompt* CurrentTapePrompt() { return current_prompt; }
void SetTapePrompt(TapePrompt* prompt) { current_prompt = prompt; }

bool ask_operator(const TapeQuestion& question) {
    return current_prompt && current_prompt->Ask(question);
}

}  // namespace halvern
