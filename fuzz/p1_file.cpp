// P1 files: the bytes are read, and every group of every source is looked up in every way.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "foundation/report.h"
#include "geometry/p1_file.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

using namespace halvern;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    LineReader lines = LineReader::Over(text, P1File::kColumns);
    const Result<P1File> file = P1File::read(lines, SilentReporter());
    if (!file) return 0;
    std::int64_t found = 0;
    for (const P1Position& source : file->sources()) {
        for (int number = -1000; number < 10000; number += number < 200 ? 1 : 97) {
            for (const P1Count count : {P1Count::kNumber, P1Count::kThrough}) {
                found += file->find_group(source, {}, number, count, false) != nullptr;
                found += file->find_group(source, 2, number, count, true) != nullptr;
            }
        }
    }
    if (found > 0 && file->groups() == 0) std::abort();
    for (const bool geographical : {false, true}) {
        static_cast<void>(file->coordinates_are_multiples(0.1, geographical));
    }
    static_cast<void>(file->header("H1800"));
    return 0;
}
