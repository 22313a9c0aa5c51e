// Any bytes as a file with traces: its kind is told, it is opened as that kind, and read to its
// end.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

#include "foundation/messages.h"
#include "inspect/trace_source.h"
#include "scratch_folder.h"

void halvern::TerminateJob(int) { __builtin_trap(); }  // the description has all that is needed

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace halvern;
    static const ScratchFolder folder;
    static const std::string header = [] {
        const std::string path = folder.file("header");
        std::ofstream(path) << std::string(51, ' ') << "WEIGHT   168 0\n";
        return path;
    }();
    const std::string path = folder.file("traces");
    std::ofstream file(path, std::ios::binary);
    for (std::size_t i = 0; i < size; ++i) file.put(static_cast<char>(data[i]));
    file.close();

    const TraceOpening opening = open_trace_source(path, header);
    if (!opening.source == opening.failure.empty()) __builtin_trap();
    if (!opening.source) return 0;
    TraceSource& source = *opening.source;
    const std::int64_t count = source.trace_count();
    std::int64_t read = 0;
    for (; read < 1000 && source.next(); ++read) (void)source.floats();
    // A file that does not change gives every trace that it announces.
    if (count >= 0 && read != std::min<std::int64_t>(count, 1000)) __builtin_trap();
    (void)source.notes();
    (void)source.facts();
    return 0;
}
