// ASCII data input: lines that begin with D or M are fields as a flow file spells them, the rest is
// the file. It is read, sorted and searched for each of its own records.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "foundation/messages.h"
#include "geometry/ascii_table.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

using namespace halvern;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    std::vector<AsciiField> match, values;
    while (text.starts_with('D') || text.starts_with('M')) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view spelled = text.substr(1, end - 1);
        const bool matches = text[0] == 'M';
        AsciiField field =
            matches ? AsciiField::parse_match(spelled) : AsciiField::parse_data(spelled);
        const AsciiField again = matches ? AsciiField::parse_match(field.match_text())
                                         : AsciiField::parse_data(field.data_text());
        if (again.name != field.name || again.first_column != field.first_column ||
            again.last_column != field.last_column || again.key != field.key) {
            std::abort();
        }
        field.floating = field.name.size() % 2 == 0;
        (matches ? match : values).push_back(field);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    if (match.empty() || values.empty()) return 0;
    std::stable_partition(match.begin(), match.end(),
                          [](const AsciiField& f) { return f.compare == kEqual; });

    AsciiTable table(match, values);
    LineReader lines = LineReader::Over(text, 998);
    if (table.read(lines) != 0) std::abort();
    table.sort();
    std::vector<AsciiValue> trace(match.size());
    for (int record = 0; record < table.records() && record < 100; ++record) {
        for (std::size_t i = 0; i < match.size(); ++i) trace[i] = table.match_value(record, i);
        const int found = table.find(trace);
        if (found < -1 || found >= table.records()) std::abort();
        for (std::size_t i = 0; i < match.size() && found >= 0; ++i) {
            const bool floating = match[i].floating;
            const bool equal =
                table.match_value(found, i).number(floating) == trace[i].number(floating);
            if (match[i].compare == kEqual && !equal) std::abort();
        }
    }
    return 0;
}
