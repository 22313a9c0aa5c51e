#include "flow/parameter.h"

#include <cstdio>

#include "foundation/key_readers.h"

namespace halvern {

namespace {

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;

// The formats are in the items' tables, one conversion each, and a test holds every one against
// its variable; here they are necessarily no literals.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
template <class Value>
std::string formatted(const char* format, Value value) {
    const int length = std::snprintf(nullptr, 0, format, value);
    std::string text(length > 0 ? static_cast<std::size_t>(length) : 0, '\0');
    std::snprintf(text.data(), text.size() + 1, format, value);
    return text;
}
#pragma GCC diagnostic pop

std::string formatted_value(const char* format, const Parameter& parameter) {
    return std::visit(
        Overloaded{
            [&](const Bound<int>& bound) { return formatted(format, *bound.variable); },
            [&](const Bound<float>& bound) {
                return formatted(format, static_cast<double>(*bound.variable));
            },
            [&](const Bound<double>& bound) { return formatted(format, *bound.variable); },
            [&](const Bound<std::string>& bound) {
                return formatted(format, bound.variable->c_str());
            },
            [](const Rows&) { return std::string(); },
        },
        parameter.value);
}

}  // namespace

void set_defaults(const ParameterList& list) {
    for (const Parameter& parameter : list) {
        std::visit(Overloaded{
                       [](const Rows& rows) { rows.clear(); },
                       [](const auto& bound) { *bound.variable = bound.standard; },
                   },
                   parameter.value);
    }
}

bool read_line(const ParameterList& list, const char* line) {
    bool known = false;
    for (const Parameter& parameter : list) {
        if (!parameter.stored) continue;
        const std::string key = std::string(parameter.key) + "=";
        std::visit(Overloaded{
                       [&](const Rows& rows) {
                           std::string row;
                           if (!ReadKey(line, key.c_str(), row)) return;
                           known = true;
                           rows.read(row.c_str());
                       },
                       [&](const Bound<std::string>& bound) {
                           if (!ReadKey(line, key.c_str(), *bound.variable)) return;
                           known = true;
                           const auto longest = static_cast<std::size_t>(parameter.longest);
                           if (bound.variable->size() > longest) bound.variable->resize(longest);
                       },
                       [&](const auto& bound) {
                           known |= ReadKey(line, key.c_str(), *bound.variable) != 0;
                       },
                   },
                   parameter.value);
    }
    return known;
}

void write_lines(const ParameterList& list, std::FILE* stream) {
    for (const Parameter& parameter : list) {
        if (!parameter.stored || !parameter.written) continue;
        if (const auto* rows = std::get_if<Rows>(&parameter.value)) {
            for (const std::string& line : rows->lines(parameter.key)) {
                std::fprintf(stream, "%s\n", line.c_str());
            }
        } else {
            std::fprintf(stream, "%s=%s\n", parameter.key, value_text(parameter).c_str());
        }
    }
}

std::string log_line(const Parameter& parameter) {
    if (!parameter.log) return {};
    if (const auto* bound = std::get_if<Bound<int>>(&parameter.value)) {
        for (const Choice& choice : parameter.field.choices) {
            if (choice.value == *bound->variable) return formatted(parameter.log, choice.text);
        }
        if (!parameter.field.choices.empty()) {
            return formatted(parameter.log, std::to_string(*bound->variable).c_str());
        }
    }
    return formatted_value(parameter.log, parameter);
}

std::string value_text(const Parameter& parameter) {
    return formatted_value(parameter.format, parameter);
}

}  // namespace halvern
