// The front door: what a person types.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "cli/commands.h"
#include "foundation/messages.h"
#include "foundation/system_paths.h"
#include "platform/program_path.h"

namespace halvern {

void TerminateJob(int normal) { std::exit(normal == kJobNormal ? EXIT_SUCCESS : EXIT_FAILURE); }

void command_failed(const std::string& command, const std::string& reason) {
    std::fprintf(stderr, "halvern %s: %s.\n", command.c_str(), reason.c_str());
    throw CLI::RuntimeError(EXIT_FAILURE);
}

}  // namespace halvern

int main(int argc, char** argv) {
    constexpr int kWrongUsage = 2;
    const std::filesystem::path program = halvern::program_path(argc > 0 ? argv[0] : "");
    halvern::SetSystemDirectory(program.parent_path().parent_path().string());
    halvern::LogDestination::UseStream(stderr);

    CLI::App app("Halvern: quality control and processing of seismic field data.");
    app.name("halvern");
    app.set_version_flag("--version", "halvern " HALVERN_VERSION);
    app.require_subcommand(1);
    halvern::add_info_command(app);
    halvern::add_plot_command(app);
    halvern::add_synthesize_command(app);

    const auto named = [&](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && argv[1][0] != '-' && app.get_subcommands(named).empty()) {
        std::fprintf(stderr, "halvern: there is no command '%s'; --help lists them.\n", argv[1]);
        return kWrongUsage;
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::RuntimeError& failure) {  // the command has said what it is
        return failure.get_exit_code();
    } catch (const CLI::ParseError& error) {  // a call for help is one, too
        return app.exit(error) == EXIT_SUCCESS ? EXIT_SUCCESS : kWrongUsage;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "halvern: %s\n", failure.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
