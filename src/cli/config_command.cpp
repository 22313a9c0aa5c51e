#include <CLI/CLI.hpp>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/say.h"
#include "cli/table.h"
#include "desk/command_error.h"
#include "desk/configuration.h"
#include "desk/workplace.h"
#include "foundation/global_config.h"
#include "platform/replace_file.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Examples:
  halvern config
      lists the configuration.
  halvern config MAXFILESIZE=2000 DATADIR+=/data/big
      changes one value and adds a data directory; DATADIR= without + would
      make it the only one.)";

struct Options {
    std::vector<std::string> assignments;
    bool csv = false;
};

void list(bool csv) {
    Table table({"key", "value", "meaning"});
    const std::string text = CurrentConfig().text();
    for (const ConfigurationKey& key : configuration_keys()) {
        const std::string start = std::string(key.key) + "=";
        bool found = false;
        for (const std::string& line : split_lines(text)) {
            if (!line.starts_with(start)) continue;
            found = true;
            table.add({key.key, line.substr(start.size()), key.meaning});
        }
        if (!found) table.add({key.key, "", key.meaning});
    }
    table.print(csv);
    if (!csv) say("\nThe file is '%s'.\n", CurrentConfig().path().c_str());
}

void config(const Options& options) {
    open_system_directory(options.assignments.empty() ? Opening::kLook : Opening::kMake);
    if (options.assignments.empty()) return list(options.csv);
    if (options.csv) throw CLI::ValidationError("--csv", "goes with the list alone");
    const std::string path = CurrentConfig().path();
    const auto text = file_text(path);
    if (!text) throw CommandError("cannot read '" + path + "'; check its permissions");
    if (const Fault fault = replace_file(path, edited_configuration(*text, options.assignments))) {
        throw CommandError("cannot write '" + path + "': " + fault.reason() +
                           "; check disk space and permissions on its directory");
    }
    say("'%s' changed.\n", path.c_str());
}

}  // namespace

void add_config_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("config", "List or change the configuration");
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    command->add_option("values", options->assignments, "Values to change")->type_name("KEY=VALUE");
    command->add_flag("--csv", options->csv, "Print the table as CSV");
    command->callback([options] { config(*options); });
}

}  // namespace halvern
