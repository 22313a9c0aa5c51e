#include "geometry/write_coordinates.h"

#include <cmath>
#include <filesystem>

#include "flow/item_checks.h"
#include "foundation/prospect.h"
#include "platform/block_writer.h"
#include "platform/replace_file.h"
#include "trace/big_endian.h"

namespace halvern {

namespace {

/// The header words of no single point.
enum Word : std::size_t {
    kFfid,
    kChannel,
    kStreamer,
    kTime,
    kDay,
    kHour,
    kMinute,
    kSecond,
    kCoorScal,
    kElevScal,
    kCoorUnit,
    kWords
};

constexpr int kArcSeconds = 2;  // COORUNIT
constexpr int kFeet = 2;        // measurement system of the binary header

/// What a header value counts in.
double unit_of(int scalar) {
    if (scalar == 0) return 1;
    return scalar > 0 ? scalar : -1.0 / scalar;
}

/// A header value in true units: divided, which is exact where the quotient is.
double true_value(double value, double unit) {
    return unit < 1 ? value / std::round(1 / unit) : value * unit;
}

bool ends_with(const std::string& path, std::string_view extension) {
    return path.size() > extension.size() && path.ends_with(extension);
}

}  // namespace

WriteCoordinates::WriteCoordinates(const FlowSection& section, LogFlag log)
    : OutputFlowItem(FlowItemKind::kWriteCoordinates, log) {
    Configure(section);
}

ParameterList WriteCoordinates::Parameters() {
    const Prospect& prospect = CurrentProspect();
    const auto is_p190 = [this] { return type_ == kP190; };
    const auto choice = [](PointChoice value) { return static_cast<int>(value); };
    return {
        {.key = "FILE",
         .format = "%s",
         .value = Bound{&file_, prospect.is_open() ? prospect.path("nav", "NONE") : "NONE"},
         .log = "Coordinate File = %s\n",
         .field = {.label = "FileName",
                   .prompt = "Coordinate File to write.",
                   .help = "The extension follows from the type: .s, .r and .x of SPS files,\n"
                           ".p190, or .txt.  Files that exist are replaced at the end of the run.",
                   .kind = FieldKind::kOutputFile}},
        {.key = "TYPE",
         .format = "%d",
         .value = Bound{&type_, static_cast<int>(kSps)},
         .log = "File Type = %s\n",
         .field = {.label = "Type",
                   .prompt = "Which files?",
                   .choices = {{"SPS", kSps}, {"P1/90", kP190}, {"Columns of text", kColumns}}}},
        {.key = "POINTS",
         .format = "%d",
         .value = Bound{&points_, choice(PointChoice::kSourcesAndReceivers)},
         .log = "Points = %s\n",
         .field = {.label = "Points",
                   .prompt = "Which points?",
                   .help = "Of columns of text.  Mid-points lie halfway between source and\n"
                           "receiver where CDPX and CDPY are both 0.",
                   .choices = {{"Sources and receivers", choice(PointChoice::kSourcesAndReceivers)},
                               {"Sources", choice(PointChoice::kSources)},
                               {"Receivers", choice(PointChoice::kReceivers)},
                               {"Mid-points", choice(PointChoice::kMidpoints)},
                               {"Bins", choice(PointChoice::kBins)}},
                   .applies = [this] { return type_ == kColumns; }}},
        {.key = "SURVEY",
         .format = "%s",
         .value = Bound{&survey_, ""},
         .log = "Survey = %s\n",
         .field = {.label = "Survey", .prompt = "Name of the survey, for the files' headers?"}},
        {.key = "DATE",
         .format = "%s",
         .value = Bound{&date_, ""},
         .log = "Date = %s\n",
         .field = {.label = "Date", .prompt = "Date of the survey, for the files' headers?"}},
        {.key = "POINTHEADER",
         .format = "%s",
         .value = Bound{&point_header_, "SOUPOINT"},
         .field = {.label = "Point Header",
                   .prompt = "Header word of the point number?",
                   .kind = FieldKind::kHeaderWord,
                   .applies = is_p190}},
        {.key = "CHANHEADER",
         .format = "%s",
         .value = Bound{&channel_header_, "CHAN"},
         .field = {.label = "Channel Header",
                   .prompt = "Header word of the receiver group number?",
                   .kind = FieldKind::kHeaderWord,
                   .applies = is_p190}},
        {.key = "STREAMERHEADER",
         .format = "%s",
         .value = Bound{&streamer_header_, "NONE"},
         .field = {.label = "Streamer Header",
                   .prompt = "Header word of the streamer number (NONE: all are streamer 1)?",
                   .kind = FieldKind::kHeaderWord,
                   .applies = is_p190}},
    };
}

bool WriteCoordinates::CheckChoices() const {
    const struct {
        const char* key;
        int value, most;
    } choices[] = {{"TYPE", type_, kColumns},
                   {"POINTS", points_, static_cast<int>(PointChoice::kBins)}};
    for (const auto& [key, value, most] : choices) {
        if (value >= 0 && value <= most) continue;
        Error("%s must be 0 to %d.  You have entered '%d'.\n", key, most, value);
        return false;
    }
    return true;
}

bool WriteCoordinates::FindWords(const TraceHeaderDefinition& header) {
    const auto find = [&](const char* name) { return header.find(name); };
    const char* const point = type_ == kP190 ? point_header_.c_str() : "SOUPOINT";
    const char* const channel = type_ == kP190 ? channel_header_.c_str() : "CHAN";
    source_ = {find("SOULINE"), find(point),     find("SOUINDEX"), find("SRCX"),
               find("SRCY"),    find("SRCELEV"), find("SOUDEPTH"), find("SWATDEP"),
               find("SSTATIC"), find("SUPHOLE")};
    receiver_ = {find("RECLINE"),
                 find("RECPOINT"),
                 find("RECINDEX"),
                 find("RECX"),
                 find("RECY"),
                 find("RECELEV"),
                 -1,
                 find("RWATDEP"),
                 find("RSTATIC"),
                 find("RUPHOLE")};
    midpoint_ = {find("INLINE"),
                 find("CDPN"),
                 find("XLINE"),
                 find("CDPX"),
                 find("CDPY"),
                 -1,
                 -1,
                 -1,
                 -1,
                 -1};
    bin_ = {find("INLINE"),
            find("CDPN"),
            find("XLINE"),
            find("BINX"),
            find("BINY"),
            -1,
            -1,
            -1,
            -1,
            -1};
    words_ = {find("FFID"),     find(channel),   find(streamer_header_.c_str()),
              find("TIME"),     find("DTIME"),   find("HTIME"),
              find("MTIME"),    find("STIME"),   find("COORSCAL"),
              find("ELEVSCAL"), find("COORUNIT")};

    // What is written without is not worth a file; the rest is 0 where it is not defined.
    const auto choice = static_cast<PointChoice>(points_);
    const bool columns = type_ == kColumns;
    const bool both = !columns || choice == PointChoice::kSourcesAndReceivers;
    const bool centres = columns && choice == PointChoice::kMidpoints;
    const bool sources = both || choice == PointChoice::kSources;
    const bool receivers = both || choice == PointChoice::kReceivers;
    const bool streamers = type_ == kP190 && streamer_header_ != "NONE";
    const struct {
        bool needed;
        const char* name;
        int word;
    } needs[] = {{type_ == kSps, "FFID", words_[kFfid]},
                 {!columns, channel, words_[kChannel]},
                 {streamers, streamer_header_.c_str(), words_[kStreamer]},
                 {sources, point, source_.point},
                 {sources || centres, "SRCX", source_.x},
                 {sources || centres, "SRCY", source_.y},
                 {receivers && type_ != kP190, "RECPOINT", receiver_.point},
                 {receivers || centres, "RECX", receiver_.x},
                 {receivers || centres, "RECY", receiver_.y},
                 {columns && choice >= PointChoice::kMidpoints, "CDPN", bin_.point},
                 {columns && choice == PointChoice::kBins, "BINX", bin_.x},
                 {columns && choice == PointChoice::kBins, "BINY", bin_.y}};
    for (const auto& [needed, name, word] : needs) {
        if (needed && word < 0 && RequireHeaderWord(*this, header, name) < 0) return false;
    }
    return true;
}

bool WriteCoordinates::FindFiles() {
    if (!CheckOutputPath(file_, true)) return false;  // whether one was chosen
    std::string base = file_;
    for (const std::string_view extension : writer_->extensions()) {
        if (!ends_with(base, extension)) continue;
        base.resize(base.size() - extension.size());
        break;
    }
    for (const char* extension : writer_->extensions()) {
        const std::string& path = paths_.emplace_back(base + extension);
        const auto fail = [&](const Fault& fault) {
            Error("Cannot open file to write: %s\n", path.c_str());
            Error("%s.\n", fault.reason().c_str());
            return false;
        };
        if (!CheckOutputPath(path, false)) return false;
        std::error_code unknown;
        const std::filesystem::path whole = std::filesystem::absolute(path, unknown);
        if (IsRehearsal() && !std::filesystem::is_directory(whole.parent_path(), unknown)) {
            return fail(Fault("its directory does not exist"));
        }
        if (IsRehearsal()) continue;
        FileLock& lock = locks_.emplace_back();
        if (std::filesystem::exists(path, unknown)) {
            Result<FileLock> taken = FileLock::take(path, FileLock::Missing::kFault);
            if (!taken) return fail(taken.fault());
            lock = std::move(*taken);
        }
        // Now rather than after all traces: whether there is room for a file.
        if (const auto trial = ReplacedFile::begin(path); !trial) return fail(trial.fault());
    }
    return true;
}

void WriteCoordinates::PrepareRun(LineHeader& line, TraceHeaderDefinition& header, TraceSamples&,
                                  int) {
    if (!CheckChoices()) return TerminateJob(kJobError);
    switch (type_) {
        case kSps:
            writer_ = make_sps_writer();
            break;
        case kP190:
            writer_ = make_p1_writer();
            break;
        default:
            writer_ = make_column_writer(static_cast<PointChoice>(points_));
    }
    paths_.clear();
    locks_.clear();
    traces_ = rescaled_ = geographical_ = 0;
    const std::span<const std::byte, kLineHeaderBytes> bytes = line.bytes();
    feet_ = get_i16(bytes.subspan<3254, 2>()) == kFeet;
    if (!FindWords(header)) return;
    if (!FindFiles()) return TerminateJob(kJobError);
}

SurveyPoint WriteCoordinates::Point(const TraceHeaderDefinition& header,
                                    const PointWords& words) const {
    const auto number = [&](int word) { return header.get_int(word); };
    const auto height = [&](int word) {
        return true_value(header.get_double(word), elevation_unit_);
    };
    return {.line = number(words.line),
            .point = number(words.point),
            .index = number(words.index),
            .x = true_value(header.get_double(words.x), coordinate_unit_),
            .y = true_value(header.get_double(words.y), coordinate_unit_),
            .elevation = height(words.elevation),
            .depth = height(words.depth),
            .water_depth = height(words.water_depth),
            .static_ms = number(words.static_ms),
            .uphole_ms = number(words.uphole_ms)};
}

void WriteCoordinates::AddTime(const TraceHeaderDefinition& header, SurveyPoint& source) const {
    constexpr int kDayUnit = 1'000'000;
    if (const int time = header.get_int(words_[kTime]); time != 0 || type_ == kSps) {
        // What Merge SPS brings back is TIME alone.
        source.day = time / kDayUnit;
        source.time = time % kDayUnit;
    } else {
        source.day = header.get_int(words_[kDay]);
        source.time =
            (header.get_int(words_[kHour]) * 100 + header.get_int(words_[kMinute])) * 100 +
            header.get_int(words_[kSecond]);
    }
}

bool WriteCoordinates::ComesBack(const TraceGeometry& trace) const {
    bool scaled = coordinate_unit_ != 1;
    for (const SurveyPoint* point : {&trace.source, &trace.receiver}) {
        for (const double value : {point->x, point->y}) scaled |= value != std::round(value);
        for (const double value : {point->elevation, point->depth, point->water_depth}) {
            scaled |= elevation_unit_ != 1 && value != 0;
        }
    }
    return !scaled;
}

int WriteCoordinates::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    if (IsRepeating()) return kPassOn;
    coordinate_unit_ = unit_of(header.get_int(words_[kCoorScal]));
    elevation_unit_ = unit_of(header.get_int(words_[kElevScal]));
    const int streamer = words_[kStreamer] >= 0 ? header.get_int(words_[kStreamer]) : 1;
    TraceGeometry trace{.source = Point(header, source_),
                        .receiver = Point(header, receiver_),
                        .midpoint = Point(header, midpoint_),
                        .bin = Point(header, bin_),
                        .ffid = header.get_int(words_[kFfid]),
                        .channel = header.get_int(words_[kChannel]),
                        .streamer = streamer,
                        .arc_seconds = header.get_int(words_[kCoorUnit]) == kArcSeconds};
    AddTime(header, trace.source);
    if (trace.midpoint.x == 0 && trace.midpoint.y == 0) {
        trace.midpoint.x = (trace.source.x + trace.receiver.x) / 2;
        trace.midpoint.y = (trace.source.y + trace.receiver.y) / 2;
    }
    if (const std::string refused = writer_->add(trace); !refused.empty()) {
        Error("%s", refused.c_str());
        TerminateJob(kJobError);
        return kKeepBack;
    }
    ++traces_;
    geographical_ += type_ == kP190 && trace.arc_seconds;
    if (type_ == kSps && !ComesBack(trace)) ++rescaled_;
    return kPassOn;
}

