#pragma once

#include <string>

namespace halvern {

/// Shows a text to whoever is there: a message box on Windows, standard error elsewhere.
void show_message_box(const std::string& caption, const std::string& text);

}  // namespace halvern
