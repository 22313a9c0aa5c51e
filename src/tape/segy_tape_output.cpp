#include "tape/segy_tape_output.h"

#include "segy/segy_layout.h"
#include "tape/tape_drives.h"
#include "tape/tape_item_texts.h"

namespace halvern {

namespace {
constexpr int code(SampleFormat format) { return static_cast<int>(format); }
}  // namespace

SegyTapeOutput::SegyTapeOutput(const FlowSection& section, LogFlag log)
    : OutputFlowItem(FlowItemKind::kSegyTapeOutput, log) {
    Configure(section);
}

ParameterList SegyTapeOutput::Parameters() {
    return {
        {.key = "DEVICE",
         .format = "%s",
         .value = Bound{&device_name_, first_tape_device()},
         // The word "Input" stands here as in the inputs.
         .log = "Tape Input Device           = %s\n",
         .field = {.label = "TapeDev",
                   .prompt = "Write which tape drive?",
                   .help = kDeviceHelp,
                   .kind = FieldKind::kTapeDevice}},
        {.key = "OUTPUTFORMAT",
         .format = "%d",
         .value = Bound{&output_format_, code(SampleFormat::kInt16)},
         .field = {.label = "Format",
                   .prompt = "Format for output trace data?",
                   .choices = {{"16-bit Integer", code(SampleFormat::kInt16)},
                               {"IEEE Floating Point", code(SampleFormat::kIeee)},
                               {"IBM Floating Point", code(SampleFormat::kIbm)}}}},
    };
}

DialogTexts SegyTapeOutput::WindowTexts() const {
    DialogTexts texts = OutputFlowItem::WindowTexts();
    texts.help_title = "SEGY Tape Output Help";
    texts.help_page = "SEGY Parameters";
    return texts;
}

SampleFormat SegyTapeOutput::ChosenFormat() const {
    if (output_format_ == code(SampleFormat::kInt16)) return SampleFormat::kInt16;
    return output_format_ == code(SampleFormat::kIeee) ? SampleFormat::kIeee : SampleFormat::kIbm;
}

void SegyTapeOutput::LogParameters() {
    const char* text = "Output type = IBM Floating Point\n";
    if (ChosenFormat() == SampleFormat::kInt16) text = "Output type = 16-BIT Integer\n";
    if (ChosenFormat() == SampleFormat::kIeee) text = "Output type = IEEE Floating Point\n";
    Message("%s", log_line(Parameters()[0]).c_str());
    Message("%s", text);
}

void SegyTapeOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                int) {
    device_ = make_tape_device(device_name_, TapeUse::kWrite);
    Message("Attempting to open tape drive: %s\n", device_name_.c_str());
    if (device_->open() != 0) {
        Error("Cannot open tape drive: %s\n", device_name_.c_str());
        return TerminateJob(kJobError);
    }
    encoder_ = RecordEncoder(header, ChosenFormat(), line.samples(), line.sample_interval());
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
    if (encoder_.encoded() == 0) {
        Warning("No trace came: nothing was written to '%s'.\n", device_name_.c_str());
    } else if (device_->write_filemark() != 0 || device_->write_filemark() != 0) {
        Error("Cannot write a filemark to file: %s\n", device_name_.c_str());
        return TerminateJob(kJobError);
    } else {
        Message("Wrote %lld traces of %d samples to '%s'.\n",
                static_cast<long long>(encoder_.encoded()), encoder_.samples(),
                device_name_.c_str());
    }
    if (encoder_.not_finite() > 0) {
        Warning(
            "%lld samples were not finite numbers: NaN was written as 0, an infinity as the "
            "largest value of its sign.\n",
            static_cast<long long>(encoder_.not_finite()));
    }
    device_.reset();
    encoder_ = {};
}

}  // namespace halvern
