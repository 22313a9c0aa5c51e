#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <memory>
#include <string>

#include "cli/commands.h"
#include "cli/say.h"
#include "foundation/system_paths.h"
#include "foundation/words.h"
#include "inspect/plot_feed.h"
#include "picture/png.h"
#include "plots/fold_plot.h"
#include "plots/map_plot.h"
#include "plots/section_plot.h"
#include "plots/spectrum_plot.h"

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

constexpr const char* kTraces = "Traces";  // the group of their options

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
    SectionOptions section;
    SectionLook look;
    int width = 1000, height = 700;
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

std::unique_ptr<Plot> asked_plot(const Options& options) {
    const std::optional<TimeWindow> window = asked_window(options.time);
    if (options.spectrum) return std::make_unique<SpectrumPlot>(SpectrumOptions{window});
    if (options.fold) return std::make_unique<FoldPlot>();
    if (options.map) return std::make_unique<MapPlot>(MapOptions{options.colour});
    SectionLook look = options.look;
    if (options.style == "red-blue") look.style = SectionStyle::kRedBlue;
    if (options.style == "wiggle") look.style = SectionStyle::kWiggle;
    SectionOptions section = options.section;
    section.words = split_list(options.words);
    section.window = window;
    return std::make_unique<SectionPlot>(std::move(section), look);
}

/// Options of a picture that is not the one asked for are wrong usage.
void check_usage(const CLI::App& command, const Options& options) {
    if (options.spectrum + options.map + options.fold > 1) {
        throw CLI::ValidationError("--spectrum, --map and --fold are pictures of their own");
    }
    const bool section = !options.spectrum && !options.map && !options.fold;
    const auto only = [&](const std::string& name, bool applies, const char* with) {
        if (!applies && command.count(name) > 0) throw CLI::ValidationError(name, with);
    };
    for (const CLI::Option* option : command.get_options()) {
        if (option->get_group() == kTraces) {
            only(option->get_name(), section, "is for pictures of traces");
        }
    }
    only("--most", section, "is for pictures of traces");
    only("--time", section || options.spectrum, "is for pictures of traces and spectra");
    only("--colour", options.map, "goes with --map");
    only("--percentile", command.count("--scale") == 0, "and --scale exclude each other");
}

void plot(const CLI::App& command, Options options) {
    check_usage(command, options);
    if (const Fault fault = picture::png_problem()) command_failed("plot", fault.reason());
    if (options.header_path.empty()) options.header_path = DefaultHeaderPath();
    if (options.title.empty()) {
        options.title = std::filesystem::path(options.file).filename().string();
    }
    TraceSelection selection;
    if (const Fault fault = selection.parse(options.range, options.select)) {
        throw CLI::ValidationError(fault.reason());
    }
    const std::unique_ptr<Plot> plot = asked_plot(options);
    std::error_code error;
    if (std::filesystem::equivalent(options.file, options.output, error)) {
        command_failed("plot", "'" + options.output + "' is the file to be shown");
    }
    const auto failed = [&](const Fault& fault) {
        command_failed("plot", "'" + options.file + "': " + fault.reason());
    };
    TraceOpening opening = open_trace_source(options.file, options.header_path);
    if (!opening.source) command_failed("plot", opening.failure);
    if (const Fault fault = selection.start(*opening.source)) failed(fault);
    const Result<bool> more = feed_plot(*opening.source, selection, *plot);
    print_notes(*opening.source);
    if (!more) failed(more.fault());
    if (*more) {
        say_error("Note: the picture shows the first %s; --range or --most shows others or more.\n",
                  counted(options.section.most_traces, "trace").c_str());
    }
    picture::Canvas canvas(options.width, options.height);
    if (const Fault fault = plot->draw(canvas, options.title)) failed(fault);
    if (const std::string advice = plot->advice(canvas); !advice.empty()) {
        say_error("Note: %s.\n", advice.c_str());
    }
    if (const Fault fault = picture::write_png(options.output, canvas)) {
        command_failed("plot", "cannot write '" + options.output + "': " + fault.reason());
    }
    say("wrote %s\n", options.output.c_str());
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
    command->add_option("--most", options->section.most_traces, "Show at most so many traces")
        ->check(CLI::Range(1, 100'000))
        ->capture_default_str()
        ->group(kWhich);
    command
        ->add_option("--header", options->header_path,
                     "Header description [header/default beside bin]")
        ->group(kWhich);

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
    command->add_option("--gain", options->look.gain, "Makes amplitudes larger")
        ->check(positive)
        ->capture_default_str()
        ->group(kTraces);
    command
        ->add_option("--percentile", options->look.percentile,
                     "Percent of the samples within full scale")
        ->check(positive)
        ->check(CLI::Range(1.0, 100.0))
        ->capture_default_str()
        ->group(kTraces);
    command->add_option("--scale", options->look.scale, "Amplitude at full scale [by --percentile]")
        ->check(positive)
        ->group(kTraces);
    command
        ->add_option("--agc", options->section.agc_ms, "Automatic gain with a window of so many ms")
        ->check(positive)
        ->group(kTraces);
    command
        ->add_flag("--balance", options->section.balance, "Bring all traces to the same strength")
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
    command->add_option("--width", options->width, "Pixels")
        ->check(pixels)
        ->capture_default_str()
        ->group(kPicture);
    command->add_option("--height", options->height, "Pixels")
        ->check(pixels)
        ->capture_default_str()
        ->group(kPicture);
    command->add_option("--title", options->title, "Title [the file's name]")->group(kPicture);
    command->callback([command, options] { plot(*command, *options); });
}

}  // namespace halvern
