#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/table.h"
#include "cli/terminal_host.h"
#include "desk/command_error.h"
#include "desk/flow_check.h"
#include "desk/flow_parameters.h"
#include "desk/flow_text.h"
#include "desk/prospects.h"
#include "desk/workplace.h"
#include "foundation/messages.h"
#include "foundation/words.h"
#include "platform/create_file.h"
#include "platform/replace_file.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Example:
  halvern flow new gain SEGYDINPUT FILE=line.sgy AGC SEGYDOUTPUT FILE=out.sgy
  halvern flow set gain AGC WINDOWSIZE=500
  halvern flow check gain
A flow's name stands for a file in the prospect; a name with a '/' in it is a
file. ITEM is a keyword, as in AGC, or AGC#2 for the second AGC of the flow.)";

struct Options {
    std::string name;
    std::string item;
    std::vector<std::string> words;
    bool csv = false;
    bool force = false;
};

void write_flow(const std::string& path, const FlowText& flow) {
    if (replace_file(path, flow.text())) {
        throw CommandError("Cannot write flow to '" + path +
                           "'.\nCheck disk space and permissions on this directory");
    }
    LogPrint("Writing parameters to '%s'\n", path.c_str());
}

// The kinds as the flow editor's list offers them.
void items(const Options& options) {
    std::vector<const FlowItemKindEntry*> kinds;
    for (const FlowItemKindEntry& entry : flow_item_kinds()) {
        if (entry.menu != FlowItemMenu::kNone) kinds.push_back(&entry);
    }
    std::ranges::sort(kinds, {}, &FlowItemKindEntry::menu_order);
    Table table({"menu", "keyword", "name", "available"});
    FlowItemMenu menu = FlowItemMenu::kNone;
    for (const FlowItemKindEntry* kind : kinds) {
        const QuietItem item({.kind = kind->kind, .lines = {}});
        const bool repeated = kind->menu == menu && !options.csv;
        menu = kind->menu;
        table.add({repeated ? "" : std::string(menu_label(menu)), kind->keyword, kind->name,
                   is_available(*item) ? "yes" : "no"});
    }
    table.print(options.csv);
}

// What a table asks for, "flow edit" being the way to fill it.
std::string table_words(const Rows& rows) {
    std::string columns;
    for (const char* title : rows.columns)
        columns += (columns.empty() ? "" : ", ") + std::string(title);
    return "\nA table, one line a row" + (columns.empty() ? "" : ", with the columns " + columns) +
           ".";
}

// For a person the words of a parameter share a column, and there is one for units where there are
// any; CSV has a column for each.
Table parameter_table(const ParameterList& list, bool csv) {
    const bool units = csv || std::ranges::any_of(list, [](const Parameter& parameter) {
                           return !unit_in(parameter.field.prompt).empty();
                       });
    std::vector<Table::Column> titles = {"key", "default"};
    if (units) titles.emplace_back("unit");
    if (csv) {
        titles.insert(titles.end(), {"prompt", "help", "choices"});
    } else {
        titles.emplace_back("question and help");
    }
    Table table(std::move(titles));
    for (const Parameter& parameter : list) {
        if (!parameter.stored) continue;
        const Field& field = parameter.field;
        const std::string choices = choices_text(parameter);
        std::vector<std::string> cells = {parameter.key, value_text(parameter)};
        if (units) cells.push_back(unit_in(field.prompt));
        if (csv) {
            cells.insert(cells.end(), {field.prompt, field.help, choices});
        } else {
            std::string words = field.prompt;
            if (const Rows* rows = std::get_if<Rows>(&parameter.value)) words += table_words(*rows);
            for (const std::string& more : {choices, std::string(field.help)}) {
                if (!more.empty()) words += "\n" + more;
            }
            cells.push_back(std::move(words));
        }
        table.add(std::move(cells));
    }
    return table;
}

