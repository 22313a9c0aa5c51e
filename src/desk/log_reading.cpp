#include "desk/log_reading.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <span>

namespace halvern {

double JobProgress::share() const {
    // The numbers are a log's, which may hold any.
    const double part = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 0;
    return std::clamp(part, 0.0, 1.0);
}

double JobProgress::seconds_left() const {
    return static_cast<double>(std::max(0LL, total - done)) / rate;
}

LogReading::LineKind LogReading::take(std::string_view line) {
    constexpr std::string_view kTraces = "  Number of Traces:";
    constexpr std::string_view kReading = "Reading Trace ";
    constexpr std::string_view kSorting = ": Sorting ";
    constexpr std::string_view kSorted = ": Writing Sorted Trace #";
    if (line.starts_with(kReading)) {
        if (const long long number = number_at(line.substr(kReading.size())); number >= 0) {
            if (sorting_ >= 0) return LineKind::kProgress;  // again, in the order of the sort
            read_ = number;
            advance(number);
            return LineKind::kProgress;
        }
    }
    if (const std::size_t at = line.find(kSorted); at != std::string_view::npos) {
        if (const long long number = number_at(line.substr(at + kSorted.size())); number >= 0) {
            advance(number);
            return LineKind::kProgress;
        }
    }
    if (const std::size_t at = line.find(kSorting); at != std::string_view::npos) {
        if (const long long number = number_at(line.substr(at + kSorting.size())); number >= 0) {
            sorting_ = number;
            done_ = 0;
            first_ = -1;
        }
    }
    if (line.starts_with(kTraces)) traces_ = number_at(line.substr(kTraces.size()));
    if (line.starts_with("Job completed normally at ")) {
        end_ = End::kNormal;
        if (traces_ >= 0) read_ = traces_;
    }
    if (line.starts_with("Job terminated with error at ")) {
        end_ = asked_to_stop_ ? End::kStopped : End::kError;
        return LineKind::kError;
    }
    if (line == "The job was asked to stop.") asked_to_stop_ = true;
    if (line.starts_with("*** WARNING")) return LineKind::kWarning;
    for (const std::string_view start :
         {"*** ERROR", "PARAMETER ERROR:", "ERROR IN ", "UNDEFINED STRING:", "Cannot ", "CANNOT ",
          "No flow to process.", "The job "}) {
        if (line.starts_with(start)) return LineKind::kError;
    }
    return LineKind::kPlain;
}

void LogReading::advance(long long done) {
    done_ = done;
    if (first_ >= 0) return;
    first_ = done;
    started_ = Clock::now();
}

JobProgress LogReading::progress() const {
    JobProgress progress{.done = done_, .total = std::max(0LL, sorting_ >= 0 ? sorting_ : traces_)};
    const std::chrono::duration<double> went = Clock::now() - started_;
    if (first_ >= 0 && done_ > first_ && went.count() > 0) {
        progress.rate = static_cast<double>(done_ - first_) / went.count();
    }
    return progress;
}

void GrowingLog::read(const std::function<void(std::string_view)>& take, bool last) {
    if (!file_) {
        Result<InputFile> opened = InputFile::open(path_);
        if (opened) file_ = std::move(*opened);
    }
    char buffer[1 << 16];
    Fault ignored;  // what cannot be read now may be the next time
    // A C stream will not do: that of Windows stops at the end that it has once seen.
    while (const std::size_t count =
               file_ ? file_->read_at(at_, std::as_writable_bytes(std::span(buffer)), ignored)
                     : 0) {
        at_ += static_cast<std::int64_t>(count);
        std::string_view text(buffer, count);
        for (std::size_t end; (end = text.find('\n')) != std::string_view::npos;) {
            part_ += text.substr(0, end);
            take(part_);
            part_.clear();
            text.remove_prefix(end + 1);
        }
        part_ += text;
    }
    if (!last || part_.empty()) return;
    take(part_);
    part_.clear();
}

long long number_at(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    long long number = -1;
    (void)std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

std::string clock_text(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 1e12));
    char text[40];
    if (whole >= 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    }
    return text;
}

}  // namespace halvern
