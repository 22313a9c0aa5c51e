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
    device_ = make_tape_device(device_name_, TapeUse::kRead, *this);
    change_.emplace(*this, *device_, eject_wait_s_, is_tape_image(device_name_));
    if (change_->open() != 0) {
        Error("Cannot open tape drive: %s\n", device_->name().c_str());
        return TerminateJob(kJobError);
    }
    if (files_to_skip_ > 0 && device_->skip_files(files_to_skip_) != 0) {
        Error("Tape %s does not hold %d files to skip.\n", device_name_.c_str(), files_to_skip_);
        return TerminateJob(kJobError);
    }
    auto source = std::make_unique<SegyTapeSource>(*device_);
    source_ = source.get();
    if (!BeginTape(true)) return TerminateJob(kJobError);
    if (!OpenReader(device_name_, std::move(source))) return;
    if (traces_to_skip_ > 0 && device_->skip_blocks(traces_to_skip_) != 0) {
        Warning("The tape file holds fewer traces than the %d that are skipped.\n",
                traces_to_skip_);
    }
}

bool SegyTapeInput::BeginTape(bool first) {
    const char* const name = device_->name().c_str();
    const auto say = [&](const char* what, int bytes, int expected) {
        if (bytes >= expected) {
            Message("Successfully read '%s' of %d bytes from tape %s\n", what, bytes, name);
            return true;
        }
        const char* const text = "Failed to read '%s' from tape %s, got %d bytes\n";
        // A further tape without a header is a matter for the operator.
        if (first)
            Error(text, what, name, bytes);
        else
            Message(text, what, name, bytes);
        return false;
    };
    const SegyTapeSource::HeaderBlocks blocks = source_->begin_tape();
    if (!say("SEG Y EBCDIC Header", blocks.text, kTextHeaderBytes)) return false;
    Message("Attempting to read 'SEG Y Line Header' from tape: %s\n", name);
    return say("SEG Y Line Header", blocks.line, kBinaryHeaderBytes);
}

bool SegyTapeInput::NextTape() {
    return change_->next(kTapeFinished, kNoHeaderOnTape, [this] { return BeginTape(false); });
}

ReadResult SegyTapeInput::ReadNext() {
    const ReadResult result = SegyInput::ReadNext();
    for (; further_lines_said_ < source_->further_lines(); ++further_lines_said_) {
        Message("Another line header follows on tape %s; its traces are read on.\n",
                device_->name().c_str());
    }
    if (result != ReadResult::kEnd) return result;
    if (source_->ending().what == SegyTapeEnding::What::kEndOfTape) {
        if (!NextTape()) return ReadResult::kEnd;
        if (source_->go_on()) return ReadResult::kNothing;
    }
    LogEnding();
    return ReadResult::kFailed;
}

void SegyTapeInput::LogEnding() const {
    using What = SegyTapeEnding::What;
    const char* const name = device_->name().c_str();
    const SegyTapeEnding& ending = source_->ending();
    const SegyLayout &first = source_->first_line(), &other = ending.line;
    switch (ending.what) {
        case What::kReadError:
            return Error("ERROR Read tape: %s\n", name);
        case What::kShortBlock:
            return Error("ERROR: Read %d bytes from tape when %d bytes were expected.\n",
                         static_cast<int>(ending.bytes), static_cast<int>(ending.expected));
        case What::kNoLineHeader:
            return Error("Failed to read 'SEG Y Line Header' from tape %s, got %d bytes\n", name,
                         static_cast<int>(ending.bytes));
        case What::kUnusableLine:
            return Error("The further line header on tape %s %s.\n", name, ending.why.c_str());
        case What::kOtherLine:
            return Error(
                "The traces that follow on tape %s (%d samples of %.3f ms, format code %d) differ "
                "from those before (%d samples of %.3f ms, format code %d).\n",
                name, other.samples, other.interval.ms(), other.format_code, first.samples,
                first.interval.ms(), first.format_code);
        case What::kNoTextHeaders:
            return Error("Tape %s ends before the %d extended text headers that it announces.\n",
                         name, other.text_headers);
        case What::kNone:
        case What::kEndOfTape:
            break;
    }
}

void SegyTapeInput::SourceEnded() {
    SegyInput::SourceEnded();
    if (source_->longer_blocks() == 0) return;
    Warning("%lld blocks hold more than a trace; the rest of them was not read.\n",
            static_cast<long long>(source_->longer_blocks()));
}

}  // namespace halvern
