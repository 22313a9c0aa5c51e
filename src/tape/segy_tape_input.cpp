#include "tape/segy_tape_input.h"

#include "flow/shared_parameters.h"
#include "tape/tape_drives.h"
#include "tape/tape_parameters.h"

namespace halvern {

SegyTapeInput::SegyTapeInput(const FlowSection& section, LogFlag log)
    : SegyInput(FlowItemKind::kSegyTapeInput, log) {
    Configure(section);
}

ParameterList SegyTapeInput::Parameters() {
    return {
        tape_device_parameter(device_name_, "Read which tape drive?"),
        header_file_parameter(header_file_, "Header file description to read.",
                              "Choose the header definition file which matches the tape."),
        {.key = "NUMRECFF",
         .format = "%d",
         .value = Bound{&traces_to_skip_, 0},
         .log = "Skipping forward traces     = %d\n",
         .field = {.label = "Records",
                   .prompt = "Number of traces to skip forward?",
                   .help = "This is the number of SEG-Y traces to skip.  The line header will be "
                           "read from the tape.  The tape will then be fast-forwarded the given "
                           "number of traces.  Normal reading will then begin.\n",
                   .position = 2}},
        {.key = "NUMFILEFF",
         .format = "%d",
         .value = Bound{&files_to_skip_, 0},
         .log = "Skipping forward files      = %d\n",
         .field = {.label = "Files",
                   .prompt = "Number of files to skip forward?",
                   .help = "This is the number of SEG-Y tape files to skip.  The tape will "
                           "fast-forward over the given number of files.",
                   .position = 1}},
        eject_wait_parameter(eject_wait_s_, 3),
    };
}

DialogTexts SegyTapeInput::WindowTexts() const {
    DialogTexts texts = InputFlowItem::WindowTexts();
    texts.help_title = "SEGY Tape Input Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyTapeInput::LogParameters() {
    for (const char* key : {"DEVICE", "HEADERFILE", "NUMFILEFF", "NUMRECFF"}) LogParameter(key);
    Message("%s", eject_wait_line(eject_wait_s_).c_str());
}

void SegyTapeInput::OpenSource() {
    for (const int count : {files_to_skip_, traces_to_skip_, eject_wait_s_}) {
        if (count >= 0) continue;
        Error("Numbers to skip and seconds to wait must not be negative.  You have entered '%d'.\n",
              count);
        return TerminateJob(kJobError);
    }
    device_ = make_tape_device(device_name_, TapeUse::kRead);
    change_.emplace(*this, *device_, eject_wait_s_, is_tape_image(device_name_));
    if (change_->open() != 0) {
        Error("Cannot open tape drive: %s\n", device_->name().c_str());
        return TerminateJob(kJobError);
    }
    if (files_to_skip_ > 0 && device_->skip_files(files_to_skip_) != 0) {
        Error("Tape %s does not hold %d files to skip.\n", device_name_.c_str(), files_to_skip_);
        return TerminateJob(kJobError);
    }
    auto source = std::make_unique<SegyTapeSource>(*this, *device_, *change_);
    if (!OpenReader(device_name_, std::move(source))) return;
    if (traces_to_skip_ > 0 && device_->skip_blocks(traces_to_skip_) != 0) {
        Warning("The tape file holds fewer traces than the %d that are skipped.\n",
                traces_to_skip_);
    }
}

}  // namespace halvern
