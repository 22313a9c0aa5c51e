#include "job/catalogue.h"

#include "flow/unbuilt_flow_item.h"
#include "items/agc.h"
#include "items/linear_moveout.h"
#include "items/mute.h"
#include "items/normal_moveout.h"
#include "items/stack.h"
#include "items/trace_sort.h"
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
        case FlowItemKind::kLinearMoveout:
            return create<LinearMoveout>(section, log);
        case FlowItemKind::kMute:
            return create<Mute>(section, log);
        case FlowItemKind::kNormalMoveout:
            return create<NormalMoveout>(section, log);
        case FlowItemKind::kStack:
            return create<Stack>(section, log);
        case FlowItemKind::kTraceSort:
            return create<TraceSort>(section, log);
        default:
            break;
    }
    const int id = static_cast<int>(section.kind);
    if (id < 0 || id >= kFlowItemKinds) return nullptr;
    return create<UnbuiltFlowItem>(section, log);
}

}  // namespace halvern
