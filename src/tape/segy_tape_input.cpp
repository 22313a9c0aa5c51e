#include "tape/segy_tape_input.h"

#include "foundation/system_paths.h"
#include "tape/tape_drives.h"
#include "tape/tape_item_texts.h"

namespace halvern {

namespace {
constexpr int kProgressInterval = 1000;
}

SegyTapeInput::SegyTapeInput(const FlowSection& section, LogFlag log)
    : InputFlowItem(FlowItemKind::kSegyTapeInput, log) {
    Configure(section);
}

ParameterList SegyTapeInput::Parameters() {
    return {
        {.key = "DEVICE",
         .format = "%s",
         .value = Bound{&device_name_, first_tape_device()},
         .log = "Tape Input Device           = %s\n",
         .field = {.label = "TapeDev",
                   .prompt = "Read which tape drive?",
                   .help = kDeviceHelp,
                   .kind = FieldKind::kTapeDevice}},
        {.key = "HEADERFILE",
         .format = "%s",
         .value = Bound{&header_file_, DefaultHeaderPath()},
         .log = "Header definition file name = %s\n",
         .field = {.label = "HeaderFile",
                   .prompt = "Header file description to read.",
                   .help = "Choose the header definition file which matches the tape.",
                   .kind = FieldKind::kInputFile}},
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
        {.key = "EJECTWAIT",
         .format = "%d",
         .value = Bound{&eject_wait_s_, 0},
         .log = "Eject tape and wait         = %d seconds.\n",
         .field = {.label = "EjectWait",
                   .prompt = kEjectWaitPrompt,
                   .help = kEjectWaitHelp,
                   .position = 3}},
    };
}

DialogTexts SegyTapeInput::WindowTexts() const {
    DialogTexts texts = InputFlowItem::WindowTexts();
    texts.help_title = "SEGY Tape Input Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyTapeInput::LogParameters() {
    const ParameterList list = Parameters();
    for (const int index : {0, 1, 3, 2}) {
        Message("%s", log_line(list[static_cast<std::size_t>(index)]).c_str());
    }
    Message("%s", eject_wait_s_ == 0 ? kNoEject : log_line(list[4]).c_str());
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
        Error("Cannot open tape drive: %s\n", device_name_.c_str());
        return TerminateJob(kJobError);
    }
    if (files_to_skip_ > 0 && device_->skip_files(files_to_skip_) != 0) {
        Error("Tape %s does not hold %d files to skip.\n", device_name_.c_str(), files_to_skip_);
        return TerminateJob(kJobError);
    }
    switch (reader_.open(device_name_, std::make_unique<SegyTapeSource>(*this, *device_, *change_),
                         {.header_path = header_file_,
                          .progress_interval = kProgressInterval,
                          .speaker = GetName()})) {
        case SegyOpening::kOpened:
            break;
        case SegyOpening::kNotValid:
            Error("Input file '%s' cannot be opened.\n", device_name_.c_str());
            return TerminateJob(kJobError);
        case SegyOpening::kNoDefinition:
            Error("Cannot read trace header format '%s'.\n", device_name_.c_str());
            return TerminateJob(kJobError);
    }
    if (traces_to_skip_ > 0 && device_->skip_blocks(traces_to_skip_) != 0) {
        Warning("The tape file holds fewer traces than the %d that are skipped.\n",
                traces_to_skip_);
    }
}

void SegyTapeInput::SourceEnded() {
    if (const std::int64_t traces = reader_.contradictions(); traces > 0) {
        Warning(
            "%lld traces give another number of samples or sample interval than the binary "
            "header, which is used.\n",
            static_cast<long long>(traces));
    }
}

}  // namespace halvern
