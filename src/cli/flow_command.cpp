#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/say.h"
#include "cli/table.h"
#include "cli/terminal_host.h"
#include "desk/command_error.h"
#include "desk/flow_check.h"
#include "desk/flow_parameters.h"
#include "desk/flows.h"
#include "desk/prospects.h"
#include "desk/workplace.h"
#include "foundation/words.h"
#include "platform/terminal.h"

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
    std::string other;   // a second name
    std::string before;  // empty: at the end
    std::vector<std::string> words;
    bool csv = false;
    bool force = false;
};

void changed(const std::string& path) { say_error("Writing parameters to '%s'\n", path.c_str()); }

// Of the flow that the options name.
void change(const Options& options, const std::function<void(FlowDocument&)>& work) {
    open_workplace();
    const std::string path = flow_path(options.name);
    if (change_flow(path, work)) changed(path);
}

std::optional<std::string> place(const Options& options) {
    if (options.before.empty()) return {};
    return options.before;
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
        const std::unique_ptr<FlowItem> item = quiet_item({.kind = kind->kind});
        const bool repeated = kind->menu == menu && !options.csv;
        menu = kind->menu;
        table.add({repeated ? "" : std::string(menu_label(menu)), kind->keyword, kind->name,
                   is_available(*item) ? "yes" : "no"});
    }
    table.print(options.csv);
}

// What is typed for a row of a table, in the order of the flow file.
std::string table_words(const char* key, const Rows& rows) {
    const std::string line =
        rows.line_form.empty() ? "" : ": " + std::string(key) + "=" + rows.line_form;
    return "\nA table, one line a row" + line;
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
            if (const Rows* rows = std::get_if<Rows>(&parameter.value))
                words += table_words(parameter.key, *rows);
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
    const FlowItemKind kind = required(kind_named(options.item));
    const std::unique_ptr<FlowItem> item = quiet_item({.kind = kind});
    if (!is_available(*item)) {
        throw CommandError(std::string(item->GetName()) +
                           " is not available in this version; 'halvern flow items' tells which "
                           "items are");
    }
    const Table table = parameter_table(item->Parameters(), options.csv);
    if (!options.csv) {
        say("%s, keyword %s\n", item->GetName(), flow_item_kind(kind).keyword);
        if (table.empty()) say("It has no parameters.\n");
    }
    if (!table.empty() || options.csv) {
        if (!options.csv) say("\n");
        table.print(options.csv);
    }
}

void make(const Options& options) {
    open_workplace(Opening::kMake);
    const std::string path = flow_path(options.name);
    struct Item {
        std::string keyword;
        std::vector<std::string> values;
    };
    std::vector<Item> items;
    for (const std::string& word : options.words) {
        if (word.find('=') == std::string::npos) {
            items.push_back({word, {}});
        } else if (items.empty()) {
            throw CommandError("'" + word + "' comes before the first KEYWORD");
        } else {
            items.back().values.push_back(word);
        }
    }
    FlowDocument flow;
    for (Item& item : items) {
        // A new file is best read by everybody: IBM floating point, unless another is asked for.
        if (required(kind_named(item.keyword)) == FlowItemKind::kSegyDiskOutput) {
            item.values.insert(item.values.begin(), "OUTPUTFORMAT=IBM");
        }
        add_item(flow, item.keyword, item.values, {});
    }
    make_flow(path, flow, options.force);
    changed(path);
    say("Flow '%s' written with %s.\n", path.c_str(),
        counted(static_cast<long long>(items.size()), "item").c_str());
}

void copy(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.other);
    make_flow(path, read_flow(flow_path(options.name)), options.force);
    changed(path);
}

void remove(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    remove_flow(path);
    say("Flow '%s' removed.\n", path.c_str());
}

void set(const Options& options) {
    change(options, [&](FlowDocument& flow) {
        assign(flow, required(flow.find(options.item)), options.words);
    });
}

void add_to(const Options& options) {
    change(options, [&](FlowDocument& flow) {
        add_item(flow, options.item, options.words, place(options));
    });
}

void drop(const Options& options) {
    change(options,
           [&](FlowDocument& flow) { (void)flow.remove(required(flow.find(options.item))); });
}

void move(const Options& options) {
    change(options, [&](FlowDocument& flow) { move_item(flow, options.item, place(options)); });
}

void set_disabled(const Options& options, bool disabled) {
    change(options, [&](FlowDocument& flow) {
        flow.set_disabled(required(flow.find(options.item)), disabled);
    });
}

