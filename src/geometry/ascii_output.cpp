#include "geometry/ascii_output.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>

#include "flow/item_checks.h"
#include "foundation/prospect.h"

namespace halvern {

namespace {

constexpr const char* kNone = "NONE";
constexpr int kWidest = 100;
constexpr int kMostDecimals = 20;
// What ASCII Data Input looks at from a field's first column on, the line's end counted as one.
constexpr int kShortestField = 3;

std::string default_path() {
    return CurrentProspect().is_open() ? CurrentProspect().path("data", kNone) : kNone;
}

}  // namespace

const RowTable<AsciiOutput::Column> AsciiOutput::Column::kTable(
    {.key = "COLUMN",
     .entry = "Header/Width/Decimals",
     .row = "header word with a width and decimals, as in COLUMN=SRCX,12,1",
     .window = {0, 1, 2},
     .quoted = {0, 1, 2},
     .checked = {0, 1, 2}},
    {{{.title = "Header", .label = "Header word"}, &Column::word},
     {{.title = "Width", .label = "Width", .unit = "characters", .least = 1, .most = kWidest},
      &Column::width},
     {{.title = "Decimals", .label = "Decimals", .most = kMostDecimals}, &Column::decimals}});

AsciiOutput::AsciiOutput(const FlowSection& section, LogFlag log)
    : OutputFlowItem(FlowItemKind::kAsciiOutput, log) {
    Configure(section);
}

ParameterList AsciiOutput::Parameters() {
    const auto with_samples = [this] { return samples_ == 1; };
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, default_path()},
         .log = "Output file = %s\n",
         .field = {.label = "FileName",
                   .prompt = "Text file to write.",
                   .kind = FieldKind::kOutputFile}},
        Column::kTable.parameter(
            columns_, *this,
            {.label = "Columns",
             .prompt = "Header words, widths and decimals of the columns?",
             .help = "SRCX,12,1 is a column of 12 characters with one decimal."},
            &malformed_),
        {.key = "HEADING",
         .format = "%d",
         .value = Bound{&heading_, 1},
         .log = "Heading line = %s\n",
         .field = {.label = "Heading",
                   .prompt = "A heading line with the names of the words?",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "SEPARATOR",
         .format = "%d",
         .value = Bound{&separator_, kFixed},
         .log = "Columns are = %s\n",
         .field = {.label = "Separator",
                   .prompt = "How are columns divided?",
                   .help = "ASCII Data Input reads fixed columns.",
                   .choices = {{"Fixed columns", kFixed}, {"Commas", kComma}}}},
        {.key = "CHANGEHEADER",
         .format = "%s",
         .value = Bound{&change_word_, kNone},
         .log = "A line where this word changes = %s\n",
         .field = {.label = "Change",
                   .prompt = "Header word whose changes make a line?",
                   .help = "FFID gives a line a record.  NONE: a line a trace.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "SAMPLES",
         .format = "%d",
         .value = Bound{&samples_, 0},
         .field = {.label = "Samples",
                   .prompt = "Write samples behind the words?",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "START",
         .format = "%f",
         .value = Bound{&start_ms_, 0.0},
         .log = "Samples from = %f\n",
         .field = {.label = "Start",
                   .prompt = "Time of the first sample (in msec.)?",
                   .applies = with_samples}},
        {.key = "END",
         .format = "%f",
         .value = Bound{&end_ms_, 0.0},
         .log = "Samples to = %f\n",
         .field = {.label = "End",
                   .prompt = "Time of the last sample (in msec.)?",
                   .help = "0: the trace's end.",
                   .applies = with_samples}},
        {.key = "EVERYSAMPLE",
         .format = "%d",
         .value = Bound{&every_, 1},
         .log = "Every n-th sample = %d\n",
         .field = {.label = "Every",
                   .prompt = "Write every how many samples?",
                   .applies = with_samples}},
        {.key = "SAMPLEWIDTH",
         .format = "%d",
         .value = Bound{&sample_width_, 12},
         .field = {.label = "Width",
                   .prompt = "Width of a sample's column?",
                   .applies = with_samples}},
        {.key = "SAMPLEDECIMALS",
         .format = "%d",
         .value = Bound{&sample_decimals_, 4},
         .field = {.label = "Decimals",
                   .prompt = "Decimals of a sample?",
                   .applies = with_samples}},
    };
}

void AsciiOutput::LogParameters() {
    LogParameter("FILE");
    for (const Column& column : columns_)
        Message("Column = %s, width %d, decimals %d\n", column.word.c_str(), column.width,
                column.decimals);
    for (const char* key : {"HEADING", "SEPARATOR", "CHANGEHEADER"}) LogParameter(key);
    if (samples_ != 1) return;
    for (const char* key : {"START", "END", "EVERYSAMPLE"}) LogParameter(key);
}

std::string AsciiOutput::RefuseParameters() {
    if (columns_.empty() && samples_ != 1) return "There is no column to write.";
    return {};
}

bool AsciiOutput::CheckColumns(const TraceHeaderDefinition& header) {
    if (!malformed_.empty()) {
        Error(
            "'%s' is no column: a header word, its width and its decimals are due, as in "
            "COLUMN=SRCX,12,1.\n",
            malformed_.front().c_str());
        return false;
    }
    if (columns_.empty() && samples_ != 1) {
        Error("There is no column to write.\n");
        return false;
    }
    words_.clear();
    for (const Column& column : columns_) {
        if (column.width < 1 || column.width > kWidest || column.decimals < 0 ||
            column.decimals > kMostDecimals) {
            Error("The column of '%s' needs a width from 1 to %d and decimals from 0 to %d.\n",
                  column.word.c_str(), kWidest, kMostDecimals);
            return false;
        }
        words_.push_back(RequireHeaderWord(*this, header, column.word.c_str()));
        if (words_.back() < 0) return false;
    }
    change_index_ = -1;
    if (change_word_ == kNone) return true;
    change_index_ = RequireHeaderWord(*this, header, change_word_.c_str());
    return change_index_ >= 0;
}

bool AsciiOutput::CheckSamples(const LineHeader& line) {
    first_sample_ = end_sample_ = 0;
    if (samples_ != 1) return true;
    if (every_ < 1 || sample_width_ < 1 || sample_width_ > kWidest || sample_decimals_ < 0 ||
        sample_decimals_ > kMostDecimals || !line.sample_interval()) {
        Error(
            "Samples need a sample interval, every 1st or more, a width from 1 to %d and decimals "
            "from 0 to %d.\n",
            kWidest, kMostDecimals);
        return false;
    }
    const double interval_ms = line.sample_interval().ms();
    const double count = std::max(line.samples(), 0);
    const auto place = [&](double ms) {
        return std::clamp(std::floor(ms / interval_ms + 0.5), 0.0, count);
    };
    first_sample_ = static_cast<std::size_t>(place(start_ms_));
    end_sample_ =
        static_cast<std::size_t>(end_ms_ > 0 ? std::min(place(end_ms_) + 1, count) : count);
    if (first_sample_ < end_sample_) return true;
    Error("No sample lies from %f to %f ms.\n", start_ms_, end_ms_);
    return false;
}

void AsciiOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    lines_ = too_wide_ = 0;
    any_ = false;
    if (!CheckOutputPath(file_, false) || !CheckColumns(header) || !CheckSamples(line)) {
        return TerminateJob(kJobError);
    }
    std::error_code failed;
    const std::filesystem::path path = std::filesystem::absolute(file_, failed);
    if (std::filesystem::is_directory(path, failed) ||
        !std::filesystem::is_directory(path.parent_path(), failed)) {
        Error("Cannot open output file '%s'.  Check disk space and permissions.\n", file_.c_str());
        return TerminateJob(kJobError);
    }
}

