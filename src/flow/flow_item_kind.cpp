#include "flow/flow_item_kind.h"

#include <array>

namespace halvern {

namespace {

using Kind = FlowItemKind;
using Base = FlowItemBase;
using Menu = FlowItemMenu;

constexpr std::array<FlowItemKindEntry, kFlowItemKinds> kKinds = {{
    {Kind::kSegdTapeInput, "SEG-D Tape Input", "SEGDTINPUT", Base::kInput, Menu::kInput, 4},
    {Kind::kSegyTapeInput, "SEG-Y Tape Input", "SEGYTINPUT", Base::kInput, Menu::kInput, 3},
    {Kind::kSegyDiskInput, "SEG-Y Disk Input", "SEGYDINPUT", Base::kInput, Menu::kInput, 2},
    {Kind::kNativeDiskInput, "Halvern Data Disk Input", "KELDARDINPUT", Base::kInput, Menu::kInput,
     1},
    {Kind::kSegyDiskOutput, "SEG-Y Disk Output", "SEGYDOUTPUT", Base::kProcess, Menu::kOutput, 6},
    {Kind::kSegyTapeOutput, "SEG-Y Tape Output", "SEGYTOUTPUT", Base::kProcess, Menu::kOutput, 7},
    {Kind::kNativeDiskOutput, "Halvern Data Disk Output", "KELDARDOUTPUT", Base::kProcess,
     Menu::kOutput, 5},
    {Kind::kHeaderMap2d, "Trace Header Map 2D", "HEADER2DISPLAY", Base::kDisplay, Menu::kDisplay,
     32},
    {Kind::kHeaderMap3d, "Trace Header Map 3D", "HEADER3DISPLAY", Base::kDisplay, Menu::kNone, 0},
    {Kind::kTraceDisplay2d, "Trace Display 2D", "SEIS2DISPLAY", Base::kDisplay, Menu::kDisplay, 30},
    {Kind::kGeometryDisplay, "Geometry Display", "GEODISPLAY", Base::kExclusive, Menu::kNone, 0},
    {Kind::kBinningDisplay, "Binning Display", "BINDISPLAY", Base::kExclusive, Menu::kNone, 0},
    {Kind::kCoordinateDisplay, "Coordinate Display", "COORDDISPLAY", Base::kExclusive, Menu::kNone,
     0},
    {Kind::kSpectralDisplay, "Spectral Analysis Display", "SPECTRUMDISPLAY", Base::kDisplay,
     Menu::kDisplay, 31},
    {Kind::kDeconvolutionDisplay, "Deconvolution Analysis Display", "DECONDISPLAY", Base::kDisplay,
     Menu::kDisplay, 29},
    {Kind::kMultiComponentDisplay, "Multi-Component Display", "MULTIDISPLAY", Base::kExclusive,
     Menu::kNone, 0},
    {Kind::kHeaderMath, "Trace Header Math", "HEADERMATH", Base::kProcess, Menu::kProcess, 23},
    {Kind::kAgc, "AGC", "AGC", Base::kProcess, Menu::kProcess, 8},
    {Kind::kAsciiInput, "ASCII Data Input", "ASCIIINPUT", Base::kProcess, Menu::kProcess, 9},
    {Kind::kAsciiOutput, "ASCII Data Output", "ASCIIOUTPUT", Base::kProcess, Menu::kProcess, 10},
    {Kind::kAttribute, "Attribute", "ATTRIBUTE", Base::kProcess, Menu::kProcess, 11},
    {Kind::kFilter, "Filter", "FILTER", Base::kProcess, Menu::kProcess, 13},
    {Kind::kDeconvolution, "Deconvolution", "DECON", Base::kProcess, Menu::kProcess, 12},
    {Kind::kLinearMoveout, "Linear Moveout (LMO)", "LMO", Base::kProcess, Menu::kProcess, 14},
    {Kind::kMergeP1, "Merge P1", "P1MERGE", Base::kProcess, Menu::kProcess, 15},
    {Kind::kMergeSps, "Merge SPS", "MERGE", Base::kProcess, Menu::kProcess, 16},
    {Kind::kMute, "Mute", "MUTE", Base::kProcess, Menu::kProcess, 17},
    {Kind::kNormalMoveout, "Normal Moveout (NMO)", "NMO", Base::kProcess, Menu::kProcess, 18},
    {Kind::kResample, "Resample", "RESAMPLE", Base::kProcess, Menu::kProcess, 19},
    {Kind::kTimeShift, "Time Shift", "TIMESHIFT", Base::kProcess, Menu::kProcess, 21},
    {Kind::kTraceMath, "Trace Math", "TRACEMATH", Base::kProcess, Menu::kProcess, 24},
    {Kind::kTraceMix, "Trace Mix", "TRACEMIX", Base::kBuffering, Menu::kNone, 0},
    {Kind::kTraceBinning, "Trace Binning", "TRACEBINNING", Base::kProcess, Menu::kProcess, 22},
    {Kind::kTraceSelect, "Trace Select", "TRACESELECT", Base::kProcess, Menu::kProcess, 25},
    {Kind::kTraceWindow, "Trace Window", "TRACEWINDOW", Base::kProcess, Menu::kProcess, 27},
    {Kind::kWriteCoordinates, "Write Coordinate File", "WRITENAV", Base::kProcess, Menu::kProcess,
     28},
    {Kind::kTraceSort, "Trace Sort", "SORT", Base::kBuffering, Menu::kProcess, 26},
    {Kind::kStack, "Stack", "STACK", Base::kBuffering, Menu::kProcess, 20},
}};

}  // namespace

std::string_view menu_label(FlowItemMenu menu) {
    switch (menu) {
        case Menu::kInput:
            return "Input Flow Items";
        case Menu::kOutput:
            return "Output Flow Items";
        case Menu::kProcess:
            return "Process Flow Items";
        case Menu::kDisplay:
            return "Display Flow Items";
        case Menu::kNone:
            break;
    }
    return {};
}

std::span<const FlowItemKindEntry, kFlowItemKinds> flow_item_kinds() { return kKinds; }

const FlowItemKindEntry& flow_item_kind(FlowItemKind kind) {
    return kKinds[static_cast<std::size_t>(kind)];
}

std::optional<FlowItemKind> match_keyword(std::string_view text) {
    const FlowItemKindEntry* longest = nullptr;
    for (const FlowItemKindEntry& entry : kKinds) {
        const std::string_view keyword = entry.keyword;
        if (!text.starts_with(keyword)) continue;
        if (!longest || keyword.size() > std::string_view(longest->keyword).size()) {
            longest = &entry;
        }
    }
    if (!longest) return std::nullopt;
    return longest->kind;
}

}  // namespace halvern
