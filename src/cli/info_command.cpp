#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/say.h"
#include "cli/table.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "inspect/trace_selection.h"
#include "inspect/trace_source.h"
#include "inspect/trace_statistics.h"
#include "trace/ebcdic.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Example:
  halvern info line.sgy
      shows the text header, and what the file is.
  halvern info line.sgy --ranges --survey
      reads all trace headers: what every word holds, and the geometry.
  halvern info line.sgy --headers FFID,CHAN,OFFSET --range 1-240 --csv
      lists three words of the first 240 traces for a spreadsheet.)";

constexpr std::size_t kNameColumn = 24;
constexpr int kTextLine = 80;

struct Options {
    std::vector<std::string> files;
    std::string header_path;
    std::string headers;
    std::string range;
    std::string select;
    bool text = false;
    bool ranges = false;
    bool survey = false;
    bool samples = false;
    bool csv = false;

    bool reads_headers() const { return ranges || survey || samples || !headers.empty(); }
};

/// The shortest number that is read back as the same one.
std::string number_text(double value) {
    char text[40];
    const auto single = static_cast<float>(value);
    const bool whole = value == std::floor(value) && std::fabs(value) < 1e15;
    const std::to_chars_result end =
        whole             ? std::to_chars(text, std::end(text), static_cast<long long>(value))
        : single == value ? std::to_chars(text, std::end(text), single)
                          : std::to_chars(text, std::end(text), value);
    return {text, end.ptr};
}

/// Names and values, one a line; as CSV, one number a line.
void print_facts(const std::vector<Fact>& facts, bool csv) {
    Table table({"name", "value"});
    for (const auto& [name, text, numbers] : facts) {
        if (!csv) {
            const std::string gap(name.size() < kNameColumn ? kNameColumn - name.size() : 1, ' ');
            say("  %s%s%s\n", name.c_str(), gap.c_str(), text.c_str());
        } else if (numbers.empty()) {
            table.add({name, text});
        }
        for (const auto& [number, value] : numbers) {
            table.add({number, std::isnan(value) ? "" : number_text(value)});
        }
    }
    if (csv) table.print(true);
}

/// What a file says of itself: "1,270,800 bytes" is a number, too.
Fact stated(const std::string& name, const std::string& text) {
    Fact fact{name, text, {}};
    std::string digits = text;
    std::erase(digits, ',');
    double value = 0;
    const char* const end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, value);
    const std::string_view unit(rest, end);
    if (error == std::errc() && (unit.empty() || unit == " bytes")) {
        fact.numbers.emplace_back(name + std::string(unit), value);
    }
    return fact;
}

/// The 40 lines of the text header, in the code that makes more of it readable, without the blank
/// ones at the end.
void print_text_header(const LineHeader& line) {
    const std::span<const std::byte> bytes = line.bytes().first(kTextHeaderBytes);
    const auto printable = [](std::byte byte) {
        return byte >= std::byte{32} && byte < std::byte{127};
    };
    const auto as_ebcdic = [](std::byte byte) { return ebcdic_to_ascii(byte); };
    const bool ebcdic = std::ranges::count_if(bytes, printable, as_ebcdic) >=
                        std::ranges::count_if(bytes, printable);
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < bytes.size(); at += kTextLine) {
        std::string text;
        for (const std::byte byte : bytes.subspan(at, kTextLine)) {
            const std::byte c = ebcdic ? as_ebcdic(byte) : byte;
            text += c == std::byte{0} ? ' ' : printable(c) ? static_cast<char>(c) : '.';
        }
        text.erase(text.find_last_not_of(' ') + 1);
        lines.push_back(text);
    }
    while (!lines.empty() && lines.back().empty()) lines.pop_back();
    if (lines.empty()) {
        say("Text header: blank\n");
        return;
    }
    say("Text header (%s):\n", ebcdic ? "EBCDIC" : "ASCII");
    for (const std::string& text : lines) say("%s\n", text.c_str());
}

/// What was read of one file.
struct Findings {
    std::int64_t traces = 0;
    std::optional<HeaderRanges> ranges;
    std::optional<SurveyStatistics> survey;
    SampleStatistics samples;
};

