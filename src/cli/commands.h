#pragma once

#include <string>

namespace CLI {
class App;
}

// The subcommands of halvern. Each is registered by one function in a file of its own, which sets
// its options, its help with an example, and a callback that does the work. A callback says what
// went wrong by command_failed (exit status 1) or CLI::ValidationError (wrong usage, 2).

namespace halvern {

void add_info_command(CLI::App& app);
void add_plot_command(CLI::App& app);
void add_synthesize_command(CLI::App& app);

/// Prints "halvern COMMAND: REASON." on standard error and leaves the callback with status 1.
[[noreturn]] void command_failed(const std::string& command, const std::string& reason);

}  // namespace halvern
