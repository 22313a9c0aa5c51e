#include "platform/text_file.h"

#include <span>

#include "platform/input_file.h"

namespace halvern {

Result<std::string> read_text_file(const std::string& path, std::int64_t most_bytes) {
    Result<InputFile> file = InputFile::open(path);
    if (!file) return file.fault();
    if (file->size() > most_bytes) {
        return Fault("it holds more than " + std::to_string(most_bytes) + " bytes");
    }
    std::string text(static_cast<std::size_t>(file->size()), '\0');
    Fault fault;
    const std::size_t count = file->read_at(0, std::as_writable_bytes(std::span(text)), fault);
    if (fault) return fault;
    if (count < text.size()) return Fault("the file has become shorter");
    return text;
}

}  // namespace halvern
