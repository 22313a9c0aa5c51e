#pragma once

namespace halvern {

/// Calls `request` (which must be safe in a signal handler) when the process is asked to stop, by
/// SIGTERM or SIGINT, or by Ctrl-C on Windows. Writes that fail because a pipe was closed or a size
/// limit was reached then fail as writes instead of killing the process.
void on_stop_request(void (*request)());

}  // namespace halvern
