#include "flow/parameter_dialog.h"

namespace halvern {

namespace {
DialogHost* current_host = nullptr;
}

DialogHost* CurrentDialogHost() { return current_host; }
void SetDialogHost(DialogHost* host) { current_host = host; }

}  // namespace halvern
