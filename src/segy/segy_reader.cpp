#include "segy/segy_reader.h"

#include <algorithm>

#include "trace/lost_trace.h"

namespace halvern {

namespace {

constexpr int kShortenedTrace = 101;  // TRACEID of a trace that stores fewer samples than the line

}  // namespace

SegyOpening SegyReader::open(const std::string& path, const SegyReaderOptions& options) {
    Result<std::unique_ptr<SegySource>> source = open_segy_file(path);
    if (source) return open(path, std::move(*source), options);
    valid_ = false;
    if (options.report) {
        options.report->Error("'%s' is not a file that can be read: %s.\n", path.c_str(),
                              source.fault().reason().c_str());
    }
    return SegyOpening::kNotValid;
}

SegyOpening SegyReader::open(const std::string& path, std::unique_ptr<SegySource> source,
                             const SegyReaderOptions& options) {
    report_ = options.report ? options.report : &silent_;
    valid_ = false;
    fault_ = {};
    refusal_ = {};
    source_ = std::move(source);
    if (!read_headers(path)) return SegyOpening::kNotValid;
    definition_.attach(image_.data());
    if (definition_.load(options.header_path) != 0) return SegyOpening::kNoDefinition;

    trace_id_ = definition_.find("TRACEID");
    total_samples_ = definition_.find("TOTSAMP");
    start_sample_ = definition_.find("STSAMP");
    num_samps_ = definition_.find("NUMSAMPS");
    samp_rate_ = definition_.find("SAMPRATE");
    // A description that begins with TRACEID marks no shortened traces: its index is 0.
    shortened_known_ = trace_id_ > 0 && total_samples_ >= 0 && start_sample_ >= 0;
    us_ = layout_.interval.us();
    progress_interval_ = options.progress_interval;
    next_ = next_progress_ = contradictions_ = odd_stored_counts_ = 0;
    current_ = false;
    valid_ = true;
    log_statistics(path);
    log_oddities(path);
    return SegyOpening::kOpened;
}

bool SegyReader::read_headers(const std::string& path) {
    file_size_ = source_->size();
    refusal_ = source_->refusal();
    if (refusal_) {
        report_->Error("'%s' %s.\n", path.c_str(), refusal_.text().c_str());
        return false;
    }
    if (!source_->read_line_header(line_.bytes())) {
        line_ = LineHeader();
        if (const Fault fault = source_->fault()) {
            report_->Error("'%s' cannot be read: %s.\n", path.c_str(), fault.reason().c_str());
        } else if (file_size_ >= 0) {
            report_->Error("'%s' holds %lld bytes; the headers of a SEG-Y file take %d.\n",
                           path.c_str(), static_cast<long long>(file_size_), kLineHeaderBytes);
        }
        return false;
    }
    layout_ = SegyLayout::parse(line_);
    if (const std::string problem = layout_.problem(); !problem.empty()) {
        report_->Error("'%s' %s.\n", path.c_str(), problem.c_str());
        return false;
    }
    record_bytes_ = layout_.record_bytes();
    if (layout_.text_headers > 0 && !source_->skip_text_headers(layout_.text_headers)) {
        report_->Error("'%s' ends before the %d extended text headers that it announces.\n",
                       path.c_str(), layout_.text_headers);
        return false;
    }
    if (file_size_ >= 0) {
        trace_count_ = (file_size_ - layout_.first_record()) / record_bytes_;
        left_over_ = (file_size_ - layout_.first_record()) % record_bytes_;
    }
    return true;
}

void SegyReader::log_statistics(const std::string& path) const {
    report_->Log("SEG-Y File '%s' Statistics:\n", path.c_str());
    report_->Log("  Actual Number of Samples:   %d\n", layout_.samples);
    report_->Log("  Real   Number of Samples:   %d\n", layout_.field_samples);
    report_->Log("  Sample Rate:                %3.1f\n", layout_.interval.ms());
    report_->Log("  Data Format:                %s\n", format_name(layout_.format));
    if (file_size_ < 0) return;
    report_->Log("  Number of Traces:           %lld\n", static_cast<long long>(trace_count_));
    report_->Log("  File Size:                  %lld\n", static_cast<long long>(file_size_));
}

void SegyReader::log_oddities(const std::string& path) const {
    if (layout_.text_headers > 0) {
        report_->Message("The traces are read from after %d extended text headers.\n",
                         layout_.text_headers);
    }
    if (const int code = layout_.format_code; code != 1 && code != 3 && code != 5) {
        report_->Warning(
            "The data format code of '%s' is %d; 1, 3 and 5 are known.  "
            "The samples are read as IEEE floats.\n",
            path.c_str(), code);
    }
    if (left_over_ > 0) {
        report_->Warning(
            "%lld bytes are left over after the last whole trace of '%s'; "
            "they are not read.\n",
            static_cast<long long>(left_over_), path.c_str());
    }
}

int SegyReader::read_next() {
    current_ = false;
    if (!valid_ || (file_size_ >= 0 && next_ >= trace_count_)) return 0;
    const std::int64_t wanted = samples_wanted_ ? record_bytes_ : kTraceHeaderBytes;
    const std::span<const std::byte> record = source_->next_record(record_bytes_, wanted);
    if (static_cast<std::int64_t>(record.size()) < wanted) {
        if (file_size_ >= 0) fault_ = lost_trace(next_, trace_count_, source_->fault());
        return 0;
    }

    std::copy_n(record.begin(), kTraceHeaderBytes, image_.begin());
    definition_.attach(image_.data());
    int stored = layout_.samples;
    if (shortened_known_ && definition_.get_int(trace_id_) == kShortenedTrace) {
        stored = definition_.get_int(total_samples_);
        if (stored <= 0 || stored > layout_.samples) ++odd_stored_counts_;
    }
    if (!samples_wanted_) stored = 0;
    samples_.set_raw(record.subspan(kTraceHeaderBytes), stored, layout_.samples, layout_.samples,
                     layout_.format);
    if (contradicts()) ++contradictions_;

    if (next_ == next_progress_ && progress_interval_ > 0) {
        report_->Log("Reading Trace %lld\n", static_cast<long long>(next_));
        next_progress_ += progress_interval_;
    }
    ++next_;
    current_ = true;
    return 1;
}

bool SegyReader::contradicts() const {
    const auto differs = [this](int word, int expected) {
        const int value = definition_.get_int(word);
        // The fields are used unsigned, too: only their 16 bits can be compared.
        return value != 0 && static_cast<std::uint16_t>(value) != expected;
    };
    return differs(num_samps_, layout_.samples) || differs(samp_rate_, us_);
}

std::vector<std::string> SegyReader::remarks() const {
    std::vector<std::string> all;
    if (contradictions_ > 0) {
        all.push_back(std::to_string(contradictions_) +
                      " traces give a number of samples or a sample rate in their own headers that "
                      "differs from the binary header's, which was used");
    }
    if (odd_stored_counts_ > 0) {
        all.push_back(std::to_string(odd_stored_counts_) +
                      " traces are marked as shortened, with a stored count of 0 or above the "
                      "line's " +
                      std::to_string(layout_.samples) + " samples");
    }
    return all;
}

bool SegyReader::move_to(std::int64_t index) {
    current_ = false;
    if (!valid_ || index < 0 || index > trace_count_) return false;
    if (!source_->seek(layout_.record_offset(index))) return false;
    next_ = index;
    if (progress_interval_ > 0) {
        next_progress_ = (index + progress_interval_ - 1) / progress_interval_ * progress_interval_;
    }
    return true;
}

int SegyReader::read_trace(std::int64_t index) { return move_to(index) ? read_next() : 0; }

int SegyReader::rewrite_current() {
    if (!current_) return -1;
    const std::int64_t offset = layout_.record_offset(next_ - 1);
    definition_.attach(image_.data());
    if (samples_wanted_) {
        // The raw record as it was read, or what the samples have become since.
        std::vector<std::byte> encoded;
        std::span<const std::byte> raw = samples_.raw();
        if (!samples_.raw_valid()) {
            encoded.resize(static_cast<std::size_t>(record_bytes_ - kTraceHeaderBytes));
            samples_.to_format(definition_, layout_.format, encoded, layout_.samples);
            raw = encoded;
        }
        if (source_->overwrite(offset + kTraceHeaderBytes, raw) != 0) return -1;
    }
    return source_->overwrite(offset, image_);
}

}  // namespace halvern
