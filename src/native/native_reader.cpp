#include "native/native_reader.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "foundation/words.h"
#include "trace/lost_trace.h"

namespace halvern {

NativeOpening NativeReader::open(const std::string& path, int progress_interval,
                                 const Reporter& report) {
    const auto refuse = [&](const std::string& what) {
        report.Error("'%s': %s.\n", path.c_str(), what.c_str());
        return NativeOpening::kNotValid;
    };
    const auto parts = NativeMain::read(path);
    if (!parts) return refuse(parts.fault().reason());
    parts_ = *parts;
    const auto layout = NativeLayout::read(parts_.line_path);
    if (!layout) {
        return refuse("its line header file '" + parts_.line_path +
                      "': " + layout.fault().reason());
    }
    layout_ = *layout;
    segments_.clear();
    trace_count_ = 0;
    std::int64_t incomplete = 0;  // traces that lack their header or their samples
    for (const NativeSegment& segment : parts_.segments) {
        const auto traces = native_segment_traces(segment, layout_);
        if (!traces) return refuse(traces.fault().reason());
        std::int64_t whole[2] = {};  // headers and sample records
        const std::int64_t sizes[2] = {kTraceHeaderBytes, layout_.sample_bytes()};
        for (std::size_t i = 0; i < 2; ++i) {
            const std::string& part = i == 0 ? segment.head_path : segment.data_path;
            const auto file = BlockReader::open(part);
            if (!file) return refuse("its file '" + part + "': " + file.fault().reason());
            whole[i] = sizes[i] > 0 ? file->size() / sizes[i] : whole[0];
        }
        incomplete += std::abs(whole[0] - whole[1]);
        segments_.push_back({trace_count_, *traces});
        trace_count_ += *traces;
    }
    std::error_code error;
    if (!std::filesystem::exists(parts_.desc_path, error)) {
        return refuse("its header description '" + parts_.desc_path + "' is missing");
    }
    definition_.attach(image_.data());
    if (definition_.load(parts_.desc_path) != 0) return NativeOpening::kNoDefinition;

    line_.build_from_definition(parts_.desc_path, layout_.interval, layout_.samples,
                                layout_.format);
    report_ = &report;
    progress_interval_ = progress_interval;
    next_ = 0;
    fault_ = {};
    head_.reset();
    data_.reset();
    report.Log("Halvern File '%s' Statistics:\n", path.c_str());
    report.Log("  Actual Number of Samples:   %d\n", layout_.samples);
    report.Log("  Sample Rate:                %3.1f\n", layout_.interval.ms());
    report.Log("  Data Format:                %s\n", format_name(layout_.format));
    report.Log("  Number of Traces:           %lld\n", static_cast<long long>(trace_count_));
    if (incomplete > 0) {
        report.Warning("%s of '%s' without samples, or samples without a header: not read.\n",
                       counted(incomplete, "header").c_str(), path.c_str());
    }
    return NativeOpening::kOpened;
}

Fault NativeReader::open_segment(std::size_t index) {
    segment_ = index;
    head_.reset();
    data_.reset();
    Result<BlockReader> head = BlockReader::open(parts_.segments[index].head_path);
    Result<BlockReader> data = BlockReader::open(parts_.segments[index].data_path);
    if (!head) return head.fault();
    if (!data) return data.fault();
    head_ = std::move(*head);
    data_ = std::move(*data);
    return {};
}

bool NativeReader::move_to(std::int64_t index) {
    if (index < 0 || index > trace_count_) return false;
    next_ = index;
    if (index == trace_count_) return true;
    const auto after = std::ranges::upper_bound(segments_, index, {}, &Segment::first);
    const auto segment = static_cast<std::size_t>(after - segments_.begin()) - 1;
    if (segment != segment_ || !head_) {
        if (const Fault failed = open_segment(segment)) {
            fault_ = lost_trace(index, trace_count_, failed);
            return false;
        }
    }
    const std::int64_t within = index - segments_[segment].first;
    head_->seek(within * kTraceHeaderBytes);
    data_->seek(within * layout_.sample_bytes());
    return true;
}

int NativeReader::read_next() {
    if (next_ >= trace_count_) return 0;
    const Segment& segment = segments_[segment_];
    const bool inside = head_ && next_ >= segment.first && next_ < segment.first + segment.traces;
    if (!inside && !move_to(next_)) return 0;

    const std::span<const std::byte> header = head_->next(kTraceHeaderBytes);
    const auto wanted = static_cast<std::size_t>(layout_.sample_bytes());
    const std::span<const std::byte> raw = data_->next(wanted);
    if (header.size() < image_.size() || raw.size() < wanted) {
        fault_ = lost_trace(next_, trace_count_, head_->fault() ? head_->fault() : data_->fault());
        return 0;
    }
    std::ranges::copy(header, image_.begin());
    definition_.attach(image_.data());
    samples_.set_raw(raw, layout_.samples, layout_.samples, layout_.samples, layout_.format);

    if (progress_interval_ > 0 && next_ % progress_interval_ == 0) {
        report_->Log("Reading Trace %lld\n", static_cast<long long>(next_));
    }
    ++next_;
    return 1;
}

}  // namespace halvern
