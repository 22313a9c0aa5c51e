#include "geometry/trace_binning.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "foundation/debug_output.h"

namespace halvern {

namespace {

enum Word : std::size_t {
    kSrcX,
    kSrcY,
    kRecX,
    kRecY,
    kXline,
    kInline,
    kCdpN,
    kCdpX,
    kCdpY,
    kBinX,
    kBinY
};
constexpr HeaderWordRow kWords[] = {
    {HeaderWordRow::kInput, kSrcX, "SRCX", "Source x coordinate"},
    {HeaderWordRow::kInput, kSrcY, "SRCY", "Source y coordinate"},
    {HeaderWordRow::kInput, kRecX, "RECX", "Receiver x coordinate"},
    {HeaderWordRow::kInput, kRecY, "RECY", "Receiver y coordinate"},
    {HeaderWordRow::kOutput, kCdpN, "CDPN", "CDP ensemble number"},
    {HeaderWordRow::kOutput, kXline, "XLINE", "Crossline number"},
    {HeaderWordRow::kOutput, kInline, "INLINE", "Inline number"},
    {HeaderWordRow::kOutput, kCdpX, "CDPX", "CDP X coordinate"},
    {HeaderWordRow::kOutput, kCdpY, "CDPY", "CDP Y coordinate"},
    {HeaderWordRow::kOutput, kBinX, "BINX", "Bin X coordinate"},
    {HeaderWordRow::kOutput, kBinY, "BINY", "Bin Y coordinate"},
};

constexpr double kRadiansPerDegree = 0.017453293;

/// A number for the log, held within an int.
int shown(double number) {
    using Limits = std::numeric_limits<int>;
    if (std::isnan(number)) return Limits::min();
    return static_cast<int>(std::clamp<double>(number, Limits::min(), Limits::max()));
}

}  // namespace

TraceBinning::TraceBinning(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kTraceBinning, log), words_(kWords) {
    Configure(section);
}

ParameterList TraceBinning::Parameters() {
    return {
        {.key = "XORIGIN",
         .format = "%f",
         .value = Bound{&x_origin_, 0.0},
         .log = "X origin                   = %3.1f\n",
         .field = {.label = "X Origin",
                   .prompt = "X origin of the grid?",
                   .help = "X-Coordinate of center of first bin."}},
        {.key = "YORIGIN",
         .format = "%f",
         .value = Bound{&y_origin_, 0.0},
         .log = "Y origin                   = %3.1f\n",
         .field = {.label = "Y Origin",
                   .prompt = "Y origin of the grid?",
                   .help = "Y-Coordinate of center of first bin."}},
        {.key = "XBINSIZE",
         .format = "%f",
         .value = Bound{&x_bin_size_, 25.0},
         .log = "X bin size                 = %3.1f\n",
         .field = {.label = "X Bin Size",
                   .prompt = "X bin size?",
                   .help = "Size of each bin in CROSSLINE direction."}},
        {.key = "YBINSIZE",
         .format = "%f",
         .value = Bound{&y_bin_size_, 25.0},
         .log = "Y bin size                 = %3.1f\n",
         .field = {.label = "Y Bin Size",
                   .prompt = "Y bin size?",
                   .help = "Size of each bin in INLINE direction."}},
        {.key = "ROTATION",
         .format = "%f",
         .value = Bound{&rotation_, 0.0},
         .log = "Rotation                   = %3.1f\n",
         .field = {.label = "Rotation",
                   .prompt = "Rotation of the grid (in degrees)?",
                   .help =
                       "Midpoints are turned counter-clockwise by this angle about the origin."}},
        {.key = "XLINESTART",
         .format = "%d",
         .value = Bound{&xline_.start, 0},
         .log = "Cross-line Starting number = %d\n",
         .field = {.label = "Crossline Start",
                   .prompt = "First crossline number?",
                   .help = "Crossline number at the origin."}},
        {.key = "XLINEEND",
         .format = "%d",
         .value = Bound{&xline_.end, 1000},
         .log = "Cross-line Ending number   = %d\n",
         .field = {.label = "Crossline End",
                   .prompt = "Last crossline number?",
                   .help = "A trace beyond it ends the job."}},
        {.key = "XLINEINC",
         .format = "%d",
         .value = Bound{&xline_.increment, 1},
         .log = "Cross-line Inc number      = %d\n",
         .field = {.label = "Crossline Increment",
                   .prompt = "Crossline number increment?",
                   .help = "From one bin to the next."}},
        {.key = "NLINESTART",
         .format = "%d",
         .value = Bound{&nline_.start, 0},
         .log = "In-line Starting number    = %d\n",
         .field = {.label = "Inline Start",
                   .prompt = "First inline number?",
                   .help = "Inline number at the origin."}},
        {.key = "NLINEEND",
         .format = "%d",
         .value = Bound{&nline_.end, 1000},
         .log = "In-line Ending number      = %d\n",
         .field = {.label = "Inline End",
                   .prompt = "Last inline number?",
                   .help = "A trace beyond it ends the job."}},
        {.key = "NLINEINC",
         .format = "%d",
         .value = Bound{&nline_.increment, 1},
         .log = "In-line Inc number         = %d\n",
         .field = {.label = "Inline Increment",
                   .prompt = "Inline number increment?",
                   .help = "From one bin to the next."}},
    };
}

bool TraceBinning::CheckGrid() const {
    const struct {
        const char* name;
        double size;
    } sizes[] = {{"X", x_bin_size_}, {"Y", y_bin_size_}};
    for (const auto& [name, size] : sizes) {
        if (std::isfinite(size) && size != 0) continue;
        Error("The %s bin size must not be 0.  You have entered '%f'.\n", name, size);
        return false;
    }
    if (!std::isfinite(x_origin_) || !std::isfinite(y_origin_) || !std::isfinite(rotation_)) {
        Error("The origin and the rotation of the grid must be finite numbers.\n");
        return false;
    }
    const struct {
        const char* name;
        Numbering numbers;
    } axes[] = {{"CROSS-LINE", xline_}, {"IN-LINE", nline_}};
    for (const auto& [name, numbers] : axes) {
        if (numbers.increment == 0) {
            Error("The %s increment must not be 0.\n", name);
            return false;
        }
        if (numbers.end < numbers.start) {
            Error("The %s numbers run backwards, from %d to %d.\n", name, numbers.start,
                  numbers.end);
            return false;
        }
    }
    return true;
}

void TraceBinning::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    words_.list(*this, HeaderWordRow::kInput);
    Message(
        "\nThe following SEG-Y trace headers are used on OUTPUT and will reflect the BINNING "
        "values after the TRACE BINNING:\n");
    words_.list(*this, HeaderWordRow::kOutput);
    if (!words_.find(*this, header)) return;
    scalar_.prepare(header);
    if (!CheckGrid()) return TerminateJob(kJobError);
    const auto steps = (std::int64_t{xline_.end} - xline_.start) / xline_.increment;
    xlines_ = static_cast<double>(steps + 1);
    cos_ = std::cos(rotation_ * kRadiansPerDegree);
    sin_ = std::sin(rotation_ * kRadiansPerDegree);
}

