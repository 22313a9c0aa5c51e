#include "platform/message_box.h"

#include <cstdio>

namespace halvern {

void show_message_box(const std::string& caption, const std::string& text) {
    const char* const line_end = text.ends_with('\n') ? "" : "\n";
    std::fprintf(stderr, "%s: %s%s", caption.c_str(), text.c_str(), line_end);
}

}  // namespace halvern
