#include "geometry/ascii_columns.h"

#include <algorithm>
#include <charconv>

#include "foundation/prospect.h"
#include "foundation/system_paths.h"
#include "geometry/ascii_table.h"

namespace halvern {

namespace {

constexpr const char* kTraceType = "TRACE";
constexpr const char* kNonTraceType = "NON-TRACE";

using Cells = std::vector<std::vector<std::string>>;

std::string default_path() {
    return CurrentProspect().is_open() ? CurrentProspect().path("nav", "NONE") : "NONE";
}

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::optional<int> whole_number(std::string_view text) {
    text = trimmed(text);
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size()) return {};
    return number;
}

/// Reads columns as a person types them, "10-20". Gives what is wrong, or an empty text.
std::string parse_range(const std::string& text, AsciiField& field) {
    const std::size_t minus = text.find('-');
    if (minus == text.npos) {
        return "Make sure to enter a range including a '-' character.  Example:   10-20.";
    }
    for (const auto& [part, column] : {std::pair(text.substr(0, minus), &field.first_column),
                                       std::pair(text.substr(minus + 1), &field.last_column)}) {
        const std::optional<int> number = whole_number(part);
        if (!number) return part + " is not a valid number.\n";
        *column = *number;
    }
    return {};
}

// The columns of both spreadsheets; match fields have the compare type as well.
enum Column { kHeaderColumn, kRangeColumn, kTypeColumn, kKeyColumn, kCompareColumn };

std::vector<std::string> cells_of(const AsciiField& field, bool match) {
    std::vector<std::string> cells = {field.name, field.range_text(),
                                      field.trace ? kTraceType : kNonTraceType, field.key};
    if (match) cells.emplace_back(ascii_compare_label(field.compare));
    return cells;
}

/// Reads one row of a spreadsheet. Gives what is wrong with it, or an empty text.
std::string parse_row(const std::vector<std::string>& row, bool match, AsciiField& field) {
    const auto cell = [&](std::size_t column) {
        return column < row.size() ? row[column] : std::string();
    };
    field.name = trimmed(cell(kHeaderColumn));
    if (field.name.empty() || field.name == "NONE") {
        return "Enter a header word other than 'None'";
    }
    if (std::string fault = parse_range(cell(kRangeColumn), field); !fault.empty()) return fault;
    const std::string type_cell = cell(kTypeColumn);
    const std::string_view type = trimmed(type_cell);
    if (type != kTraceType && type != kNonTraceType && !type.empty()) {
        return "Enter 'NON-TRACE' or 'TRACE' as trace type.";
    }
    field.trace = type != kNonTraceType;
    field.key = cell(kKeyColumn);
    if (!match) return {};
    const std::optional<int> compare = ascii_compare_of(trimmed(cell(kCompareColumn)));
    if (!compare) return "Enter one of =, !=, <, <=, > and >= as compare type.";
    field.compare = *compare;
    return {};
}

/// The list as lines of the flow file and as a spreadsheet that can be edited.
Rows rows_of(std::vector<AsciiField>& list, bool match) {
    Rows rows;
    rows.clear = [&list] { list.clear(); };
    rows.columns = {"Header", "Columns", "Trace Type", "Record Key"};
    if (match) rows.columns.push_back("Compare");
    rows.line_form = std::string(match ? "<compare type> " : "") +
                     "<header word> <first column> <last column>[ <1: TRACE, 0: NON-TRACE> <key>]";
    rows.read = [&list, match](const char* rest) {
        list.push_back(match ? AsciiField::parse_match(rest) : AsciiField::parse_data(rest));
        return true;
    };
    rows.lines = [&list, match](const std::string& key) {
        std::vector<std::string> lines;
        for (const AsciiField& field : list) {
            lines.push_back(key + "=" + (match ? field.match_text() : field.data_text()));
        }
        return lines;
    };
    rows.cells = [&list, match] {
        Cells cells;
        for (const AsciiField& field : list) cells.push_back(cells_of(field, match));
        return cells;
    };
    rows.assign = [&list, match](const Cells& cells) -> std::string {
        std::vector<AsciiField> fields(cells.size());
        for (std::size_t i = 0; i < cells.size(); ++i) {
            if (std::string fault = parse_row(cells[i], match, fields[i]); !fault.empty()) {
                return fault;
            }
        }
        list = std::move(fields);
        return {};
    };
    return rows;
}

/// How a line of the log ends for a field that has a record key.
std::string key_text(const AsciiField& field) {
    if (field.key.empty()) return {};
    return (field.trace ? " - TRACE -     key = '" : " - NON-TRACE - key = '") + field.key + "'";
}

}  // namespace

