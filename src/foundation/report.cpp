#include "foundation/report.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace halvern {

namespace {

constexpr std::size_t kBuffer = 1000;

HALVERN_PRINTF(3, 0)
void tell(const Reporter& reporter, Weight weight, const char* format, std::va_list arguments) {
    char buffer[kBuffer];
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    if (length < 0) return;
    std::string_view text(buffer, std::min(static_cast<std::size_t>(length), sizeof buffer - 1));
    // A line that is cut still ends.
    if (static_cast<std::size_t>(length) > text.size() &&
        std::string_view(format).ends_with('\n')) {
        buffer[text.size() - 1] = '\n';
    }
    reporter.Take(weight, text);
}

}  // namespace

#define HALVERN_TELL(weight)                \
    std::va_list arguments;                 \
    va_start(arguments, format);            \
    tell(*this, weight, format, arguments); \
    va_end(arguments)

void Reporter::Log(const char* format, ...) const { HALVERN_TELL(Weight::kLog); }
void Reporter::Message(const char* format, ...) const { HALVERN_TELL(Weight::kMessage); }
void Reporter::Warning(const char* format, ...) const { HALVERN_TELL(Weight::kWarning); }
void Reporter::Error(const char* format, ...) const { HALVERN_TELL(Weight::kError); }

#undef HALVERN_TELL

void LogReporter::Take(Weight weight, std::string_view text) const {
    constexpr const char* kPrefixes[] = {"", "", "*** WARNING in ", "*** ERROR in "};
    if (weight != Weight::kLog) LogPrint("%s%s: ", kPrefixes[static_cast<int>(weight)], name_);
    LogPrint("%.*s", static_cast<int>(text.size()), text.data());
}

void CollectedReports::Take(Weight weight, std::string_view text) const {
    while (text.ends_with('\n')) text.remove_suffix(1);
    entries_.push_back({weight, std::string(text)});
}

std::vector<std::string> CollectedReports::of(Weight weight) const {
    std::vector<std::string> found;
    for (const Entry& entry : entries_) {
        if (entry.weight != weight) continue;
        found.push_back(entry.text);
        if (found.back().ends_with('.')) found.back().pop_back();
    }
    return found;
}

}  // namespace halvern
