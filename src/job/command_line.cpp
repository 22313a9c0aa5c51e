#include "job/command_line.h"

namespace halvern {

std::vector<std::string> split_command_line(std::string_view line) {
    std::vector<std::string> arguments;
    bool inside_quotes = false;
    bool open = false;  // an argument has begun, even if it is only a pair of quotes
    for (const char c : line) {
        if (c == ' ' && !inside_quotes) {
            open = false;
            continue;
        }
        if (!open) arguments.emplace_back();
        open = true;
        if (c == '"') {
            inside_quotes = !inside_quotes;
        } else {
            arguments.back() += c;
        }
    }
    return arguments;
}

}  // namespace halvern