ParameterList AsciiColumns::parameters() {
    return {
        {.key = "INPUTTYPE",
         .format = "%d",
         .value = Bound{&method, kUpdate},
         .field = {.label = "Method",
                   .prompt = "What should be done with the ASCII records?",
                   .help = "CREATE makes one trace for each record, as the first item of a flow.\n"
                           "OVERWRITE puts the records into the traces one after the other.\n"
                           "UPDATE looks for the record that matches each trace.",
                   .choices = {{"CREATE", kCreate},
                               {"OVERWRITE", kOverwrite},
                               {"UPDATE", kUpdate}}}},
        {.key = "HEADERFILE",
         .format = "%s",
         .value = Bound{&header_file, DefaultHeaderPath()},
         .field = {.label = "Header File",
                   .prompt = "Header definition of the traces to create?",
                   .help = "Says which header word sits at which byte.",
                   .kind = FieldKind::kInputFile,
                   .applies = [this] { return method == kCreate; }},
         .stored = false},
        {.key = "STARTRECORD",
         .format = "%d",
         .value = Bound{&start_record, 0},
         .field = {.label = "Starting Line Number",
                   .prompt = "How many lines should be skipped?",
                   .help = "Lines at the top of the file that hold no data.",
                   .check =
                       [](const std::string& entry) {
                           return whole_number(entry) ? "" : "'" + entry + "' is not an integer.";
                       }}},
        {.key = "FILENAME",
         .format = "%s",
         .value = Bound{&file, default_path()},
         .field = {.label = "FileName",
                   .prompt = "Select the ASCII file.",
                   .help = "Choose a text file with values in fixed columns.",
                   .kind = FieldKind::kInputFile,
                   .preview = [this] { return preview(); }}},
        {.key = "DATAHEADER",
         .format = "",
         .value = rows_of(data, false),
         .field = {.label = "DATA Headers",
                   .prompt = "Headers to set from the file?",
                   .help = "These header words get the values of the matching ASCII record.\n"
                           "Columns count from 1, both ends included, as in 10-20.\n"
                           "With a record key a header is taken from those lines only that\n"
                           "begin with it.  NON-TRACE lines add to the record of the next\n"
                           "TRACE line."}},
        {.key = "MATCHHEADER",
         .format = "",
         .value = rows_of(match, true),
         .field = {.label = "MATCH Headers",
                   .prompt = "Headers that tell which record belongs to a trace?",
                   .help = "UPDATE takes the record for which all of these hold, read as: trace\n"
                           "value, operator, record value.  OVERWRITE and CREATE set them like\n"
                           "DATA headers."}},
    };
}

DialogTexts AsciiColumns::window_texts() {
    return {.title = "ASCII File Input Parameters",
            .help_title = "",
            .help_page = "",
            .already_up = "ASCII File Input Interface is already up."};
}

/// The first three lines of the file under a ruler that counts columns from 1.
std::vector<std::string> AsciiColumns::preview() const {
    LineReader lines(file, kLongestLine);
    std::vector<std::string> shown;
    std::string_view line;
    while (shown.size() < 3 && lines.next(line)) shown.emplace_back(line);
    std::size_t width = 0;
    for (const std::string& text : shown) width = std::max(width, text.size());
    std::string tens, units;
    for (std::size_t column = 1; column <= width; ++column) {
        units += static_cast<char>('0' + column % 10);
        if (column % 10 == 0) {
            const std::string number = std::to_string(column);
            tens.resize(column - number.size(), ' ');
            tens += number;
        }
    }
    if (!shown.empty()) shown.insert(shown.begin(), {tens, units});
    return shown;
}

