// A native dataset whose main, LINE and DESC files hold any bytes: opened and read to its end.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "foundation/messages.h"
#include "native/native_reader.h"

namespace halvern {
void TerminateJob(int) { std::abort(); }
}  // namespace halvern

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    namespace fs = std::filesystem;
    static const fs::path folder =
        fs::temp_directory_path() / ("fuzz-native-" + std::to_string(std::rand()));
    fs::create_directories(folder);
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The first two bytes say where the three texts are cut.
    const std::size_t first = 2 + data[0] % (size - 1), second = first + data[1] % (size - 1);
    const auto part = [&](std::size_t from, std::size_t to) {
        from = std::min(from, size);
        return text.substr(from, std::min(to, size) - from);
    };
    const auto write = [&](const char* name, const std::string& bytes) {
        std::ofstream(folder / name, std::ios::binary) << bytes;
    };
    const std::string at = folder.string() + "/";
    if (data[0] % 2 == 0) {
        write("main", part(2, first));
    } else {
        write("main",
              "KDFILE001\n" + at + "desc\n" + at + "line\n" + at + "head\n" + at + "data\n");
    }
    write("line", part(first, second));
    write("desc", part(second, size));
    write("head", std::string(480, '\1'));
    write("data", std::string(4000, '\2'));
    static const halvern::SilentReporter silent;
    halvern::NativeReader reader;
    if (reader.open((folder / "main").string(), 1, silent) != halvern::NativeOpening::kOpened)
        return 0;
    while (reader.read_next() == 1) {
        for (int word = 0; word < reader.definition().count(); ++word) {
            (void)reader.definition().get_double(word);
        }
    }
    (void)reader.read_trace(0);
    return 0;
}
