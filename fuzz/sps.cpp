// SPS files: the bytes are read as a source, a receiver and a relation file at once, prepared and
// searched; what was read is written and read again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "foundation/messages.h"
#include "geometry/sps_data_set.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

using namespace halvern;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const SilentReporter report;
    SpsDataSet set(report);
    LineReader sources = LineReader::Over(text, 198);
    LineReader receivers = LineReader::Over(text, 198);
    LineReader relations = LineReader::Over(text, 198);
    const bool complete = set.read_sources(sources, "") == 0 &&
                          set.read_receivers(receivers, "") == 0 &&
                          set.read_relations(relations, "") == 0;
    if (!complete || set.prepare() != 0) return 0;
    for (const SpsRelation& relation : set.relations()) {
        for (const int channel :
             {relation.first_channel, relation.last_channel, relation.last_channel + 1}) {
            const SpsMatch match = set.find(relation.ffid, channel);
            if (match.status == SpsStatus::kFound && !match.receiver) std::abort();
        }
    }
    std::string line;
    for (const SpsPoint& point : set.sources()) append_sps_point(line, 'S', point);
    for (const SpsRelation& relation : set.relations()) append_sps_relation(line, "", relation);
    LineReader written = LineReader::Over(line, 198);
    if (set.read_sources(written, "") == 0 && set.sources().empty()) std::abort();
    return 0;
}
