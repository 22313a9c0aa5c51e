#include "job/chain.h"

#include "foundation/messages.h"

namespace halvern {

namespace {

void RefuseExclusive(const FlowItem& item) {
    LogPrint("PARAMETER ERROR:  An exclusive process '%s' cannot be run with other flow items.\n",
             item.GetName());
    TerminateJob(kJobError);
}

}  // namespace

std::unique_ptr<FlowItem> BuildChain(const std::list<FlowSection>& sections,
                                     const FlowItemFactory& create) {
    std::unique_ptr<FlowItem> head;
    FlowItem* last = nullptr;
    bool sort_seen = false;
    for (const FlowSection& section : sections) {
        if (section.disabled) continue;
        std::unique_ptr<FlowItem> item = create(section, LogFlag::kLog);
        if (section.kind == FlowItemKind::kTraceSort) sort_seen = true;
        if (sort_seen && item && item->IsDisplay()) {
            LogPrint(
                "PARAMETER ERROR:  A display '%s' cannot be run with a 'TRACE SORT' process.\n"
                "Run the 'TRACE SORT' to an output file and use the output as an input to your "
                "display.\nOR sort the traces on input during the SEGY Disk Input.\n",
                item->GetName());
            TerminateJob(kJobError);
            return nullptr;
        }
        if (!item) continue;
        if (!head) {
            head = std::move(item);
            last = head.get();
            continue;
        }
        if (item->IsExclusive() || last->IsExclusive()) {
            RefuseExclusive(item->IsExclusive() ? *item : *last);
            return nullptr;
        }
        last = &last->SetNext(std::move(item));
    }
    return head;
}

}  // namespace halvern
