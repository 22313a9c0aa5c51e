#include <CLI/CLI.hpp>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "cli/say.h"
#include "foundation/system_paths.h"
#include "platform/replace_file.h"
#include "synthetic/synthesize_files.h"
#include "synthetic/synthesize_line.h"

namespace halvern {

namespace {

using synthetic::LineFiles;
using synthetic::Spread;
using synthetic::SyntheticLine;

constexpr const char* kExample = R"(Example:
  halvern synthesize line.sgy --shots 100 --channels 120 --sps line
      makes line.sgy, line.s, line.r and line.x: 100 shots into a split spread
      of 120 channels, 12,000 traces of 3 s. What is printed says where a stack
      must show its reflections.)";

/// The command line, in its units.
struct Options {
    SyntheticLine line;
    LineFiles files;
    std::string format = "ibm";
    std::string spread = "split";
    std::string model;  // file for the description; empty: none
    double interval_ms = 2;
    int shot_spacing_m = 0;  // 0: two stations
    double dead_percent = 0.4;
    double reversed_percent = 1.2;
    std::vector<double> reflections_ms;
    bool force = false;
};

/// The line that the options ask for; CLI::ValidationError when there is none.
SyntheticLine asked_line(const Options& options) {
    SyntheticLine line = options.line;
    const double interval_us = options.interval_ms * 1000;
    const bool in_range = interval_us >= 1 && interval_us <= 65535;
    line.interval_us = in_range ? static_cast<int>(std::lround(interval_us)) : 0;
    if (line.interval_us > 0 && std::fabs(interval_us - line.interval_us) > 1e-6) {
        throw CLI::ValidationError("--interval", "must be a whole number of microseconds");
    }
    if (options.shot_spacing_m > 0 && line.spacing_m > 0) {
        line.shot_stations = options.shot_spacing_m / line.spacing_m;
        if (options.shot_spacing_m % line.spacing_m != 0) {
            throw CLI::ValidationError("--shot-spacing", "must be a multiple of --spacing");
        }
    }
    line.spread = options.spread == "split" ? Spread::kSplit : Spread::kEndOn;
    if (line.marine) line.statics_ms = line.ground_roll = 0;  // which land has
    line.dead_part = options.dead_percent / 100;
    line.reversed_part = options.reversed_percent / 100;
    if (!options.reflections_ms.empty()) {
        line.reflections = synthetic::reflections_at(options.reflections_ms);
    }
    line.apply_velocity_function();
    if (const Fault fault = line.fault()) throw CLI::ValidationError(fault.reason());
    if (!options.files.sps.empty()) {
        if (const Fault fault = synthetic::sps_fault(line)) {
            throw CLI::ValidationError("--sps",
                                       fault.reason() + ": make a shorter line or leave SPS out");
        }
    }
    if (!options.files.p190.empty()) {
        if (const auto fault = synthetic::p190_fault(line)) {
            throw CLI::ValidationError("--p190", fault.reason() + ": make a smaller line");
        }
    }
    return line;
}

/// Ends the command when an output is there already or two of them are one file.
void check_outputs(const Options& options) {
    namespace fs = std::filesystem;
    std::vector<std::string> paths = options.files.paths();
    if (!options.model.empty()) paths.push_back(options.model);
    std::set<fs::path> seen;
    for (const std::string& path : paths) {
        std::error_code error;
        const fs::path whole = fs::weakly_canonical(fs::absolute(path, error), error);
        if (!seen.insert(error ? fs::path(path) : whole).second) {
            throw CLI::ValidationError("two outputs would be the same file '" + path + "'");
        }
        if (!options.force && fs::exists(path, error)) {
            command_failed("synthesize", "'" + path + "' exists; --force would replace it");
        }
    }
}

void synthesize(Options options) {
    if (std::string& p190 = options.files.p190; !p190.empty() || options.line.marine) {
        if (p190.empty()) {
            p190 = std::filesystem::path(options.files.segy).replace_extension().string();
        }
        if (!p190.ends_with(".p190")) p190 += ".p190";
    }
    const SyntheticLine line = asked_line(options);
    if (options.files.header_definition.empty()) {
        options.files.header_definition = DefaultHeaderPath();
    }
    options.files.format = options.format == "ibm"    ? SampleFormat::kIbm
                           : options.format == "ieee" ? SampleFormat::kIeee
                                                      : SampleFormat::kInt16;
    check_outputs(options);
    const std::string description = line.description();
    if (const Fault fault = synthetic::write_line(line, options.files)) {
        command_failed("synthesize", fault.reason());
    }
    if (!options.model.empty()) {
        if (const Fault fault = replace_file(options.model, description, Reach::kSystem)) {
            command_failed("synthesize", "cannot write '" + options.model + "': " + fault.reason());
        }
    }
    say("%s", description.c_str());
    for (const std::string& path : options.files.paths()) say("wrote %s\n", path.c_str());
}

}  // namespace

