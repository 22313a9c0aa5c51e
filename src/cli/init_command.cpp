#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "cli/say.h"
#include "desk/command_error.h"
#include "desk/workplace.h"
#include "foundation/system_paths.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Example:
  halvern init survey && cd survey
      makes the directory survey with links to the programs, the header
      description, a configuration and the prospect 'default'. Every command
      that is typed in it or below it works there.)";

void init(const std::string& asked) {
    const Workplace& place = CurrentWorkplace();
    const std::string wanted = !asked.empty() ? asked : !place.root.empty() ? place.root : ".";
    std::error_code error;
    std::filesystem::path directory = std::filesystem::absolute(wanted, error).lexically_normal();
    if (error) throw CommandError("the current directory is gone; change to another one");
    if (!directory.has_filename()) directory = directory.parent_path();  // "survey/"
    make_system_directory(directory);
    say("'%s' is a system directory of its own; the commands work in it and below it.\n",
        SystemDirectory().c_str());
}

}  // namespace

void add_init_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("init", "Make a system directory of your own");
    command->footer(kExample);
    const auto directory = std::make_shared<std::string>();
    command->add_option("directory", *directory, "Directory; made when missing [this one]")
        ->type_name("DIR");
    command->callback([directory] { init(*directory); });
}

}  // namespace halvern
