// What the program says about itself to the shell and to man(1).

#include <CLI/CLI.hpp>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "desk/command_error.h"
#include "desk/configuration.h"
#include "desk/flow_parameters.h"
#include "desk/flows.h"
#include "desk/jobs.h"
#include "desk/prospects.h"
#include "desk/workplace.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "trace/header_definition.h"

namespace halvern {

namespace {

using Words = std::vector<std::string>;

// A command line as far as it has been typed.
struct Typed {
    CLI::App* command;      // the innermost
    std::string path;       // "flow set"
    Words positionals;      // of the command, complete ones
    CLI::Option* awaits{};  // option whose value comes next
    std::string last;       // the word that is being typed
};

CLI::App* subcommand(CLI::App& command, const std::string& name) {
    const auto found =
        command.get_subcommands([&](const CLI::App* sub) { return sub->get_name() == name; });
    return found.empty() ? nullptr : found.front();
}

Typed read_words(CLI::App& app, const Words& words) {
    Typed typed{.command = &app, .path = {}, .positionals = {}, .last = {}};
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        if (i + 1 == words.size()) {
            typed.last = word;
        } else if (typed.awaits) {
            if (typed.awaits->check_name("--root")) CurrentWorkplace().root = word;
            if (typed.awaits->check_name("--prospect")) CurrentWorkplace().prospect = word;
            typed.awaits = nullptr;
        } else if (word.starts_with('-')) {
            for (CLI::App* at = typed.command; at && !typed.awaits; at = at->get_parent()) {
                CLI::Option* option = at->get_option_no_throw(word);
                if (option && option->get_items_expected_max() > 0) typed.awaits = option;
            }
        } else if (CLI::App* sub = subcommand(*typed.command, word)) {
            typed.command = sub;
            typed.path += (typed.path.empty() ? "" : " ") + word;
        } else {
            typed.positionals.push_back(word);
        }
    }
    return typed;
}

Words keywords() {
    Words words;
    for (const FlowItemKindEntry& entry : flow_item_kinds()) {
        if (entry.menu != FlowItemMenu::kNone) words.emplace_back(entry.keyword);
    }
    return words;
}

// What may be typed after "KEY=": the choices by a word each, or the words of trace headers.
Words values_for(const Parameter& parameter) {
    Words words;
    for (const Choice& choice : parameter.field.choices) {
        const std::string text = choice.text;
        const std::string number = std::to_string(choice.value);
        const std::string word = text.substr(0, text.find(' '));
        words.push_back(stored_value(parameter, word) == number ? word : number);
    }
    TraceHeaderDefinition header;
    if (parameter.field.kind == FieldKind::kHeaderWord && header.load(DefaultHeaderPath()) == 0) {
        for (const HeaderWord& word : header.words()) words.push_back(word.name);
    }
    return words;
}

// The keys of a section's item after `start`, or the values of the one that `last` ends with.
Words keys_of(const FlowSection& section, const std::string& start, const std::string& last) {
    const std::unique_ptr<FlowItem> item = quiet_item(section);
    Words words;
    for (const Parameter& parameter : item->Parameters()) {
        if (!parameter.stored) continue;
        const std::string key = start + parameter.key + "=";
        if (!last.starts_with(key)) {
            words.push_back(key);
            continue;
        }
        for (const std::string& value : values_for(parameter)) words.push_back(key + value);
    }
    return words;
}

Words items_of(const FlowDocument& flow) {
    Words words;
    for (std::size_t i = 0; i < flow.sections().size(); ++i) words.push_back(flow.item_name(i));
    return words;
}

Words flow_values(const Typed& typed) {
    const std::size_t count = typed.positionals.size();
    if (typed.path == "flow item") return count == 0 ? keywords() : Words();
    if (typed.path == "flow new") {
        if (count == 0) return {};
        Words words = keywords();
        for (std::size_t i = count; i-- > 1;) {  // the keys of the last keyword
            if (!match_keyword(typed.positionals[i])) continue;
            const Words keys =
                keys_of({.kind = *match_keyword(typed.positionals[i])}, "", typed.last);
            words.insert(words.end(), keys.begin(), keys.end());
            break;
        }
        return words;
    }
    open_workplace();
    if (count == 0) return flow_names();
    const FlowDocument flow = read_flow(flow_path(typed.positionals[0]));
    if (typed.path == "run") {
        const std::size_t dot = typed.last.find('.');
        if (dot != std::string::npos) {
            return keys_of(flow.flow_section(required(flow.find(typed.last.substr(0, dot)))),
                           typed.last.substr(0, dot + 1), typed.last);
        }
        Words words = items_of(flow);
        for (std::string& word : words) word += '.';
        return words;
    }
    const bool has_item = typed.path == "flow set" || typed.path == "flow edit" ||
                          typed.path == "flow drop" || typed.path == "flow move" ||
                          typed.path.ends_with("able");
    if (typed.path == "flow add") {
        if (count == 1) return keywords();
        const auto kind = match_keyword(typed.positionals[1]);
        return kind ? keys_of({.kind = *kind}, "", typed.last) : Words();
    }
    if (count == 1 && has_item) return items_of(flow);
    if (count >= 2 && typed.path == "flow set") {
        return keys_of(flow.flow_section(required(flow.find(typed.positionals[1]))), "",
                       typed.last);
    }
    return {};
}

// The choices that an option has, or header words for those that take some.
Words option_values(const CLI::Option& option, const std::string& typed) {
    const std::string type = option.get_type_name();  // "TEXT:{grey,red-blue,wiggle}"
    const std::size_t open = type.find('{'), close = type.find('}');
    if (open < close && close != std::string::npos) {
        return split_list(type.substr(open + 1, close - open - 1));
    }
    const bool one = option.check_name("--colour"), selects = option.check_name("--select");
    if (!one && !selects && !option.check_name("--headers") && !option.check_name("--words")) {
        return {};  // a file or a number
    }
    TraceHeaderDefinition definition;
    if (definition.load(DefaultHeaderPath()) != 0) return {};
    const std::size_t comma = one || selects ? std::string::npos : typed.rfind(',');
    const std::string before = comma == std::string::npos ? "" : typed.substr(0, comma + 1);
    Words words;
    for (const HeaderWord& word : definition.words()) {
        words.push_back(before + word.name + (selects ? "=" : ""));
    }
    return words;
}

Words values(const Typed& typed) {
    const bool prospect = typed.awaits && typed.awaits->check_name("--prospect");
    const bool names_prospect = typed.path == "prospect use" || typed.path == "prospect show" ||
                                typed.path == "prospect remove";
    if (prospect || (names_prospect && typed.positionals.empty())) {
        open_system_directory();
        return prospect_names();
    }
    if (typed.awaits) return option_values(*typed.awaits, typed.last);
    if (typed.last.starts_with('-')) {
        Words words;
        for (CLI::App* at = typed.command; at; at = at->get_parent()) {
            for (const CLI::Option* option : at->get_options()) {
                for (const std::string& name : option->get_lnames()) words.push_back("--" + name);
            }
        }
        return words;
    }
    if (const auto subs = typed.command->get_subcommands({}); !subs.empty()) {
        Words words;
        for (const CLI::App* sub : subs) words.push_back(sub->get_name());
        return words;
    }
    if (typed.path == "config") {
        Words words;
        for (const ConfigurationKey& key : configuration_keys()) {
            words.push_back(std::string(key.key) + "=");
        }
        return words;
    }
    if (typed.path == "log" || typed.path == "stop") {
        open_system_directory();
        Words words;
        for (const int number : job_numbers()) words.push_back(std::to_string(number));
        return words;
    }
    if (typed.path == "run" || typed.path.starts_with("flow ")) return flow_values(typed);
    return {};
}

// Text for troff, as it stands: nothing in it is a request or an escape.
std::string for_troff(const std::string& text) {
    std::string result;
    bool line_start = true;
    for (const char c : text) {
        if (line_start && (c == '.' || c == '\'')) result += "\\&";
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
        line_start = c == '\n';
    }
    return result;
}

void print_command(const CLI::App& command, const std::string& path) {
    const auto subs = command.get_subcommands([](const CLI::App*) { return true; });
    const std::size_t cut = path.rfind(' ');  // help names the command itself
    const std::string before =
        cut == std::string::npos ? "halvern" : "halvern " + path.substr(0, cut);
    std::printf(".SS \"halvern %s\"\n.nf\n%s\n.fi\n", path.c_str(),
                for_troff(command.help(before)).c_str());
    for (const CLI::App* sub : subs) print_command(*sub, path + " " + sub->get_name());
}

constexpr const char* kBefore = R"(.TH HALVERN 1
.SH NAME
halvern \- quality control and processing of seismic field data
.SH SYNOPSIS
.B halvern
[\fB\-\-root\fR \fIDIR\fR] [\fB\-p\fR \fIPROSPECT\fR] \fICOMMAND\fR ...
.SH DESCRIPTION
Makes prospects and flows, runs flows as jobs of their own, follows their logs
and looks into data files. A flow is a list of items: an input, processes and
outputs. The traces of the input pass through them one by one.
.PP
The commands work in a system directory: the one that \fB\-\-root\fR names,
else the nearest one upwards from the current directory that holds halvern.cfg,
else the installation. \fBhalvern init\fR makes one.
.SH COMMANDS
)";

