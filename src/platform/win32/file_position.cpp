#include "platform/file_position.h"

namespace halvern {

int seek_stream(std::FILE* stream, std::int64_t offset) {
    return ::_fseeki64(stream, offset, SEEK_SET);
}

}  // namespace halvern