bool WriteCoordinates::WriteFiles() {
    if (const std::string refused = writer_->finish(); !refused.empty()) {
        Error("%s", refused.c_str());
        return false;
    }
    const CoordinateHeading heading{.survey = survey_, .date = date_, .feet = feet_};
    const auto fail = [this](const std::string& path, const Fault& fault) {
        Error("Cannot finish writing to file: %s\n", path.c_str());
        Error("%s.\n", fault.reason().c_str());
        return false;
    };
    // All are whole before the first takes its place.
    std::vector<ReplacedFile> files;
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        Result<ReplacedFile> file = ReplacedFile::begin(paths_[i]);
        if (!file) return fail(paths_[i], file.fault());
        files.push_back(std::move(*file));
        BlockWriter out;
        if (const Fault fault = out.open(files[i].beside(), BlockWriter::Mode::kCreate)) {
            return fail(paths_[i], fault);
        }
        writer_->write(i, heading, [&out](std::string_view text) {
            static_cast<void>(out.write(std::as_bytes(std::span(text))));  // finish() tells
        });
        if (const Fault fault = out.finish()) return fail(paths_[i], fault);
    }
    for (std::size_t i = 0; i < paths_.size(); ++i) {
        if (const Fault fault = files[i].commit(Reach::kDisk, &locks_[i])) {
            return fail(paths_[i], fault);
        }
    }
    return true;
}

void WriteCoordinates::EndRun() {
    if (!writer_ || IsRehearsal()) return;
    if (traces_ == 0) {
        Warning("No trace came: nothing was written to '%s'.\n", paths_[0].c_str());
    } else if (!WriteFiles()) {
        return TerminateJob(kJobError);
    } else {
        for (const std::string& path : paths_) Message("Wrote '%s'.\n", path.c_str());
        Message("%s of %lld traces.\n", writer_->contents().c_str(),
                static_cast<long long>(traces_));
        const auto warn = [this](std::int64_t count, const char* text) {
            if (count > 0) Warning("%lld %s\n", static_cast<long long>(count), text);
        };
        warn(writer_->misfits(), "values did not fit their columns, which were left blank.");
        warn(writer_->moved(),
             "points came with several positions under one number: the first was written.");
        warn(geographical_,
             "traces have geographical coordinates, which P1/90 receiver groups cannot have: only "
             "their sources were written.");
        warn(
            rescaled_,
            "traces have scalars other than 0 and 1, or coordinates that are not whole: Merge SPS, "
            "which sets no scalar, will not bring their headers back.");
    }
    writer_.reset();
    locks_.clear();
}

}  // namespace halvern