void TraceBinning::RefuseMidpoint(const char* axis, const char* end, double number, int limit,
                                  const std::array<double, 4>& coordinates) const {
    Error("Source %3.1f/%3.1f, Receiver %3.1f,%3.1f - has an %s number of %d.\n", coordinates[0],
          coordinates[1], coordinates[2], coordinates[3], axis, shown(number));
    Error("The %s %s number you entered in the prospect definition was %d.\n", end, axis, limit);
    Error("Expand the prospect definition to fit.\n");
    TerminateJob(kJobError);
}

int TraceBinning::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    scalar_.look(*this, header);
    const std::array<double, 4> coordinates = {
        header.get_double(words_[kSrcX]), header.get_double(words_[kSrcY]),
        header.get_double(words_[kRecX]), header.get_double(words_[kRecY])};
    const auto [source_x, source_y, receiver_x, receiver_y] = coordinates;
    const double dx = (source_x + receiver_x) / 2 - x_origin_;
    const double dy = (source_y + receiver_y) / 2 - y_origin_;
    // Bins along each axis, cut toward 0: the first one takes in as much before the origin as
    // after it. Whole numbers in doubles, exact far beyond what a header word holds.
    const double column = std::trunc((dx * cos_ - dy * sin_) / x_bin_size_);
    const double row = std::trunc((dx * sin_ + dy * cos_) / y_bin_size_);
    const double nline = nline_.start + nline_.increment * column;
    const double xline = xline_.start + xline_.increment * row;
    if (DebugOutput::stream()) DebugPrint("5 - %d,%d\n", shown(nline), shown(xline));

    // A coordinate that is no number is below everything.
    const auto refuse = [&](const char* axis, const char* end, double number, int limit) {
        RefuseMidpoint(axis, end, number, limit, coordinates);
        return kKeepBack;
    };
    if (!(nline >= nline_.start)) return refuse("IN-LINE", "minimum", nline, nline_.start);
    if (nline > nline_.end) return refuse("IN-LINE", "maximum", nline, nline_.end);
    if (!(xline >= xline_.start)) return refuse("CROSS-LINE", "minimum", xline, xline_.start);
    if (xline > xline_.end) return refuse("CROSS-LINE", "maximum", xline, xline_.end);

    header.set_double(words_[kCdpN], column * xlines_ + 1 + row);
    header.set_double(words_[kXline], xline);
    header.set_double(words_[kInline], nline);
    // Relative to the origin; bins, in turn, are placed as if the grid were not rotated.
    header.set_double(words_[kCdpX], dx);
    header.set_double(words_[kCdpY], dy);
    header.set_double(words_[kBinX], column * x_bin_size_ + x_origin_);
    header.set_double(words_[kBinY], row * y_bin_size_ + y_origin_);
    return kPassOn;
}

}  // namespace halvern
