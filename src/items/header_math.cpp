#include "items/header_math.h"

#include <algorithm>

namespace halvern {

namespace {

constexpr const char* kEquation = "EQUATION";
constexpr const char* kCondition = "WHERE";
// A line of the flow file that is as long as its reader takes has been cut.
constexpr std::size_t kLongestLine = 197;

std::string trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string_view::npos) return {};
    return std::string(text.substr(begin, text.find_last_not_of(" \t\r") - begin + 1));
}

// The first "=" that is none of "==", "<=", ">=" and "!=".
std::size_t equals_sign(std::string_view text) {
    for (std::size_t at = text.find('='); at != std::string_view::npos; at = text.find('=', at)) {
        const bool comparison =
            (at > 0 && std::string_view("=<>!").find(text[at - 1]) != std::string_view::npos) ||
            (at + 1 < text.size() && text[at + 1] == '=');
        if (!comparison) return at;
        ++at;
    }
    return std::string_view::npos;
}

}  // namespace

HeaderMath::HeaderMath(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kHeaderMath, log) {
    Configure(section);
}

ParameterList HeaderMath::Parameters() {
    const auto reader = [this](bool condition) {
        return [this, condition](const char* rest) {
            rows_.push_back({condition, trimmed(rest)});
            return true;
        };
    };
    // Both keys fill one table, whose order counts; the first of them writes it.
    Rows equations{.clear = [this] { rows_.clear(); },
                   .read = reader(false),
                   .lines =
                       [this](const std::string&) {
                           std::vector<std::string> lines;
                           for (const Row& row : rows_) lines.push_back(Line(row));
                           return lines;
                       },
                   .columns = {"Word", "Expression"}};
    equations.cells = [this] {
        std::vector<std::vector<std::string>> cells;
        for (const Row& row : rows_) {
            const std::size_t sign = row.condition ? std::string::npos : equals_sign(row.text);
            if (row.condition || sign == std::string::npos) {
                cells.push_back({row.condition ? kCondition : "", row.text});
            } else {
                cells.push_back(
                    {trimmed(row.text.substr(0, sign)), trimmed(row.text.substr(sign + 1))});
            }
        }
        return cells;
    };
    equations.assign = [this](const std::vector<std::vector<std::string>>& cells) -> std::string {
        std::vector<Row> rows;
        for (const std::vector<std::string>& each : cells) {
            const std::string word = trimmed(each.at(0)), expression = trimmed(each.at(1));
            if (word.empty() && expression.empty()) continue;
            if (word == kCondition) {
                rows.push_back({true, expression});
            } else if (word.empty() || expression.empty()) {
                return "An equation needs a header word and an expression.";
            } else {
                rows.push_back({false, word + " = " + expression});
            }
        }
        rows_ = std::move(rows);
        return {};
    };
    return {
        {.key = kEquation,
         .format = "",
         .value = std::move(equations),
         .field = {.label = "Equations",
                   .prompt = "Equations, carried out in their order for every trace?",
                   .help =
                       "OFFSET = hypot(RECX - SRCX, RECY - SRCY)\n"
                       "In the word's place WHERE makes the expression a condition for the "
                       "equations after it; an empty one lifts it.\n"
                       "Operators: + - * / % ^ == != < <= > >= and or not\n"
                       "Functions: abs sign min max round floor ceil sqrt exp log log10 sin cos "
                       "tan atan2 hypot azimuth(x1,y1,x2,y2) if(condition,a,b)\n"
                       "Variables: header words, samples, interval (ms), trace, previous(WORD), "
                       "first(WORD), first(WORD,KEY)"}},
        {.key = kCondition,
         .format = "",
         .value = Rows{.clear = [] {},
                       .read = reader(true),
                       .lines = [](const std::string&) { return std::vector<std::string>(); },
                       .table = kEquation}},
    };
}

void HeaderMath::LogParameters() {
    for (const Row& row : rows_) Message("%s\n", Line(row).c_str());
    if (rows_.empty()) Message("No equations.\n");
}

std::string HeaderMath::RefuseParameters() {
    for (const Row& row : rows_) {
        if (Line(row).size() > kLongestLine) {
            return "A row must not be longer than 197 characters: " + Line(row).substr(0, 40) +
                   "...";
        }
    }
    return {};
}

void HeaderMath::Refuse(const Row& row, const Expression::Mistake& mistake) const {
    Error("%s\n", mistake.what.c_str());
    Error("%s\n", row.text.c_str());
    Error("%*s^\n", static_cast<int>(mistake.position), "");
    TerminateJob(kJobError);
}

bool HeaderMath::Compile(std::size_t index, const TraceHeaderDefinition& header) {
    const Row& row = rows_[index];
    if (Line(row).size() > kLongestLine) {
        Error("The row '%s' has been cut: a line of a flow holds 197 characters.  Divide it.\n",
              Line(row).c_str());
        TerminateJob(kJobError);
        return false;
    }
    Step step{.row = index};
    std::size_t begin = 0;  // of the expression
    if (!row.condition) {
        const std::size_t sign = equals_sign(row.text);
        if (sign == std::string::npos) {
            Refuse(row, {"An equation is written WORD = expression:", 0});
            return false;
        }
        const std::string word = trimmed(std::string_view(row.text).substr(0, sign));
        step.word = header.find(word);
        if (step.word < 0) {
            Refuse(row, {"The header definition has no word '" + word + "':", 0});
            return false;
        }
        changes_weight_ = changes_weight_ || word == "WEIGHT";
        begin = sign + 1;
    }
    if (!row.condition || !row.text.empty()) {
        Expression::Mistake mistake;
        step.expression =
            Expression::compile(std::string_view(row.text).substr(begin), *this, mistake);
        if (!step.expression) {
            mistake.position += begin;
            mistake.what += ":";
            Refuse(row, mistake);
            return false;
        }
    }
    steps_.push_back(std::move(step));
    return true;
}

