#include "items/trace_select.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "flow/item_checks.h"
#include "foundation/words.h"
#include "platform/text_file.h"

namespace halvern {

namespace {

constexpr const char* kNone = "NONE";
constexpr std::size_t kLongestLine = 197;  // of a flow; a longer one has been cut
constexpr std::int64_t kMostListBytes = std::int64_t{1} << 30;
constexpr int kDeadTrace = 2;  // TRACEID

bool read_number(std::string_view field, int& number) {
    const char* const end = field.data() + field.size();
    const auto [behind, error] = std::from_chars(field.data(), end, number);
    return !field.empty() && error == std::errc{} && behind == end;
}

}  // namespace

const RowTable<TraceSelect::Row> TraceSelect::Row::kTable(
    {.key = "SELECT",
     .entry = "Header/Ranges",
     .row = "header word with ranges, as in SELECT=FFID,1-10,20-40(2)",
     .window = {0, 1},
     .quoted = {0, 1},
     .checked = {0, 1}},
    {{{.title = "Header", .label = "Header word"}, &Row::word},
     {{.title = "Ranges", .label = "Ranges"}, &Row::ranges}});

TraceSelect::TraceSelect(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kTraceSelect, log) {
    Configure(section);
}

ParameterList TraceSelect::Parameters() {
    return {
        Row::kTable.parameter(
            rows_, *this,
            {.label = "Select",
             .prompt = "Header words and the ranges that match?",
             .help = "FFID,1-10,20-40(2) matches the traces whose FFID is 1 to 10, 20, 22, ... "
                     "40."},
            &malformed_),
        {.key = "MATCH",
         .format = "%d",
         .value = Bound{&match_, kAll},
         .log = "A trace matches by = %s\n",
         .field = {.label = "Match",
                   .prompt = "Must all rows match, or any of them?",
                   .help = "The list and every N-th count as rows.",
                   .choices = {{"All rows", kAll}, {"Any row", kAny}}}},
        {.key = "ACTION",
         .format = "%d",
         .value = Bound{&action_, kKeep},
         .log = "Action = %s\n",
         .field = {.label = "Action",
                   .prompt = "What is done about traces that match?",
                   .help = "Kill: all traces pass, those that match as zeros with TRACEID 2.\n"
                           "Reverse: all traces pass, those that match with the other polarity.",
                   .choices = {{"Keep them", kKeep},
                               {"Drop them", kDrop},
                               {"Kill them", kKill},
                               {"Reverse them", kReverse}}}},
        {.key = "DROPDEAD",
         .format = "%d",
         .value = Bound{&drop_dead_, 0},
         .field = {.label = "DropDead",
                   .prompt = "Drop dead traces?",
                   .help = "Traces with TRACEID 2, and those without a sample that is not zero, "
                           "whatever the rows say.",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "DROPBAD",
         .format = "%d",
         .value = Bound{&drop_bad_, 0},
         .field = {.label = "DropBad",
                   .prompt = "Drop traces with samples that are no finite numbers?",
                   .choices = {{"YES", 1}, {"NO", 0}}}},
        {.key = "LISTFILE",
         .format = "%s",
         .value = Bound{&list_file_, kNone},
         .log = "List of traces = %s\n",
         .field = {.label = "List",
                   .prompt = "Text file with FFID and CHAN of traces?",
                   .help = "A line each; CHAN 0 is the whole record.  Where a reason and an action "
                           "follow, lines with 'kill' match, and to reverse those with "
                           "'reverse'.\nNONE: no list.",
                   .kind = FieldKind::kInputFile,
                   .optional = true}},
        {.key = "EVERY",
         .format = "%d",
         .value = Bound{&every_, 0},
         .log = "Every N-th = %d\n",
         .field = {.label = "Every",
                   .prompt = "Every how many traces match?",
                   .help =
                       "N: the first, the N+1st, ... of all that arrive.  0 or 1: all of them."}},
        {.key = "EVERYHEADER",
         .format = "%s",
         .value = Bound{&every_word_, kNone},
         .log = "Counted by header = %s\n",
         .field = {.label = "EveryHeader",
                   .prompt = "Header word whose runs are counted instead of traces?",
                   .help = "FFID: every N-th record.  NONE: traces are counted.",
                   .kind = FieldKind::kHeaderWord,
                   .applies = [this] { return every_ > 1; }}},
    };
}

void TraceSelect::LogParameters() {
    for (const Row& row : rows_) Message("%s\n", row.line().c_str());
    for (const char* key : {"MATCH", "ACTION"}) LogParameter(key);
    if (drop_dead_ == 1) Message("Dead traces are dropped.\n");
    if (drop_bad_ == 1) Message("Traces that are not finite are dropped.\n");
    if (list_file_ != kNone) LogParameter("LISTFILE");
    if (every_ > 1) {
        LogParameter("EVERY");
        LogParameter("EVERYHEADER");
    }
}

std::string TraceSelect::RefuseParameters() {
    for (const Row& row : rows_) {
        const std::string line = row.line();
        if (line.size() > kLongestLine) {
            return "A row must not be longer than 197 characters: " + line.substr(0, 40) + "...";
        }
    }
    return {};
}

bool TraceSelect::PassesEveryTrace() const {
    return action_ >= kKill && drop_dead_ != 1 && drop_bad_ != 1;
}

std::vector<std::string> TraceSelect::FilesRead() const {
    if (list_file_ == kNone) return {};
    return {list_file_};
}

bool TraceSelect::ReadRow(const Row& row, const TraceHeaderDefinition& header) {
    const std::string line = row.line();
    std::optional<RangeList> ranges = parse_ranges(row.ranges);
    if (line.size() > kLongestLine) {
        Error("The row '%s' has been cut: a line of a flow holds 197 characters.  Divide it.\n",
              line.c_str());
    } else if (row.word.empty() || !ranges || ranges->empty()) {
        Error("'%s' is no header word with ranges, as in SELECT=FFID,1-10,20-40(2).\n",
              line.c_str());
    } else {
        const int word = RequireHeaderWord(*this, header, row.word.c_str());
        if (word >= 0) criteria_.push_back({line, word, std::move(*ranges)});
        return word >= 0;
    }
    TerminateJob(kJobError);
    return false;
}

bool TraceSelect::ReadList() {
    const Result<std::string> file = read_text_file(list_file_, kMostListBytes);
    if (!file) {
        Error("Cannot read the list '%s': %s.\n", list_file_.c_str(),
              file.fault().reason().c_str());
        TerminateJob(kJobError);
        return false;
    }
    const std::string_view wanted = action_ == kReverse ? "reverse" : "kill";
    int number = 0;
    for (std::string_view rest = *file; !rest.empty();) {
        ++number;
        std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::string_view first = next_field(line);
        if (first.empty() || first.front() == '#') continue;
        Listed listed{};
        if (!read_number(first, listed.ffid) || !read_number(next_field(line), listed.channel)) {
            Error("Line %d of the list '%s' does not begin with FFID and CHAN.\n", number,
                  list_file_.c_str());
            TerminateJob(kJobError);
            return false;
        }
        next_field(line);  // the reason
        const std::string_view action = next_field(line);
        if (action.empty() || action == wanted) list_.push_back(listed);
    }
    std::ranges::sort(list_);
    return true;
}

void TraceSelect::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (match_ < kAll || match_ > kAny || action_ < kKeep || action_ > kReverse || every_ < 0) {
        Error(
            "MATCH must be 0 or 1, ACTION 0 to 3 and EVERY not negative.  You have entered '%d', "
            "'%d' and '%d'.\n",
            match_, action_, every_);
        return TerminateJob(kJobError);
    }
    if (!malformed_.empty()) {
        Error("'%s' is no header word with ranges, as in SELECT=FFID,1-10,20-40(2).\n",
              malformed_.front().c_str());
        return TerminateJob(kJobError);
    }
    criteria_.clear();
    for (const Row& row : rows_) {
        if (!ReadRow(row, header)) return;
    }
    list_.clear();
    ffid_word_ = chan_word_ = every_index_ = -1;
    if (list_file_ != kNone) {
        ffid_word_ = RequireHeaderWord(*this, header, "FFID");
        if (ffid_word_ < 0) return;
        chan_word_ = RequireHeaderWord(*this, header, "CHAN");
        if (chan_word_ < 0 || !ReadList()) return;
    }
    if (every_ > 1 && every_word_ != kNone) {
        every_index_ = RequireHeaderWord(*this, header, every_word_.c_str());
        if (every_index_ < 0) return;
    }
    trace_id_word_ = header.find("TRACEID");
    place_ = listed_ = nth_ = traces_ = matched_ = dead_ = bad_ = 0;
    if (criteria_.empty() && list_file_ == kNone && every_ <= 1) {
        Message("Nothing selects traces by their headers.\n");
    }
}

bool TraceSelect::IsListed(const TraceHeaderDefinition& header) const {
    const int ffid = header.get_int(ffid_word_);
    return std::ranges::binary_search(list_, Listed{ffid, 0}) ||
           std::ranges::binary_search(list_, Listed{ffid, header.get_int(chan_word_)});
}

bool TraceSelect::IsEveryNth(const TraceHeaderDefinition& header) {
    const double value = header.get_double(every_index_);
    if (every_index_ < 0 || place_ == 0 || value != every_value_) ++place_;
    every_value_ = value;
    return (place_ - 1) % every_ == 0;
}

// Every row is looked at, so that each can say how many traces it matched.
bool TraceSelect::Matches(const TraceHeaderDefinition& header) {
    bool all = true, any = false;
    const auto take = [&](bool matches, std::int64_t& count) {
        all = all && matches;
        any = any || matches;
        count += matches && !IsRepeating();
    };
    for (Criterion& row : criteria_) {
        take(in_ranges(header.get_double(row.word), row.ranges), row.matched);
    }
    if (list_file_ != kNone) take(IsListed(header), listed_);
    if (every_ > 1) take(IsEveryNth(header), nth_);
    const bool nothing_asked = all && !any;
    if (nothing_asked) return action_ == kKeep;
    return match_ == kAny ? any : all;
}

bool TraceSelect::IsDropped(const TraceHeaderDefinition& header, TraceSamples& samples) {
    if (drop_dead_ != 1 && drop_bad_ != 1) return false;
    const std::span<const float> trace = samples.floats(header);
    const bool counts = !IsRepeating();
    if (drop_bad_ == 1 &&
        !std::ranges::all_of(trace, [](float sample) { return std::isfinite(sample); })) {
        bad_ += counts;
        return true;
    }
    if (drop_dead_ == 1 && (header.get_int(trace_id_word_) == kDeadTrace ||
                            std::ranges::all_of(trace, [](float sample) { return sample == 0; }))) {
        dead_ += counts;
        return true;
    }
    return false;
}

int TraceSelect::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    const bool matches = Matches(header);
    const bool counts = !IsRepeating();
    traces_ += counts;
    if (IsDropped(header, samples)) return kKeepBack;
    matched_ += matches && counts;
    if (action_ == kKeep) return matches ? kPassOn : kKeepBack;
    if (!matches) return kPassOn;
    if (action_ == kDrop) return kKeepBack;
    const std::span<float> trace = samples.floats(header);
    if (action_ == kKill) {
        std::ranges::fill(trace, 0.0f);
        header.set_double(trace_id_word_, kDeadTrace);
    } else {
        for (float& sample : trace) sample = -sample;
    }
    samples.set_floats(trace);
    return kPassOn;
}

void TraceSelect::EndRun() {
    const auto say = [this](const char* what, std::int64_t count) {
        Message("%s = %lld\n", what, static_cast<long long>(count));
    };
    for (const Criterion& row : criteria_) {
        Message("Traces that match %s = %lld\n", row.line.c_str(),
                static_cast<long long>(row.matched));
    }
    if (list_file_ != kNone) say("Traces that match the list", listed_);
    if (every_ > 1) say("Traces that match every N-th", nth_);
    if (drop_dead_ == 1) say("Dead traces dropped", dead_);
    if (drop_bad_ == 1) say("Traces dropped that are not finite", bad_);
    const std::int64_t left = traces_ - dead_ - bad_;
    const std::int64_t passed = action_ == kKeep   ? matched_
                                : action_ == kDrop ? left - matched_
                                                   : left;
    if (action_ == kKill) say("Traces killed", matched_);
    if (action_ == kReverse) say("Traces reversed", matched_);
    say("Traces passed", passed);
    say("Traces dropped", traces_ - passed);
    list_ = {};
}

}  // namespace halvern
