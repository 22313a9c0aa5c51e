#include "platform/file_position.h"

namespace halvern {

int seek_stream(std::FILE* stream, std::int64_t offset, int origin) {
    return ::_fseeki64(stream, offset, origin);
}

}  // namespace halvern
