#include "cli/terminal_host.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "cli/table.h"
#include "desk/flow_parameters.h"
#include "foundation/words.h"

namespace halvern {

namespace {

using Cells = std::vector<std::vector<std::string>>;

// The variables of a dialog as they are now, to put back.
class Snapshot {
public:
    explicit Snapshot(const ParameterList& list) : list_(list) {
        for (const Parameter& parameter : list) {
            const Rows* rows = std::get_if<Rows>(&parameter.value);
            texts_.push_back(rows ? "" : value_text(parameter));
            cells_.push_back(rows && rows->cells ? rows->cells() : Cells());
        }
    }
    void restore() const {
        for (std::size_t i = 0; i < list_.size(); ++i) {
            if (const Rows* rows = std::get_if<Rows>(&list_[i].value)) {
                if (rows->assign) (void)rows->assign(cells_[i]);
            } else {
                read_line(list_, (std::string(list_[i].key) + "=" + texts_[i]).c_str());
            }
        }
    }

private:
    const ParameterList& list_;
    std::vector<std::string> texts_;
    std::vector<Cells> cells_;
};

std::string trimmed(const std::string& text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1);
}

// A row's cells: between commas, where one may be empty, or else between blanks.
std::vector<std::string> cells_of(const std::string& line) {
    std::vector<std::string> cells;
    if (line.find(',') != std::string::npos) {
        for (std::size_t at = 0; at <= line.size();) {
            const std::size_t end = std::min(line.find(',', at), line.size());
            cells.push_back(trimmed(line.substr(at, end - at)));
            at = end + 1;
        }
        return cells;
    }
    for (std::size_t at = 0; (at = line.find_first_not_of(" \t", at)) != std::string::npos;) {
        const std::size_t end = std::min(line.find_first_of(" \t", at), line.size());
        cells.push_back(line.substr(at, end - at));
        at = end;
    }
    return cells;
}

}  // namespace

void TerminalHost::Open(ParameterDialog dialog) {
    up_ = dialog.item;
    const Snapshot before(dialog.fields);
    out_ << dialog.texts.title << "\n"
         << "Enter keeps the value in brackets, ? shows help, . leaves all as it was.\n";
    bool accepted = false;
    while (ask_all(dialog)) {
        const std::string refusal = dialog.refuse ? dialog.refuse() : "";
        accepted = refusal.empty();
        if (accepted) break;
        ShowMessage(refusal);
    }
    if (!accepted) before.restore();
    if (accepted && dialog.flow_changed) *dialog.flow_changed = 1;
    up_ = nullptr;
}

void TerminalHost::ShowMessage(const std::string& text) {
    out_ << printable(text) << (text.ends_with('\n') ? "" : "\n");
}

// False when the user leaves.
bool TerminalHost::ask_all(const ParameterDialog& dialog) {
    for (const Parameter& parameter : dialog.fields) {
        if (!parameter.stored) continue;  // a flow file would not keep the answer
        if (parameter.field.applies && !parameter.field.applies()) continue;
        const Rows* rows = std::get_if<Rows>(&parameter.value);
        if (!(rows ? ask_rows(parameter, *rows) : ask(parameter))) return false;
    }
    return true;
}

void TerminalHost::show_question(const Parameter& parameter) {
    out_ << "\n";
    for (const std::string& line : wrapped(parameter.field.prompt, Table::kWidth)) {
        out_ << line << "\n";
    }
    if (!parameter.field.choices.empty()) {
        for (const std::string& line : wrapped(choices_text(parameter), Table::kWidth - 2)) {
            out_ << "  " << line << "\n";
        }
    }
    if (!parameter.field.preview) return;
    for (const std::string& line : parameter.field.preview()) {
        out_ << "  " << printable(line) << "\n";
    }
}

void TerminalHost::show_help(const Parameter& parameter) {
    const std::string help = parameter.field.help;
    for (const std::string& line :
         wrapped(help.empty() ? "There is no help for this." : help, Table::kWidth - 2)) {
        out_ << "  " << line << "\n";
    }
}

TerminalHost::Answer TerminalHost::answer(const Parameter& parameter, const std::string& prompt,
                                          std::string& text) {
    for (;;) {
        out_ << prompt << std::flush;
        if (!std::getline(in_, text)) {
            out_ << "\n";
            return Answer::kCancel;
        }
        text = trimmed(text);
        if (text == ".") return Answer::kCancel;
        if (text.empty()) return Answer::kKeep;
        if (text != "?") return Answer::kValue;
        show_help(parameter);
    }
}

bool TerminalHost::ask(const Parameter& parameter) {
    show_question(parameter);
    const std::string prompt =
        std::string(parameter.field.label) + " [" + printable(value_text(parameter)) + "]: ";
    for (std::string text;;) {
        const Answer given = answer(parameter, prompt, text);
        if (given != Answer::kValue) return given == Answer::kKeep;
        if (const auto& check = parameter.field.check) {
            if (const std::string fault = check(text); !fault.empty()) {
                ShowMessage(fault);
                continue;
            }
        }
        if (take(parameter, stored_value(parameter, text))) return true;
    }
}

// Puts a value into the variable. False when it is none, or is not meant after all.
bool TerminalHost::take(const Parameter& parameter, const std::string& value) {
    if (const std::string fault = value_fault(parameter, value); !fault.empty()) {
        out_ << "'" << printable(value) << "' " << fault << ".\n";
        return false;
    }
    for (const Choice& choice : parameter.field.choices) {
        if (!choice.confirm || value != std::to_string(choice.value)) continue;
        for (const std::string& line : wrapped(choice.confirm, Table::kWidth)) out_ << line << "\n";
        out_ << "Go on? [y/N] " << std::flush;
        std::string text;
        if (!std::getline(in_, text) || (trimmed(text) != "y" && trimmed(text) != "yes")) {
            return false;
        }
    }
    read_line({parameter}, (std::string(parameter.key) + "=" + value).c_str());
    return true;
}

bool TerminalHost::ask_rows(const Parameter& parameter, const Rows& rows) {
    if (!rows.cells || !rows.assign) return true;  // not for a window
    show_question(parameter);
    Table table(std::vector<Table::Column>(rows.columns.begin(), rows.columns.end()));
    for (auto& row : rows.cells()) {
        row.resize(rows.columns.size());
        table.add(std::move(row));
    }
    out_ << table.text() << "New rows take the place of these: one a line, an empty line ends.\n";
    for (;;) {
        Cells cells;
        std::string text;
        for (;;) {
            const Answer given = answer(parameter, std::to_string(cells.size() + 1) + ": ", text);
            if (given == Answer::kCancel) return false;
            if (given == Answer::kKeep) break;
            cells.push_back(cells_of(text));
            cells.back().resize(std::max(cells.back().size(), rows.columns.size()));
        }
        if (cells.empty()) return true;
        const std::string fault = rows.assign(cells);
        if (fault.empty()) return true;
        ShowMessage(fault);
    }
}

}  // namespace halvern