void AsciiColumns::log(const FlowItem& item) const {
    item.Message("ASCII File Name = %s\n", file.c_str());
    switch (method) {
        case kOverwrite:
            item.Message("%s", kOverwriteLine);
            break;
        case kUpdate:
            item.Message("Method          = UPDATE EXISTING HEADERS\n");
            break;
        case kCreate:
            item.Message("Method          = CREATE NEW HEADERS\n");
            item.Message("Header definition file name = %s\n", header_file.c_str());
            break;
        default:
            break;  // refused when the run is prepared
    }
    item.Message("Starting Record = %d\n", start_record);
    for (const AsciiField& field : data) {
        item.Message("Data Header     = %s from locations %d through %d%s\n", field.name.c_str(),
                     field.first_column, field.last_column, key_text(field).c_str());
    }
    for (const AsciiField& field : match) {
        const char* label = ascii_compare_label(field.compare);
        const std::string compare = std::string(label) + (label[1] == '\0' ? " " : "");
        // With a record key the two names change places, as readers of these logs
        // know them.
        const bool keyed = !field.key.empty();
        item.Message("Match Header     = %s using '%s' from locations %d through %d%s\n",
                     keyed ? compare.c_str() : field.name.c_str(),
                     keyed ? field.name.c_str() : compare.c_str(), field.first_column,
                     field.last_column, key_text(field).c_str());
    }
}

bool AsciiColumns::find_words(const FlowItem& item, const TraceHeaderDefinition& header) {
    for (std::vector<AsciiField>* list : {&data, &match}) {
        for (AsciiField& field : *list) {
            field.word = header.find(field.name);
            if (field.word < 0) {
                item.Error("Invalid header word '%s'\n", field.name.c_str());
                return false;
            }
            field.floating = header.type(field.word) == static_cast<int>(HeaderType::kR4);
        }
    }
    return true;
}

bool AsciiColumns::check(const FlowItem& item) const {
    if (method < kOverwrite || method > kCreate) {
        item.Error("There is no method '%d'.\n", method);
        return false;
    }
    if (method == kUpdate && match.empty()) {
        item.Error("There must be at least one MATCH HEADER in UPDATE mode.\n");
        item.Error("The MATCH HEADERS are used to syncronize the ASCII file with the SEGY file.\n");
        return false;
    }
    if (method == kUpdate && data.empty()) {
        item.Error("There must be at least one DATA HEADER in UPDATE mode.\n");
        item.Error("The DATA HEADERS are updated when an ASCII record matches a SEGY record.\n");
        return false;
    }
    if (match.empty() && data.empty()) {
        item.Error(
            "There must be at least one MATCH HEADER or DATA HEADER in OVERWRITE or CREATE "
            "mode.\n");
        return false;
    }
    for (const std::vector<AsciiField>* list : {&data, &match}) {
        for (const AsciiField& field : *list) {
            if (field.first_column >= 1 && field.last_column >= field.first_column) continue;
            item.Error("The header '%s' has no valid columns.  You have entered '%s'.\n",
                       field.name.c_str(), field.range_text().c_str());
            return false;
        }
    }
    return true;
}

std::optional<LineReader> AsciiColumns::open(const FlowItem& item) const {
    LineReader lines(file, kLongestLine);
    if (!lines.opened()) {
        item.Error("Cannot open file to read: '%s'\n", file.c_str());
        return {};
    }
    std::string_view line;
    for (int i = 0; i < start_record && lines.next(line); ++i) {
    }
    return lines;
}

bool AsciiColumns::take_line(std::string_view line, const LineReader& lines,
                             TraceHeaderDefinition& header) const {
    bool complete = false;
    for (const std::vector<AsciiField>* list : {&data, &match}) {
        for (const AsciiField& field : *list) {
            if (!field.applies_to(line)) continue;
            const AsciiValue value(field.value(line, lines.ended()), field.floating);
            header.set_double(field.word, value.number(field.floating));
            complete = complete || field.completes();
        }
    }
    return complete;
}

bool AsciiColumns::has_coordinates() const {
    constexpr std::string_view kCoordinates[] = {"SRCX", "SRCY", "RECX", "RECY", "CDPX", "CDPY"};
    const auto is_coordinate = [&](const AsciiField& field) {
        return std::ranges::find(kCoordinates, field.name) != std::end(kCoordinates);
    };
    return std::ranges::any_of(data, is_coordinate) ||
           (method != kUpdate && std::ranges::any_of(match, is_coordinate));
}

}  // namespace halvern
