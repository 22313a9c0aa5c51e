#include "tape/segy_tape_output.h"

#include "flow/shared_parameters.h"
#include "segy/segy_layout.h"
#include "tape/tape_drives.h"
#include "tape/tape_parameters.h"

namespace halvern {

SegyTapeOutput::SegyTapeOutput(const FlowSection& section, LogFlag log)
    : OutputFlowItem(FlowItemKind::kSegyTapeOutput, log) {
    Configure(section);
}

ParameterList SegyTapeOutput::Parameters() {
    return {
        tape_device_parameter(device_name_, "Write which tape drive?"),
        output_format_parameter(output_format_),
    };
}

DialogTexts SegyTapeOutput::WindowTexts() const {
    DialogTexts texts = OutputFlowItem::WindowTexts();
    texts.help_title = "SEGY Tape Output Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

void SegyTapeOutput::LogParameters() {
    LogParameter("DEVICE");
    Message("%s", output_type_line(chosen_output_format(output_format_)));
}

void SegyTapeOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                int) {
    if (IsRehearsal()) return;  // a tape would be moved
    device_ = make_tape_device(device_name_, TapeUse::kWrite, *this);
    Message("Attempting to open tape drive: %s\n", device_->name().c_str());
    if (device_->open() != 0) {
        Error("Cannot open tape drive: %s\n", device_->name().c_str());
        return TerminateJob(kJobError);
    }
    encoder_ = RecordEncoder(*this, header, chosen_output_format(output_format_), line.samples(),
                             line.sample_interval());
}

bool SegyTapeOutput::Write(std::span<const std::byte> block, const char* what) {
    if (device_->write(block) == 0) return true;
    Error("Cannot write '%s' to file: %s\n", what, device_name_.c_str());
    TerminateJob(kJobError);
    return false;
}

int SegyTapeOutput::ProcessTrace(LineHeader& line, TraceHeaderDefinition& header,
                                 TraceSamples& samples) {
    if (encoder_.encoded() == 0) {
        const LineHeader output =
            segy_output_line(line, encoder_.format(), encoder_.samples(), encoder_.interval());
        if (!Write(output.bytes().first<kTextHeaderBytes>(), "SEG Y EBCDIC Line Header") ||
            !Write(output.bytes().last<kBinaryHeaderBytes>(), "SEG Y Binary Line Header")) {
            return kKeepBack;
        }
    }
    return Write(encoder_.encode(header, samples), "SEG Y Trace") ? kPassOn : kKeepBack;
}

void SegyTapeOutput::EndRun() {
    if (encoder_.encoded() > 0) {
        if (device_->write_filemark() != 0 || device_->write_filemark() != 0) {
            Error("Cannot write a filemark to file: %s\n", device_name_.c_str());
            return TerminateJob(kJobError);
        }
        if (device_->close() != 0) {
            Error("The end of what was written may be missing on file: %s\n", device_name_.c_str());
            return TerminateJob(kJobError);
        }
    }
    encoder_.log_written(*this, device_name_);
    device_.reset();
    encoder_ = {};
}

}  // namespace halvern
