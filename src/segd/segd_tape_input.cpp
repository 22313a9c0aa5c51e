#include "segd/segd_tape_input.h"

#include <algorithm>
#include <filesystem>

#include "flow/shared_parameters.h"
#include "foundation/system_paths.h"
#include "tape/tape_drives.h"
#include "tape/tape_parameters.h"

namespace halvern {

using segd::ChannelSet;
using segd::Dialect;
using segd::HeaderFault;
using segd::RecordHeader;
using Met = segd::TraceReader::Met;
using Record = segd::RecordReader::Record;

namespace {

constexpr int kBlocked = 1;
constexpr int kNotBlocked = 0;
constexpr int kMostBadHeaders = 100;

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
    if (!CheckParameters() || !LoadDefinition() || !OpenTape() || !SkipFiles() ||
        !ReadFirstHeader()) {
        return TerminateJob(kJobError);
    }
    LogHeader();
    const auto samples = static_cast<long long>(reader_.trace_samples());
    if (trace_length_ms_ == 0 && samples > reader_.line_samples()) {
        Warning("Traces of %lld samples are longer than a line can be.  They are cut to %d.\n",
                samples, reader_.line_samples());
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
    const std::string path = TreePath(SystemDirectory(), "Halvern.segd");
    if (!reader_.load({.header_path = header_file_,
                       .description_path = path,
                       .dialect = static_cast<Dialect>(dialect_),
                       .blocked = blocked_ == kBlocked,
                       .trace_length_ms = trace_length_ms_})) {
        Error("Cannot read trace header format '%s'.\n", header_file_.c_str());
        return false;
    }
    const segd::Description& description = reader_.description();
    if (!description.found) {
        Message("SEGD Description file '%s' cannot be read.  No extra SEGD information read.\n",
                path.c_str());
        return true;
    }
    Message("Reading extra SEGD header information from '%s'.\n", path.c_str());
    for (const std::string& problem : description.problems) Warning("%s", problem.c_str());
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
            Log("\n");
            Error("ERROR forwarding to next file.  Job terminating.\n");
            return false;
        }
        done += step;
        Log("done with %d/%d\n", done, files_to_skip_);
    }
    return true;
}

bool SegdTapeInput::ReadFirstHeader() {
    Message("Attempting to read 'SEG D Header' from tape: %s\n", device_name_.c_str());
    switch (reader_.open(*source_)) {
        case Record::kRecord:
            return true;
        case Record::kEnd:
        case Record::kReadError:
            Error("Cannot read from tape drive: %s\n", device_name_.c_str());
            return false;
        case Record::kFault:
            LogHeaderFault();
            Error("Error scanning general header information\n");
            break;
    }
    return false;
}

void SegdTapeInput::LogHeader() const {
    const RecordHeader& header = reader_.records().header();
    const segd::GeneralHeader1& general = header.general();
    Message("First General Header Information:\n");
    Message("SEG-D Revision    = %3.1f\n", header.revision());
    Message("FFID              = %d\n", header.file_number());
    Message("Data format       = %d\n", general.format);
    Message("Man Code          = %d\n", general.manufacturer);
    Message("Bytes Per Scan    = %d\n", general.bytes_per_scan);
    Message("SampleRate        = %3.1f\n", header.base_interval_ms());
    Message("Trace Length      = %3.3f\n", header.record_length_ms() / 1000);
    Message("Number of Samples = %d\n", static_cast<int>(reader_.trace_samples()));
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

void SegdTapeInput::EndRecord() {
    const segd::RecordReader& records = reader_.records();
    const RecordHeader& header = records.header();
    if (records.sequence() < header.traces()) {
        Warning("FFID %d has %d of the %lld traces that its header announces.\n",
                header.file_number(), records.sequence(), static_cast<long long>(header.traces()));
    }
    if (records.left_over() > 0) {
        Warning("FFID %d has %lld bytes that are no trace.\n", header.file_number(),
                static_cast<long long>(records.left_over()));
    }
    if (reader_.found_blocked() && !said_blocked_) {
        said_blocked_ = true;
        Message("The tape is blocked, and is read so.\n");
    }
}

void SegdTapeInput::LogHeaderFault() const {
    const segd::HeaderLayout& layout = reader_.records().layout();
    switch (reader_.records().fault()) {
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

// The header of a record is of no use. False after the error line that ends the job.
bool SegdTapeInput::CountBadHeader() {
    ++files_;
    if (++bad_headers_ < kMostBadHeaders) {
        Error("ERROR reading headers at file %d.  Reading forward to next file.\n", files_);
        return true;
    }
    Error("ERROR reading 100 headers.  Job Terminating\n");
    return false;
}

bool SegdTapeInput::NextTape() {
    const TapeQuestion& question = resumed_ ? kTapeFinishedOnResume : kTapeFinished;
    if (!change_->next(question, question, [] { return true; })) return false;
    source_.emplace(*device_);
    reader_.go_on(*source_);
    return true;
}

ReadResult SegdTapeInput::ReadNext() {
    const Met met = reader_.next();
    const segd::RecordReader& records = reader_.records();
    const int ffid = records.header().file_number();
    switch (met) {
        case Met::kTrace:
            return ReadResult::kTrace;
        case Met::kOtherInterval:
            return ReadResult::kSkipped;
        case Met::kRecord:
            Message("Reading File %d - FFID = %d\n", ++files_, ffid);
            break;
        case Met::kEndOfRecord:
            EndRecord();
            break;
        case Met::kLostBlock:
            Error("ERROR reading tape: %s\n", device_name_.c_str());
            Error("Failure reading SEG-D Trace at FFID = %d, Channel = %d.\n", ffid,
                  records.trace().sequence);
            break;
        case Met::kBadTraceHeader:
            Error("Failure reading SEG-D Trace Header at FFID = %d, Channel = %d.\n", ffid,
                  records.trace().sequence);
            break;
        case Met::kBadTrace:
            Error("ERROR scanning trace, FFID = %d, channel = %d\n", ffid,
                  records.trace().header.trace_number);
            break;
        case Met::kLostHeader:
            Error("ERROR reading tape: %s\n", device_name_.c_str());
            Error("Failure reading SEG-D General Header.\n");
            if (!CountBadHeader()) return ReadResult::kFailed;
            break;
        case Met::kBadHeader:
            LogHeaderFault();
            if (!CountBadHeader()) return ReadResult::kFailed;
            break;
        case Met::kNoWayOn:
            Error("ERROR forwarding to next file.  Job terminating.\n");
            return ReadResult::kFailed;
        case Met::kEnd:
            if (!NextTape()) return ReadResult::kEnd;
            break;
    }
    return ReadResult::kNothing;
}

void SegdTapeInput::SourceEnded() {
    for (const std::string& remark : reader_.remarks()) Warning("%s.\n", remark.c_str());
    device_->close();
}

}  // namespace halvern
