#include "platform/message_box.h"

#include <windows.h>

namespace halvern {

void show_message_box(const std::string& caption, const std::string& text) {
    MessageBoxA(nullptr, text.c_str(), caption.c_str(), MB_OK | MB_ICONWARNING | MB_SETFOREGROUND);
}

}  // namespace halvern