void AsciiOutput::Fail(const std::string& reason) {
    Error("Cannot write the output file '%s': %s.\n", file_.c_str(), reason.c_str());
    TerminateJob(kJobError);
}

bool AsciiOutput::Begin() {
    Result<ReplacedFile> target = ReplacedFile::begin(file_);
    if (!target) {
        Fail(target.fault().reason());
        return false;
    }
    target_.emplace(std::move(*target));
    if (const Fault fault = out_.open(target_->beside(), BlockWriter::Mode::kCreate)) {
        Fail(fault.reason());
        return false;
    }
    if (heading_ != 1) return true;
    line_.clear();
    for (const Column& column : columns_) {
        std::string_view name = column.word;
        if (separator_ == kFixed) name = name.substr(0, static_cast<std::size_t>(column.width));
        AddField(name, column.width);
    }
    for (std::size_t i = first_sample_; i < end_sample_; i += static_cast<std::size_t>(every_)) {
        AddField(std::to_string(i + 1), sample_width_);
    }
    EndLine();
    return true;
}

void AsciiOutput::AddField(std::string_view text, int width) {
    if (!line_.empty()) line_ += separator_ == kComma ? ',' : ' ';
    const auto wide = static_cast<std::size_t>(width);
    if (separator_ == kFixed && text.size() < wide) line_.append(wide - text.size(), ' ');
    line_ += text;
}

