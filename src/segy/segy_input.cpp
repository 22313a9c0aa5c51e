#include "segy/segy_input.h"

namespace halvern {

namespace {
constexpr int kProgressInterval = 1000;
}

bool SegyInput::OpenReader(const std::string& name, std::unique_ptr<SegySource> source) {
    const SegyReaderOptions options{
        .header_path = header_file_, .progress_interval = kProgressInterval, .report = this};
    name_ = name;
    switch (source ? reader_.open(name, std::move(source), options) : reader_.open(name, options)) {
        case SegyOpening::kOpened:
            return true;
        case SegyOpening::kNotValid:
            Error("Input file '%s' cannot be opened.\n", name.c_str());
            break;
        case SegyOpening::kNoDefinition:
            // The data is named, for which the description was meant; the description's own path
            // is in the line before.
            Error("Cannot read trace header format '%s'.\n", name.c_str());
            break;
    }
    TerminateJob(kJobError);
    return false;
}

ReadResult SegyInput::ReadNext() {
    if (reader_.read_next() == 1) return ReadResult::kTrace;
    if (!reader_.fault()) return ReadResult::kEnd;
    Error("'%s': %s.\n", name_.c_str(), reader_.fault().reason().c_str());
    return ReadResult::kFailed;
}

void SegyInput::SourceEnded() {
    for (const std::string& remark : reader_.remarks()) Warning("%s.\n", remark.c_str());
}

}  // namespace halvern
