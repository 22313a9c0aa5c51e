#include "geometry/ascii_input.h"

#include <algorithm>
#include <charconv>
#include <limits>

#include "foundation/prospect.h"
#include "foundation/system_paths.h"

namespace halvern {

namespace {

/// Lines are read as far as this, their end counted; what is longer goes on as a line of its own.
constexpr std::size_t kLongestLine = 998;

// Created traces have a sample buffer of 3,600 bytes.
constexpr int kCreatedSamples = 900;
constexpr int kCreatedIntervalMs = 4;

constexpr const char* kOverwriteLine = "Method          = OVERWRITE EXISTING HEADERS\n";

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

/// The list as a spreadsheet that can be edited.
void bind_rows(Rows& rows, std::vector<AsciiField>& list, bool match) {
    rows.clear = [&list] { list.clear(); };
    rows.columns = {"Header", "Columns", "Trace Type", "Record Key"};
    if (match) rows.columns.push_back("Compare");
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
}

/// How a line of the log ends for a field that has a record key.
std::string key_text(const AsciiField& field) {
    if (field.key.empty()) return {};
    return (field.trace ? " - TRACE -     key = '" : " - NON-TRACE - key = '") + field.key + "'";
}

}  // namespace

AsciiInput::AsciiInput(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kAsciiInput, log) {
    Configure(section);
}

Parameter AsciiInput::DataParameter() {
    Rows rows;
    bind_rows(rows, data_, false);
    rows.read = [this](const char* rest) {
        data_.push_back(AsciiField::parse_data(rest));
        return true;
    };
    rows.write = [this](std::FILE* stream, const char* key) {
        for (const AsciiField& field : data_) {
            std::fprintf(stream, "%s=%s\n", key, field.data_text().c_str());
        }
    };
    return {.key = "DATAHEADER",
            .format = "",
            .value = std::move(rows),
            .field = {.label = "DATA Headers",
                      .prompt = "Headers to set from the file?",
                      .help = "These header words get the values of the matching ASCII record.\n"
                              "Columns count from 1, both ends included, as in 10-20.\n"
                              "With a record key a header is taken from those lines only that\n"
                              "begin with it.  NON-TRACE lines add to the record of the next\n"
                              "TRACE line."}};
}

Parameter AsciiInput::MatchParameter() {
    Rows rows;
    bind_rows(rows, match_, true);
    rows.read = [this](const char* rest) {
        match_.push_back(AsciiField::parse_match(rest));
        return true;
    };
    rows.write = [this](std::FILE* stream, const char* key) {
        for (const AsciiField& field : match_) {
            std::fprintf(stream, "%s=%s\n", key, field.match_text().c_str());
        }
    };
    return {
        .key = "MATCHHEADER",
        .format = "",
        .value = std::move(rows),
        .field = {.label = "MATCH Headers",
                  .prompt = "Headers that tell which record belongs to a trace?",
                  .help = "UPDATE takes the record for which all of these hold, read as: trace\n"
                          "value, operator, record value.  OVERWRITE and CREATE set them like\n"
                          "DATA headers."}};
}

ParameterList AsciiInput::Parameters() {
    return {
        {.key = "INPUTTYPE",
         .format = "%d",
         .value = Bound{&method_, kUpdate},
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
         .value = Bound{&header_file_, DefaultHeaderPath()},
         .field = {.label = "Header File",
                   .prompt = "Header definition of the traces to create?",
                   .help = "Says which header word sits at which byte.",
                   .kind = FieldKind::kInputFile,
                   .applies = [this] { return method_ == kCreate; }},
         .stored = false},
        {.key = "STARTRECORD",
         .format = "%d",
         .value = Bound{&start_record_, 0},
         .field = {.label = "Starting Line Number",
                   .prompt = "How many lines should be skipped?",
                   .help = "Lines at the top of the file that hold no data.",
                   .check =
                       [](const std::string& entry) {
                           return whole_number(entry) ? "" : "'" + entry + "' is not an integer.";
                       }}},
        {.key = "FILENAME",
         .format = "%s",
         .value = Bound{&file_, default_path()},
         .field = {.label = "FileName",
                   .prompt = "Select the ASCII file.",
                   .help = "Choose a text file with values in fixed columns.",
                   .kind = FieldKind::kInputFile,
                   .preview = [this] { return PreviewFile(); }}},
        DataParameter(),
        MatchParameter(),
    };
}

DialogTexts AsciiInput::WindowTexts() const {
    return {.title = "ASCII File Input Parameters",
            .help_title = "",
            .help_page = "",
            .already_up = "ASCII File Input Interface is already up."};
}

/// The first three lines of the file under a ruler that counts columns from 1.
std::vector<std::string> AsciiInput::PreviewFile() const {
    LineReader lines(file_, kLongestLine);
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

void AsciiInput::LogParameters() {
    Message("ASCII File Name = %s\n", file_.c_str());
    switch (method_) {
        case kOverwrite:
            Message("%s", kOverwriteLine);
            break;
        case kUpdate:
            Message("Method          = UPDATE EXISTING HEADERS\n");
            break;
        case kCreate:
            Message("Method          = CREATE NEW HEADERS\n");
            Message("Header definition file name = %s\n", header_file_.c_str());
            break;
        default:
            break;  // refused when the run is prepared
    }
    Message("Starting Record = %d\n", start_record_);
    for (const AsciiField& field : data_) {
        Message("Data Header     = %s from locations %d through %d%s\n", field.name.c_str(),
                field.first_column, field.last_column, key_text(field).c_str());
    }
    for (const AsciiField& field : match_) {
        const char* label = ascii_compare_label(field.compare);
        const std::string compare = std::string(label) + (label[1] == '\0' ? " " : "");
        // With a record key the two names stand in each other's place, as readers of these logs
        // know them.
        const bool keyed = !field.key.empty();
        Message("Match Header     = %s using '%s' from locations %d through %d%s\n",
                keyed ? compare.c_str() : field.name.c_str(),
                keyed ? field.name.c_str() : compare.c_str(), field.first_column, field.last_column,
                key_text(field).c_str());
    }
}

bool AsciiInput::FindWords(const TraceHeaderDefinition& header) {
    for (std::vector<AsciiField>* list : {&data_, &match_}) {
        for (AsciiField& field : *list) {
            field.word = header.find(field.name);
            if (field.word < 0) {
                Error("Invalid header word '%s'\n", field.name.c_str());
                return false;
            }
            field.floating = header.type(field.word) == static_cast<int>(HeaderType::kR4);
        }
    }
    return true;
}

bool AsciiInput::CheckFields() const {
    if (method_ < kOverwrite || method_ > kCreate) {
        Error("There is no method '%d'.\n", method_);
        return false;
    }
    if (method_ == kUpdate && match_.empty()) {
        Error("There must be at least one MATCH HEADER in UPDATE mode.\n");
        Error("The MATCH HEADERS are used to syncronize the ASCII file with the SEGY file.\n");
        return false;
    }
    if (method_ == kUpdate && data_.empty()) {
        Error("There must be at least one DATA HEADER in UPDATE mode.\n");
        Error("The DATA HEADERS are updated when an ASCII record matches a SEGY record.\n");
        return false;
    }
    if (match_.empty() && data_.empty()) {
        Error(
            "There must be at least one MATCH HEADER or DATA HEADER in OVERWRITE or CREATE "
            "mode.\n");
        return false;
    }
    for (const std::vector<AsciiField>* list : {&data_, &match_}) {
        for (const AsciiField& field : *list) {
            if (field.first_column >= 1 && field.last_column >= field.first_column) continue;
            Error("The header '%s' has no valid columns.  You have entered '%s'.\n",
                  field.name.c_str(), field.range_text().c_str());
            return false;
        }
    }
    if (method_ == kCreate && previous()) {
        Error("CREATE can only be used as the first item in a flow.\n");
        return false;
    }
    return true;
}

void AsciiInput::PutEqualsFirst() {
    // Swaps, not a stable partition: where several fields are no "=", their order may change.
    for (std::size_t i = 0; i < match_.size(); ++i) {
        for (std::size_t j = i + 1; j < match_.size(); ++j) {
            if (match_[i].compare != kEqual && match_[j].compare == kEqual) {
                std::swap(match_[i], match_[j]);
            }
        }
    }
}

bool AsciiInput::OpenFile() {
    lines_.emplace(file_, kLongestLine);
    if (!lines_->opened()) {
        Error("Cannot open file to read: '%s'\n", file_.c_str());
        return false;
    }
    std::string_view line;
    for (int i = 0; i < start_record_ && lines_->next(line); ++i) {
    }
    return true;
}

bool AsciiInput::LoadRecords() {
    Message("Scanning the ASCII Input file.\n");
    table_ = AsciiTable(match_, data_);
    if (table_.read(*lines_) != 0) {
        Error("Cannot read file: '%s'\n", file_.c_str());
        return false;
    }
    if (table_.records() == 0) {
        Error("No records in file: '%s'\n", file_.c_str());
        return false;
    }
    table_.sort();
    values_.resize(match_.size());
    return true;
}

void AsciiInput::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    bool ready = FindWords(header) && CheckFields();
    if (ready) {
        PutEqualsFirst();
        ready = OpenFile() && (method_ != kUpdate || LoadRecords());
    }
    if (!ready) TerminateJob(kJobError);
}

/// Writes the values of lines into the header until one completes a record. False at the end of the
/// file.
bool AsciiInput::ReadRecord(TraceHeaderDefinition& header) {
    std::string_view line;
    while (lines_ && lines_->next(line)) {
        bool complete = false;
        for (const std::vector<AsciiField>* list : {&data_, &match_}) {
            for (const AsciiField& field : *list) {
                if (!field.applies_to(line)) continue;
                const AsciiValue value(field.value(line, lines_->ended()), field.floating);
                header.set_double(field.word, value.number(field.floating));
                complete = complete || field.completes();
            }
        }
        if (complete) return true;
    }
    if (lines_ && lines_->fault()) {
        Error("Cannot read file: '%s'\n", file_.c_str());
        TerminateJob(kJobError);
    }
    return false;
}

void AsciiInput::UpdateTrace(TraceHeaderDefinition& header) {
    for (std::size_t i = 0; i < match_.size(); ++i) {
        const AsciiField& field = match_[i];
        values_[i] = field.floating ? AsciiValue(header.get_double(field.word), true)
                                    : AsciiValue(header.get_int(field.word), false);
    }
    const int record = table_.find(values_);
    if (record < 0) return;
    for (std::size_t i = 0; i < data_.size(); ++i) {
        const AsciiValue value = table_.data_value(record, i);
        header.set_double(data_[i].word, value.number(data_[i].floating));
    }
    ++matched_;
}

int AsciiInput::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    if (method_ == kUpdate) {
        UpdateTrace(header);
    } else if (method_ == kOverwrite) {
        ReadRecord(header);
    }
    return kPassOn;
}

