#include "job/catalogue.h"

#include "flow/unbuilt_flow_item.h"
#include "geometry/ascii_input.h"
#include "geometry/merge_sps.h"
#include "geometry/trace_binning.h"
#include "items/agc.h"
#include "native/native_disk_input.h"
#include "native/native_disk_output.h"
#include "segy/segy_disk_input.h"
#include "segy/segy_disk_output.h"

namespace halvern {

namespace {

template <class Item>
std::unique_ptr<FlowItem> create(const FlowSection& section, LogFlag log) {
    return std::make_unique<Item>(section, log);
}

}  // namespace

std::unique_ptr<FlowItem> CreateFlowItem(const FlowSection& section, LogFlag log) {
    switch (section.kind) {
        case FlowItemKind::kSegyDiskInput:
            return create<SegyDiskInput>(section, log);
        case FlowItemKind::kNativeDiskInput:
            return create<NativeDiskInput>(section, log);
        case FlowItemKind::kNativeDiskOutput:
            return create<NativeDiskOutput>(section, log);
        case FlowItemKind::kSegyDiskOutput:
            return create<SegyDiskOutput>(section, log);
        case FlowItemKind::kAgc:
            return create<Agc>(section, log);
        case FlowItemKind::kAsciiInput:
            return create<AsciiInput>(section, log);
        case FlowItemKind::kMergeSps:
            return create<MergeSps>(section, log);
        case FlowItemKind::kTraceBinning:
            return create<TraceBinning>(section, log);
        default:
            break;
    }
    const int id = static_cast<int>(section.kind);
    if (id < 0 || id >= kFlowItemKinds) return nullptr;
    return create<UnbuiltFlowItem>(section, log);
}

}  // namespace halvern
