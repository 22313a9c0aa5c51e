#include "platform/command_line.h"

namespace halvern {

std::vector<std::string> split_command_line(std::string_view line) {
    std::vector<std::string> arguments;
    std::string argument;
    bool begun = false;
    bool quoted = false;
    const auto finish = [&] {
        if (begun) arguments.push_back(std::move(argument));
        argument.clear();
        begun = false;
    };
    for (const char c : line) {
        if (c == ' ' && !quoted) {
            finish();
            continue;
        }
        begun = true;
        if (c == '"') {
            quoted = !quoted;
        } else {
            argument += c;
        }
    }
    finish();
    return arguments;
}

std::string join_command_line(std::span<const std::string> arguments, std::size_t bare) {
    std::string line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string_view quote = i == bare ? "" : "\"";
        if (i > 0) line += ' ';
        line += quote;
        for (const char c : arguments[i]) {
            if (c != '"') line += c;
        }
        line += quote;
    }
    return line;
}

}  // namespace halvern