void item(const Options& options) {
    try {
        open_workplace();
    } catch (const CommandError&) {
        // Without a place to work in, items are the same; only a configuration's defaults are not.
        if (!CurrentWorkplace().root.empty() || !CurrentWorkplace().prospect.empty()) throw;
    }
    const FlowItemKind kind = kind_named(options.item);
    const QuietItem item({.kind = kind, .lines = {}});
    if (!is_available(*item)) {
        throw CommandError(std::string(item->GetName()) +
                           " is not available in this version; 'halvern flow items' tells which "
                           "items are");
    }
    const Table table = parameter_table(item->Parameters(), options.csv);
    if (!options.csv) {
        std::printf("%s, keyword %s\n", item->GetName(), flow_item_kind(kind).keyword);
        if (table.empty()) std::printf("It has no parameters.\n");
    }
    if (!table.empty() || options.csv) {
        if (!options.csv) std::printf("\n");
        table.print(options.csv);
    }
}

void make(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    std::string text;
    std::vector<std::vector<std::string>> values;  // by section
    for (const std::string& word : options.words) {
        if (word.find('=') == std::string::npos) {
            text += section_text(kind_named(word));
            values.emplace_back();
        } else if (values.empty()) {
            throw CommandError("'" + word + "' stands before the first KEYWORD");
        } else {
            values.back().push_back(word);
        }
    }
    FlowText flow(text);
    for (std::size_t i = 0; i < values.size(); ++i) assign(flow, i, values[i]);
    // Of two commands that make a flow of one name, one gets it.
    const std::error_code taken = options.force ? std::error_code() : create_exclusively(path);
    if (taken == std::errc::file_exists) {
        throw CommandError("there is a flow '" + path + "' already; --force would replace it");
    }
    try {
        write_flow(path, flow);
    } catch (const CommandError&) {
        std::error_code ignored;
        if (!options.force && !taken) std::filesystem::remove(path, ignored);
        throw;
    }
    std::printf("Flow '%s' written with %s.\n", path.c_str(),
                counted(static_cast<long long>(values.size()), "item").c_str());
}

void set(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    FlowText flow = FlowText::read(path);
    assign(flow, flow.find(options.item), options.words);
    write_flow(path, flow);
}

void set_disabled(const Options& options, bool disabled) {
    open_workplace();
    const std::string path = flow_path(options.name);
    FlowText flow = FlowText::read(path);
    flow.set_disabled(flow.find(options.item), disabled);
    write_flow(path, flow);
}

void list(const Options& options) {
    open_workplace();
    Table table({"flow", "items"});
    for (const std::string& name : flow_names()) {
        std::string line;
        const auto text = file_text(flow_path(name));
        if (!text) line = "(it cannot be read)";
        const FlowText flow(text.value_or(""));
        for (std::size_t i = 0; i < flow.sections().size(); ++i) {
            line += line.empty() ? "" : " ";
            const std::string item = flow.item_name(i);
            line += flow.sections()[i].disabled ? "(" + item + ")" : item;
        }
        table.add({name, line});
    }
    if (table.empty() && !options.csv) {
        std::printf("The prospect '%s' has no flow yet; 'halvern flow new' makes one.\n",
                    CurrentProspect().name().c_str());
    } else {
        table.print(options.csv);
    }
}

