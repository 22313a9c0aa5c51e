#include "platform/file_position.h"

namespace halvern {

static_assert(sizeof(off_t) == 8);

int seek_stream(std::FILE* stream, std::int64_t offset) {
    return ::fseeko(stream, offset, SEEK_SET);
}

}  // namespace halvern
