#include "tape/tape_parameters.h"

#include "tape/tape_drives.h"

namespace halvern {

Parameter tape_device_parameter(std::string& device, const char* prompt) {
    return {.key = "DEVICE",
            .format = "%s",
            .value = Bound{&device, first_tape_device()},
            .log = "Tape Input Device           = %s\n",
            .field = {.label = "TapeDev",
                      .prompt = prompt,
                      .help = "Choose one of the tape devices of the configuration.  A device of "
                              "type 'image' is a tape image on disk.",
                      .kind = FieldKind::kTapeDevice}};
}

Parameter eject_wait_parameter(int& seconds, int position) {
    return {.key = "EJECTWAIT",
            .format = "%d",
            .value = Bound{&seconds, 0},
            .field = {.label = "EjectWait",
                      .prompt = "Wait (in seconds) after eject? (0=NO EJECT)",
                      .help = "If you are loading multiple tapes using a stacker, you can write "
                              "them to the same file.  Make sure this number provides enough time "
                              "for the next tape to load after each one is ejected.\n\n"
                              "60 seconds suffices on most tape drives.\n"
                              "Enter 0 if you do not want the tape ejected.",
                      .position = position}};
}

std::string eject_wait_line(int seconds) {
    return "Eject tape and wait         = " +
           (seconds == 0 ? std::string("NO EJECT") : std::to_string(seconds) + " seconds.") + "\n";
}

}  // namespace halvern
