#include "native/native_layout.h"

#include <algorithm>
#include <filesystem>
#include <string_view>

#include "foundation/key_readers.h"
#include "platform/replace_file.h"
#include "platform/text_file.h"

namespace halvern {

namespace {

constexpr std::size_t kMagicLength = 9;

// The lines of a small file, without their ends.
Result<std::vector<std::string>> read_lines(const std::string& path) {
    const Result<std::string> text = read_text_file(path);
    if (!text) return text.fault();
    std::vector<std::string> lines;
    for (std::string_view rest = *text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        while (line.ends_with('\r')) line.remove_suffix(1);
        lines.emplace_back(line);
    }
    return lines;
}

}  // namespace

Result<NativeMain> NativeMain::read(const std::string& path) {
    Result<std::vector<std::string>> lines = read_lines(path);
    if (!lines) return lines.fault();
    if (lines->empty() || lines->front().compare(0, kMagicLength, kMagic) != 0) {
        return Fault("it is not the main file of a dataset");
    }
    lines->erase(lines->begin());
    std::erase(*lines, std::string());
    if (std::ranges::any_of(*lines, [](const auto& line) { return line.size() > kLongestPath; })) {
        return Fault("it is a main file that lists a path of more than " +
                     std::to_string(kLongestPath) + " characters");
    }
    if (lines->size() < 2) return Fault("it is a main file that lists no DESC and LINE file");
    if (lines->size() % 2 != 0)
        return Fault("it is a main file that lists a HEAD file without its DATA file");
    NativeMain main{.desc_path = (*lines)[0], .line_path = (*lines)[1], .segments = {}};
    for (std::size_t i = 2; i < lines->size(); i += 2) {
        main.segments.push_back({(*lines)[i], (*lines)[i + 1]});
    }
    return main;
}

Fault NativeMain::write(const std::string& path, FileLock* lock) const {
    std::string text = std::string(kMagic) + "\n";
    for (const std::string& listed : paths()) {
        if (listed.size() > kLongestPath) {
            return Fault("the path '" + listed + "' has more than " + std::to_string(kLongestPath) +
                         " characters");
        }
        text += listed + "\n";
    }
    return replace_file(path, text, Reach::kSystem, lock);
}

std::vector<std::string> NativeMain::paths() const {
    std::vector<std::string> all = {desc_path, line_path};
    for (const NativeSegment& segment : segments) {
        all.push_back(segment.head_path);
        all.push_back(segment.data_path);
    }
    return all;
}

Result<NativeLayout> NativeLayout::read(const std::string& path) {
    const Result<std::vector<std::string>> lines = read_lines(path);
    if (!lines) return lines.fault();
    NativeLayout layout{.samples = -1};
    int interval = -1;
    int format = -1;
    for (const std::string& line : *lines) {
        ReadKey(line.c_str(), "NUMSAMPLES=", layout.samples);
        ReadKey(line.c_str(), "SAMPLERATE=", interval);
        ReadKey(line.c_str(), "DATAFORMAT=", format);
    }
    layout.interval = SampleInterval(interval);
    if (layout.samples < 0 || layout.samples > kMostSamples || interval < 0 ||
        layout.interval > kMostInterval || (interval > 0 && interval < SampleInterval::kPerUs) ||
        format < 0 || format > static_cast<int>(SampleFormat::kInt16)) {
        return Fault("a value is missing or out of range");
    }
    layout.format = static_cast<SampleFormat>(format);
    return layout;
}

Fault NativeLayout::write(const std::string& path) const {
    const std::string text = "NUMSAMPLES=" + std::to_string(samples) +
                             "\nSAMPLERATE=" + std::to_string(interval.internal()) +
                             "\nDATAFORMAT=" + std::to_string(static_cast<int>(format)) + "\n";
    return replace_file(path, text, Reach::kSystem);
}

Result<std::int64_t> native_segment_traces(const NativeSegment& segment,
                                           const NativeLayout& layout) {
    std::error_code error;
    const auto size = [&error](const std::string& path) {
        return static_cast<std::int64_t>(std::filesystem::file_size(path, error));
    };
    const auto fault = [&error](const std::string& path) {
        return Fault("its file '" + path + "': " + error.message(), error);
    };
    const std::int64_t headers = size(segment.head_path) / kTraceHeaderBytes;
    if (error) return fault(segment.head_path);
    const std::int64_t data = size(segment.data_path);
    if (error) return fault(segment.data_path);
    return layout.sample_bytes() == 0 ? headers : std::min(headers, data / layout.sample_bytes());
}

}  // namespace halvern
