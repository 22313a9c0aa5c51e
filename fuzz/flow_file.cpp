// Flow files: any bytes are read into sections, made items with their parameters, and what the
// items write in the flow file's format reads again as the same items.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include "flow/flow_file.h"
#include "foundation/messages.h"
#include "job/catalogue.h"
#include "job/chain.h"
#include "scratch_folder.h"

namespace {

using namespace halvern;

struct JobEnd {};

const std::string& flow_path() {
    static const ScratchFolder folder;
    static const std::string path = folder.file("flow");
    return path;
}

std::size_t write_items(FlowItem* head) {
    std::FILE* const stream = std::fopen(flow_path().c_str(), "w");
    if (!stream) __builtin_trap();
    std::size_t count = 0;
    for (FlowItem* item = head; item; item = item->next()) {
        item->WriteParameters(stream);
        ++count;
    }
    std::fclose(stream);
    return count;
}

}  // namespace

void halvern::TerminateJob(int) { throw JobEnd(); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::ofstream(flow_path(), std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    try {
        FlowParameterFile flow(flow_path());
        (void)flow.read([](const std::string&) { return 0; });
        const std::unique_ptr<FlowItem> head = BuildChain(
            flow.sections(),
            [](const FlowSection& section) { return CreateFlowItem(section, LogFlag::kLog); });
        if (!head) return 0;
        const std::size_t count = write_items(head.get());
        FlowParameterFile again(flow_path());
        if (again.read([](const std::string&) { return -1; }) != 0) __builtin_trap();
        if (again.sections().size() != count) __builtin_trap();
    } catch (const JobEnd&) {  // refused, with its reason
    }
    return 0;
}
