#include "synthetic/synthesize_files.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <deque>
#include <limits>
#include <span>

#include "geometry/p1_record.h"
#include "geometry/sps_record.h"
#include "platform/block_writer.h"
#include "platform/replace_file.h"
#include "synthetic/synthesize_trace.h"
#include "trace/big_endian.h"
#include "trace/codecs.h"
#include "trace/ebcdic.h"
#include "trace/header_definition.h"
#include "trace/line_header.h"

namespace halvern::synthetic {

namespace {

/// A file that is written beside the one that it will replace. The first fault is kept.
class Output {
public:
    explicit Output(const std::string& path) : path_(path), file_(ReplacedFile::begin(path)) {
        fault_ = file_ ? writer_.open(file_->beside(), BlockWriter::Mode::kCreate) : file_.fault();
    }

    bool write(std::span<const std::byte> bytes) {
        return !fault_ && writer_.write(bytes) == bytes.size();
    }
    /// Writes `text` and empties it.
    void write(std::string& text) {
        static_cast<void>(write(std::as_bytes(std::span(text))));
        text.clear();
    }
    /// Whether all of it is with the system.
    Fault close() {
        if (!fault_) fault_ = writer_.finish();
        return said();
    }
    /// Puts the closed file in its place.
    Fault commit() {
        fault_ = file_->commit();
        return said();
    }

private:
    Fault said() const {
        if (!fault_) return {};
        return Fault("cannot write '" + path_ + "': " + fault_.reason(), fault_.code());
    }

