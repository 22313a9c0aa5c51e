#include "segd/segd_tape_input.h"

#include <algorithm>
#include <filesystem>

#include "flow/shared_parameters.h"
#include "foundation/system_paths.h"
#include "segd/samples.h"
#include "tape/tape_drives.h"
#include "tape/tape_parameters.h"

namespace halvern {

using segd::ChannelSet;
using segd::Dialect;
using segd::HeaderFault;
using segd::RecordHeader;
using segd::RecordReader;
using Next = RecordReader::Next;
using Record = RecordReader::Record;

namespace {

constexpr int kBlocked = 1;
constexpr int kNotBlocked = 0;
constexpr int kMostBadHeaders = 100;
constexpr int kMostLineSamples = 32767;  // of a line header's 16 bits

const TapeQuestion kTapeFinishedOnResume{
    .text =
        "Tape finished.  To read another tape, insert it and click READ.  Otherwise, click QUIT.",
    .accept = "READ",
    .refuse = "QUIT"};

constexpr const char* kUpdatedWords[] = {
    "The following SEG-Y headers are updated:\n",
    "  FFID     - Field File Identifier\n",
    "  CHAN     - Channel Number\n",
    "  CHANSET  - Channel Set Number\n",
    "  TRACEID  - Trace identificaion code\n",
    "  DTIME    - Day of year\n",
    "  HTIME    - Hour of day\n",
    "  MTIME    - Minute of hour\n",
    "  STIME    - Second of minute\n",
    "  SEQCHAN  - Sequential Channel\n",
    "  SEQFFID  - Sequential FFID\n",
    "The following SEG-Y headers MAY be updated:\n",
    "  SOULINE  - Source line number\n",
    "  SOUPOINT - Source line station\n",
    "  SOUINDEX - Source line index\n",
    "  RECLINE  - Receiver line number\n",
    "  RECPOINT - Receiver line station\n",
    "  RECINDEX - Receiver line index\n",
};

// In the order of SegdTapeInput::Word.
constexpr const char* kWordNames[] = {
    "FFID",    "CHAN",    "CHANSET", "TRACEID",  "DTIME",    "HTIME",   "MTIME",    "STIME",
    "SEQCHAN", "SEQFFID", "SOULINE", "SOUPOINT", "SOUINDEX", "RECLINE", "RECPOINT", "RECINDEX"};

SampleFormat sample_format(int format) {
    switch (format) {
        case 8015:
            return SampleFormat::kSegd8015;
        case 8036:
            return SampleFormat::kSegd8036;
        case 8048:
            return SampleFormat::kSegd8048;
        default:
            return SampleFormat::kIeee;
    }
}

const ChannelSet& line_set(const RecordHeader& header) {
    const auto in_use = [](const ChannelSet& set) { return set.channels > 0; };
    const auto seismic = [&](const ChannelSet& set) {
        return in_use(set) && set.type == ChannelSet::kSeismic;
    };
    const auto found = std::ranges::find_if(header.sets(), seismic);
    return found != header.sets().end() ? *found : *std::ranges::find_if(header.sets(), in_use);
}

}  // namespace

SegdTapeInput::SegdTapeInput(const FlowSection& section, LogFlag log)
    : InputFlowItem(FlowItemKind::kSegdTapeInput, log) {
    Configure(section);
}

ParameterList SegdTapeInput::Parameters() {
    const auto code = [](Dialect dialect) { return static_cast<int>(dialect); };
    return {
        tape_device_parameter(device_name_, "Read which tape drive?"),
        header_file_parameter(header_file_, "SEG-Y Header file description to use.",
                              "Choose the header definition that the traces are given.  'default' "
                              "is a good choice."),
        {.key = "SEGDTYPE",
         .format = "%d",
         .value = Bound{&dialect_, code(Dialect::kOther)},
         .field = {.label = "SegdType",
                   .prompt = "Type of SEG-D?",
                   .help = "Sercel formats are slightly different than standard SEG-D.  Please "
                           "select the Sercel format used or select 'Not Sercel Format'.",
                   .choices = {{"Other", code(Dialect::kOther)},
                               {"Sercel 368 Format", code(Dialect::kSercel368)},
                               {"Sercel 388 Format", code(Dialect::kSercel388)},
                               {"I/O RSR", code(Dialect::kIoRsr)}}}},
        eject_wait_parameter(eject_wait_s_, 0),
        {.key = "TRACELENGTH",
         .format = "%d",
         .value = Bound{&trace_length_ms_, 0},
         .log = "Trace Length                = %d\n",
         .field = {.label = "TraceLength",
                   .prompt = "Trace length to read (in msec.)? (0=ALL DATA)",
                   .help = "Longer traces are cut to this length.  Enter 0 to read all data."}},
        {.key = "NUMFILESFORWARD",
         .format = "%d",
         .value = Bound{&files_to_skip_, 0},
         .log = "Number of Files to Skip     = %d\n",
         .field = {.label = "Files",
                   .prompt = "Number of files to skip forward?",
                   .help = "This is the number of SEG-D tape files to skip.  The tape will "
                           "fast-forward over the given number of files."}},
        {.key = "BLOCKED",
         .format = "%d",
         .value = Bound{&blocked_, kNotBlocked},
         .log = "Blocking Status             = %s\n",
         .field = {.label = "Block",
                   .prompt = "Is the input tape blocked?",
                   .help =
                       "Some tape drives improve speed when they are blocked (such as 3590's).  "
                       "If the tape to be read is blocked, specify 'BLOCKED' as your answer.",
                   .choices = {{"BLOCKED", kBlocked}, {"NOT BLOCKED", kNotBlocked}}}},
    };
}

DialogTexts SegdTapeInput::WindowTexts() const {
    DialogTexts texts = InputFlowItem::WindowTexts();
    texts.help_title = "SEGD Tape Input Help";
    texts.help_page = "SEGD Parameters";
    return texts;
}

void SegdTapeInput::LogParameters() {
    for (const char* key : {"DEVICE", "HEADERFILE", "NUMFILESFORWARD"}) LogParameter(key);
    Message("Blocking Status             = %s\n", blocked_ == kBlocked ? "BLOCKED" : "NOT BLOCKED");
    const char* type = "OTHER";
    if (dialect_ == static_cast<int>(Dialect::kSercel368)) type = "SERCEL 368";
    if (dialect_ == static_cast<int>(Dialect::kSercel388)) type = "SERCEL 388";
    if (dialect_ == static_cast<int>(Dialect::kIoRsr)) type = "I/O RSR";
    Message("Type of SEG-D               = %s\n", type);
    Message("%s", eject_wait_line(eject_wait_s_).c_str());
    if (trace_length_ms_ == 0)
        Message("Trace Length                = ALL DATA\n");
    else
        LogParameter("TRACELENGTH");
}

void SegdTapeInput::ResumeInput() {
    resumed_ = true;
    InputFlowItem::ResumeInput();
}

void SegdTapeInput::OpenSource() {
    for (const char* line : kUpdatedWords) Message("%s", line);
    if (CheckParameters() && LoadDefinition() && OpenTape() && SkipFiles() && ReadFirstHeader()) {
        LogHeader();
        BuildLine();
    } else {
        TerminateJob(kJobError);
    }
}

bool SegdTapeInput::CheckParameters() const {
    for (const int value : {eject_wait_s_, trace_length_ms_, files_to_skip_}) {
        if (value >= 0) continue;
        Error(
            "Trace length, files to skip and seconds to wait must not be negative.  You have "
            "entered '%d'.\n",
            value);
        return false;
    }
    return true;
}

bool SegdTapeInput::LoadDefinition() {
    definition_.attach(image_.data());
    if (definition_.load(header_file_) != 0) {
        Error("Cannot read trace header format '%s'.\n", header_file_.c_str());
        return false;
    }
    std::ranges::transform(kWordNames, words_.begin(),
                           [this](const char* name) { return definition_.find(name); });
    const std::string path = TreePath(SystemDirectory(), "Halvern.segd");
    description_ = segd::Description::read(path, definition_);
    if (!description_.found) {
        Message("SEGD Description file '%s' cannot be read.  No extra SEGD information read.\n",
                path.c_str());
        return true;
    }
    Message("Reading extra SEGD header information from '%s'.\n", path.c_str());
    for (const std::string& problem : description_.problems) Warning("%s", problem.c_str());
    return true;
}

bool SegdTapeInput::OpenTape() {
    std::error_code ignored;
    if (!is_tape_image(device_name_) && std::filesystem::is_regular_file(device_name_, ignored)) {
        Error("SEG-D Disk read not supported\n");
        return false;
    }
    device_ = make_tape_device(device_name_, TapeUse::kRead, *this);
    change_.emplace(*this, *device_, eject_wait_s_, is_tape_image(device_name_));
    if (change_->open() != 0) {
        Error("Cannot open tape drive: %s\n", device_->name().c_str());
        return false;
    }
    source_.emplace(*device_);
    return true;
}

bool SegdTapeInput::SkipFiles() {
    constexpr int kStep = 5;
    if (files_to_skip_ == 0) return true;
    // A label with a filemark of its own is no file to skip: the two are read here.
    const bool block = device_->read_block() > 0;
    if (block && device_->block().size() == segd::StorageUnitLabel::kSize &&
        segd::StorageUnitLabel::is_one(device_->block())) {
        (void)device_->read_block();
    } else if (!block && device_->rewind() != 0) {  // a filemark that begins the tape counts
        Error("ERROR forwarding to next file.  Job terminating.\n");
        return false;
    }
    for (int done = 0; done < files_to_skip_;) {
        const int step = std::min(kStep, files_to_skip_ - done);
        Message("Skipping forward %d files...", step);
        if (device_->skip_files(step) != 0) {
            LogPrint("\n");
            Error("ERROR forwarding to next file.  Job terminating.\n");
            return false;
        }
        done += step;
        LogPrint("done with %d/%d\n", done, files_to_skip_);
    }
    return true;
}

void SegdTapeInput::StartTape() {
    if (reader_) foreign_numbers_ += reader_->foreign_file_numbers();
    source_.emplace(*device_);
    reader_.emplace(*source_, static_cast<Dialect>(dialect_), blocked_ == kBlocked);
}

bool SegdTapeInput::ReadFirstHeader() {
    Message("Attempting to read 'SEG D Header' from tape: %s\n", device_name_.c_str());
    StartTape();
    switch (reader_->next_record()) {
        case Record::kRecord:
            break;
        case Record::kEnd:
        case Record::kReadError:
            Error("Cannot read from tape drive: %s\n", device_name_.c_str());
            return false;
        case Record::kFault:
            LogHeaderFault();
            Error("Error scanning general header information\n");
            return false;
    }
    // One trace ahead: how many samples it has tells whether this tape counts both ends of a trace.
    has_first_trace_ = true;
    first_trace_ = reader_->next_trace();
    return true;
}

void SegdTapeInput::LogHeader() const {
    const RecordHeader& header = reader_->header();
    const segd::GeneralHeader1& general = header.general();
    const ChannelSet& set = line_set(header);
    Message("First General Header Information:\n");
    Message("SEG-D Revision    = %3.1f\n", header.revision());
    Message("FFID              = %d\n", header.file_number());
    Message("Data format       = %d\n", general.format);
    Message("Man Code          = %d\n", general.manufacturer);
    Message("Bytes Per Scan    = %d\n", general.bytes_per_scan);
    Message("SampleRate        = %3.1f\n", header.base_interval_ms());
    Message("Trace Length      = %3.3f\n", header.record_length_ms() / 1000);
    Message("Number of Samples = %d\n", static_cast<int>(reader_->expected_samples(set)));
    Message("Year              = 19%d\n", general.year);
    Message("Day               = %d\n", general.day);
    Message("Time              =%02d:%02d:%02d\n", general.hour, general.minute, general.second);
    Message("Number of extra general headers = %d\n", general.additional_blocks);
    Message("Number of extended headers      = %d\n", header.layout().extended_blocks);
    Message("Number of external headers      = %d\n", header.layout().external_blocks);
    Message("Number of trailers              = %d\n", header.trailer_blocks());
    Message("Number of channel sets          = %d\n", header.layout().channel_sets);
    for (const ChannelSet& each : header.sets()) {
        if (each.channels == 0) continue;  // not in use
        Message("Scan Type %d Channel Set %d\n", each.scan_type, each.number);
        Message("Start/End time           = %d-%d\n", each.start_ms, each.end_ms);
        Message("Number of channels       = %d\n", each.channels);
        Message("Descale Multiplier       = %f\n", each.descale);
        Message("Alias Filter Frequency   = %d\n", each.alias_hz);
        Message("Alias Filter Slope       = %d\n", each.alias_slope);
        Message("Low-cut Filter Frequency = %d\n", each.low_cut_hz);
        Message("Low-cut Filter Slope     = %d\n", each.low_cut_slope);
        Message("Notch Frequency 1        = %3.1f\n", each.notch_hz[0]);
        Message("Notch Frequency 2        = %3.1f\n", each.notch_hz[1]);
        Message("Notch Frequency 3        = %3.1f\n", each.notch_hz[2]);
    }
}

void SegdTapeInput::BuildLine() {
    const ChannelSet& set = line_set(reader_->header());
    interval_ = reader_->header().sample_interval(set);
    std::int64_t samples = reader_->expected_samples(set);
    if (first_trace_ == Next::kTrace && reader_->trace().set == &set) {
        samples = reader_->trace().samples;
    }
    if (trace_length_ms_ > 0) {
        samples = std::min(samples, interval_.samples_in(trace_length_ms_));
    }
    if (samples > kMostLineSamples) {
        Warning("Traces of %lld samples are longer than a line can be.  They are cut to %d.\n",
                static_cast<long long>(samples), kMostLineSamples);
        samples = kMostLineSamples;
    }
    line_samples_ = static_cast<int>(samples);
    line_.build_from_definition(header_file_, interval_, line_samples_, SampleFormat::kIeee);
}

void SegdTapeInput::StartRecord() {
    in_record_ = true;
    ++files_;
    ++records_;
    Message("Reading File %d - FFID = %d\n", files_, reader_->header().file_number());
}

bool SegdTapeInput::EndRecord() {
    in_record_ = false;
    const RecordHeader& header = reader_->header();
    if (reader_->sequence() < header.traces()) {
        Warning("FFID %d has %d of the %lld traces that its header announces.\n",
                header.file_number(), reader_->sequence(), static_cast<long long>(header.traces()));
    }
    if (reader_->left_over() > 0) {
        Warning("FFID %d has %lld bytes behind its last trace that are no trace.\n",
                header.file_number(), static_cast<long long>(reader_->left_over()));
    }
    if (reader_->found_blocked() && !said_blocked_) {
        said_blocked_ = true;
        Message("The tape is blocked, and is read so.\n");
    }
    return !source_->stuck() || GoToNextFile();
}

bool SegdTapeInput::GoToNextFile() {
    if (reader_->skip_file() == 0) return true;
    Error("ERROR forwarding to next file.  Job terminating.\n");
    return false;
}

void SegdTapeInput::LogHeaderFault() const {
    const segd::HeaderLayout& layout = reader_->layout();
    switch (reader_->fault()) {
        case HeaderFault::kFormat:
            Error(
                "Data format = %d.  Only data formats 8015, 8036, 8048, and 8058 are supported.\n",
                layout.general.format);
            break;
        case HeaderFault::kRevision3:
            Error("The record is of SEG-D revision 3.  Only revisions 0 to 2.1 are supported.\n");
            break;
        case HeaderFault::kChannelSet:
            Error("Failure reading SEG-D Channel Set Header for FFID %d.\n", layout.file_number);
            break;
        default:
            Error("Failure reading SEG-D General Header.\n");
            break;
    }
}

// A record whose header is of no use is passed over. False when there is no going on.
bool SegdTapeInput::SkipBadHeader(Record record) {
    ++files_;
    if (record == Record::kReadError) {
        Error("ERROR reading tape: %s\n", device_name_.c_str());
        Error("Failure reading SEG-D General Header.\n");
    } else {
        LogHeaderFault();
    }
    if (++bad_headers_ >= kMostBadHeaders) {
        Error("ERROR reading 100 headers.  Job Terminating\n");
        return false;
    }
    Error("ERROR reading headers at file %d.  Reading forward to next file.\n", files_);
    return GoToNextFile();
}

bool SegdTapeInput::NextTape() {
    const TapeQuestion& question = resumed_ ? kTapeFinishedOnResume : kTapeFinished;
    if (!change_->next(question, question, [] { return true; })) return false;
    StartTape();
    return true;
}

bool SegdTapeInput::NextRecord() {
    if (has_first_trace_) {
        StartRecord();
        return true;
    }
    for (;;) {
        const Record record = reader_->next_record();
        if (record == Record::kRecord) {
            StartRecord();
            return true;
        }
        if (record == Record::kEnd) {
            if (!NextTape()) return false;
        } else if (!SkipBadHeader(record)) {
            TerminateJob(kJobError);
            return false;
        }
    }
}

ReadResult SegdTapeInput::ReadNext() {
    for (;;) {
        if (!in_record_ && !NextRecord()) return ReadResult::kEnd;
        const Next next = has_first_trace_ ? first_trace_ : reader_->next_trace();
        has_first_trace_ = false;
        const int ffid = reader_->header().file_number();
        switch (next) {
            case Next::kTrace:
                return SendOn(reader_->trace());
            case Next::kEndOfRecord:
                if (EndRecord()) break;
                TerminateJob(kJobError);
                return ReadResult::kEnd;
            case Next::kReadError:
                Error("ERROR reading tape: %s\n", device_name_.c_str());
                Error("Failure reading SEG-D Trace at FFID = %d, Channel = %d.\n", ffid,
                      reader_->sequence());
                break;
            case Next::kBadHeader:
                Error("Failure reading SEG-D Trace Header at FFID = %d, Channel = %d.\n", ffid,
                      reader_->sequence());
                break;
            case Next::kBadTrace:
                Error("ERROR scanning trace, FFID = %d, channel = %d\n", ffid,
                      reader_->trace().header.trace_number);
                break;
        }
    }
}

ReadResult SegdTapeInput::SendOn(const segd::Trace& trace) {
    if (reader_->header().sample_interval(*trace.set) != interval_) {
        ++other_interval_;
        return ReadResult::kSkipped;
    }
    const std::int64_t there = std::min<std::int64_t>(
        trace.samples, segd::samples_in(reader_->header().general().format,
                                        static_cast<std::int64_t>(trace.raw.size())));
    // Longer than a trace length that was asked for is as asked for.
    if (there < line_samples_ || (trace.samples > line_samples_ && trace_length_ms_ == 0)) {
        ++other_length_;
    }
    FillHeader(trace);
    FillSamples(trace);
    return ReadResult::kTrace;
}

void SegdTapeInput::FillHeader(const segd::Trace& trace) {
    const RecordHeader& header = reader_->header();
    const segd::GeneralHeader1& general = header.general();
    image_.fill(std::byte{});
    definition_.attach(image_.data());
    const auto set = [this](Word word, double value) {
        definition_.set_double(words_[word], value);
    };
    set(kFfid, header.file_number());
    set(kChan, trace.header.trace_number);
    set(kChanSet, trace.set->number);
    set(kTraceId, segd::trace_id_of(trace.set->type));
    set(kDTime, general.day);
    set(kHTime, general.hour);
    set(kMTime, general.minute);
    set(kSTime, general.second);
    set(kSeqChan, trace.sequence);
    set(kSeqFfid, records_);
    if (!header.sources().empty()) {
        const segd::GeneralHeaderN& source = header.sources().front();
        set(kSouLine, source.source_line);
        set(kSouPoint, source.source_point);
        set(kSouIndex, source.source_index);
    }
    if (trace.receiver) {
        set(kRecLine, trace.receiver->receiver_line);
        set(kRecPoint, trace.receiver->receiver_point);
        set(kRecIndex, trace.receiver->receiver_index);
    }
    if (description_.entries.empty()) return;
    const auto place = [](segd::Group group) { return static_cast<std::size_t>(group); };
    segd::GroupBytes groups;
    groups[place(segd::Group::kG1)] = header.general_block(1);
    if (!header.layout().revision_0()) {
        groups[place(segd::Group::kG2)] = header.general_block(2);
        groups[place(segd::Group::kGN)] = header.general_block(3);
    }
    groups[place(segd::Group::kCS)] = header.descriptor(trace.set_index);
    groups[place(segd::Group::kTH)] = trace.bytes.first(segd::TraceHeader::kSize);
    const std::size_t extensions =
        std::min<std::size_t>(trace.extensions.size() / segd::kBlockBytes, 7);
    for (std::size_t i = 0; i < extensions; ++i) {
        groups[place(segd::Group::kTE1) + i] =
            trace.extensions.subspan(i * segd::kBlockBytes, segd::kBlockBytes);
    }
    groups[place(segd::Group::kExt)] = header.extended();
    groups[place(segd::Group::kXtn)] = header.external();
    description_.apply(groups, definition_);
}

void SegdTapeInput::FillSamples(const segd::Trace& trace) {
    const double descale = trace.set->descale;
    const SampleFormat format = sample_format(reader_->header().general().format);
    samples_.set_descale(descale);
    samples_.set_raw(trace.raw, std::min(trace.samples, line_samples_), line_samples_,
                     line_samples_, format);
    if (format != SampleFormat::kIeee) return;
    // IEEE samples know no multiplier: it is applied here, to the floats that the trace keeps.
    const std::span<float> floats = samples_.floats(definition_);
    segd::descale_ieee(floats, descale);
    samples_.set_floats(floats);
}

void SegdTapeInput::SourceEnded() {
    foreign_numbers_ += reader_->foreign_file_numbers();
    if (other_length_ > 0) {
        Warning(
            "%lld traces have another length than the line's %d samples: they were cut or filled "
            "up with zeros.\n",
            static_cast<long long>(other_length_), line_samples_);
    }
    if (other_interval_ > 0) {
        Warning(
            "%lld traces have another sample interval than the line's %.3f ms: they were left "
            "out.\n",
            static_cast<long long>(other_interval_), interval_.ms());
    }
    if (foreign_numbers_ > 0) {
        Warning("%lld traces have another file number than their record, whose number is used.\n",
                static_cast<long long>(foreign_numbers_));
    }
    device_->close();
}

}  // namespace halvern
