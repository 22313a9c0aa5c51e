#include "desk/flow_parameters.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <map>

#include "desk/command_error.h"
#include "desk/workplace.h"
#include "flow/unbuilt_flow_item.h"
#include "foundation/key_readers.h"
#include "foundation/words.h"
#include "job/catalogue.h"

namespace halvern {

namespace {

// What a job reads of a number, as it reads it, and what it leaves out.
template <class Number>
std::string number_fault(const std::string& value, const char* wanted) {
    std::size_t begin = value.find_first_not_of(" \t");
    if (begin == std::string::npos) return std::string("is empty, not ") + wanted;
    if (value[begin] == '+' && !value.substr(begin + 1).starts_with('-')) ++begin;
    Number number{};
    const char* const last = value.data() + value.size();
    const auto end = std::from_chars(value.data() + begin, last, number);
    if (end.ec == std::errc::result_out_of_range) return "is too large or too small a number";
    if (end.ec != std::errc{}) return "is not " + std::string(wanted);
    if constexpr (std::is_floating_point_v<Number>) {
        if (!std::isfinite(number)) return "is not a finite number";
    }
    const std::string rest(end.ptr, last);
    if (rest.find_first_not_of(" \t") == std::string::npos) return {};
    return "is not " + std::string(wanted) + ": '" + rest + "' would be left out";
}

std::string choice_fault(const Parameter& parameter, const std::string& value) {
    int number = 0;
    (void)ReadKey(value.c_str(), "", number);
    for (const Choice& choice : parameter.field.choices) {
        if (choice.value == number) return {};
    }
    std::string list;
    for (const Choice& choice : parameter.field.choices) {
        list.append(list.empty() ? "" : ", ").append(std::to_string(choice.value));
        list.append(" (").append(choice.text).append(")");
    }
    return "is none of the choices: " + list;
}

// The lines of the parameter in a flow file; none of what is left out of it.
std::vector<std::string> lines_of(const Parameter& parameter) {
    if (!parameter.stored || !parameter.written) return {};
    if (const Rows* rows = std::get_if<Rows>(&parameter.value)) return rows->lines(parameter.key);
    return {std::string(parameter.key) + "=" + value_text(parameter)};
}

// The key of the table that a parameter's rows belong to; empty: it has no rows.
std::string table_of(const Parameter& parameter) {
    const Rows* rows = std::get_if<Rows>(&parameter.value);
    if (!rows) return {};
    return rows->table.empty() ? parameter.key : rows->table;
}

// All keys whose lines make that table.
std::vector<std::string> keys_of(const ParameterList& list, const std::string& table) {
    std::vector<std::string> keys;
    for (const Parameter& parameter : list) {
        if (table_of(parameter) == table) keys.emplace_back(parameter.key);
    }
    return keys;
}

// The item's spelling of a key; CommandError when it has none such.
std::string declared_key(const FlowItem& item, const ParameterList& list, const std::string& key) {
    std::vector<std::string> keys;
    std::string joined;
    for (const Parameter& parameter : list) {
        if (!parameter.stored) continue;
        if (upper(key) == upper(parameter.key)) return parameter.key;
        keys.emplace_back(parameter.key);
        joined.append(joined.empty() ? "" : ", ").append(parameter.key);
    }
    const std::string keyword = flow_item_kind(item.GetKindId()).keyword;
    if (keys.empty()) throw CommandError(keyword + " has no parameters");
    const std::string near = nearest(key, keys);
    throw CommandError(keyword + " has no parameter '" + key + "'; " +
                       (near.empty() ? "it has " + joined
                                     : "did you mean " + near + "? 'halvern flow item " + keyword +
                                           "' lists them"));
}

}  // namespace

std::unique_ptr<FlowItem> quiet_item(const FlowSection& section) {
    static const SilentReporter silent;
    return CreateFlowItem(section, LogFlag::quiet(silent));
}

bool is_available(const FlowItem& item) {
    return dynamic_cast<const UnbuiltFlowItem*>(&item) == nullptr;
}

const Parameter* parameter_of_line(const ParameterList& list, const std::string& line) {
    for (const Parameter& parameter : list) {
        if (parameter.stored && line.starts_with(std::string(parameter.key) + "=")) {
            return &parameter;
        }
    }
    return nullptr;
}

std::string value_fault(const Parameter& parameter, const std::string& value) {
    if (const std::string key = std::string(parameter.key) + "=";
        key.size() + value.size() > FlowDocument::kLongestLine) {
        return "is too long: a line of a flow holds 198 characters, and " + key + " takes " +
               std::to_string(key.size());
    }
    if (std::holds_alternative<Bound<int>>(parameter.value)) {
        std::string fault = number_fault<int>(value, "a whole number");
        if (fault.empty() && !parameter.field.choices.empty()) {
            fault = choice_fault(parameter, value);
        }
        return fault;
    }
    if (std::holds_alternative<Bound<float>>(parameter.value)) {
        return number_fault<float>(value, "a number");
    }
    if (std::holds_alternative<Bound<double>>(parameter.value)) {
        return number_fault<double>(value, "a number");
    }
    if (const Rows* rows = std::get_if<Rows>(&parameter.value)) {
        return rows->read(value.c_str())
                   ? ""
                   : "is no row of this table; 'halvern flow edit' asks for its columns";
    }
    if (value.size() > static_cast<std::size_t>(parameter.longest)) {
        return "is longer than the " + std::to_string(parameter.longest) +
               " characters that are kept";
    }
    return {};
}

std::string stored_value(const Parameter& parameter, const std::string& value) {
    // A choice's text, or a beginning of one of its words that no other choice has.
    std::vector<std::string> found;
    const std::string wanted = upper(value);
    for (const Choice& choice : parameter.field.choices) {
        const std::string text = upper(choice.text);
        if (wanted == text) return std::to_string(choice.value);
        if (!wanted.empty() && (" " + text).find(" " + wanted) != std::string::npos) {
            found.push_back(std::to_string(choice.value));
        }
    }
    const bool is_number =
        !value.empty() && value.find_first_not_of("+-0123456789") == std::string::npos;
    return found.size() == 1 && !is_number ? found.front() : value;
}

std::string choices_text(const Parameter& parameter) {
    std::string text;
    for (const Choice& choice : parameter.field.choices) {
        text += (text.empty() ? "" : "\n") + std::to_string(choice.value) + " = " + choice.text;
    }
    return text;
}

std::string unit_in(const std::string& prompt) {
    const std::size_t begin = prompt.find("(in ");
    const std::size_t end = prompt.find(')', begin == std::string::npos ? 0 : begin);
    if (begin == std::string::npos || end == std::string::npos) return {};
    return prompt.substr(begin + 4, end - begin - 4);
}

std::optional<std::pair<std::string, std::string>> split_assignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) return {};
    return std::pair(text.substr(0, equals), text.substr(equals + 1));
}

