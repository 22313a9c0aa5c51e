#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "native/native_reader.h"
#include "native/native_writer.h"
#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace halvern::testing_support {

/// A dataset in a folder of its own, whose traces are numbered: trace n has n in the first byte of
/// its header (modulo 256) and in every sample byte.
struct DatasetBench {
    TemporaryFolder folder;
    LogCapture log;
    std::string main = folder.file("line1");
    NativeLayout layout{
        .samples = 4, .interval = SampleInterval::of_ms(4), .format = SampleFormat::kIeee};
    std::int64_t free_bytes = std::int64_t{1} << 40;
    NativePlaces places{.roots = {folder.file("disk1"), folder.file("disk2")},
                        .prospect = "rv",
                        .min_disk_space_mb = 50,
                        .max_file_size_mb = 1000,
                        .free_space = [this](const std::string&) { return free_bytes; }};
    TraceHeaderDefinition definition;

    DatasetBench() {
        (void)definition.load(HALVERN_SOURCE_DIR "/header/default");
        for (const std::string& root : places.roots) std::filesystem::create_directory(root);
    }

    /// Writes `count` traces from number `first`; whether all of it went well.
    bool write(NativeWriter::Mode mode, int first, int count) {
        NativeWriter writer;
        NativeWriter::Target target{.path = main, .existing = {}, .lock = {}};
        if (auto parts = NativeMain::read(main)) target.existing = *parts;
        if (writer.open(std::move(target), mode, layout, definition, places, kTestReport) != 1) {
            return false;
        }
        for (int n = first; n < first + count; ++n) {
            std::vector<std::byte> header(kTraceHeaderBytes), record;
            header[0] = static_cast<std::byte>(n);
            record.assign(static_cast<std::size_t>(layout.sample_bytes()),
                          static_cast<std::byte>(n));
            if (writer.write_trace(header, record) != 0) return false;
        }
        return !writer.finish();
    }

    /// The numbers of the traces, -1 for one whose header and samples disagree; -2 alone when the
    /// dataset does not open.
    std::vector<int> read() {
        NativeReader reader;
        if (reader.open(main, 0, kTestReport) != NativeOpening::kOpened) return {-2};
        std::vector<int> numbers;
        while (reader.read_next() == 1) numbers.push_back(number(reader));
        return numbers;
    }
    static int number(NativeReader& reader) {
        const auto n = std::to_integer<int>(reader.definition().image()[0]);
        for (const std::byte b : reader.samples().raw()) {
            if (std::to_integer<int>(b) != n) return -1;
        }
        return n;
    }
    std::size_t parts() const {
        std::size_t files = 0;
        for (const std::string& root : places.roots) {
            const std::filesystem::path data = std::filesystem::path(root) / "rv/data";
            if (!std::filesystem::exists(data)) continue;
            for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(data)) {
                ++files;
            }
        }
        return files;
    }
};

/// first, first + 1, … : `count` numbers.
inline std::vector<int> numbers(int first, int count) {
    std::vector<int> list;
    for (int n = first; n < first + count; ++n) list.push_back(n % 256);
    return list;
}

}  // namespace halvern::testing_support