    std::string path_;
    Result<ReplacedFile> file_;
    BlockWriter writer_;
    Fault fault_;
};

/// Day of the year and hhmmss of a shot.
struct ShotTime {
    int day, hour, minute, second;
    ShotTime(const SyntheticLine& line, int shot) {
        const std::int64_t seconds = line.shot_second(shot);
        day = static_cast<int>((line.first_day() - 1 + seconds / 86400) % 365) + 1;
        hour = static_cast<int>(seconds / 3600 % 24);
        minute = static_cast<int>(seconds / 60 % 60);
        second = static_cast<int>(seconds % 60);
    }
    int hhmmss() const { return hour * 10000 + minute * 100 + second; }
};

void append_sps_heading(const SyntheticLine& line, std::string& text) {
    append_sps_header(text, "H00", "SPS format version num.", "SPS001,22.06.26;");
    append_sps_header(text, "H01", "Description of survey area",
                      line.marine ? "Synthetic marine line,,;" : "Synthetic land line,,;");
    append_sps_header(text, "H18", "Projection", "None: whole metres on a plane;");
    append_sps_header(text, "H20", "Description of grid units", "1,Metres,1.0;");
    std::string ruler = "H26";  // every fifth column's number ends in it
    for (int column = 5; column <= 80; column += 5) {
        const std::string number = std::to_string(column);
        ruler.resize(static_cast<std::size_t>(column) - number.size(), ' ');
        ruler += number;
    }
    text += ruler;
    text += "\r\n";
}

void write_sources(const SyntheticLine& line, Output& file) {
    std::string text;
    append_sps_heading(line, text);
    for (int shot = 0; shot < line.shots; ++shot) {
        const ShotTime time(line, shot);
        const int x = line.source_x(shot);
        append_sps_point(text, 'S',
                         {.line = line.line_number,
                          .point = line.first_station + line.source_station(shot),
                          .index = 1,
                          .static_ms = static_cast<std::int16_t>(-line.source_delay_ms(shot)),
                          .depth = static_cast<float>(line.source_depth(shot)),
                          .uphole_ms = static_cast<std::int16_t>(line.uphole_ms(shot)),
                          .water_depth = static_cast<float>(line.water_depth(x)),
                          .easting = static_cast<double>(x),
                          .northing = static_cast<double>(line.line_y()),
                          .elevation = static_cast<float>(line.elevation(x)),
                          .day = static_cast<std::int16_t>(time.day),
                          .time = time.hhmmss()});
        file.write(text);
    }
}

void write_receivers(const SyntheticLine& line, Output& file) {
    std::string text;
    append_sps_heading(line, text);
    for (int station = 0; station < line.stations(); ++station) {
        const int x = line.station_x(station);
        append_sps_point(text, 'R',
                         {.line = line.line_number,
                          .point = line.first_station + station,
                          .index = 1,
                          .static_ms = static_cast<std::int16_t>(-line.receiver_delay_ms(station)),
                          .water_depth = static_cast<float>(line.water_depth(x)),
                          .easting = static_cast<double>(x),
                          .northing = static_cast<double>(line.line_y()),
                          .elevation = static_cast<float>(line.receiver_elevation(x)),
                          .day = static_cast<std::int16_t>(line.first_day())});
        file.write(text);
    }
}

void write_relations(const SyntheticLine& line, Output& file) {
    std::string text;
    append_sps_heading(line, text);
    const int left = line.channels_left();
    for (int shot = 0; shot < line.shots; ++shot) {
        // One record a run of receivers: the gap at the source parts the spread.
        const auto append_run = [&](int first, int end) {
            if (first >= end) return;
            append_sps_relation(
                text, "1",
                {.ffid = line.first_ffid + shot,
                 .ffid_increment = 1,
                 .instrument = 1,
                 .source_line = line.line_number,
                 .source_point = line.first_station + line.source_station(shot),
                 .source_index = 1,
                 .first_channel = first + 1,
                 .last_channel = end,
                 .channel_increment = 1,
                 .receiver_line = line.line_number,
                 .first_receiver = line.first_station + line.receiver_station(shot, first),
                 .last_receiver = line.first_station + line.receiver_station(shot, end - 1),
                 .receiver_index = 1});
        };
        if (line.gap == 0) {
            append_run(0, line.channels);
        } else {
            append_run(0, left);
            append_run(left, line.channels);
        }
        file.write(text);
    }
}

void write_p190(const SyntheticLine& line, Output& file) {
    std::string text;
    append_p1_header(text, "H0100", "SURVEY AREA", "SYNTHETIC LINE");
    append_p1_header(text, "H0202", "TAPE VERSION", "UKOOA-P1/90");
    append_p1_header(text, "H1800", "PROJECTION", "999 NONE: WHOLE METRES ON A PLANE");
    append_p1_header(text, "H2000", "GRID UNIT", "1METRES          1.0");
    for (int shot = 0; shot < line.shots; ++shot) {
        const ShotTime time(line, shot);
        const int source_x = line.source_x(shot);
        constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
        append_p1_position(text, 'S',
                           {.line = line.line_number,
                            .point = line.first_station + line.source_station(shot),
                            .latitude_s = kNone,
                            .longitude_s = kNone,
                            .easting = static_cast<double>(source_x),
                            .northing = static_cast<double>(line.line_y()),
                            .water_depth = static_cast<float>(line.water_depth(source_x)),
                            .day = static_cast<std::int16_t>(time.day),
                            .second = (time.hour * 60 + time.minute) * 60 + time.second});
        for (int channel = 0; channel < line.channels;) {
            std::array<NumberedP1Group, kMostP1Groups> groups;
            std::size_t count = 0;
            for (; count < groups.size() && channel < line.channels; ++count, ++channel) {
                const int x = line.station_x(line.receiver_station(shot, channel));
                groups[count] = {channel + 1,
                                 {x * 100, line.line_y() * 100,
                                  static_cast<float>(-line.receiver_elevation(x))}};
            }
            append_p1_groups(text, 1, std::span(groups).first(count));
        }
        file.write(text);
    }
}

/// The text header: what the line is, and what a stack of it must show.
void write_text_header(const SyntheticLine& line, LineHeader& header) {
    std::string text;
    const auto add = [&text](const std::string& words) {
        char number[16];
        std::snprintf(number, sizeof number, "C%2d ", static_cast<int>(text.size() / 80) + 1);
        text += number + words;
        text.resize((text.size() + 79) / 80 * 80, ' ');
    };
    add("SYNTHETIC 2-D LINE, MADE BY HALVERN SYNTHESIZE");
    const std::string description = line.description();
    for (std::size_t start = 0; start < description.size() && text.size() < 36 * 80;) {
        const std::size_t end = description.find('\n', start);
        add(description.substr(start, std::min<std::size_t>(end - start, 76)));
        start = end + 1;
    }
    while (text.size() < 39 * 80) add("");
    add("END EBCDIC");
    ascii_to_ebcdic(std::as_bytes(std::span(text)), header.bytes().first<kTextHeaderBytes>());
}

void write_binary_header(const SyntheticLine& line, SampleFormat format, LineHeader& header) {
    const auto bytes = header.bytes();
    put_i32(bytes.subspan<3204, 4>(), line.line_number);
    put_i16(bytes.subspan<3212, 2>(), line.channels);     // traces a record
    put_i16(bytes.subspan<3218, 2>(), line.interval_us);  // of the field recording
    put_i16(bytes.subspan<3228, 2>(), 1);                 // sorting: as recorded
    put_i16(bytes.subspan<3254, 2>(), 1);                 // lengths in metres
    header.set_sample_interval(SampleInterval::of_us(line.interval_us));
    header.set_samples(line.samples, line.samples);
    header.set_format(format);
}

/// The header words of a synthetic trace, looked up once.
class TraceHeader {
public:
    explicit TraceHeader(TraceHeaderDefinition& definition) : definition_(definition) {
        for (std::size_t i = 0; i < kWords; ++i) index_[i] = definition.find(kNames[i]);
    }