constexpr const char* kBehind = R"(.SH FILES
.TP
.I halvern.cfg
The configuration of a system directory.
.TP
.I Halvern.defaults
The prospect that was used last.
.TP
.I header/default
The description of the trace header words.
.TP
.I Data/PROSPECT/flow/
The flows of a prospect.
.TP
.I scratch/flowN, scratch/logN, scratch/jobN
What job N runs, its log, and when and as which process it was started.
.SH ENVIRONMENT
.TP
.B NO_COLOR
When set, warnings and errors in a log are not coloured.
.SH EXIT STATUS
0 when all went well, 1 when it did not, 2 for wrong usage.
)";

}  // namespace

void print_completions(CLI::App& app, const std::vector<std::string>& words) {
    const Typed typed = read_words(app, words);
    choose_system_directory();
    try {
        std::set<std::string> said;
        for (const std::string& word : values(typed)) {
            if (!word.starts_with(typed.last) || !said.insert(word).second) continue;
            std::printf("%s\n", word.c_str());
        }
    } catch (const CommandError&) {  // nothing can be offered where nothing can be read
    }
}

void print_manual(CLI::App& app) {
    std::fputs(kBefore, stdout);
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
        print_command(*command, command->get_name());
    }
    std::fputs(kBehind, stdout);
}

}  // namespace halvern
