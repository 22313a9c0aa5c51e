#include "native/native_disk_output.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "native/native_reader.h"

namespace halvern {

NativeDiskOutput::NativeDiskOutput(const FlowSection& section, LogFlag log)
    : DiskOutputFlowItem(FlowItemKind::kNativeDiskOutput, log) {
    Configure(section);
}

ParameterList NativeDiskOutput::Parameters() {
    return DiskParameters("NONE", "Name the output data set.",
                          "Choose a name for the data set in any directory.  If it exists, it "
                          "will be overwritten.  If it does not exist, it will be created.");
}

DialogTexts NativeDiskOutput::WindowTexts() const {
    return {.title = "Halvern Disk Output Parameters",
            .help_title = "Halvern Disk Output Help",
            .help_page = "Halvern Parameters",
            .already_up = "Halvern Disk Output Interface is already up."};
}

void NativeDiskOutput::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                  int) {
    std::string path = file();
    if (!CheckParameters(line) ||
        (OverwritesInput() && !FindInputPath("HALVERN DATA DISK OUTPUT", path)) ||
        !CheckPath(path) || !FindDataset(path)) {
        return TerminateJob(kJobError);
    }
    layout_ = {.samples = OutputSamples(line),
               .interval = line.sample_interval(),
               .format = ChosenFormat()};
    if (!places_) places_ = NativePlaces::configured();
    const bool replaces = target_.existing && write_type() == kOverwrite;
    if ((replaces && !CheckPartsAreNotRead()) ||
        (target_.existing && !replaces && !CheckDataset(line, header))) {
        return TerminateJob(kJobError);
    }
    if (IsRehearsal()) {
        const Fault obstacle = target_.existing && !replaces ? Fault() : places_->obstacle();
        if (obstacle && !FailToOpen(obstacle)) TerminateJob(kJobError);
        return;
    }
    // What exists is replaced when the first trace is due.
    if (!replaces && !Open(header)) return TerminateJob(kJobError);
    encoder_ = RecordEncoder(*this, header, layout_.format, layout_.samples, layout_.interval,
                             OverwritesInput() ? 0 : writer_.traces_before());
}

bool NativeDiskOutput::FailToOpen(const Fault& fault) const {
    Error("Cannot open output file '%s'.  Check disk space and permissions.\n",
          FileWritten().c_str());
    if (fault) Error("%s.\n", fault.reason().c_str());
    return false;
}

bool NativeDiskOutput::FindDataset(const std::string& path) {
    target_ = {.path = path, .existing = {}, .lock = {}};
    bool exists = false;
    if (!LockExisting(exists)) return false;
    std::error_code error;
    // An empty file is one that a job made and was killed before it was a dataset.
    if (!exists || (!OverwritesInput() && std::filesystem::is_empty(path, error) && !error)) {
        return exists || OverwritesInput() || LockNew();
    }
    Result<NativeMain> parts = NativeMain::read(path);
    if (parts) {
        target_.existing = std::move(*parts);
        return true;
    }
    if (OverwritesInput()) {
        Error("Bad input file.  Not file to overwrite.\n");
        Error("'%s': %s.\n", path.c_str(), parts.fault().reason().c_str());
        return false;
    }
    return FailToOpen(Fault("The file exists and is kept: " + parts.fault().reason()));
}

// Whether a dataset that is there takes these traces, after its own or over them.
bool NativeDiskOutput::CheckDataset(const LineHeader& line, const TraceHeaderDefinition& header) {
    NativeReader reader;
    if (reader.open(target_.path, 0, *this) != NativeOpening::kOpened) {
        return FailToOpen({});
    }
    const NativeLayout& found = reader.layout();
    layout_.format = found.format;
    const bool fits =
        OverwritesInput()
            ? CheckFits(found.interval, found.samples, line, layout_.samples)
            : CheckAppends(target_.path, found.interval, found.samples, line, layout_.samples) &&
                  CheckDescription(reader.definition(), header);
    return fits && NativeWriter::may_write(*target_.existing, mode(), *places_, *this);
}

// A dataset that is replaced takes its files with it, and a copy of a main file lists them, too.
bool NativeDiskOutput::CheckPartsAreNotRead() const {
    const auto resolved = [](const std::string& path) {
        std::error_code error;
        return std::filesystem::weakly_canonical(path, error);
    };
    std::set<std::filesystem::path> read;
    for (const FlowItem* item = previous(); item; item = item->previous()) {
        for (const std::string& path : item->FilesRead()) read.insert(resolved(path));
    }
    for (const std::string& part : target_.existing->paths()) {
        if (!read.contains(resolved(part))) continue;
        Error("Output file '%s' cannot be replaced: its file '%s' is read by this flow.\n",
              target_.path.c_str(), part.c_str());
        return false;
    }
    return true;
}

bool NativeDiskOutput::CheckDescription(const TraceHeaderDefinition& own,
                                        const TraceHeaderDefinition& header) const {
    const auto places = [](const TraceHeaderDefinition& definition) {
        std::set<std::tuple<std::string, int, int>> words;
        for (const HeaderWord& word : definition.words()) {
            words.emplace(word.name, word.location, word.type);
        }
        return words;
    };
    const auto old_words = places(own);
    const auto new_words = places(header);
    if (old_words == new_words) return true;
    std::vector<std::tuple<std::string, int, int>> differing;
    std::ranges::set_symmetric_difference(old_words, new_words, std::back_inserter(differing));
    Error("Cannot append to output file '%s'.\n", target_.path.c_str());
    Error(
        "Its trace headers are laid out by another header description: they differ in the name, "
        "the place or the type of '%s'.\n",
        std::get<0>(differing.front()).c_str());
    return false;
}

bool NativeDiskOutput::Open(const TraceHeaderDefinition& header) {
    const std::string path = target_.path;
    const bool is_new = !target_.existing;
    target_.lock = std::move(lock_);
    open_ = writer_.open(std::move(target_), mode(), layout_, header, *places_, *this) == 1;
    if (open_) return true;
    std::error_code error;  // a new main file is still the empty one that was locked
    if (is_new && std::filesystem::is_empty(path, error)) std::filesystem::remove(path, error);
    return FailToOpen({});
}

int NativeDiskOutput::ProcessTrace(LineHeader&, TraceHeaderDefinition& header,
                                   TraceSamples& samples) {
    if (!CheckRecordIsItsOwn(encoder_)) return kKeepBack;
    if (!open_ && !Open(header)) {
        TerminateJob(kJobError);
        return kKeepBack;
    }
    const std::span<const std::byte> record = encoder_.encode(header, samples);
    if (writer_.write_trace(record.first(kTraceHeaderBytes), record.subspan(kTraceHeaderBytes)) !=
        0) {
        Error("Cannot write to file: %s\n", FileWritten().c_str());
        TerminateJob(kJobError);
        return kKeepBack;
    }
    return kPassOn;
}

void NativeDiskOutput::EndRun() {
    if (const Fault fault = writer_.finish()) {
        Error("Cannot write to file: %s\n", FileWritten().c_str());
        Error("%s.\n", fault.reason().c_str());
        return TerminateJob(kJobError);
    }
    LogWritten(encoder_);
    lock_.release();
    target_ = {};
    encoder_ = {};
    open_ = false;
}

}  // namespace halvern