void assign(FlowDocument& flow, std::size_t section, const std::vector<std::string>& assignments) {
    const std::unique_ptr<FlowItem> item = quiet_item(flow.flow_section(section));
    const ParameterList list = item->Parameters();
    const bool checked = is_available(*item);
    std::vector<std::string> order;             // of values and tables, as they first come
    std::map<std::string, std::string> values;  // by key: the last one given
    std::map<std::string, std::vector<std::string>> tables;  // by key: the rows given
    for (const std::string& assignment : assignments) {
        const auto pair = split_assignment(assignment);
        if (!pair) throw CommandError("'" + assignment + "' is no KEY=VALUE");
        const std::string key =
            checked ? declared_key(*item, list, pair->first) : upper(pair->first);
        std::string value = pair->second;
        if (value.find_first_of("\r\n") != std::string::npos) {
            throw CommandError("the value of " + key + " must be one line");
        }
        if (const Parameter* parameter = parameter_of_line(list, key + "=")) {
            value = stored_value(*parameter, value);
            const bool no_rows = value.empty() && std::holds_alternative<Rows>(parameter->value);
            const std::string fault = no_rows ? "" : value_fault(*parameter, value);
            if (!fault.empty()) {
                std::string reason = key;
                throw CommandError(reason.append(": '").append(value).append("' ").append(fault));
            }
        }
        const Parameter* parameter = parameter_of_line(list, key + "=");
        const std::string table = parameter ? table_of(*parameter) : "";
        const std::string& place = table.empty() ? key : table;
        if (std::ranges::find(order, place) == order.end()) order.push_back(place);
        if (table.empty()) {
            values[key] = value;
        } else if (std::vector<std::string>& lines = tables[table];
                   key != table || !value.empty()) {
            lines.push_back(key + "=" + value);  // "KEY=" alone takes all rows away
        }
    }
    for (const std::string& key : order) {
        if (const auto lines = tables.find(key); lines != tables.end()) {
            flow.set_rows(section, keys_of(list, key), lines->second);
        } else {
            flow.set(section, key, values[key]);
        }
    }
}

std::string section_text(FlowItemKind kind) {
    const std::unique_ptr<FlowItem> item = quiet_item({.kind = kind});
    std::string text = std::string("$") + flow_item_kind(kind).keyword + "\n";
    for (const Parameter& parameter : item->Parameters()) {
        for (const std::string& line : lines_of(parameter)) text.append(line).append("\n");
    }
    return text;
}

bool edit_item(FlowDocument& flow, std::size_t section,
               const std::function<void(FlowItem&)>& edit) {
    const std::unique_ptr<FlowItem> item = quiet_item(flow.flow_section(section));
    const ParameterList list = item->Parameters();
    std::vector<std::vector<std::string>> before;
    for (const Parameter& parameter : list) before.push_back(lines_of(parameter));
    edit(*item);
    bool changed = false;
    for (std::size_t i = 0; const Parameter& parameter : item->Parameters()) {
        const std::vector<std::string> after = lines_of(parameter);
        if (after == before[i++]) continue;
        changed = true;
        // A value that is no longer written is replaced by what it is now.
        if (const std::string table = table_of(parameter); !table.empty()) {
            flow.set_rows(section, keys_of(list, table), after);
        } else {
            flow.set(section, parameter.key, value_text(parameter));
        }
    }
    return changed;
}

}  // namespace halvern
