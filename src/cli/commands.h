#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

// The subcommands of halvern. Each is registered by one function in a file of its own, which sets
// its options, its help with an example, and a callback that does the work. A callback says what
// went wrong by command_failed or CommandError (exit status 1) or CLI::ValidationError (wrong
// usage, 2).

namespace halvern {

class TraceSource;
struct Finding;

void add_init_command(CLI::App& app);
void add_config_command(CLI::App& app);
void add_prospect_command(CLI::App& app);
void add_flow_command(CLI::App& app);
void add_run_command(CLI::App& app);
void add_jobs_command(CLI::App& app);
void add_log_command(CLI::App& app);
void add_stop_command(CLI::App& app);
void add_image_command(CLI::App& app);
void add_info_command(CLI::App& app);
void add_plot_command(CLI::App& app);
void add_synthesize_command(CLI::App& app);

/// Prints what a user should know about a file that was read, behind what has been printed of it.
void print_notes(const TraceSource& source);

/// Prints what a check of the flow of that name found.
void print_findings(const std::string& name, const std::vector<Finding>& findings, bool csv);

/// Prints "halvern COMMAND: REASON." on standard error and leaves the callback with status 1.
[[noreturn]] void command_failed(const std::string& command, const std::string& reason);

// What the program says about itself, from the commands as they are registered.

/// What may follow on a command line, one a line: `words` are those behind "halvern", the last one
/// being typed.
void print_completions(CLI::App& app, const std::vector<std::string>& words);
/// The manual page, for man(1).
void print_manual(CLI::App& app);

}  // namespace halvern