void print_headers(const Options& options, TraceSelection& selection, TraceSource& source,
                   Findings& findings, const std::string& file) {
    std::vector<int> words;
    std::vector<Table::Column> columns{{"trace", true}};
    for (const std::string& name : split_list(options.headers)) {
        words.push_back(source.definition().find(name));
        if (words.back() < 0) {
            std::string reason = "the header description has no word '";
            reason.append(name).append("'; 'halvern info ").append(file);
            command_failed("info", reason + " --ranges' lists those in use");
        }
        columns.emplace_back(name.c_str(), true);
    }
    Table table(std::move(columns));
    while (selection.next()) {
        ++findings.traces;
        if (findings.ranges) findings.ranges->add();
        if (findings.survey) findings.survey->add();
        if (options.samples) findings.samples.add(source.floats());
        if (words.empty()) continue;
        std::vector<std::string> cells{std::to_string(selection.number())};
        for (const int word : words) {
            cells.push_back(number_text(source.definition().get_double(word)));
        }
        table.add(std::move(cells));
        table.print_full(options.csv);
    }
    if (!words.empty()) table.print(options.csv);
}

void print_ranges(const HeaderRanges& ranges, const TraceHeaderDefinition& definition, bool csv) {
    Table table({"word",
                 {"minimum", true},
                 {"maximum", true},
                 {"distinct", true},
                 {"step", true},
                 "description"});
    for (int word = 0; word < definition.count(); ++word) {
        const WordRange& range = ranges.of(word);
        if (range.always_zero()) continue;
        std::string description = definition.description(word);
        description.erase(description.find_last_not_of(' ') + 1);
        if (range.not_numbers() > 0) {
            description = in_words(range.not_numbers()) + " are no numbers";
        }
        const bool more = range.distinct() > WordRange::kMostDistinct;
        table.add({definition.name(word), number_text(range.minimum()),
                   number_text(range.maximum()),
                   more ? ">" + std::to_string(WordRange::kMostDistinct)
                        : std::to_string(range.distinct()),
                   range.step() > 0 ? number_text(range.step()) : "-", description});
    }
    table.print(csv);
}

std::vector<Fact> sample_facts(const SampleStatistics& samples) {
    std::vector<Fact> facts;
    const auto say_count = [&](const char* name, std::int64_t count, std::int64_t of = 0) {
        std::string text = in_words(count);
        if (count > 0 && of > 0) {
            const double percent = 100.0 * static_cast<double>(count) / static_cast<double>(of);
            text += " (" + in_words(percent, 3) + " %)";
        }
        facts.push_back({name, text, {{name, static_cast<double>(count)}}});
    };
    const auto say_value = [&](const char* name, double value) {
        facts.push_back({name, in_words(value), {{name, value}}});
    };
    say_count("samples read", samples.samples());
    say_value("minimum", samples.minimum());
    say_value("maximum", samples.maximum());
    say_value("mean", samples.mean());
    say_value("root mean square", samples.root_mean_square());
    say_count("zeros", samples.zeros(), samples.samples());
    say_count("NaN", samples.nans(), samples.samples());
    say_count("infinite", samples.infinities(), samples.samples());
    say_count("dead traces", samples.dead_traces(), samples.traces());
    if (const std::int64_t first = samples.first_not_finite(); first > 0) {
        facts.push_back({"first not finite",
                         "trace " + in_words(first) + " of those read",
                         {{"first not finite", static_cast<double>(first)}}});
    }
    return facts;
}

Fact length_fact(const LineHeader& line) {
    const double interval_ms = line.sample_interval().ms();
    const int samples = line.samples();
    Fact fact{"samples", in_words(samples), {{"samples", samples}}};
    fact.numbers.emplace_back("sample interval ms", interval_ms);
    if (!line.sample_interval()) {
        fact.text += ", no sample interval";
    } else {
        fact.text += " every " + in_words(interval_ms) + " ms";
        if (samples > 1) {
            fact.text += ", " + in_words((samples - 1) * interval_ms, 9) + " ms long";
        }
    }
    return fact;
}