    /// Starts on a header image of zeros with what is the same in all traces.
    void fill_constants(const SyntheticLine& line) {
        set(kNumsamps, line.samples);
        set(kSamprate, line.interval_us);
        set(kChanset, 1);
        set(kCoorscal, line.coordinate_scalar);
        set(kElevscal, 1);
        set(kCoorunit, 1);
        set(kXline, 1);
        set(kFold, 1);
        for (const Word word : {kSouline, kRecline}) set(word, line.line_number);
        for (const Word word : {kSouindex, kRecindex}) set(word, 1);
        for (const Word word : {kSrcy, kRecy, kCdpy, kBiny}) set(word, line.scaled(line.line_y()));
    }

    /// What is the same in all traces of a shot.
    void fill_shot(const SyntheticLine& line, int shot) {
        const ShotTime time(line, shot);
        const int x = line.source_x(shot);
        set(kFfid, line.first_ffid + shot);
        set(kSeqffid, shot + 1);
        set(kDtime, time.day);
        set(kHtime, time.hour);
        set(kMtime, time.minute);
        set(kStime, time.second);
        set(kTime, time.day * 1000000.0 + time.hhmmss());
        set(kSoupoint, line.first_station + line.source_station(shot));
        set(kSrcx, line.scaled(x));
        set(kSwatdep, line.water_depth(x));
        set(kSrcelev, line.elevation(x));
        set(kSoudepth, line.source_depth(shot));
        set(kSuphole, line.uphole_ms(shot));
        set(kSstatic, -line.source_delay_ms(shot));
    }

    void fill_trace(const SyntheticLine& line, int shot, int channel) {
        const int station = line.receiver_station(shot, channel);
        const int x = line.station_x(station);
        const int cdp = line.cdp(shot, channel);
        const double number = static_cast<double>(shot) * line.channels + channel + 1;
        set(kTrnuml, number);
        set(kTrnumr, number);
        set(kTraceid, line.dead(shot, channel) ? 2 : 1);
        set(kChan, channel + 1);
        set(kSeqchan, channel + 1);
        set(kOffset, line.offset(shot, channel));
        set(kAzimuth, x < line.source_x(shot) ? 270 : 90);
        set(kRecpoint, line.first_station + station);
        set(kRecx, line.scaled(x));
        set(kRecelev, line.receiver_elevation(x));
        set(kRwatdep, line.water_depth(x));
        set(kRstatic, -line.receiver_delay_ms(station));
        set(kCdpn, cdp);
        set(kInline, cdp);
        set(kCdpx, line.scaled(line.cdp_x(cdp)));
        set(kBinx, line.scaled(line.cdp_x(cdp)));
    }

    void set_weight(int weight) { set(kWeight, weight); }
    bool has_weight() const { return index_[kWeight] >= 0; }

private:
    enum Word : std::size_t {
        kTrnuml,
        kTrnumr,
        kTraceid,
        kNumsamps,
        kSamprate,
        kWeight,
        kFfid,
        kChan,
        kChanset,
        kSeqffid,
        kSeqchan,
        kDtime,
        kHtime,
        kMtime,
        kStime,
        kTime,
        kOffset,
        kAzimuth,
        kCoorscal,
        kElevscal,
        kCoorunit,
        kSouline,
        kSoupoint,
        kSouindex,
        kSrcx,
        kSrcy,
        kSrcelev,
        kSoudepth,
        kSuphole,
        kSstatic,
        kRecline,
        kRecpoint,
        kRecindex,
        kRecx,
        kRecy,
        kRecelev,
        kRstatic,
        kCdpn,
        kCdpx,
        kCdpy,
        kInline,
        kXline,
        kBinx,
        kBiny,
        kFold,
        kSwatdep,
        kRwatdep,
        kWords
    };
    static constexpr std::array<const char*, kWords> kNames = {
        "TRNUML",  "TRNUMR",   "TRACEID",  "NUMSAMPS", "SAMPRATE", "WEIGHT",   "FFID",
        "CHAN",    "CHANSET",  "SEQFFID",  "SEQCHAN",  "DTIME",    "HTIME",    "MTIME",
        "STIME",   "TIME",     "OFFSET",   "AZIMUTH",  "COORSCAL", "ELEVSCAL", "COORUNIT",
        "SOULINE", "SOUPOINT", "SOUINDEX", "SRCX",     "SRCY",     "SRCELEV",  "SOUDEPTH",
        "SUPHOLE", "SSTATIC",  "RECLINE",  "RECPOINT", "RECINDEX", "RECX",     "RECY",
        "RECELEV", "RSTATIC",  "CDPN",     "CDPX",     "CDPY",     "INLINE",   "XLINE",
        "BINX",    "BINY",     "FOLD",     "SWATDEP",  "RWATDEP"};

