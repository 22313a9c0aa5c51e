#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace halvern {

/// A variable of the item, and the value SetDefaults gives it.
template <class T>
struct Bound {
    T* variable;
    T standard;
};
template <class T>
Bound(T*, std::type_identity_t<T>) -> Bound<T>;

/// What the user picks and what the file stores.
struct Choice {
    const char* text;
    int value;
    const char* confirm = nullptr;  ///< asked, with a way back, when it is picked; null: not asked
};

/// What a field of the parameter window edits, so that a host can offer the right chooser.
enum class FieldKind {
    kEntry,       ///< a number or text
    kInputFile,   ///< a file that should exist
    kOutputFile,  ///< a file to be made
    kHeaderWord,  ///< the name of a header word, or "NONE"
    kTapeDevice,  ///< one of the configuration's tape devices
};

/// How the parameter window asks for a parameter.
struct Field {
    const char* label = nullptr;       ///< short name beside the field; null: not in the window
    const char* prompt = "";           ///< the question, with its unit
    const char* help = "";             ///< shown on request
    std::vector<Choice> choices = {};  ///< empty: free entry
    FieldKind kind = FieldKind::kEntry;
    bool optional = false;  ///< of a file or a header word: "NONE" is an answer, too
    int position = 0;  ///< order in the window, ascending; equal positions keep the list's order
    std::function<bool()> applies = {};  ///< empty: always; tells from the variables' values
    /// Why an entry, as typed, is not taken over, or an empty text.
    std::function<std::string(const std::string& entry)> check = {};
    /// Lines to show beside the field in a type of fixed width; they follow its value.
    std::function<std::vector<std::string>()> preview = {};
};

/// Rows that repeat one key, such as offset and time pairs: the item reads and writes them itself.
struct Rows {
    std::function<void()> clear;                 ///< SetDefaults
    std::function<bool(const char* rest)> read;  ///< the text after "KEY="; false: malformed
    /// The rows as lines of the flow file, "KEY=…" each.
    std::function<std::vector<std::string>(const std::string& key)> lines;
    /// Where lines of several keys make one table, in their order: the key whose parameter has it;
    /// empty: this one's.
    std::string table = {};
    /// The rows as a spreadsheet for the window: column titles, and the cells as text.
    std::vector<const char*> columns = {};
    std::function<std::vector<std::vector<std::string>>()> cells = {};
    /// Takes a spreadsheet back; gives what is wrong with it, or an empty text.
    std::function<std::string(const std::vector<std::vector<std::string>>&)> assign = {};
    /// What one types after "KEY=", with units: "<offset>,<time, ms>".
    std::string line_form = {};
    /// What makes one suspect another order or unit in the text after "KEY=", or an empty text.
    std::function<std::string(const std::string& rest)> doubt = {};
};

/// One parameter of an item, declared once: defaults, flow file lines, log lines and window follow.
struct Parameter {
    const char* key;     ///< flow file key without "="
    const char* format;  ///< its printf conversion in the flow file; "" for rows
    std::variant<Bound<int>, Bound<float>, Bound<double>, Bound<std::string>, Rows> value;
    /// The log line; "%s" prints a choice's text where there are choices, else the conversion must
    /// fit the variable. Null: not logged.
    const char* log = nullptr;
    Field field = {};
    int longest = 199;    ///< characters that a text holds; longer entries are cut
    bool stored = true;   ///< false: asked in the window, but never in the flow file
    bool written = true;  ///< false: read from the flow file, but left out of what is written
};
using ParameterList = std::vector<Parameter>;

/// What the list says about all its parameters at once.
void set_defaults(const ParameterList& list);
/// Offers one flow file line to every parameter. False when no key matches.
bool read_line(const ParameterList& list, const char* line);
/// One "KEY=value\n" a parameter, in the list's order.
void write_lines(const ParameterList& list, std::FILE* stream);
/// The log line of one parameter with its value filled in; empty when it is not logged.
std::string log_line(const Parameter& parameter);
/// The value as the flow file spells it.
std::string value_text(const Parameter& parameter);

}  // namespace halvern