void inspect(const Options& options, TraceSelection selection, const std::string& file) {
    TraceOpening opening = open_trace_source(file, options.header_path);
    if (!opening.source) command_failed("info", opening.failure);
    TraceSource& source = *opening.source;
    if (const Fault fault = selection.start(source)) {
        command_failed("info", "'" + file + "': " + fault.reason());
    }
    source.set_samples_wanted(options.samples);
    Findings findings;
    if (options.ranges) findings.ranges.emplace(source.definition());
    if (options.survey) findings.survey.emplace(source.definition());
    const bool reads = options.reads_headers() || source.trace_count() < 0;
    if (options.text && !source.has_text()) {
        command_failed("info", "'" + file + "' has no text header");
    }
    const bool show_text = source.has_text() && (options.text || !options.reads_headers());
    const bool show_facts = !options.csv || !options.reads_headers();

    if (!options.csv) say("%s: %s\n", file.c_str(), source.kind().c_str());
    if (show_text && !options.csv) print_text_header(source.line());
    if (reads) print_headers(options, selection, source, findings, file);
    if (show_facts) {
        const auto traces =
            static_cast<double>(source.trace_count() < 0 ? findings.traces : source.trace_count());
        std::vector<Fact> facts{
            {"traces", in_words(static_cast<std::int64_t>(traces)), {{"traces", traces}}},
            length_fact(source.line()),
            {"sample format", source.sample_format(), {}}};
        if (options.csv) {
            facts.insert(facts.begin(), {{"file", file, {}}, {"kind", source.kind(), {}}});
        }
        for (const auto& [name, text] : source.facts()) facts.push_back(stated(name, text));
        if (!selection.everything()) {
            facts.push_back({"traces looked at", in_words(findings.traces), {}});
        }
        print_facts(facts, options.csv);
    }
    const auto heading = [&](const char* text) {
        if (!options.csv) say("\n%s\n", text);
    };
    if (findings.ranges) {
        heading("Header words that are not always zero");
        print_ranges(*findings.ranges, source.definition(), options.csv);
    }
    if (findings.survey) {
        heading("Geometry in the headers");
        print_facts(findings.survey->findings(), options.csv);
    }
    if (options.samples) {
        heading("Samples");
        print_facts(sample_facts(findings.samples), options.csv);
    }
    print_notes(source);
}

/// Options that nothing asked for would heed are wrong usage.
void check_usage(const Options& options) {
    const int tables = !options.headers.empty() + options.ranges + options.survey + options.samples;
    if (options.csv && tables > 1) {
        throw CLI::ValidationError(
            "--csv writes one table: choose --headers, --ranges, --survey or --samples");
    }
    if (options.csv && options.files.size() > 1) {
        throw CLI::ValidationError("--csv", "writes the table of one file");
    }
    if (options.csv && options.text) throw CLI::ValidationError("--csv", "has no text header");
    if (tables == 0 && !(options.range.empty() && options.select.empty())) {
        throw CLI::ValidationError(
            "--range and --select choose the traces of --headers, --ranges, "
            "--survey or --samples");
    }
}

void info(Options options) {
    check_usage(options);
    if (options.header_path.empty()) options.header_path = DefaultHeaderPath();
    TraceSelection selection;
    if (const Fault fault = selection.parse(options.range, options.select)) {
        throw CLI::ValidationError(fault.reason());
    }
    int status = EXIT_SUCCESS;
    for (const std::string& file : options.files) {
        if (&file != &options.files.front()) say("\n");
        try {
            inspect(options, selection, file);
        } catch (const CLI::RuntimeError& failure) {  // said; the other files are worth a look
            status = failure.get_exit_code();
        }
        std::fflush(stdout);
    }
    if (status != EXIT_SUCCESS) throw CLI::RuntimeError(status);
}

}  // namespace

void print_notes(const TraceSource& source) {
    std::fflush(stdout);
    for (const std::string& note : source.notes()) {
        say_error("Note: %s.\n", note.c_str());
    }
}

void add_info_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("info", "Show what data files hold");
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    command->add_option("files", options->files, "SEG-Y, dataset, SEG-D or tape image files")
        ->required();
    command->add_flag("--text", options->text, "The text header, with other options too");
    command->add_option("--headers", options->headers, "A table of these header words: W1,W2,...");
    command->add_flag("--ranges", options->ranges, "What every header word holds");
    command->add_flag("--survey", options->survey, "The geometry that the headers hold");
    command->add_flag("--samples", options->samples, "Amplitudes, zeros, NaN and dead traces");
    command->add_option("--range", options->range, "Only these traces, such as 1-100,500");
    command->add_option("--select", options->select, "Only traces with WORD=RANGES");
    command->add_option("--header", options->header_path,
                        "Header description [header/default beside bin]");
    command->add_flag("--csv", options->csv, "Comma-separated values");
    command->callback([options] { info(*options); });
}

}  // namespace halvern