    void set(Word word, double value) { definition_.set_double(index_[word], value); }

    TraceHeaderDefinition& definition_;
    std::array<int, kWords> index_{};
};

Fault write_segy(const SyntheticLine& line, const LineFiles& files, Output& file) {
    TraceHeaderDefinition definition;
    if (definition.load(files.header_definition) != 0) {
        return Fault("cannot read the header description '" + files.header_definition + "'");
    }
    TraceHeader header(definition);
    if (files.format == SampleFormat::kInt16 && !header.has_weight()) {
        return Fault("16-bit samples need the header word WEIGHT, which '" +
                     files.header_definition + "' lacks");
    }
    LineHeader line_header;
    write_text_header(line, line_header);
    write_binary_header(line, files.format, line_header);
    if (!file.write(line_header.bytes())) return file.close();

    const TraceMaker maker(line);
    std::vector<float> trace(static_cast<std::size_t>(line.samples));
    std::vector<std::byte> record(kTraceHeaderBytes +
                                  trace.size() * bytes_per_sample(files.format));
    const auto raw = std::span(record).subspan(kTraceHeaderBytes);
    definition.attach(record.data());
    header.fill_constants(line);
    for (int shot = 0; shot < line.shots; ++shot) {
        header.fill_shot(line, shot);
        for (int channel = 0; channel < line.channels; ++channel) {
            header.fill_trace(line, shot, channel);
            maker.make(shot, channel, trace);
            switch (files.format) {
                case SampleFormat::kInt16:
                    header.set_weight(encode_int16(trace, raw).weight);
                    break;
                case SampleFormat::kIeee:
                    encode_ieee(trace, raw);
                    break;
                default:
                    encode_ibm(trace, raw);
            }
            if (!file.write(record)) return file.close();
        }
    }
    return file.close();
}

}  // namespace

std::vector<std::string> LineFiles::paths() const {
    std::vector<std::string> paths = {segy};
    if (!sps.empty()) {
        for (const char* ending : {".s", ".r", ".x"}) paths.push_back(sps + ending);
    }
    if (!p190.empty()) paths.push_back(p190);
    return paths;
}

Fault sps_fault(const SyntheticLine& line) {
    if (line.channels > 9999) return Fault("SPS relation records hold channels up to 9999");
    if (std::int64_t{line.first_ffid} + line.shots - 1 > 9999) {
        return Fault("SPS relation records hold file numbers up to 9999");
    }
    if (line.station_x(line.stations()) > 9999999)
        return Fault("SPS points hold eastings below 10000000");
    return {};
}

Fault p190_fault(const SyntheticLine& line) {
    if (line.channels > 9999) return Fault("P1/90 receiver groups have numbers up to 9999");
    if (line.first_station + line.stations() > 999999) {
        return Fault("P1/90 points have numbers up to 999999");
    }
    if (line.station_x(line.stations()) > 9999999) {
        return Fault("P1/90 holds eastings below 10000000");
    }
    return {};
}

Fault write_line(const SyntheticLine& line, const LineFiles& files) {
    // Nothing takes its place before all of it is written.
    Output segy(files.segy);
    if (Fault fault = write_segy(line, files, segy)) return fault;
    std::deque<Output> texts;
    if (!files.sps.empty()) {
        write_sources(line, texts.emplace_back(files.sps + ".s"));
        write_receivers(line, texts.emplace_back(files.sps + ".r"));
        write_relations(line, texts.emplace_back(files.sps + ".x"));
    }
    if (!files.p190.empty()) write_p190(line, texts.emplace_back(files.p190));
    for (Output& output : texts) {
        if (Fault fault = output.close()) return fault;
    }
    for (Output& output : texts) {
        if (Fault fault = output.commit()) return fault;
    }
    return segy.commit();
}

}  // namespace halvern::synthetic