void add_synthesize_command(CLI::App& app) {
    CLI::App* command = app.add_subcommand("synthesize", "Make a synthetic 2-D line as SEG-Y");
    command->footer(kExample);
    const auto options = std::make_shared<Options>();
    SyntheticLine& line = options->line;
    LineFiles& files = options->files;

    command->add_option("output", files.segy, "SEG-Y file to write")->required();
    command->add_option("--sps", files.sps, "Also write SPS files: this + .s, .r and .x");
    command->add_option("--p190", files.p190,
                        "Also write a P1/90 file: this + .p190 [with --marine: beside the output]");
    command->add_option("--model", options->model, "Also write what is printed to this file");
    command->add_option("--format", options->format, "How samples are written")
        ->check(CLI::IsMember({"ibm", "ieee", "int16"}))
        ->capture_default_str();
    command->add_option("--header", files.header_definition,
                        "Header description [header/default beside bin]");
    command->add_flag("--force", options->force, "Replace files that exist");

    const auto survey = [&](auto&&... option) {
        return command->add_option(option...)->capture_default_str()->group("The survey");
    };
    survey("--shots", line.shots, "Shots");
    survey("--channels", line.channels, "Channels of a shot");
    survey("--samples", line.samples, "Samples of a trace");
    survey("--interval", options->interval_ms, "Sample interval, ms");
    survey("--spacing", line.spacing_m, "Distance of receiver stations, whole m");
    command
        ->add_option("--shot-spacing", options->shot_spacing_m,
                     "Distance of shots, m [twice the spacing]")
        ->check(CLI::Range(1, std::numeric_limits<int>::max()))
        ->group("The survey");
    survey("--gap", line.gap, "Stations left free next to the source");
    survey("--spread", options->spread, "Receivers on both sides or only ahead")
        ->check(CLI::IsMember({"split", "end-on"}));
    command
        ->add_flag("--marine", line.marine,
                   "A towed streamer, channel 1 farthest, instead of a land line; with P1/90")
        ->group("The survey");
    survey("--scalar", line.coordinate_scalar, "COORSCAL of the coordinates in the headers");
    survey("--first-ffid", line.first_ffid, "File number of the first shot");

    const auto earth = [&](auto&&... option) {
        command->add_option(option...)->capture_default_str()->group("The earth");
    };
    command
        ->add_option("--reflections", options->reflections_ms,
                     "Zero-offset times, ms, separated by commas")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->default_str("400,620,850,1120,1400,1750,2150,2600")
        ->group("The earth");
    earth("--velocity", line.velocity_ms, "Reflection velocity at time 0, m/s");
    earth("--velocity-gradient", line.velocity_gradient, "What it gains in a second, m/s");
    earth("--dip", line.dip_ms_per_km, "Zero-offset time gained eastward, ms/km");
    earth("--relief", line.relief_m, "Height of the surface's hills over its middle, whole m");
    earth("--statics", line.statics_ms, "Largest near-surface delay of a point, ms");

    const auto record = [&](auto&&... option) {
        command->add_option(option...)->capture_default_str()->group("The record");
    };
    record("--wavelet", line.wavelet_hz, "Peak frequency of the wavelet, Hz");
    record("--noise", line.noise, "Root mean square; a reflection at 400 ms has peak 1");
    record("--ground-roll", line.ground_roll, "Its largest amplitude near the source");
    record("--dead", options->dead_percent, "Dead traces, percent");
    record("--reversed", options->reversed_percent, "Stations of reversed polarity, percent");
    record("--seed", line.seed, "Same seed and options: the same line, bit by bit");

    command->callback([options] { synthesize(*options); });
}

}  // namespace halvern
