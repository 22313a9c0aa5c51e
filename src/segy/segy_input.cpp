#include "segy/segy_input.h"

namespace halvern {

namespace {
constexpr int kProgressInterval = 1000;
}

bool SegyInput::OpenReader(const std::string& name, std::unique_ptr<SegySource> source) {
    const SegyReaderOptions options{
        .header_path = header_file_, .progress_interval = kProgressInterval, .report = this};
    switch (reader_.open(name, std::move(source), options)) {
        case SegyOpening::kOpened:
            return true;
        case SegyOpening::kNotValid:
            Error("Input file '%s' cannot be opened.\n", name.c_str());
            break;
        case SegyOpening::kNoDefinition:
            // The data is named, for which the description was meant; the description's own path
            // stands in the line before.
            Error("Cannot read trace header format '%s'.\n", name.c_str());
            break;
    }
    TerminateJob(kJobError);
    return false;
}

void SegyInput::SourceEnded() {
    if (reader_.contradictions() == 0) return;
    Warning(
        "%lld traces give a number of samples or a sample rate in their own headers that differs "
        "from the binary header's, which was used.\n",
        static_cast<long long>(reader_.contradictions()));
}

}  // namespace halvern