void AsciiInput::RunInput() {
    if (method_ != kCreate) {
        Error("Only CREATE can be used as the first item in a flow.\n");
        // The other method is left unnamed on purpose: it is the default, which nobody chose.
        if (method_ == kOverwrite) Error("%s", kOverwriteLine);
        return TerminateJob(kJobError);
    }
    created_ = std::make_unique<Created>();
    Created& made = *created_;
    if (made.header.load(header_file_) != 0) {
        Error("Cannot read trace header format '%s'.\n", header_file_.c_str());
        return TerminateJob(kJobError);
    }
    made.header.attach(made.image.data());
    made.line.build_from_definition(header_file_, SampleInterval::of_ms(kCreatedIntervalMs),
                                    kCreatedSamples, SampleFormat::kIeee);
    made.record.resize(kCreatedSamples * sizeof(float));
    made.samples.set_raw(made.record, kCreatedSamples, kCreatedSamples, kCreatedSamples,
                         SampleFormat::kIeee);
    made.expected = static_cast<int>(std::min<std::int64_t>(
        LineReader(file_, kLongestLine).count_lines(), std::numeric_limits<int>::max()));
    Message("Creating traces of %d samples at %d ms, IEEE floating point.\n", kCreatedSamples,
            kCreatedIntervalMs);
    PrepareChain(made.line, made.header, made.samples, made.expected);
    CreateTraces();
}

