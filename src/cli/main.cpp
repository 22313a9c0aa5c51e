// The front door: what a person types.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <string_view>

#include "cli/commands.h"
#include "cli/say.h"
#include "desk/command_error.h"
#include "desk/workplace.h"
#include "foundation/messages.h"
#include "foundation/words.h"

namespace halvern {

void TerminateJob(int normal) { throw JobEnded{normal}; }

void command_failed(const std::string& command, const std::string& reason) {
    std::fflush(stdout);  // in the order of what is said
    say_error("halvern %s: %s.\n", command.c_str(), reason.c_str());
    throw CLI::RuntimeError(EXIT_FAILURE);
}

namespace {

constexpr int kWrongUsage = 2;

constexpr const char* kExample = R"(Example: from nothing to a gained line
  halvern init survey && cd survey
  halvern synthesize line.sgy
  halvern flow new gain SEGYDINPUT FILE=line.sgy AGC SEGYDOUTPUT FILE=gained.sgy
  halvern run gain
Every command has its own --help.)";

// "flow set", the command that was being carried out.
std::string command_name(const CLI::App& app) {
    const auto commands = app.get_subcommands();
    if (commands.empty()) return {};
    const std::string rest = command_name(*commands.front());
    return commands.front()->get_name() + (rest.empty() ? "" : " " + rest);
}

std::string wrong_usage(const CLI::App* app, const CLI::Error& error) {
    const std::string name = command_name(*app);
    const std::string command = name.empty() ? "halvern" : "halvern " + name;
    return printable(command + ": " + error.what() + ".\n'" + command +
                     " --help' tells how it is used.\n");
}

void add_commands(CLI::App& app) {
    Workplace& place = CurrentWorkplace();
    app.name("halvern");
    app.set_version_flag("--version", "halvern " HALVERN_VERSION);
    app.add_option("--root", place.root, "System directory to work in")->type_name("DIR");
    app.add_option("-p,--prospect", place.prospect, "Prospect to work in")->type_name("NAME");
    app.footer(kExample);
    app.require_subcommand(1);
    app.fallthrough();  // the options above may follow the command, too
    app.parse_complete_callback(choose_system_directory);
    app.failure_message(wrong_usage);

    add_init_command(app);
    add_config_command(app);
    add_prospect_command(app);
    add_flow_command(app);
    add_run_command(app);
    add_jobs_command(app);
    add_log_command(app);
    add_stop_command(app);
    add_image_command(app);
    add_info_command(app);
    add_plot_command(app);
    add_synthesize_command(app);
}

int run(CLI::App& app, int argc, char** argv) {
    CLI::App* command = &app;
    std::string path = "halvern";
    for (int i = 1; i < argc && argv[i][0] != '-' && !command->get_subcommands({}).empty(); ++i) {
        const auto found = command->get_subcommands(
            [&](const CLI::App* sub) { return sub->get_name() == argv[i]; });
        if (found.empty()) {
            say_error("%s: there is no command '%s'; '%s --help' lists them.\n", path.c_str(),
                      argv[i], path.c_str());
            return kWrongUsage;
        }
        command = found.front();
        path.append(" ").append(argv[i]);
    }
    try {
        app.parse(argc, argv);
    } catch (const CommandError& failure) {
        say_error("halvern %s: %s.\n", command_name(app).c_str(), failure.what());
        return EXIT_FAILURE;
    } catch (const JobEnded&) {
        say_error("halvern %s: a flow item ended the command.\n", command_name(app).c_str());
        return EXIT_FAILURE;
    } catch (const CLI::RuntimeError& failure) {  // the command has said what it is
        return failure.get_exit_code();
    } catch (const CLI::ParseError& error) {  // a call for help is one, too
        return app.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : kWrongUsage;
    }
    return EXIT_SUCCESS;
}

// What was printed may have got nowhere: the disk that it went to is full.
int status_of_output(int status) {
    for (const std::string& note : CurrentWorkplace().notes) say_error("%s\n", note.c_str());
    std::cout.flush();
    if (std::fflush(stdout) == 0 && !std::ferror(stdout) && std::cout) return status;
    say_error("halvern: standard output cannot be written.\n");
    return EXIT_FAILURE;
}

}  // namespace

}  // namespace halvern

int main(int argc, char** argv) {
    using namespace halvern;
    CurrentWorkplace().installation = installation_of(argc > 0 ? argv[0] : "");
    choose_system_directory();
    LogDestination::UseStandardOutput();  // which is nowhere: commands speak for themselves
    CLI::App app("Halvern: quality control and processing of seismic field data.");
    try {
        add_commands(app);
        // For the shell's completion and for the build of the manual page.
        const std::string_view first = argc > 1 ? argv[1] : "";
        if (first == "__complete") {
            print_completions(app, {argv + 2, argv + argc});
            return EXIT_SUCCESS;
        }
        if (first == "__manual") {
            print_manual(app);
            return status_of_output(EXIT_SUCCESS);
        }
        return status_of_output(run(app, argc, argv));
    } catch (const std::bad_alloc&) {
        say_error("halvern: there is not enough memory for this.\n");
        return EXIT_FAILURE;
    } catch (const std::exception& failure) {
        say_error("halvern: %s.\n", failure.what());
        return EXIT_FAILURE;
    }
}
