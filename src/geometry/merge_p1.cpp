#include "geometry/merge_p1.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <tuple>

#include "flow/item_checks.h"

namespace halvern {

namespace {

/// The header words, in the order in which they are looked up.
enum Word : std::size_t {
    kPoint,
    kLine,
    kChannel,
    kStreamer,
    kMidpoint,
    kTime,
    kDay,
    kHour,
    kMinute,
    kSecond,
    kElevScal,
    kSrcX,
    kSrcY,
    kRecX,
    kRecY,
    kMidX,
    kMidY,
    kSWatDep,
    kRecElev,
    kCoorScal,
    kCoorUnit,
    kWords
};

/// Words that hold coordinates, and so share the scalar.
constexpr const char* kCoordinates[] = {"SRCX", "SRCY", "RECX",    "RECY",    "CDPX",    "CDPY",
                                        "BINX", "BINY", "NEWSRCX", "NEWSRCY", "NEWRECX", "NEWRECY"};

enum GroupCount { kFit = 0, kByNumber = 1, kCountedThrough = 2 };
enum Midpoints { kNoMidpoints = 0, kCommonMidpoints = 1, kBinCentres = 2 };
enum TimeCheck { kNoCheck = 0, kTimeWord = 1, kTimeWords = 2 };

/// What is looked for in vain.
enum Missing : std::size_t { kNoSource, kOtherTime, kNoReceiver, kNoMidpoint };

constexpr int kLengths = 1;  // COORUNIT
constexpr int kArcSeconds = 2;
constexpr double kSecondsPerDay = 86400;

double second_of_day(int hour, int minute, int second) {
    return (hour * 60.0 + minute) * 60 + second;
}

auto number_of(const P1Position& position, bool by_line) {
    return std::tuple(position.point, by_line ? position.line : 0);
}

}  // namespace

P1Index::P1Index(std::span<const P1Position> positions, bool by_line)
    : positions_(positions), by_line_(by_line), order_(positions.size()) {
    std::iota(order_.begin(), order_.end(), 0u);
    const auto number = [this](std::uint32_t place) {
        return number_of(positions_[place], by_line_);
    };
    if (!std::ranges::is_sorted(order_, {}, number)) std::ranges::stable_sort(order_, {}, number);
    const auto same = [&](std::uint32_t a, std::uint32_t b) { return number(a) == number(b); };
    order_.erase(std::unique(order_.begin(), order_.end(), same), order_.end());
    hidden_ = std::ssize(positions) - std::ssize(order_);
}

const P1Position* P1Index::find(int line, int point) {
    const std::tuple wanted(point, by_line_ ? line : 0);
    const auto number = [this](std::uint32_t place) {
        return number_of(positions_[place], by_line_);
    };
    for (const std::size_t guess : {last_, last_ + 1}) {
        if (guess < order_.size() && number(order_[guess]) == wanted) {
            last_ = guess;
            return &positions_[order_[guess]];
        }
    }
    const auto found = std::ranges::lower_bound(order_, wanted, {}, number);
    if (found == order_.end() || number(*found) != wanted) return nullptr;
    last_ = static_cast<std::size_t>(found - order_.begin());
    return &positions_[*found];
}

MergeP1::MergeP1(const FlowSection& section, LogFlag log)
    : MergeFlowItem(FlowItemKind::kMergeP1, log) {
    Configure(section);
}

ParameterList MergeP1::Parameters() {
    const auto checks_time = [this] { return time_check_ != kNoCheck; };
    return {
        FileParameter("FILE", path_, "P1 File = %s\n", "P1 File", "P1/90 or P1/84 File Name.",
                      "Choose the file with the positions of sources and receiver groups."),
        {.key = "POINTHEADER",
         .format = "%s",
         .value = Bound{&point_header_, "SOUPOINT"},
         .log = "Point Number Header = %s\n",
         .field = {.label = "Point Header",
                   .prompt = "Header word of the point number?",
                   .help = "It leads to the source record of that point number.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "LINEHEADER",
         .format = "%s",
         .value = Bound{&line_header_, "NONE"},
         .log = "Line Number Header = %s\n",
         .field = {.label = "Line Header",
                   .prompt = "Header word of the line number?",
                   .help = "Where the file has several lines with the same point numbers: the\n"
                           "word that holds the first number in the file's line name.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "CHANHEADER",
         .format = "%s",
         .value = Bound{&channel_header_, "CHAN"},
         .log = "Channel Header = %s\n",
         .field = {.label = "Channel Header",
                   .prompt = "Header word of the channel number?",
                   .help = "It leads to one of the source's receiver groups.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "STREAMERHEADER",
         .format = "%s",
         .value = Bound{&streamer_header_, "NONE"},
         .log = "Streamer Header = %s\n",
         .field = {.label = "Streamer Header",
                   .prompt = "Header word of the streamer number?",
                   .help = "NONE: the channel alone leads to the group.",
                   .kind = FieldKind::kHeaderWord}},
        {.key = "GROUPS",
         .format = "%d",
         .value = Bound{&group_count_, static_cast<int>(kFit)},
         .log = "Channels Are = %s\n",
         .field = {.label = "Groups",
                   .prompt = "What is a channel number?",
                   .help = "Where the streamers' groups begin at 1 again, channels usually count\n"
                           "the groups of one streamer after the other.",
                   .choices = {{"As the file's groups are", kFit},
                               {"Group numbers", kByNumber},
                               {"Counted through all streamers", kCountedThrough}}}},
        {.key = "REVERSE",
         .format = "%d",
         .value = Bound{&backwards_, 0},
         .log = "Channels Run = %s\n",
         .field = {.label = "Reverse",
                   .prompt = "Which way do the channels of a streamer run?",
                   .help = "Compare the offsets after the merge with those expected.",
                   .choices = {{"With the groups", 0}, {"Against the groups", 1}}}},
        {.key = "COORDINATES",
         .format = "%d",
         .value = Bound{&geographical_, 0},
         .log = "Coordinates = %s\n",
         .field = {.label = "Coordinates",
                   .prompt = "Grid or geographical coordinates?",
                   .help = "Geographical coordinates are written in arc seconds, of sources only.",
                   .choices = {{"Grid", 0}, {"Geographical", 1}}}},
        {.key = "COORSCAL",
         .format = "%d",
         .value = Bound{&scalar_, 0},
         .log = "Coordinate Scalar = %d\n",
         .field = {.label = "Scalar",
                   .prompt = "Coordinate scalar to write (0: fit)?",
                   .help = "0 takes 1 where all coordinates of the file are whole, else -10.\n"
                           "A negative scalar divides what the header holds."}},
        {.key = "WATERDEPTH",
         .format = "%d",
         .value = Bound{&water_depth_, 1},
         .log = "Water Depth = %s\n",
         .field = {.label = "Water Depth",
                   .prompt = "Write the water depth at the source?",
                   .choices = {{"NO", 0}, {"YES", 1}}}},
        {.key = "CABLEDEPTH",
         .format = "%d",
         .value = Bound{&cable_depth_, 0},
         .log = "Cable Depth = %s\n",
         .field = {.label = "Cable Depth",
                   .prompt = "Write the depth of the receiver group?",
                   .help = "As a negative receiver elevation.",
                   .choices = {{"NO", 0}, {"YES", 1}}}},
        {.key = "MIDPOINTS",
         .format = "%d",
         .value = Bound{&midpoints_, static_cast<int>(kNoMidpoints)},
         .log = "Mid-Points = %s\n",
         .field = {.label = "Mid-Points",
                   .prompt = "Write mid-points or bin centres?",
                   .choices = {{"None", kNoMidpoints},
                               {"Common mid-points into CDPX, CDPY", kCommonMidpoints},
                               {"Bin centres into BINX, BINY", kBinCentres}}}},
        {.key = "MIDPOINTHEADER",
         .format = "%s",
         .value = Bound{&midpoint_header_, "CDPN"},
         .field = {.label = "Mid-Point Header",
                   .prompt = "Header word of the mid-point's or bin's number?",
                   .kind = FieldKind::kHeaderWord,
                   .applies = [this] { return midpoints_ != kNoMidpoints; }}},
        {.key = "TIMECHECK",
         .format = "%d",
         .value = Bound{&time_check_, static_cast<int>(kNoCheck)},
         .log = "Time Check = %s\n",
         .field = {.label = "Time Check",
                   .prompt = "Compare the file's time with the trace's?",
                   .choices = {{"No", kNoCheck},
                               {"With TIME", kTimeWord},
                               {"With DTIME, HTIME, MTIME, STIME", kTimeWords}}}},
        {.key = "TOLERANCE",
         .format = "%f",
         .value = Bound{&tolerance_s_, 5.0},
         .field = {.label = "Tolerance",
                   .prompt = "Largest difference of the times (in seconds)?",
                   .applies = checks_time}},
        {.key = "TIMESHIFT",
         .format = "%f",
         .value = Bound{&time_shift_s_, 0.0},
         .field = {.label = "Time Shift",
                   .prompt = "What to add to the file's times (in seconds)?",
                   .help = "Where the file has another clock than the recording.",
                   .applies = checks_time}},
        KillParameter("A trace for which the P1 file has no position is either dropped or\n"
                      "passed on with its header as it is."),
    };
}

bool MergeP1::ReadFile() {
    std::error_code failed;
    if (!std::filesystem::exists(path_, failed)) {
        Error("P1 file '%s' does not exist.\n", path_.c_str());
        return false;
    }
    StopWithJob progress;
    Result<P1File> file = P1File::read(path_, *this, &progress);
    if (!file) {
        Error("Cannot read P1 file '%s'.\n", path_.c_str());
        Error("%s.\n", file.fault().reason().c_str());
        return false;
    }
    file_ = std::move(*file);
    Message("P1/%s: %lld sources, %lld receiver groups, %lld mid-points, %lld bin centres.\n",
            file_->is_1984() ? "84" : "90", static_cast<long long>(file_->sources().size()),
            static_cast<long long>(file_->groups()),
            static_cast<long long>(file_->midpoints().size()),
            static_cast<long long>(file_->bins().size()));
    constexpr std::pair<const char*, const char*> kHeaders[] = {{"H0100", "Survey Area"},
                                                                {"H0200", "Survey Date"},
                                                                {"H1400", "Geodetic Datum"},
                                                                {"H1800", "Projection"},
                                                                {"H2000", "Grid Unit"}};
    for (const auto& [code, label] : kHeaders) {
        const std::string data = file_->header(code);
        if (!data.empty()) Message("%s = %s\n", label, data.c_str());
    }
    return true;
}

bool MergeP1::FindWords(const TraceHeaderDefinition& header) {
    const bool bins = midpoints_ == kBinCentres;
    const auto if_used = [](bool used, const char* name) { return used ? name : "NONE"; };
    const bool centres = midpoints_ != kNoMidpoints;
    const bool clock = time_check_ == kTimeWords;
    const bool depths = water_depth_ != 0 || (receivers_ && cable_depth_ != 0);
    const char* const names[kWords] = {
        point_header_.c_str(),
        line_header_.c_str(),
        if_used(receivers_, channel_header_.c_str()),
        if_used(receivers_, streamer_header_.c_str()),
        if_used(centres, midpoint_header_.c_str()),
        if_used(time_check_ == kTimeWord, "TIME"),
        if_used(clock, "DTIME"),
        if_used(clock, "HTIME"),
        if_used(clock, "MTIME"),
        if_used(clock, "STIME"),
        if_used(depths, "ELEVSCAL"),
        "SRCX",
        "SRCY",
        if_used(receivers_, "RECX"),
        if_used(receivers_, "RECY"),
        if_used(centres, bins ? "BINX" : "CDPX"),
        if_used(centres, bins ? "BINY" : "CDPY"),
        if_used(water_depth_ != 0, "SWATDEP"),
        if_used(receivers_ && cable_depth_ != 0, "RECELEV"),
        "COORSCAL",
        "COORUNIT",
    };
    const auto list = [&](std::size_t first, std::size_t end) {
        for (std::size_t i = first; i < end; ++i) {
            if (std::string_view(names[i]) != "NONE") Message("  %s\n", names[i]);
        }
    };
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    list(0, kSrcX);
    Message(
        "\nThe following SEG-Y trace headers are used on OUTPUT and will reflect the P1 values "
        "after the merge:\n");
    list(kSrcX, kWords);
    for (std::size_t i = 0; i < kWords; ++i) {
        const bool needed = i == kPoint || (i == kChannel && receivers_);
        words_[i] = -1;
        if (!needed && std::string_view(names[i]) == "NONE") continue;
        words_[i] = RequireHeaderWord(*this, header, names[i]);
        if (words_[i] < 0) return false;
    }
    beside_.clear();
    for (const char* name : kCoordinates) {
        const int word = header.find(name);
        if (word >= 0 && std::ranges::find(words_, word) == words_.end()) beside_.push_back(word);
    }
    return true;
}

bool MergeP1::ChooseScalar() {
    const bool geographical = geographical_ != 0;
    written_scalar_ = scalar_;
    if (scalar_ == 0) {
        written_scalar_ = file_->coordinates_are_multiples(1, geographical) ? 1 : -10;
    }
    if (std::abs(std::int64_t{written_scalar_}) > 32767) {
        Error("The coordinate scalar must be within 16 bits.  You have entered '%d'.\n", scalar_);
        return false;
    }
    const double unit = written_scalar_ > 0 ? written_scalar_ : -1.0 / written_scalar_;
    factor_ = 1 / unit;
    Message("Coordinate Scalar Written = %d\n", written_scalar_);
    if (!file_->coordinates_are_multiples(unit, geographical)) {
        Warning("The scalar %d is too coarse for the file: coordinates are rounded to %g %s.\n",
                written_scalar_, unit, geographical ? "arc seconds" : "units of length");
    }
    return true;
}

void MergeP1::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    const auto within = [this](const char* key, int value, int most) {
        if (value >= 0 && value <= most) return true;
        Error("%s must be 0 to %d.  You have entered '%d'.\n", key, most, value);
        return false;
    };
    if (!within("GROUPS", group_count_, kCountedThrough) || !within("REVERSE", backwards_, 1) ||
        !within("COORDINATES", geographical_, 1) || !within("MIDPOINTS", midpoints_, kBinCentres) ||
        !within("TIMECHECK", time_check_, kTimeWords)) {
        return TerminateJob(kJobError);
    }
    if (!(tolerance_s_ >= 0) || !std::isfinite(time_shift_s_)) {
        Error("The time tolerance must not be negative.  You have entered '%f'.\n", tolerance_s_);
        return TerminateJob(kJobError);
    }
    if (!ReadFile()) return TerminateJob(kJobError);
    receivers_ = file_->groups() > 0 && geographical_ == 0;
    if (!receivers_) {
        Warning("%s: only sources are written.\n",
                geographical_ != 0 ? "Receiver groups have no geographical coordinates"
                                   : "The file has no receiver groups");
    }
    if (!FindWords(header)) return;
    if (!ChooseScalar()) return TerminateJob(kJobError);
    const bool by_line = words_[kLine] >= 0;
    const auto centres = midpoints_ == kBinCentres ? file_->bins() : file_->midpoints();
    if (midpoints_ != kNoMidpoints && centres.empty()) {
        Error("P1 file '%s' has no %s.\n", path_.c_str(),
              midpoints_ == kBinCentres ? "bin centres" : "mid-points");
        return TerminateJob(kJobError);
    }
    sources_ = P1Index(file_->sources(), by_line);
    centres_ = P1Index(centres, by_line);
    if (const std::int64_t hidden = sources_.hidden(); hidden > 0) {
        Warning("%lld sources have the number of one before them in the file, which is used.%s\n",
                static_cast<long long>(hidden),
                by_line ? "" : "  LINEHEADER would tell lines apart.");
    }
    const bool counted = group_count_ == kCountedThrough ||
                         (group_count_ == kFit && file_->groups_restart() && words_[kStreamer] < 0);
    count_ = counted ? P1Count::kThrough : P1Count::kNumber;
    if (receivers_) {
        Message("Channels are %s.\n",
                counted ? "counted through the groups of a source" : "group numbers");
    }
    miss_words_ = {
        {{"source", "Did not find the following SOURCE coordinates:\n", by_line},
         {"time", "The times of the following points are not those of the file:\n", by_line},
         {"receiver", "Did not find the following RECEIVER coordinates:\n", true},
         {"mid-point", "Did not find the following MID-POINT coordinates:\n", false}}};
    ClearMisses(miss_words_);
    misfits_ = rescaled_ = unchecked_ = 0;
}

bool MergeP1::TimeFits(const TraceHeaderDefinition& header, const P1Position& source) {
    const auto word = [&](Word index) { return header.get_int(words_[index]); };
    const int time = time_check_ == kTimeWord ? word(kTime) : 0;
    const int day = time_check_ == kTimeWord ? time / 1000000 : word(kDay);
    const double second = time_check_ == kTimeWord
                              ? second_of_day(time / 10000 % 100, time / 100 % 100, time % 100)
                              : second_of_day(word(kHour), word(kMinute), word(kSecond));
    if (day == 0 || source.day == 0) {
        if (!IsRepeating()) ++unchecked_;
        return true;
    }
    const double apart =
        std::fabs((source.day - day) * kSecondsPerDay + source.second + time_shift_s_ - second);
    // The day begins again at new year, after 365 or 366 days.
    return std::min({apart, std::fabs(apart - 365 * kSecondsPerDay),
                     std::fabs(apart - 366 * kSecondsPerDay)}) <= tolerance_s_;
}

void MergeP1::WriteWords(TraceHeaderDefinition& header, const P1Position& source,
                         const P1Group* group, const P1Position* midpoint) {
    std::int64_t misfits = 0;
    const auto store = [&](Word word, double value) {
        if (!header.store(words_[word], value)) ++misfits;
    };
    const auto store_position = [&](Word x, Word y, const P1Position& position) {
        store(x, factor_ * (geographical_ ? position.longitude_s : position.easting));
        store(y, factor_ * (geographical_ ? position.latitude_s : position.northing));
    };
    const int old_scalar = header.get_int(words_[kCoorScal]);
    const auto kept = [&](int word) { return header.get_double(word) != 0; };
    const bool rescales =
        (old_scalar == 0 ? 1 : old_scalar) != written_scalar_ && std::ranges::any_of(beside_, kept);
    store_position(kSrcX, kSrcY, source);
    if (group) {
        store(kRecX, factor_ * group->easting());
        store(kRecY, factor_ * group->northing());
    }
    if (midpoint) store_position(kMidX, kMidY, *midpoint);
    store(kCoorScal, written_scalar_);
    store(kCoorUnit, geographical_ ? kArcSeconds : kLengths);

    const int elevation_scalar = words_[kElevScal] >= 0 ? header.get_int(words_[kElevScal]) : 1;
    const double depths = elevation_scalar > 0   ? 1.0 / elevation_scalar
                          : elevation_scalar < 0 ? -1.0 * elevation_scalar
                                                 : 1;
    if (water_depth_ != 0 && !std::isnan(source.water_depth)) {
        store(kSWatDep, depths * source.water_depth);
    }
    if (cable_depth_ != 0 && group && !std::isnan(group->depth)) {
        store(kRecElev, -depths * group->depth);
    }
    if (IsRepeating()) return;
    misfits_ += misfits;
    rescaled_ += rescales;
}

int MergeP1::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    const int point = header.get_int(words_[kPoint]);
    const int line = header.get_int(words_[kLine]);
    const MissList::Entry number =
        words_[kLine] >= 0 ? MissList::Entry{line, point} : MissList::Entry{point, 0};
    const auto placed = [this](const P1Position& position) {
        return !std::isnan(geographical_ ? position.longitude_s + position.latitude_s
                                         : position.easting + position.northing);
    };
    const P1Position* source = sources_.find(line, point);
    if (!source || !placed(*source)) return Miss(kNoSource, number);
    if (time_check_ != kNoCheck && !TimeFits(header, *source)) return Miss(kOtherTime, number);
    const P1Group* group = nullptr;
    if (receivers_) {
        const int channel = header.get_int(words_[kChannel]);
        std::optional<int> streamer;
        if (words_[kStreamer] >= 0) streamer = header.get_int(words_[kStreamer]);
        group = file_->find_group(*source, streamer, channel, count_, backwards_ != 0);
        if (!group) return Miss(kNoReceiver, {point, channel});
    }
    const P1Position* midpoint = nullptr;
    if (midpoints_ != kNoMidpoints) {
        const int centre = header.get_int(words_[kMidpoint]);
        midpoint = centres_.find(line, centre);
        if (!midpoint || !placed(*midpoint)) return Miss(kNoMidpoint, {centre, 0});
    }
    WriteWords(header, *source, group, midpoint);
    return kPassOn;
}

void MergeP1::EndRun() {
    ListMisses();
    const auto warn = [this](std::int64_t& count, const char* text) {
        if (count > 0) Warning("%lld %s\n", static_cast<long long>(count), text);
        count = 0;
    };
    warn(misfits_, "values did not fit their header words, which stay as they were.");
    warn(rescaled_,
         "traces have another coordinate, not from the P1 file, beside the new scalar: it now "
         "means another position.");
    warn(unchecked_, "traces were not checked, because they or the file have no time.");
    sources_ = centres_ = {};
    file_.reset();
}

}  // namespace halvern
