#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "picture/png.h"
#include "plots/section.h"
#include "plots/section_picture.h"
#include "plots/survey_pictures.h"

namespace halvern {

namespace {

constexpr const char* kExample = R"(Example:
  halvern plot line.sgy -o shot.png --select FFID=10 --agc 500
      one shot, evened out by automatic gain.
  halvern plot stack.sgy -o stack.png --style red-blue --words CDPN
      a section in red, white and blue, with CDP numbers above it.
  halvern plot line.sgy -o spectrum.png --spectrum --time 0-1500
  halvern plot line.sgy -o map.png --map --colour SRCELEV
  halvern plot line.sgy -o fold.png --fold)";

struct Options {
    std::string file;
    std::string output;
    std::string header_path;
    std::string range;
    std::string select;
    std::string time;
    std::string words;
    std::string style = "grey";
    std::string colour;
    std::string title;
    PictureSize size;
    double percentile = 98;
    double scale = 0;  // amplitude; 0: by the percentile
    double gain = 1;
    double agc_ms = 0;
    std::int64_t most_traces = 1000;
    bool balance = false;
    bool spectrum = false;
    bool map = false;
    bool fold = false;
};

std::optional<TimeWindow> asked_window(const std::string& text) {
    if (text.empty()) return {};
    const std::optional<RangeList> ranges = parse_ranges(text);
    if (!ranges || ranges->size() != 1 || !(ranges->front().start < ranges->front().end)) {
        throw CLI::ValidationError("--time",
                                   "'" + text + "' is no time window such as 0-1500 (ms)");
    }
    return TimeWindow{ranges->front().start, ranges->front().end};
}

std::string traces_text(const Section& section) {
    const std::int64_t first = section.numbers.front(), last = section.numbers.back();
    if (section.traces() == 1) return "trace " + in_words(first);
    if (last - first + 1 == section.traces()) {
        return "traces " + in_words(first) + " to " + in_words(last);
    }
    return in_words(std::int64_t{section.traces()}) + " traces from " + in_words(first) + " to " +
           in_words(last);
}

picture::Canvas section_picture(const Options& options, TraceSource& source,
                                TraceSelection& selection, std::string& fault) {
    SectionRequest request{.words = split_list(options.words),
                           .window = asked_window(options.time),
                           .most_traces = options.most_traces,
                           .agc_ms = options.agc_ms,
                           .balance = options.balance};
    Section section;
    fault = read_section(source, selection, request, section);
    if (!fault.empty()) return {1, 1};
    const double percentile = amplitude_percentile(section, options.percentile);
    const double automatic = percentile > 0 ? percentile : 1;
    // Within what the drawing can divide by and by which.
    const double full_scale =
        std::clamp((options.scale > 0 ? options.scale : automatic) / options.gain, 1e-60, 1e60);
    SectionLook look{.size = options.size, .full_scale = full_scale, .title = options.title};
    if (options.style == "red-blue") look.style = SectionStyle::kRedBlue;
    if (options.style == "wiggle") look.style = SectionStyle::kWiggle;
    look.subtitle = traces_text(section);
    if (options.agc_ms > 0) look.subtitle += ", AGC of " + in_words(options.agc_ms) + " ms";
    if (options.balance) look.subtitle += ", traces balanced";
    look.subtitle += ", full scale " + in_words(full_scale, 3);
    if (options.gain != 1) look.subtitle += ", gain " + in_words(options.gain, 3);
    if (section.cut) {
        std::fprintf(
            stderr,
            "Note: the picture shows the first %s; --range or --most shows others or more.\n",
            counted(section.traces(), "trace").c_str());
    }
    const picture::Rect area = section_area(section, look);
    constexpr int kLeast = 40;  // pixels
    if (area.right() > options.size.width || area.bottom() > options.size.height ||
        area.width < kLeast || area.height < kLeast) {
        fault = "the picture is too small for that many header words";
        return {1, 1};
    }
    if (look.style == SectionStyle::kWiggle && section.traces() * 3 > area.width) {
        std::fprintf(stderr,
                     "Note: %s in %d pixels run into each other; grey shows them better, or a "
                     "larger --width.\n",
                     counted(section.traces(), "trace").c_str(), area.width);
    }
    return draw_section(section, look);
}

picture::Canvas draw(const Options& options, TraceSource& source, TraceSelection& selection,
                     std::string& fault) {
    if (options.spectrum) {
        Spectrum spectrum;
        fault = read_spectrum(source, selection, asked_window(options.time), spectrum);
        if (!fault.empty()) return {1, 1};
        return draw_spectrum(spectrum, options.size, options.title,
                             "average amplitude spectrum of " + counted(spectrum.traces, "trace") +
                                 (options.time.empty() ? "" : ", " + options.time + " ms"));
    }
    if (options.fold) {
        Fold fold;
        fault = read_fold(source, selection, fold);
        if (!fault.empty()) return {1, 1};
        const auto bins = static_cast<std::int64_t>(fold.bins.size());
        return draw_fold(
            fold, options.size, options.title,
            counted(fold.traces, "trace") + " in " + counted(bins, fold.is_map ? "bin" : "CDP"));
    }
    if (options.map) {
        SurveyMap map;
        fault = read_map(source, selection, options.colour, map);
        if (!fault.empty()) return {1, 1};
        return draw_map(map, options.colour, options.size, options.title,
                        "positions of " + counted(map.traces, "trace"));
    }
    return section_picture(options, source, selection, fault);
}

void plot(Options options) {
    if (const std::string problem = picture::png_problem(); !problem.empty()) {
        command_failed("plot", problem);
    }
    if (options.header_path.empty()) options.header_path = DefaultHeaderPath();
    if (options.title.empty()) {
        options.title = std::filesystem::path(options.file).filename().string();
    }
    if (options.spectrum + options.map + options.fold > 1) {
        throw CLI::ValidationError("--spectrum, --map and --fold are pictures of their own");
    }
    if (!options.colour.empty() && !options.map) {
        throw CLI::ValidationError("--colour", "goes with --map");
    }
    TraceSelection selection;
    if (const std::string fault = selection.parse(options.range, options.select); !fault.empty()) {
        throw CLI::ValidationError(fault);
    }
    std::error_code error;
    if (std::filesystem::equivalent(options.file, options.output, error)) {
        command_failed("plot", "'" + options.output + "' is the file to be shown");
    }
    TraceOpening opening = open_trace_source(options.file, options.header_path);
    if (!opening.source) command_failed("plot", opening.failure);
    std::string fault = selection.start(*opening.source);
    if (!fault.empty()) command_failed("plot", "'" + options.file + "': " + fault);
    const picture::Canvas canvas = draw(options, *opening.source, selection, fault);
    print_notes(*opening.source);
    if (!fault.empty()) command_failed("plot", "'" + options.file + "': " + fault);
    if (const std::string failure = picture::write_png(options.output, canvas); !failure.empty()) {
        command_failed("plot", failure);
    }
    std::printf("wrote %s\n", options.output.c_str());
}

}  // namespace

