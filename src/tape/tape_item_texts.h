#pragma once

namespace halvern {

/// Words that the items which use tapes share.
inline constexpr const char* kNoEject = "Eject tape and wait         = NO EJECT\n";
inline constexpr const char* kDeviceHelp =
    "Choose one of the tape devices of the configuration.  A device of type 'image' is a tape "
    "image "
    "on disk.";
inline constexpr const char* kEjectWaitPrompt = "Wait (in seconds) after eject? (0=NO EJECT)";
inline constexpr const char* kEjectWaitHelp =
    "If you are loading multiple tapes using a stacker, you can write them to the same file.  Make "
    "sure this number provides enough time for the next tape to load after each one is ejected.\n\n"
    "60 seconds suffices on most tape drives.\nEnter 0 if you do not want the tape ejected.";

}  // namespace halvern