void list(const Options& options) {
    open_workplace();
    Table table({"flow", "items"});
    for (const std::string& name : flow_names()) {
        std::string line;
        const auto text = file_text(flow_path(name));
        if (!text) line = "(it cannot be read)";
        const FlowDocument flow(text.value_or(""));
        for (std::size_t i = 0; i < flow.sections().size(); ++i) {
            line += line.empty() ? "" : " ";
            const std::string item = flow.item_name(i);
            line += flow.sections()[i].disabled ? "(" + item + ")" : item;
        }
        table.add({name, line});
    }
    if (table.empty() && !options.csv) {
        say("The prospect '%s' has no flow yet; 'halvern flow new' makes one.\n",
            CurrentProspect().name().c_str());
    } else {
        table.print(options.csv);
    }
}

void show(const Options& options) {
    open_workplace();
    const std::string text = read_flow(flow_path(options.name)).text();
    const std::string shown = is_terminal(stdout) ? printable(text) : text;
    std::fwrite(shown.data(), 1, shown.size(), stdout);
}

void check(const Options& options) {
    open_workplace();
    const std::vector<Finding> findings = check_flow(read_flow(flow_path(options.name)));
    print_findings(options.name, findings, options.csv);
    if (has_error(findings)) throw CLI::RuntimeError(EXIT_FAILURE);
}

void edit(const Options& options) {
    open_workplace();
    const std::string path = flow_path(options.name);
    FlowDocument flow = read_flow(path);
    const std::string before = flow.text();
    const std::size_t section = required(flow.find(options.item));
    int accepted = 0;
    bool asked = true;
    const bool differs = edit_item(flow, section, [&](FlowItem& item) {
        asked = is_available(item) && !item.Parameters().empty();
        if (!asked) return;
        TerminalHost host(std::cin, std::cout);
        item.ShowInterface(nullptr, 0, 0, &accepted);
    });
    if (!asked) throw CommandError(flow.item_name(section) + " has nothing to ask for");
    if (accepted == 0) command_failed("flow edit", "left; the flow is as it was");
    if (!differs) return say("Nothing changed.\n");
    change_flow(path, [&](FlowDocument& now) {
        if (now.text() != before) {
            throw CommandError("the flow was changed by another command meanwhile; edit it again");
        }
        now = flow;
    });
    changed(path);
    say("Flow '%s' changed.\n", path.c_str());
}

}  // namespace

void print_findings(const std::string& name, const std::vector<Finding>& findings, bool csv) {
    Table table({"line", "weight", "finding"});
    for (const Finding& finding : findings) {
        table.add({finding.line > 0 ? std::to_string(finding.line) : "",
                   finding.error ? "error" : "warning", finding.text});
    }
    if (!table.empty() || csv) table.print(csv);
    if (csv) return;
    const auto errors = std::ranges::count_if(findings, &Finding::error);
    const auto warnings = static_cast<std::int64_t>(findings.size()) - errors;
    say("%s: %s, %s.\n", name.c_str(), counted(errors, "error").c_str(),
        counted(warnings, "warning").c_str());
}

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
    sub->add_option("items", options->words, "Keywords, each with its values after it")
        ->type_name("KEYWORD [KEY=VALUE]")
        ->required();
    sub->add_flag("--force", options->force, "Replace a flow of that name");

    sub = add("set", "Change parameters of an item", "set gain AGC WINDOWSIZE=500", set);
    add_name(sub);
    add_item(sub);
    sub->add_option("values", options->words, "New values")->type_name("KEY=VALUE")->required();
    const auto add_before = [&](CLI::App* to) {
        to->add_option("--before", options->before, "Item that it comes before [the end]")
            ->type_name("ITEM[#n]");
    };
    sub = add("add", "Add an item to a flow", "add gain AGC WINDOWSIZE=500 --before SEGYDOUTPUT",
              add_to);
    add_name(sub);
    sub->add_option("keyword", options->item, "Keyword of the item")
        ->type_name("KEYWORD")
        ->required();
    sub->add_option("values", options->words, "Values; others have their defaults")
        ->type_name("KEY=VALUE");
    add_before(sub);
    sub = add("drop", "Take an item out of a flow", "drop gain AGC#2", drop);
    add_name(sub);
    add_item(sub);
    sub = add("move", "Move an item within a flow", "move gain AGC --before FILTER", move);
    add_name(sub);
    add_item(sub);
    add_before(sub);
    sub = add("copy", "Copy a flow", "copy gain gain2", copy);
    add_name(sub);
    sub->add_option("new", options->other, "Name of the copy")->type_name("NEW")->required();
    sub->add_flag("--force", options->force, "Replace a flow of that name");
    add_name(add("remove", "Remove a flow", "remove gain", remove));
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
