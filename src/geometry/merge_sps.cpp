#include "geometry/merge_sps.h"

#include <cmath>
#include <filesystem>

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

/// What is looked for in vain.
enum Missing : std::size_t { kNoFfid, kNoRelation, kNoSource, kNoReceiver };
constexpr MissWords kMissWords[] = {
    {"ffid", "Did not find the following FFID numbers:\n", false},
    {"relation",
     "Did not find a relation record (in the .x file) for the following FFID/CHAN pairs:\n", true},
    {"source", "Did not find the following SOURCE coordinates:\n", true},
    {"receiver", "Did not find the following RECEIVER coordinates:\n", true},
};

constexpr double kAzimuthFactor = 0.017453293;

}  // namespace

MergeSps::MergeSps(const FlowSection& section, LogFlag log)
    : MergeFlowItem(FlowItemKind::kMergeSps, log), words_(kWords) {
    Configure(section);
}

ParameterList MergeSps::Parameters() {
    return {
        FileParameter("SOURCEFILE", source_file_, "Source(.s) File   = %s\n", "Source File",
                      "SPS Source(.s) File Name.", "Choose the SPS file with the source points."),
        FileParameter("RECEIVERFILE", receiver_file_, "Receiver(.r) File = %s\n", "Receiver File",
                      "SPS Receiver(.r) File Name.",
                      "Choose the SPS file with the receiver points."),
        FileParameter("RELATIONFILE", relation_file_, "Relation(.x) File = %s\n", "Relation File",
                      "SPS Relation(.x) File Name.",
                      "Choose the SPS file that relates field records to points."),
        KillParameter("A trace for which the SPS files have no source or receiver is\n"
                      "either dropped or passed on with its header as it is."),
    };
}

DialogTexts MergeSps::WindowTexts() const {
    return {.title = "SPS Merge Parameters",
            .help_title = "",
            .help_page = "",
            .already_up = "SPS Merge Interface is already up."};
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
    ClearMisses(kMissWords);
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
            return Miss(kNoFfid, {ffid, 0});
        case SpsStatus::kNoRelation:
            return Miss(kNoRelation, {ffid, channel});
        case SpsStatus::kNoSource:
            return Miss(kNoSource, {match.relation->source_line, match.relation->source_point});
        case SpsStatus::kNoReceiver:
            return Miss(kNoReceiver, {match.relation->receiver_line, match.receiver_point});
        case SpsStatus::kFound:
            WriteWords(header, *match.source, *match.receiver);
            break;
    }
    return kPassOn;
}

void MergeSps::EndRun() {
    ListMisses();
    set_ = SpsDataSet(*this);
}

}  // namespace halvern
