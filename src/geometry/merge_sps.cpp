#include "geometry/merge_sps.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "foundation/prospect.h"

namespace halvern {

namespace {

enum Word : std::size_t {
    kFfid,
    kChan,
    kSrcX,
    kSrcY,
    kSrcElev,
    kSouDepth,
    kSWatDep,
    kSStatic,
    kSUphole,
    kRecX,
    kRecY,
    kRecElev,
    kRWatDep,
    kRStatic,
    kRUphole,
    kTime,
    kOffset,
    kAzimuth,
    kSouLine,
    kSouPoint,
    kSouIndex,
    kRecLine,
    kRecPoint,
    kRecIndex
};
/// RECGROUP is listed although it stays as it is.
constexpr HeaderWordRow kWords[] = {
    {HeaderWordRow::kInput, kFfid, "FFID", "Field File ID"},
    {HeaderWordRow::kInput, kChan, "CHAN", "Channel number"},
    {HeaderWordRow::kOutput, kSrcX, "SRCX", "Source x coordinate"},
    {HeaderWordRow::kOutput, kSrcY, "SRCY", "Source y coordinate"},
    {HeaderWordRow::kOutput, kSrcElev, "SRCELEV", "Source elevation"},
    {HeaderWordRow::kOutput, kSouDepth, "SOUDEPTH", "Source depth"},
    {HeaderWordRow::kOutput, kSWatDep, "SWATDEP", "Source water depth"},
    {HeaderWordRow::kOutput, kSouLine, "SOULINE", "Source line number"},
    {HeaderWordRow::kOutput, kSouPoint, "SOUPOINT", "Source point number"},
    {HeaderWordRow::kOutput, kSouIndex, "SOUINDEX", "Source index number"},
    {HeaderWordRow::kOutput, kSUphole, "SUPHOLE", "Source uphole time"},
    {HeaderWordRow::kOutput, kSStatic, "SSTATIC", "Source static correction"},
    {HeaderWordRow::kOutput, kRecX, "RECX", "Receiver x coordinate"},
    {HeaderWordRow::kOutput, kRecY, "RECY", "Receiver y coordinate"},
    {HeaderWordRow::kOutput, kRecElev, "RECELEV", "Receiver elevation"},
    {HeaderWordRow::kOutput, HeaderWordRow::kOnlyListed, "RECGROUP", "Receiver group number"},
    {HeaderWordRow::kOutput, kRWatDep, "RWATDEP", "Receiver water depth"},
    {HeaderWordRow::kOutput, kRecLine, "RECLINE", "Receiver line number"},
    {HeaderWordRow::kOutput, kRecPoint, "RECPOINT", "Receiver point number"},
    {HeaderWordRow::kOutput, kRecIndex, "RECINDEX", "Receiver index number"},
    {HeaderWordRow::kOutput, kRUphole, "RUPHOLE", "Receiver uphole time"},
    {HeaderWordRow::kOutput, kRStatic, "RSTATIC", "Receiver static correction"},
    {HeaderWordRow::kOutput, kTime, "TIME",
     "Source time day*1000000 + hour*10000 + minute*100 + second"},
    {HeaderWordRow::kOutput, kOffset, "OFFSET", "Source to Receiver Offset"},
    {HeaderWordRow::kOutput, kAzimuth, "AZIMUTH", "Source to Receiver Azimuth"},
};

/// Words about each sort of miss, in the order of Miss.
constexpr struct {
    const char* sort;
    const char* heading;
    bool pairs;
} kMissTexts[] = {
    {"ffid", "Did not find the following FFID numbers:\n", false},
    {"relation",
     "Did not find a relation record (in the .x file) for the following FFID/CHAN pairs:\n", true},
    {"source", "Did not find the following SOURCE coordinates:\n", true},
    {"receiver", "Did not find the following RECEIVER coordinates:\n", true},
};

constexpr double kAzimuthFactor = 0.017453293;

std::string default_path() {
    return CurrentProspect().is_open() ? CurrentProspect().path("nav", "NONE") : "NONE";
}

/// Stops reading when the job is asked to stop; says nothing.
class StopWithJob final : public Progress {
public:
    void Start(const char*) override {}
    bool Update(int) override { return !JobStopRequested(); }
    void Finish() override {}
};

}  // namespace

void MissList::clear() {
    entries_.clear();
    entries_.reserve(kRoom);
    overflowed_ = false;
}

bool MissList::add(Entry entry) {
    const auto place = std::lower_bound(entries_.begin(), entries_.end(), entry);
    if (place != entries_.end() && *place == entry) return false;
    if (entries_.size() < kRoom) {
        entries_.insert(place, entry);
        return false;
    }
    const bool first = !overflowed_;
    overflowed_ = true;
    return first;
}

MergeSps::MergeSps(const FlowSection& section, LogFlag log)
    : ProcessFlowItem(FlowItemKind::kMergeSps, log), words_(kWords) {
    Configure(section);
}

ParameterList MergeSps::Parameters() {
    const std::string file = default_path();
    return {
        {.key = "SOURCEFILE",
         .format = "%s",
         .value = Bound{&source_file_, file},
         .log = "Source(.s) File   = %s\n",
         .field = {.label = "Source File",
                   .prompt = "SPS Source(.s) File Name.",
                   .help = "Choose the SPS file with the source points.",
                   .kind = FieldKind::kInputFile}},
        {.key = "RECEIVERFILE",
         .format = "%s",
         .value = Bound{&receiver_file_, file},
         .log = "Receiver(.r) File = %s\n",
         .field = {.label = "Receiver File",
                   .prompt = "SPS Receiver(.r) File Name.",
                   .help = "Choose the SPS file with the receiver points.",
                   .kind = FieldKind::kInputFile}},
        {.key = "RELATIONFILE",
         .format = "%s",
         .value = Bound{&relation_file_, file},
         .log = "Relation(.x) File = %s\n",
         .field = {.label = "Relation File",
                   .prompt = "SPS Relation(.x) File Name.",
                   .help = "Choose the SPS file that relates field records to points.",
                   .kind = FieldKind::kInputFile}},
        {.key = "KILLBAD",
         .format = "%d",
         .value = Bound{&kill_bad_, 1},
         .field = {.label = "Kill",
                   .prompt = "Kill the un-merged traces from the file?",
                   .help = "A trace for which the SPS files have no source or receiver is\n"
                           "either dropped or passed on with its header as it is.",
                   .choices = {{"Save all traces", 0}, {"Kill un-merged traces", 1}}}},
    };
}

DialogTexts MergeSps::WindowTexts() const {
    return {.title = "SPS Merge Parameters",
            .help_title = "",
            .help_page = "",
            .already_up = "SPS Merge Interface is already up."};
}

void MergeSps::LogParameters() {
    ProcessFlowItem::LogParameters();
    Message("Traces which do not merge are %s\n", kill_bad_ != 0 ? "KILLED" : "SAVED");
}

bool MergeSps::ReadFiles() {
    const struct {
        const char* name;
        const std::string& path;
        int (SpsDataSet::*read)(const std::string& path, Progress* progress);
    } files[] = {{"source(.s)", source_file_, &SpsDataSet::read_sources},
                 {"receiver(.r)", receiver_file_, &SpsDataSet::read_receivers},
                 {"relation(.x)", relation_file_, &SpsDataSet::read_relations}};
    for (const auto& file : files) {
        std::error_code failed;
        if (std::filesystem::exists(file.path, failed)) continue;
        Error("SPS %s file '%s' does not exist.\n", file.name, file.path.c_str());
        return false;
    }
    StopWithJob progress;
    for (const auto& file : files) {
        if ((set_.*file.read)(file.path, &progress) == 0) continue;
        Error("Cannot read SPS %s file '%s'.\n", file.name, file.path.c_str());
        return false;
    }
    return true;
}

void MergeSps::PrepareRun(LineHeader&, TraceHeaderDefinition& header, TraceSamples&, int) {
    if (!ReadFiles()) return TerminateJob(kJobError);
    Message("The following SEG-Y trace headers are used on INPUT and are expected to be valid:\n");
    words_.list(*this, HeaderWordRow::kInput, 0);
    Message(
        "\nThe following SEG-Y trace headers are used on OUTPUT and will reflect the SPS values "
        "after the merge:\n");
    words_.list(*this, HeaderWordRow::kOutput, 0);
    if (!words_.find(*this, header)) return;
    scalar_.prepare(header);
    StopWithJob progress;
    if (set_.prepare(&progress) != 0) {
        Error("Unrecoverable error in SPS.  Cannot create matches.\n");
        return TerminateJob(kJobError);
    }
    for (MissList& list : misses_) list.clear();
}

void MergeSps::AddMiss(Miss kind, MissList::Entry entry) {
    if (!misses_[kind].add(entry)) return;
    Warning("%d %s numbering errors encountered.  No more will be printed.\n",
            static_cast<int>(MissList::kRoom), kMissTexts[kind].sort);
    ListMisses(kind);
}

void MergeSps::ListMisses(Miss kind) const {
    const auto& entries = misses_[kind].entries();
    if (entries.empty()) return;
    Warning("%s", kMissTexts[kind].heading);
    for (const auto& [first, second] : entries) {
        if (kMissTexts[kind].pairs) {
            Warning("%d/%d\n", first, second);
        } else {
            Warning("%d\n", first);
        }
    }
}

void MergeSps::WriteWords(TraceHeaderDefinition& header, const SpsPoint& source,
                          const SpsPoint& receiver) const {
    const auto set = [&](std::size_t word, double value) {
        header.set_double(words_[word], value);
    };
    set(kSrcX, source.easting);
    set(kSrcY, source.northing);
    set(kSrcElev, source.elevation);
    set(kSouDepth, source.depth);
    set(kSWatDep, source.water_depth);
    set(kSStatic, source.static_ms);
    set(kSUphole, source.uphole_ms);
    set(kSouLine, source.line);
    set(kSouPoint, source.point);
    set(kSouIndex, source.index);
    set(kTime, source.day * 1000000.0 + source.time);
    set(kRecX, receiver.easting);
    set(kRecY, receiver.northing);
    set(kRecElev, receiver.elevation);
    set(kRWatDep, receiver.water_depth);
    set(kRStatic, receiver.static_ms);
    set(kRUphole, receiver.uphole_ms);
    set(kRecLine, receiver.line);
    set(kRecPoint, receiver.point);
    set(kRecIndex, receiver.index);
    const double dx = receiver.easting - source.easting;
    const double dy = receiver.northing - source.northing;
    set(kOffset, std::sqrt(dx * dx + dy * dy));
    // The angle is multiplied by the radians of a degree, not by the degrees of a radian, so that
    // the azimuth is always near 90.
    double azimuth = 90 - std::atan2(dy, dx) * kAzimuthFactor;
    while (azimuth < 0) azimuth += 360;
    while (azimuth > 360) azimuth -= 360;
    set(kAzimuth, azimuth);
}

int MergeSps::ProcessTrace(LineHeader&, TraceHeaderDefinition& header, TraceSamples&) {
    scalar_.look(*this, header);
    const int ffid = header.get_int(words_[kFfid]);
    const int channel = header.get_int(words_[kChan]);
    const SpsMatch match = set_.find(ffid, channel);
    switch (match.status) {
        case SpsStatus::kNoFfid:
            AddMiss(kNoFfid, {ffid, 0});
            break;
        case SpsStatus::kNoRelation:
            AddMiss(kNoRelation, {ffid, channel});
            break;
        case SpsStatus::kNoSource:
            AddMiss(kNoSource, {match.relation->source_line, match.relation->source_point});
            break;
        case SpsStatus::kNoReceiver:
            AddMiss(kNoReceiver, {match.relation->receiver_line, match.receiver_point});
            break;
        case SpsStatus::kFound:
            WriteWords(header, *match.source, *match.receiver);
            return kPassOn;
    }
    return kill_bad_ == 0 ? kPassOn : kKeepBack;
}

void MergeSps::EndRun() {
    for (const Miss kind : {kNoFfid, kNoRelation, kNoSource, kNoReceiver}) ListMisses(kind);
    for (MissList& list : misses_) list = {};
    set_ = SpsDataSet(*this);
}

}  // namespace halvern
