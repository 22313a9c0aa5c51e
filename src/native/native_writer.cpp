#include "native/native_writer.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>
#include <vector>

#include "foundation/system_paths.h"
#include "platform/detached_process.h"
#include "platform/replace_file.h"

namespace halvern {

namespace fs = std::filesystem;

namespace {

constexpr std::int64_t kTracesBetweenChecks = 100;

// Deletes those parts that datasets put there and that `keep` does not hold; how many are left.
int delete_unless(const NativeMain& parts, const std::set<std::string>& keep,
                  const NativePlaces& places) {
    int foreign = 0;
    const auto remove = [&](const std::string& path, const char* prefix) {
        if (path.empty() || keep.contains(path)) return;
        if (!places.owns(path, prefix)) {
            ++foreign;
            return;
        }
        std::error_code ignored;
        fs::remove(path, ignored);
    };
    remove(parts.desc_path, "DESC");
    remove(parts.line_path, "LINE");
    for (const NativeSegment& segment : parts.segments) {
        remove(segment.head_path, "HEAD");
        remove(segment.data_path, "DATA");
    }
    return foreign;
}

}  // namespace

bool NativeWriter::may_write(const NativeMain& parts, Mode mode, const NativePlaces& places,
                             const Reporter& report) {
    if (mode == Mode::kCreate || parts.segments.empty()) return true;
    const std::size_t first = mode == Mode::kAppend ? parts.segments.size() - 1 : 0;
    for (std::size_t i = first; i < parts.segments.size(); ++i) {
        const NativeSegment& segment = parts.segments[i];
        for (const auto& [path, prefix] :
             {std::pair(&segment.head_path, "HEAD"), std::pair(&segment.data_path, "DATA")}) {
            if (places.owns(*path, prefix)) continue;
            report.Error(
                "The dataset lists '%s', which is no %s file of a prospect in a data directory of "
                "the configuration.  It is not written to.\n",
                path->c_str(), prefix);
            return false;
        }
    }
    return true;
}

int NativeWriter::open(Target target, Mode mode, const NativeLayout& layout,
                       const TraceHeaderDefinition& definition, NativePlaces places,
                       const Reporter& report) {
    target_ = std::move(target);
    report_ = &report;
    places_ = std::move(places);
    layout_ = layout;
    mode_ = mode;
    segment_ = 0;
    in_segment_ = written_ = traces_before_ = 0;
    if (mode_ == Mode::kOverwrite && (!target_.existing || target_.existing->segments.empty())) {
        report_->Error("Bad input file.  Not file to overwrite.\n");
        return 0;
    }
    const bool in_place = mode_ != Mode::kCreate && target_.existing;
    return (in_place ? take_up() : create(definition)) ? 1 : 0;
}

bool NativeWriter::fail(const char* what, const std::string& file, const Fault& fault) const {
    report_->Error("%s '%s'\n", what, file.c_str());
    report_->Error("%s.\n", fault.reason().c_str());
    return false;
}

bool NativeWriter::fail_to_place(const Fault& fault) const {
    report_->Error(
        "Error in Halvern Data Output.  No selected file systems have enough disk space to create "
        "data files.\n");
    report_->Error(
        "Try removing unnecessary files, adding disk space, or reducing the minimum file system "
        "size.\n");
    report_->Error("%s.\n", fault.reason().c_str());
    return false;
}

bool NativeWriter::create(const TraceHeaderDefinition& definition) {
    mode_ = Mode::kCreate;
    parts_ = {};
    if (!create_parts(definition)) {
        static_cast<void>(close_pair());
        delete_parts(parts_, {});
        return false;
    }
    // Only now that the new dataset is complete may the old one's files go.
    if (target_.existing) delete_parts(*target_.existing, parts_);
    return true;
}

bool NativeWriter::create_parts(const TraceHeaderDefinition& definition) {
    const auto desc = places_.create_file("DESC");
    if (!desc) return fail_to_place(desc.fault());
    parts_.desc_path = *desc;
    const auto line = places_.create_file("LINE");
    if (!line) return fail_to_place(line.fault());
    parts_.line_path = *line;
    const auto segment = places_.create_segment();
    if (!segment) return fail_to_place(segment.fault());
    parts_.segments = {*segment};
    if (definition.save(*desc) != 0) {
        report_->Error("Error writing header description file '%s'\n", desc->c_str());
        return false;
    }
    if (Fault fault = layout_.write(*line)) {
        return fail("Error writing line header file", *line, fault);
    }
    if (!open_pair(0)) return false;
    const Fault fault = parts_.write(target_.path, &target_.lock);
    return fault ? fail("Error writing main file", target_.path, fault) : true;
}

// To append or to overwrite.
bool NativeWriter::take_up() {
    parts_ = *target_.existing;
    if (!may_write(parts_, mode_, places_, *report_)) return false;
    for (const NativeSegment& segment : parts_.segments) {
        const auto traces = native_segment_traces(segment, layout_);
        if (!traces) {
            report_->Error("'%s': %s.\n", target_.path.c_str(), traces.fault().reason().c_str());
            return false;
        }
        traces_before_ += *traces;
        in_segment_ = *traces;
    }
    if (parts_.segments.empty()) return next_pair();
    if (mode_ == Mode::kOverwrite) {
        in_segment_ = 0;
    } else {
        segment_ = parts_.segments.size() - 1;
    }
    return open_pair(in_segment_);
}

// A new pair is empty and is never truncated: a system that saw that might wait, when the file is
// closed, until all of it has a place on the disk.
bool NativeWriter::open_pair(std::int64_t trace) {
    constexpr auto mode = BlockWriter::Mode::kUpdate;
    const NativeSegment& segment = parts_.segments[segment_];
    const auto traces = native_segment_traces(segment, layout_);
    if (!traces) {
        report_->Error("%s.\n", traces.fault().reason().c_str());
        return false;
    }
    capacity_ = *traces;
    if (Fault fault = head_.open(segment.head_path, mode, trace * kTraceHeaderBytes)) {
        return fail("Cannot open file to write:", segment.head_path, fault);
    }
    if (Fault fault = data_.open(segment.data_path, mode, trace * layout_.sample_bytes())) {
        return fail("Cannot open file to write:", segment.data_path, fault);
    }
    return true;
}

Fault NativeWriter::close_pair() {
    // Headers last: a header without its samples would be a trace of the shorter count only.
    const Fault fault = data_.finish();
    const Fault head_fault = head_.finish();
    return fault ? fault : head_fault;
}

Fault NativeWriter::flush() {
    if (Fault fault = data_.flush()) return fault;
    return head_.flush();
}

bool NativeWriter::next_pair() {
    if (Fault fault = close_pair()) {
        return fail("Cannot write to file:", parts_.segments[segment_].data_path, fault);
    }
    in_segment_ = 0;
    if (mode_ == Mode::kOverwrite) {
        if (segment_ + 1 >= parts_.segments.size()) {
            report_->Error("There are more traces than the dataset holds.\n");
            return false;
        }
        ++segment_;
        return open_pair(0);
    }
    const auto segment = places_.create_segment();
    if (!segment) return fail_to_place(segment.fault());
    parts_.segments.push_back(*segment);
    segment_ = parts_.segments.size() - 1;
    if (!open_pair(0)) return false;
    const Fault fault = parts_.write(target_.path, &target_.lock);
    return fault ? fail("Error writing main file", target_.path, fault) : true;
}

int NativeWriter::write_trace(std::span<const std::byte> header,
                              std::span<const std::byte> record) {
    while (mode_ == Mode::kOverwrite && in_segment_ >= capacity_) {
        if (!next_pair()) return -1;
    }
    // Over records in place, both files go on together: a header may hold its samples' exponent.
    if (mode_ == Mode::kOverwrite &&
        !(head_.has_room(header.size()) && data_.has_room(record.size()))) {
        static_cast<void>(flush());  // the write below fails likewise
    }
    const NativeSegment& segment = parts_.segments[segment_];
    if (head_.write(header) != header.size()) {
        report_->Error("Cannot write 'Halvern Trace Header' to file: %s\n",
                       segment.head_path.c_str());
        report_->Error("%s.\n", head_.fault().reason().c_str());
        return -1;
    }
    if (data_.write(record) != record.size()) {
        report_->Error("Cannot write 'Halvern Trace Data' to file: %s\n",
                       segment.data_path.c_str());
        report_->Error("%s.\n", data_.fault().reason().c_str());
        return -1;
    }
    ++in_segment_;
    ++written_;
    if (mode_ == Mode::kOverwrite || written_ % kTracesBetweenChecks != 0) return 0;
    const std::int64_t data_bytes = in_segment_ * layout_.sample_bytes();
    if (!places_.has_room(segment.data_path, data_bytes, layout_.record_bytes())) {
        return next_pair() ? 0 : -1;
    }
    const Fault fault = flush();
    if (fault) fail("Cannot write to file:", segment.data_path, fault);
    return fault ? -1 : 0;
}

Fault NativeWriter::finish() {
    const Fault fault = close_pair();
    target_.lock.release();
    return fault;
}

void NativeWriter::delete_parts(const NativeMain& parts, const NativeMain& keep) const {
    const std::vector<std::string> kept = keep.paths();
    const int foreign = delete_unless(parts, {kept.begin(), kept.end()}, places_);
    if (foreign == 0) return;
    report_->Warning(
        "Files that the replaced dataset listed are kept (%d): they are not its own, or not in a "
        "data directory of the configuration.\n",
        foreign);
}

void remove_abandoned_datasets(const NativePlaces& places, const Reporter& report) {
    std::vector<fs::path> lists;
    std::vector<fs::path> abandoned;
    std::error_code error;
    for (const std::string& root : places.roots) {
        for (fs::directory_iterator prospect(root, error), end; !error && prospect != end;
             prospect.increment(error)) {
            std::error_code none;
            const std::string data = TreePath(prospect->path().string(), "data");
            for (fs::directory_iterator file(data, none); !none && file != end;
                 file.increment(none)) {
                const auto owner = unfinished_file_owner(file->path().filename().string());
                (owner && !process_is_running(*owner) ? abandoned : lists).push_back(file->path());
            }
        }
    }
    if (abandoned.empty()) return;
    std::set<std::string> listed;
    for (const fs::path& path : lists) {
        const std::string name = path.filename().string();
        const auto is_part = [&](const char* prefix) { return places.owns(path.string(), prefix); };
        if (is_part("HEAD") || is_part("DATA") || is_part("DESC") || is_part("LINE")) continue;
        if (const auto main = NativeMain::read(path.string())) {
            for (const std::string& part : main->paths()) listed.insert(part);
        }
    }
    for (const fs::path& path : abandoned) {
        const std::string name = path.string();
        const auto lock = FileLock::take(name, FileLock::Missing::kFault);
        const bool empty = fs::is_empty(path, error) && !error;
        const auto main = NativeMain::read(name);
        if (!lock || (!main && !empty)) continue;
        report.Log("Removing '%s', which a job that was killed left.\n", name.c_str());
        if (main) delete_unless(*main, listed, places);
        fs::remove(path, error);
    }
}

}  // namespace halvern
