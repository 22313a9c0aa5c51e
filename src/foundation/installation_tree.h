#pragma once

namespace halvern {

/// Makes what is missing of the tree under the system directory: "Prospects", "Data" with the
/// directories of the prospect "default", the file Halvern.defaults and the prospect file
/// "default". Failures are not reported: the next use of a missing directory reports its own.
void CreateInstallationTree();

}  // namespace halvern
