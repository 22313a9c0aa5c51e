// Header descriptions: any bytes are a file. Every word is read, written, listed and saved.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "scratch_folder.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ScratchFolder folder;
    const std::string path = folder.file("words");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));

    std::array<std::byte, halvern::kTraceHeaderBytes> image{};
    halvern::TraceHeaderDefinition definition(image.data());
    if (definition.load(path) != 0) __builtin_trap();
    for (int i = -1; i <= definition.count(); ++i) {
        definition.set_double(i, definition.get_double(i) * -1.5 + i);
        definition.set_double(i, definition.get_int(i));
        if (i >= 0 && i < definition.count() && !definition.category(i)) __builtin_trap();
    }
    for (const halvern::HeaderWord& word : definition.words()) {
        if (word.name.size() > 8 || word.description.size() != 50) __builtin_trap();
        if (definition.find(word.name) < 0) __builtin_trap();
    }

    halvern::LineHeader line;
    line.build_from_definition(path, halvern::SampleInterval::of_ms(1), 100,
                               halvern::SampleFormat::kIbm);
    if (line.samples() != 100) __builtin_trap();

    if (size % 16 != 0) return 0;  // saving brings a file to the disk, which takes its time
    const std::string saved = folder.file("saved");
    if (definition.save(saved) != 0 || definition.load(saved) != 0) __builtin_trap();
    return 0;
}