void add_plot_command(CLI::App& app) {
    CLI::App* command =
        app.add_subcommand("plot", "Make a picture of traces, spectrum or geometry");
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    command->add_option("file", options->file, "SEG-Y, dataset, SEG-D or tape image file")
        ->required();
    command->add_option("-o,--output", options->output, "PNG file to write; replaced")->required();

    const char* const kWhich = "Which traces";
    command->add_option("--range", options->range, "These traces, such as 1-240 or 1-9000(10)")
        ->group(kWhich);
    command->add_option("--select", options->select, "Traces with WORD=RANGES, such as FFID=10-12")
        ->group(kWhich);
    command->add_option("--time", options->time, "From - to, ms")->group(kWhich);
    command->add_option("--most", options->most_traces, "Show at most so many traces")
        ->check(CLI::Range(1, 100'000))
        ->capture_default_str()
        ->group(kWhich);
    command
        ->add_option("--header", options->header_path,
                     "Header description [header/default beside bin]")
        ->group(kWhich);

    const char* const kTraces = "Traces";
    const auto positive = [](const std::string& text) -> std::string {
        double number = 0;
        const bool is_number = CLI::detail::lexical_cast(text, number);
        return is_number && number > 0 && std::isfinite(number) ? "" : "no number above 0: " + text;
    };
    command->add_option("--style", options->style, "How amplitudes are shown")
        ->check(CLI::IsMember({"grey", "red-blue", "wiggle"}))
        ->capture_default_str()
        ->group(kTraces);
    command->add_option("--words", options->words, "Header words above the traces: W1,W2,...")
        ->group(kTraces);
    command->add_option("--gain", options->gain, "Makes amplitudes larger")
        ->check(positive)
        ->capture_default_str()
        ->group(kTraces);
    command
        ->add_option("--percentile", options->percentile,
                     "Percent of the samples within full scale")
        ->check(positive)
        ->check(CLI::Range(1.0, 100.0))
        ->capture_default_str()
        ->group(kTraces);
    command->add_option("--scale", options->scale, "Amplitude at full scale [by --percentile]")
        ->check(positive)
        ->group(kTraces);
    command->add_option("--agc", options->agc_ms, "Automatic gain with a window of so many ms")
        ->check(positive)
        ->group(kTraces);
    command->add_flag("--balance", options->balance, "Bring all traces to the same strength")
        ->group(kTraces);

    const char* const kOther = "Instead of traces";
    command->add_flag("--spectrum", options->spectrum, "Average amplitude spectrum, dB")
        ->group(kOther);
    command->add_flag("--map", options->map, "Source, receiver and CDP positions")->group(kOther);
    command
        ->add_option("--colour,--color", options->colour,
                     "Header word that colours the map [number of traces]")
        ->group(kOther);
    command->add_flag("--fold", options->fold, "Fold along the line, or as a map")->group(kOther);

    const char* const kPicture = "The picture";
    const CLI::Range pixels(300, 10'000);
    command->add_option("--width", options->size.width, "Pixels")
        ->check(pixels)
        ->capture_default_str()
        ->group(kPicture);
    command->add_option("--height", options->size.height, "Pixels")
        ->check(pixels)
        ->capture_default_str()
        ->group(kPicture);
    command->add_option("--title", options->title, "Title [the file's name]")->group(kPicture);
    command->callback([options] { plot(*options); });
}

}  // namespace halvern