void AsciiInput::ResumeInput() {
    if (!created_) return;
    LogPrint("Resuming Data Read\n");
    CreateTraces();
}

void AsciiInput::CreateTraces() {
    Created& made = *created_;
    // The header is not cleared in between: a word that a record does not set stays as it was.
    while (ReadRecord(made.header)) {
        made.samples.set_raw(made.record, kCreatedSamples, kCreatedSamples, kCreatedSamples,
                             SampleFormat::kIeee);
        ++made.sent;
        SendTrace(made.line, made.header, made.samples);
        if (JobStopRequested()) {
            LogPrint("The job was asked to stop.\n");
            return TerminateJob(kJobError);
        }
        if (ReadPauseFlag == 1) return;
    }
    lines_.reset();
    if (FlushChain() == 1) EndChain();
    created_.reset();
}

int AsciiInput::GetInputTraceCount() {
    return created_ ? created_->expected : ProcessFlowItem::GetInputTraceCount();
}
std::int64_t AsciiInput::InputTracesRead() {
    return created_ ? created_->sent : ProcessFlowItem::InputTracesRead();
}
const char* AsciiInput::GetInputHeaderName() {
    return created_ ? header_file_.c_str() : ProcessFlowItem::GetInputHeaderName();
}

}  // namespace halvern
