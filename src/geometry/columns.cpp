#include "geometry/columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "geometry/decimal_field.h"

namespace halvern {

std::string_view cut(std::string_view line, Columns columns) {
    const auto first = static_cast<std::size_t>(columns.first - 1);
    if (line.size() <= first) return {};
    return line.substr(first, static_cast<std::size_t>(columns.width()));
}

bool is_blank(std::string_view line, Columns columns) {
    return classify_field(cut(line, columns)) == FieldText::kBlank;
}

std::optional<FieldFault> find_fault(std::string_view line, std::span<const NamedColumns> fields) {
    for (const auto& [name, columns] : fields) {
        if (classify_field(cut(line, columns)) == FieldText::kOther) {
            return FieldFault{name, columns.first, columns.last};
        }
    }
    return {};
}

void ColumnRecord::number(Columns columns, double value, int decimals) {
    if (std::isnan(value)) return;
    char text[32];  // far wider than any field: what is longer does not fit one
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals);
    std::string_view written(text, static_cast<std::size_t>(end.ptr - text));
    // A negative number may have been rounded to zero, which has no sign.
    if (written.starts_with('-') && written.find_first_not_of("-0.") == written.npos) {
        written.remove_prefix(1);
    }
    const auto width = static_cast<std::size_t>(columns.width());
    if (end.ec != std::errc{} || !std::isfinite(value) || written.size() > width) {
        ++misfits_;
        return;
    }
    std::ranges::copy(written, line_.begin() + columns.last - static_cast<int>(written.size()));
}

void ColumnRecord::digits(Columns columns, int value) {
    number(columns, value);
    const auto begin = line_.begin() + columns.first - 1;
    const auto end = line_.begin() + columns.last;
    if (value >= 0 && *(end - 1) != ' ') std::replace(begin, end, ' ', '0');
}

void ColumnRecord::text(Columns columns, std::string_view text) {
    const auto length = std::min(text.size(), static_cast<std::size_t>(columns.width()));
    std::ranges::copy(text.substr(0, length), line_.begin() + columns.first - 1);
}

}  // namespace halvern
