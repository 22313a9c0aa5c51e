#include "native/native_writer.h"

#include <algorithm>
#include <filesystem>

#include "foundation/messages.h"

namespace halvern {

namespace {

constexpr std::int64_t kTracesBetweenChecks = 100;

// The writer deletes only what a dataset's parts are called, whatever a main file lists.
bool is_part_name(const std::string& path) {
    const std::string name = path.substr(path.find_last_of("/\\") + 1);
    for (const char* prefix : {"DESC", "LINE", "HEAD", "DATA"}) {
        if (name.size() > 4 && name.starts_with(prefix) &&
            std::all_of(name.begin() + 4, name.end(),
                        [](char c) { return c >= '0' && c <= '9'; })) {
            return true;
        }
    }
    return false;
}

}  // namespace

int NativeWriter::open(const std::string& path, Mode mode, const NativeLayout& layout,
                       const TraceHeaderDefinition& definition, NativePlaces places,
                       const Reporter& report) {
    path_ = path;
    report_ = &report;
    places_ = std::move(places);
    layout_ = layout;
    definition_ = &definition;
    mode_ = mode;
    segment_ = 0;
    in_segment_ = written_ = traces_before_ = 0;

    std::error_code error;
    const bool exists = std::filesystem::exists(path, error);
    if (mode_ == Mode::kOverwrite) return overwrite() ? 1 : 0;
    if (mode_ == Mode::kAppend) {
        if (const auto parts = exists ? NativeMain::read(path) : std::nullopt) {
            parts_ = *parts;
            return append() ? 1 : 0;
        }
    }
    return create(exists) ? 1 : 0;
}

bool NativeWriter::create(bool replaces) {
    mode_ = Mode::kCreate;
    const auto replaced = replaces ? NativeMain::read(path_) : std::nullopt;
    if (replaces && !replaced) {
        report_->Error("'%s' exists and is not the main file of a dataset; it is kept.\n",
                       path_.c_str());
        return false;
    }
    const auto desc = places_.create_file("DESC");
    const auto line = places_.create_file("LINE");
    const auto segment = places_.create_segment();
    if (!desc || !line || !segment) {
        report_->Error(
            "Error in Halvern Data Output.  No selected file systems have enough disk space "
            "to create data files.\n");
        report_->Error(
            "Try removing unnecessary files, adding disk space, or reducing the minimum file "
            "system size.\n");
        for (const auto& made : {desc, line}) {
            if (made) std::filesystem::remove(*made);
        }
        return false;
    }
    parts_ = {.desc_path = *desc, .line_path = *line, .segments = {*segment}};
    const auto give_up = [&](const char* what, const std::string& file) {
        report_->Error("Error writing %s '%s'\n", what, file.c_str());
        delete_parts(parts_);
        return false;
    };
    if (definition_->save(*desc) != 0) return give_up("header description file", *desc);
    if (layout_.write(*line) != 0) return give_up("line header file", *line);
    if (!open_pair(0)) return give_up("data file", segment->data_path);
    if (parts_.write(path_) != 0) return give_up("main file", path_);
    // Only now that the new dataset stands may the old one's files go.
    if (replaced) delete_parts(*replaced);
    return true;
}

bool NativeWriter::append() {
    for (const NativeSegment& segment : parts_.segments) {
        const std::int64_t traces = native_segment_traces(segment, layout_);
        if (traces < 0) {
            report_->Error("A file of the dataset is missing: '%s' or '%s'\n",
                           segment.head_path.c_str(), segment.data_path.c_str());
            return false;
        }
        traces_before_ += traces;
        in_segment_ = traces;
    }
    if (parts_.segments.empty()) return next_pair();
    segment_ = parts_.segments.size() - 1;
    return open_pair(in_segment_);
}

bool NativeWriter::overwrite() {
    const auto parts = NativeMain::read(path_);
    const auto layout = parts ? NativeLayout::read(parts->line_path) : std::nullopt;
    if (!layout || parts->segments.empty()) {
        report_->Error("Bad input file.  Not file to overwrite.\n");
        return false;
    }
    parts_ = *parts;
    for (const NativeSegment& segment : parts_.segments) {
        traces_before_ += std::max<std::int64_t>(0, native_segment_traces(segment, layout_));
    }
    return open_pair(0);
}

// A new pair stands there empty and is never truncated: a system that saw that might wait, when the
// file is closed, until all of it has a place on the disk.
bool NativeWriter::open_pair(std::int64_t trace) {
    constexpr auto mode = BlockWriter::Mode::kUpdate;
    const NativeSegment& segment = parts_.segments[segment_];
    capacity_ = native_segment_traces(segment, layout_);
    return !head_.open(segment.head_path, mode, trace * kTraceHeaderBytes) &&
           !data_.open(segment.data_path, mode, trace * layout_.sample_bytes());
}

bool NativeWriter::close_pair() {
    // Headers last: a header without its samples would be a trace of the shorter count only.
    const Fault data_fault = data_.finish();
    return !head_.finish() && !data_fault;
}

bool NativeWriter::next_pair() {
    if (!close_pair()) return false;
    in_segment_ = 0;
    if (mode_ == Mode::kOverwrite) {
        if (segment_ + 1 >= parts_.segments.size()) return false;
        ++segment_;
        return open_pair(0);
    }
    const auto segment = places_.create_segment();
    if (!segment) {
        report_->Error(
            "Error in Halvern Data Output.  No selected file systems have enough disk space "
            "to create data files.\n");
        report_->Error(
            "Try removing unnecessary files, adding disk space, or reducing the minimum file "
            "system size.\n");
        return false;
    }
    parts_.segments.push_back(*segment);
    segment_ = parts_.segments.size() - 1;
    if (!open_pair(0)) return false;
    if (parts_.write(path_) == 0) return true;
    report_->Error("Error writing main file '%s'\n", path_.c_str());
    return false;
}

int NativeWriter::write_trace(std::span<const std::byte> header,
                              std::span<const std::byte> record) {
    while (mode_ == Mode::kOverwrite && in_segment_ >= capacity_) {
        if (!next_pair()) return -1;
    }
    if (head_.write(header) != header.size()) {
        report_->Error("Cannot write 'Halvern Trace Header' to file: %s\n",
                       parts_.segments[segment_].head_path.c_str());
        return -1;
    }
    if (data_.write(record) != record.size()) {
        report_->Error("Cannot write 'Halvern Trace Data' to file: %s\n",
                       parts_.segments[segment_].data_path.c_str());
        return -1;
    }
    ++in_segment_;
    ++written_;
    if (mode_ == Mode::kOverwrite || written_ % kTracesBetweenChecks != 0) return 0;
    const std::int64_t data_bytes = in_segment_ * layout_.sample_bytes();
    const std::string& data_path = parts_.segments[segment_].data_path;
    if (places_.has_room(data_path, data_bytes, layout_.record_bytes())) {
        return !data_.flush() && !head_.flush() ? 0 : -1;
    }
    return next_pair() ? 0 : -1;
}

int NativeWriter::finish() { return close_pair() ? 0 : -1; }

void NativeWriter::delete_parts(const NativeMain& parts) const {
    for (const std::string& part : parts.paths()) {
        if (!is_part_name(part)) continue;
        std::error_code ignored;
        std::filesystem::remove(part, ignored);
    }
}

}  // namespace halvern