void HeaderMath::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&, int) {
    steps_.clear();
    sources_.clear();
    runs_.clear();
    definition_ = &header;
    looks_back_ = changes_weight_ = false;
    samples_ = line.samples();
    interval_ms_ = line.sample_interval().ms();
    traces_ = 0;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        if (!Compile(row, header)) return;
    }
}

std::optional<int> HeaderMath::number(std::string_view name,
                                      const std::vector<std::string>& arguments) {
    Source source;
    const auto find = [this](std::string_view word) { return definition_->find(word); };
    if (arguments.empty()) {
        source.word = find(name);
        if (source.word < 0) {
            if (name == "samples") {
                source.kind = Source::kSamples;
            } else if (name == "interval") {
                source.kind = Source::kInterval;
            } else if (name == "trace") {
                source.kind = Source::kTrace;
            } else {
                return {};
            }
        }
    } else {
        source.word = find(arguments[0]);
        if (source.word < 0) return {};
        if (name == "previous" && arguments.size() == 1) {
            source.kind = Source::kPrevious;
        } else if (name == "first" && arguments.size() == 1) {
            source.kind = Source::kFirst;
        } else if (name == "first" && arguments.size() == 2) {
            const int key = find(arguments[1]);
            if (key < 0) return {};
            source.kind = Source::kFirstOfRun;
            const auto run = std::ranges::find(runs_, key, &Run::key);
            source.run = static_cast<std::size_t>(run - runs_.begin());
            if (run == runs_.end()) runs_.push_back({.key = key});
        } else {
            return {};
        }
    }
    looks_back_ = looks_back_ || source.kind >= Source::kTrace;
    const auto known = std::ranges::find(sources_, source);
    const int found = static_cast<int>(known - sources_.begin());
    if (known == sources_.end()) sources_.push_back(source);
    return found;
}

double HeaderMath::word_of(const Image& image, int word) const {
    std::byte* const attached = definition_->image();
    Image copy = image;  // the definition writes, too, so that it takes no constant image
    definition_->attach(copy.data());
    const double value = definition_->get_double(word);
    definition_->attach(attached);
    return value;
}

double HeaderMath::value(int number) const {
    const Source& source = sources_[static_cast<std::size_t>(number)];
    switch (source.kind) {
        case Source::kSamples:
            return samples_;
        case Source::kInterval:
            return interval_ms_;
        case Source::kTrace:
            return static_cast<double>(traces_);
        case Source::kPrevious:
            return word_of(previous_, source.word);
        case Source::kFirst:
            return word_of(first_, source.word);
        case Source::kFirstOfRun:
            return word_of(runs_[source.run].first, source.word);
        default:
            return definition_->get_double(source.word);
    }
}

// Before a trace is worked on: what later ones, or it itself, see as the trace before and the
// first.
void HeaderMath::LookBack() {
    previous_ = arrived_;
    std::copy_n(definition_->image(), kTraceHeaderBytes, arrived_.begin());
    if (traces_ == 1) first_ = previous_ = arrived_;
    for (Run& run : runs_) {
        const double value = definition_->get_double(run.key);
        if (traces_ > 1 && value == run.value) continue;
        run.value = value;
        run.first = arrived_;
    }
}

int HeaderMath::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples& samples) {
    ++traces_;
    if (looks_back_) LookBack();
    if (changes_weight_) static_cast<void>(samples.floats(header));
    const bool counts = !IsRepeating();
    bool holds = true;
    for (Step& step : steps_) {
        if (step.word >= 0 && !holds) continue;
        const Expression::Value result =
            step.expression ? step.expression->evaluate(*this) : Expression::Value{1};
        if (result.divided_by_zero) {
            step.zero_divisions += counts;
            if (step.word < 0) holds = false;
        } else if (step.word < 0) {
            holds = result.number != 0;
        } else {
            step.not_stored += !header.store(step.word, result.number) && counts;
        }
    }
    return kPassOn;
}

bool HeaderMath::RepeatsItself() const { return !looks_back_; }

void HeaderMath::EndRun() {
    for (const Step& step : steps_) {
        const char* const text = rows_[step.row].text.c_str();
        if (step.zero_divisions > 0) {
            Warning("'%s' divided by zero in %lld traces%s.\n", text,
                    static_cast<long long>(step.zero_divisions),
                    step.word < 0 ? ", for which the condition does not hold"
                                  : ": their word was left as it was");
        }
        if (step.not_stored > 0) {
            Warning(
                "'%s' gave a number that the word cannot hold in %lld traces: it was left as "
                "it was.\n",
                text, static_cast<long long>(step.not_stored));
        }
    }
    steps_.clear();
    definition_ = nullptr;
}

}  // namespace halvern
