#include "native/native_layout.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "foundation/key_readers.h"
#include "platform/replace_file.h"

namespace halvern {

namespace {

constexpr int kMagicBuffer = 19;
constexpr int kLineBuffer = static_cast<int>(NativeMain::kLongestPath) + 1;
constexpr std::size_t kMagicLength = 9;

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File open_to_read(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return nullptr;
    return File(std::fopen(path.c_str(), "rb"));
}

// The next line without its end, or nothing at the end of the file.
std::optional<std::string> next_line(std::FILE* file) {
    char buffer[kLineBuffer];
    if (!std::fgets(buffer, sizeof buffer, file)) return std::nullopt;
    std::string line = buffer;
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
    return line;
}

}  // namespace

std::optional<NativeMain> NativeMain::read(const std::string& path) {
    const File file = open_to_read(path);
    char magic[kMagicBuffer] = {};
    if (!file || !std::fgets(magic, sizeof magic, file.get()) ||
        std::strncmp(magic, kMagic, kMagicLength) != 0) {
        return std::nullopt;
    }
    // The rest of a magic line that is longer than its buffer is no path.
    while (!std::strchr(magic, '\n') && std::fgets(magic, sizeof magic, file.get())) {
    }
    std::vector<std::string> lines;
    while (auto line = next_line(file.get())) {
        if (!line->empty()) lines.push_back(std::move(*line));
    }
    if (lines.size() < 2) return std::nullopt;
    NativeMain main{.desc_path = lines[0], .line_path = lines[1], .segments = {}};
    for (std::size_t i = 2; i + 1 < lines.size(); i += 2) {
        main.segments.push_back({lines[i], lines[i + 1]});
    }
    return main;
}

int NativeMain::write(const std::string& path) const {
    std::string text = std::string(kMagic) + "\n";
    for (const std::string& listed : paths()) {
        if (listed.size() > kLongestPath) return -1;
        text += listed + "\n";
    }
    return replace_file(path, text, Reach::kSystem) ? -1 : 0;
}

std::vector<std::string> NativeMain::paths() const {
    std::vector<std::string> all = {desc_path, line_path};
    for (const NativeSegment& segment : segments) {
        all.push_back(segment.head_path);
        all.push_back(segment.data_path);
    }
    return all;
}

std::optional<NativeLayout> NativeLayout::read(const std::string& path) {
    const File file = open_to_read(path);
    if (!file) return std::nullopt;
    NativeLayout layout{.samples = -1};
    int interval = -1;
    int format = -1;
    while (const auto line = next_line(file.get())) {
        ReadKey(line->c_str(), "NUMSAMPLES=", layout.samples);
        ReadKey(line->c_str(), "SAMPLERATE=", interval);
        ReadKey(line->c_str(), "DATAFORMAT=", format);
    }
    layout.interval = SampleInterval(interval);
    if (layout.samples < 0 || layout.samples > kMostSamples || interval < 0 ||
        layout.interval > kMostInterval || (interval > 0 && interval < SampleInterval::kPerUs) ||
        format < 0 || format > static_cast<int>(SampleFormat::kInt16)) {
        return std::nullopt;
    }
    layout.format = static_cast<SampleFormat>(format);
    return layout;
}

int NativeLayout::write(const std::string& path) const {
    const std::string text = "NUMSAMPLES=" + std::to_string(samples) +
                             "\nSAMPLERATE=" + std::to_string(interval.internal()) +
                             "\nDATAFORMAT=" + std::to_string(static_cast<int>(format)) + "\n";
    return replace_file(path, text, Reach::kSystem) ? -1 : 0;
}

std::int64_t native_segment_traces(const NativeSegment& segment, const NativeLayout& layout) {
    std::error_code error;
    const auto head =
        static_cast<std::int64_t>(std::filesystem::file_size(segment.head_path, error));
    if (error) return -1;
    const auto data =
        static_cast<std::int64_t>(std::filesystem::file_size(segment.data_path, error));
    if (error) return -1;
    const std::int64_t headers = head / kTraceHeaderBytes;
    return layout.sample_bytes() == 0 ? headers : std::min(headers, data / layout.sample_bytes());
}

}  // namespace halvern