void show(const Options& options) {
    open_workplace();
    const std::string text = FlowText::read(flow_path(options.name)).text();
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void check(const Options& options) {
    open_workplace();
    const std::vector<Finding> findings = check_flow(FlowText::read(flow_path(options.name)));
    long long errors = 0;
    Table table({"line", "weight", "finding"});
    for (const Finding& finding : findings) {
        if (finding.error) ++errors;
        table.add({finding.line > 0 ? std::to_string(finding.line) : "",
                   finding.error ? "error" : "warning", finding.text});
    }
    if (!table.empty() || options.csv) table.print(options.csv);
    if (!options.csv) {
        const auto warnings = static_cast<long long>(findings.size()) - errors;
        std::printf("%s: %s, %s.\n", options.name.c_str(), counted(errors, "error").c_str(),
                    counted(warnings, "warning").c_str());
    }
    if (errors > 0) throw CLI::RuntimeError(EXIT_FAILURE);
}

void edit(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    FlowText flow = FlowText::read(path);
    const std::size_t section = flow.find(options.item);
    int accepted = 0;
    bool asked = true;
    const bool changed = edit_item(flow, section, [&](FlowItem& item) {
        asked = is_available(item) && !item.Parameters().empty();
        if (!asked) return;
        TerminalHost host(std::cin, std::cout);
        item.ShowInterface(nullptr, 0, 0, &accepted);
    });
    if (!asked) throw CommandError(flow.item_name(section) + " has nothing to ask for");
    if (accepted == 0) command_failed("flow edit", "left; the flow is as it was");
    if (changed) write_flow(path, flow);
    std::printf("%s\n", changed ? ("Flow '" + path + "' changed.").c_str() : "Nothing changed.");
}

}  // namespace

void add_flow_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("flow", "Flows: make, change, check, show them");
    command->footer(kExample);
    command->require_subcommand(1);
    const auto options = std::make_shared<Options>();
    const auto add = [&](const char* name, const char* help, const char* example, auto work) {
        CLI::App* sub = command->add_subcommand(name, help);
        sub->footer(std::string("Example:\n  halvern flow ") + example);
        sub->callback([options, work] { work(*options); });
        return sub;
    };
    const auto add_name = [&](CLI::App* sub) {
        sub->add_option("name", options->name, "Name of the flow")->type_name("NAME")->required();
    };
    const auto add_item = [&](CLI::App* sub) {
        sub->add_option("item", options->item, "Item of the flow")
            ->type_name("ITEM[#n]")
            ->required();
    };
    const auto add_csv = [&](CLI::App* sub) {
        sub->add_flag("--csv", options->csv, "Print the table as CSV");
    };

    add_csv(add("items", "List the kinds of flow items", "items", items));
    CLI::App* sub = add("item", "Explain the parameters of an item", "item AGC", item);
    sub->add_option("keyword", options->item, "Keyword of the item")
        ->type_name("KEYWORD")
        ->required();
    add_csv(sub);

    sub = add("new", "Make a flow of items with defaults",
              "new gain SEGYDINPUT FILE=line.sgy AGC SEGYDOUTPUT FILE=out.sgy\n"
              "      values that are not given have their defaults.",
              make);
    add_name(sub);
    sub->add_option("items", options->words, "Keywords, each with values behind it")
        ->type_name("KEYWORD [KEY=VALUE]")
        ->required();
    sub->add_flag("--force", options->force, "Replace a flow of that name");

    sub = add("set", "Change parameters of an item", "set gain AGC WINDOWSIZE=500", set);
    add_name(sub);
    add_item(sub);
    sub->add_option("values", options->words, "New values")->type_name("KEY=VALUE")->required();
    for (const bool disabled : {false, true}) {
        sub = disabled ? add("disable", "Keep an item, but do not run it", "disable gain AGC",
                             [](const Options& o) { set_disabled(o, true); })
                       : add("enable", "Run a disabled item again", "enable gain AGC",
                             [](const Options& o) { set_disabled(o, false); });
        add_name(sub);
        add_item(sub);
    }
    add_csv(add("list", "List the flows of the prospect; (disabled items)", "list", list));
    add_name(add("show", "Print a flow", "show gain", show));
    sub = add("check", "Find what is wrong without running", "check gain", check);
    add_name(sub);
    add_csv(sub);
    sub = add("edit", "Ask for the parameters of an item", "edit gain AGC", edit);
    add_name(sub);
    add_item(sub);
}

}  // namespace halvern
