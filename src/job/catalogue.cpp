#include "job/catalogue.h"

#include "flow/unbuilt_flow_item.h"
#include "geometry/ascii_input.h"
#include "geometry/ascii_output.h"
#include "geometry/merge_p1.h"
#include "geometry/merge_sps.h"
#include "geometry/trace_binning.h"
#include "geometry/write_coordinates.h"
#include "items/agc.h"
#include "items/attribute.h"
#include "items/deconvolution.h"
#include "items/filter.h"
#include "items/header_math.h"
#include "items/linear_moveout.h"
#include "items/mute.h"
#include "items/normal_moveout.h"
#include "items/resample.h"
#include "items/stack.h"
#include "items/time_shift.h"
#include "items/trace_math.h"
#include "items/trace_mix.h"
#include "items/trace_select.h"
#include "items/trace_sort.h"
#include "items/trace_window.h"
#include "native/native_disk_input.h"
#include "native/native_disk_output.h"
#include "segd/segd_tape_input.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_disk_output.h"
#include "tape/segy_tape_input.h"
#include "tape/segy_tape_output.h"

namespace halvern {

namespace {

template <class Item>
std::unique_ptr<FlowItem> create(const FlowSection& section, LogFlag log) {
    return std::make_unique<Item>(section, log);
}

struct Entry {
    FlowItemKind kind;
    std::unique_ptr<FlowItem> (*create)(const FlowSection& section, LogFlag log);
};

// The kinds that are built, by id.
constexpr Entry kCatalogue[] = {
    {FlowItemKind::kSegdTapeInput, create<SegdTapeInput>},
    {FlowItemKind::kSegyTapeInput, create<SegyTapeInput>},
    {FlowItemKind::kSegyDiskInput, create<SegyDiskInput>},
    {FlowItemKind::kNativeDiskInput, create<NativeDiskInput>},
    {FlowItemKind::kSegyDiskOutput, create<SegyDiskOutput>},
    {FlowItemKind::kSegyTapeOutput, create<SegyTapeOutput>},
    {FlowItemKind::kNativeDiskOutput, create<NativeDiskOutput>},
    {FlowItemKind::kHeaderMath, create<HeaderMath>},
    {FlowItemKind::kAgc, create<Agc>},
    {FlowItemKind::kAsciiInput, make_ascii_input},
    {FlowItemKind::kAsciiOutput, create<AsciiOutput>},
    {FlowItemKind::kAttribute, create<Attribute>},
    {FlowItemKind::kFilter, create<Filter>},
    {FlowItemKind::kDeconvolution, create<Deconvolution>},
    {FlowItemKind::kLinearMoveout, create<LinearMoveout>},
    {FlowItemKind::kMergeP1, create<MergeP1>},
    {FlowItemKind::kMergeSps, create<MergeSps>},
    {FlowItemKind::kMute, create<Mute>},
    {FlowItemKind::kNormalMoveout, create<NormalMoveout>},
    {FlowItemKind::kResample, create<Resample>},
    {FlowItemKind::kTimeShift, create<TimeShift>},
    {FlowItemKind::kTraceMath, create<TraceMath>},
    {FlowItemKind::kTraceMix, create<TraceMix>},
    {FlowItemKind::kTraceBinning, create<TraceBinning>},
    {FlowItemKind::kWriteCoordinates, create<WriteCoordinates>},
    {FlowItemKind::kTraceSelect, create<TraceSelect>},
    {FlowItemKind::kTraceWindow, create<TraceWindow>},
    {FlowItemKind::kTraceSort, create<TraceSort>},
    {FlowItemKind::kStack, create<Stack>},
};

}  // namespace

std::unique_ptr<FlowItem> CreateFlowItem(const FlowSection& section, LogFlag log) {
    for (const Entry& entry : kCatalogue) {
        if (entry.kind == section.kind) return entry.create(section, log);
    }
    const int id = static_cast<int>(section.kind);
    if (id < 0 || id >= kFlowItemKinds) return nullptr;
    return create<UnbuiltFlowItem>(section, log);
}

}  // namespace halvern
