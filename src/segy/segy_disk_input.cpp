#include "segy/segy_disk_input.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "flow/shared_parameters.h"
#include "foundation/words.h"
#include "segy/segy_paths.h"

namespace halvern {

namespace {

constexpr int kSelectedTraces = 0;
constexpr int kAllTraces = 1;

}  // namespace

SegyDiskInput::SegyDiskInput(const FlowSection& section, LogFlag log)
    : SegyInput(FlowItemKind::kSegyDiskInput, log) {
    Configure(section);
}

ParameterList SegyDiskInput::Parameters() {
    const auto selects = [this] { return read_all_ != kAllTraces; };
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, default_segy_path()},
         .log = "Input disk file             = %s\n",
         .field = {.label = "FileName",
                   .prompt = "SEG-Y Disk File to read.",
                   .help = "Choose a disk SEG-Y file from any directory.",
                   .kind = FieldKind::kInputFile}},
        header_file_parameter(
            header_file_, "Header file description to read.",
            "Choose the header definition file which matches the selected file.  If this file has "
            "been created outside of Halvern, you may need to define a new header definition.  You "
            "can do this under the 'Configure' menu by selecting the 'Edit SEG-Y Header "
            "Definitions...' item."),
        {.key = "READALLTRACES",
         .format = "%d",
         .value = Bound{&read_all_, kAllTraces},
         .field = {.label = "ReadWhich",
                   .prompt = "Read ALL traces or the SELECTED traces below?",
                   .help =
                       "ALL Traces - reads all traces in the input file.\n"
                       "SELECTED Traces - only reads traces whose value in the following header "
                       "falls in the following ranges.",
                   .choices = {{"ALL Traces", kAllTraces}, {"SELECTED Traces", kSelectedTraces}}}},
        {.key = "SELECTHEADER",
         .format = "%s",
         .value = Bound{&select_header_, "NONE"},
         .log = "Selection Header          = %s\n",
         .field = {.label = "HeaderName",
                   .prompt = "Header to use for range selection.",
                   .help =
                       "Select a SEG-Y trace header to use in the selecting of traces to read.  "
                       "The values for the header word selected in each trace are compared "
                       "against the ranges in the following question.  A common selection is "
                       "FFID.",
                   .kind = FieldKind::kHeaderWord,
                   .applies = selects},
         .longest = 23},
        {.key = "SELECTRANGE",
         .format = "%s",
         .value = Bound{&select_range_, ""},
         .log = "Selection Ranges          = %s\n",
         .field = {.label = "Ranges",
                   .prompt = "Range(s) of the above header word to read?",
                   .help =
                       "Enter a range to compare against the value in the header word above.  "
                       "The range should be of the format:\n'X-Y'  or  'X-Y(Z)'\n"
                       "If the header key is FFID and the range entered is 100-200, only traces "
                       "with FFID values between 100 and 200 pass.  100-200(2) means only the "
                       "numbers 100, 102, ..., 200 pass.",
                   .applies = selects}},
    };
}

DialogTexts SegyDiskInput::WindowTexts() const {
    DialogTexts texts = InputFlowItem::WindowTexts();
    texts.help_title = "SEGY Disk Input Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyDiskInput::LogParameters() {
    LogParameter("FILE");
    LogParameter("HEADERFILE");
    if (read_all_ == kAllTraces) {
        Message("Reading all traces\n");
    } else {
        Message("Reading selected traces:\n");
        LogParameter("SELECTHEADER");
        LogParameter("SELECTRANGE");
    }
}

void SegyDiskInput::OpenSource() {
    std::error_code failed;
    if (!std::filesystem::exists(file_, failed)) {
        Error("Input file '%s' does not exist.\n", file_.c_str());
        return TerminateJob(kJobError);
    }
    if (!OpenReader(file_)) return;
    if (read_all_ != kAllTraces) StartSelection();
}

void SegyDiskInput::StartSelection() {
    std::optional<RangeList> ranges = parse_ranges(select_range_);
    if (!ranges) {
        Error("Cannot parse ranges: %s'\n", select_range_.c_str());
        return TerminateJob(kJobError);
    }
    ranges_ = std::move(*ranges);
    for (int number = 1; const Range& range : ranges_) {
        if (range.has_increment) {
            Message("Range %d: Start %3.1f, End %3.1f, Inc %3.1f\n", number, range.start, range.end,
                    range.increment);
        } else {
            Message("Range %d: Start %3.1f, End %3.1f\n", number, range.start, range.end);
        }
        ++number;
    }
    if (select_header_ == "NONE") return;
    select_word_ = reader_.definition().find(select_header_);
    if (select_word_ < 0) {
        Warning("The header '%s' is not defined; every trace is read.\n", select_header_.c_str());
    }
    if (select_header_ == "TRNUML" || select_header_ == "TRNUMR") FastForward();
}

void SegyDiskInput::FastForward() {
    if (ranges_.empty()) return;
    const double start = std::trunc(ranges_.front().start) + 0.0;  // no negative zero
    Message("Fast-forward to trace #%.0f\n", start);
    const bool skips_wanted = std::ranges::any_of(ranges_, [start](const Range& range) {
        return std::trunc(std::min(range.start, range.end)) < start &&
               (range.has_increment || range.start <= range.end);
    });
    if (skips_wanted) {
        Warning("The ranges also name traces before #%.0f; the fast-forward skips them.\n", start);
    }
    // Numbers count from 1, positions from 0; a number beyond an end means that end.
    const auto last = static_cast<double>(SourceTraceCount());
    if (start > 1 && start <= last) forward_to_ = start;
    MoveTo(start > 1 ? static_cast<std::int64_t>(std::min(start - 1, last)) : 0);
}

ReadResult SegyDiskInput::ReadNext() {
    const ReadResult result = SegyInput::ReadNext();
    if (result != ReadResult::kTrace || select_word_ < 0) return result;
    const double value = reader_.definition().get_double(select_word_);
    if (forward_to_) {
        if (value != *forward_to_) {
            Warning(
                "The fast-forward goes by positions: trace #%.0f of the file has %s %s.  Traces "
                "before it are not read.\n",
                *forward_to_, select_header_.c_str(), in_words(value).c_str());
        }
        forward_to_.reset();
    }
    return in_ranges(value, ranges_) ? ReadResult::kTrace : ReadResult::kSkipped;
}

}  // namespace halvern
