#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/say.h"
#include "cli/table.h"
#include "desk/command_error.h"
#include "desk/flows.h"
#include "desk/prospects.h"
#include "desk/workplace.h"
#include "foundation/words.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Example:
  halvern prospect create north --data /data/big
      makes a project whose data lie below /data/big, and works in it.
  halvern prospect use default
      goes back to the first one.)";

struct Options {
    std::string name;
    std::vector<std::string> directories;
    bool csv = false;
    bool yes = false;
};
using Shared = std::shared_ptr<Options>;

void use(const std::string& name) {
    if (RememberProspect(name) != 0) {
        throw CommandError(
            "cannot write 'Halvern.defaults'; check disk space and permissions on the system "
            "directory");
    }
}

void list(const Options& options) {
    open_system_directory();
    Table table({"", "prospect", "data directories"});
    const std::string current = LastProspect();
    for (const std::string& name : prospect_names()) {
        std::string directories;
        Prospect prospect;
        if (prospect.open(name) != 0) directories = "(its file cannot be read)";
        for (const std::string& data : prospect.data_directories()) {
            directories += (directories.empty() ? "" : "\n") + data;
        }
        table.add({name == current ? "*" : "", name, directories});
    }
    table.print(options.csv);
}

void create(const Options& options) {
    open_system_directory(Opening::kMake);
    const Prospect prospect = create_prospect(options.name, options.directories);
    use(options.name);
    say("Prospect '%s' made and in use; its flows are in '%s'.\n", options.name.c_str(),
        prospect.path("flow").c_str());
}

void show(const Options& options) {
    if (!options.name.empty()) CurrentWorkplace().prospect = options.name;
    open_workplace();
    const Prospect& prospect = CurrentProspect();
    Table table({"what", "where"});
    table.add({"prospect", prospect.name()});
    table.add({"its file", Prospect::file_path(prospect.name())});
    for (const std::string& data : prospect.data_directories()) {
        table.add({"data directory", data});
    }
    for (const char* name : {"flow", "segy", "data"}) {
        table.add({std::string(name) + " files", prospect.path(name)});
    }
    table.add({"flows", std::to_string(flow_names().size())});
    table.print(options.csv);
}

bool confirmed() {
    say("Remove it? [y/N] ");
    std::fflush(stdout);
    std::string answer;
    std::getline(std::cin, answer);
    if (!std::cin) say("\n");
    return answer == "y" || answer == "yes";
}

void remove(const Options& options) {
    open_system_directory();
    const ProspectRemoval removal = plan_removal(options.name);
    say("This would remove prospect '%s':\n  %s\n", removal.name.c_str(), removal.file.c_str());
    for (const std::string& directory : removal.directories) {
        say("  %s/ (bin, data, flow and its other directories)\n", directory.c_str());
    }
    say("  %s, %s in all.\n", counted(removal.files, "file").c_str(),
        counted(removal.bytes, "byte").c_str());
    for (const std::string& kept : removal.kept) say("  %s stays.\n", kept.c_str());
    if (!options.yes && !confirmed()) {
        command_failed("prospect remove", "nothing was removed; 'y' or --yes would do it");
    }
    const std::vector<std::string> left = remove_prospect(removal);
    if (LastProspect() == removal.name) use("default");
    for (const std::string& path : left) {
        say("'%s' stays: it holds more than a prospect's directories, or is not yours.\n",
            path.c_str());
    }
    say("Prospect '%s' removed.\n", removal.name.c_str());
}

}  // namespace

void add_prospect_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("prospect", "Projects: list, create, use, remove");
    command->footer(kExample);
    command->require_subcommand(1);
    const auto options = std::make_shared<Options>();
    const auto add = [&](const char* name, const char* help, const char* example,
                         void (*work)(const Options&)) {
        CLI::App* sub = command->add_subcommand(name, help);
        sub->footer(std::string("Example:\n  halvern prospect ") + example);
        sub->callback([options, work] { work(*options); });
        return sub;
    };
    const auto add_name = [&](CLI::App* sub) {
        return sub->add_option("name", options->name, "Name of the prospect")->type_name("NAME");
    };
    const auto add_csv = [&](CLI::App* sub) {
        sub->add_flag("--csv", options->csv, "Print the table as CSV");
    };

    add_csv(add("list", "List the prospects; * is in use", "list", list));
    CLI::App* creating = add("create", "Make a prospect and work in it",
                             "create north --data /data/big --data /data/more", create);
    add_name(creating)->required();
    creating->add_option("--data", options->directories, "Its data directories, one each time")
        ->type_name("DIR")
        ->allow_extra_args(false);
    add_name(add("use", "Work in a prospect from now on", "use north", [](const Options& o) {
        open_system_directory();
        const std::string name = read_prospect(o.name).name();
        use(name);
        say("Prospect '%s' is in use.\n", name.c_str());
    }))->required();
    CLI::App* showing = add("show", "Show where a prospect keeps its files", "show", show);
    add_name(showing);
    add_csv(showing);
    CLI::App* removing = add("remove", "Remove a prospect and its files", "remove north", remove);
    add_name(removing)->required();
    removing->add_flag("--yes", options->yes, "Do not ask");
}

}  // namespace halvern