void AsciiOutput::AddNumber(double value, int width, int decimals) {
    char text[400];  // the largest double has 309 digits
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    std::string_view written(text, static_cast<std::size_t>(end.ptr - text));
    // A negative number may have been rounded to zero, which has no sign.
    if (written.starts_with('-') && written.find_first_not_of("-0.") == written.npos) {
        written.remove_prefix(1);
    }
    const bool too_wide = separator_ == kFixed && written.size() > static_cast<std::size_t>(width);
    if (too_wide || !std::isfinite(value)) {
        ++too_wide_;
        return AddField(std::string(static_cast<std::size_t>(width), '*'), width);
    }
    AddField(written, width);
}

void AsciiOutput::EndLine() {
    // A last column narrower than that would not be read.
    if (separator_ == kFixed && samples_ != 1) {
        const int narrow = kShortestField - columns_.back().width;
        if (narrow > 0) line_.append(static_cast<std::size_t>(narrow), ' ');
    }
    line_ += '\n';
    if (out_.write(std::as_bytes(std::span(line_))) < line_.size()) Fail(out_.fault().reason());
}

int AsciiOutput::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    if (IsRepeating()) return kPassOn;  // its line has been written
    if (change_index_ >= 0) {
        const double value = header.get_double(change_index_);
        if (any_ && value == change_value_) return kPassOn;
        change_value_ = value;
    }
    any_ = true;
    if (!target_ && !Begin()) return kKeepBack;
    line_.clear();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
        AddNumber(header.get_double(words_[i]), columns_[i].width, columns_[i].decimals);
    }
    if (samples_ == 1) {
        const std::span<const float> trace = samples.floats(header);
        for (std::size_t i = first_sample_; i < std::min(end_sample_, trace.size());
             i += static_cast<std::size_t>(every_)) {
            AddNumber(trace[i], sample_width_, sample_decimals_);
        }
    }
    EndLine();
    ++lines_;
    return kPassOn;
}

void AsciiOutput::EndRun() {
    if (!target_) return Warning("No trace came: '%s' is as it was.\n", file_.c_str());
    if (const Fault fault = out_.finish()) return Fail(fault.reason());
    if (const Fault fault = target_->commit()) return Fail(fault.reason());
    target_.reset();
    Message("Wrote %lld lines to '%s'.\n", static_cast<long long>(lines_), file_.c_str());
    if (too_wide_ > 0) {
        Warning(
            "%lld values are wider than their columns, or no numbers: asterisks stand for them.\n",
            static_cast<long long>(too_wide_));
    }
}

}  // namespace halvern
