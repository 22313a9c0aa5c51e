#pragma once

#include <string>

namespace halvern {

/// Name of a new, empty file in the configuration's scratch directory ("%s%cSCR%u"), created
/// exclusively, so that it is this process's alone, and remembered for RemoveScratchFiles. Empty,
/// with log lines that say why, when the directory does not take a file. The random number comes
/// from std::rand, which the program seeds.
[[nodiscard]] std::string MakeScratchName();

/// Removes one scratch file that is no longer needed. Where that fails (Windows keeps a file that
/// is open), the next of these calls tries again.
void RemoveScratchFile(const std::string& name);

/// Removes every scratch file that this process made and that is still there. Safe to call twice.
void RemoveScratchFiles();

/// Removes a directory with everything in it, logging each removal. Links are removed, never
/// followed. Subdirectories whose names begin with "." are left alone, and so is then `path`.
/// 0, or -1 when `path` is still there.
int RemoveDirectoryTree(const std::string& path);

}  // namespace halvern
