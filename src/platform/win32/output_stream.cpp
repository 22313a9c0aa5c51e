#include "platform/output_stream.h"

#include <cerrno>

namespace halvern {

Result<std::FILE*> open_output_stream(const char* path, bool empties, std::int64_t offset) {
    std::FILE* stream = std::fopen(path, empties ? "wb" : "r+b");
    if (!stream) return Fault::of_errno(errno);
    if (offset == 0 || ::_fseeki64(stream, offset, SEEK_SET) == 0) return stream;
    const int why = errno;
    std::fclose(stream);
    return Fault::of_errno(why);
}

}  // namespace halvern
