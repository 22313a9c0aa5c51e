#include "geometry/sps_data_set.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdio>
#include <functional>
#include <optional>
#include <tuple>

#include "foundation/debug_output.h"
#include "platform/replace_file.h"

namespace halvern {

namespace {

/// Lines are read as far as this; what is longer goes on as a line of its own.
constexpr std::size_t kLongestLine = 198;
/// A whole record without its line end; tells how many may be in a file.
constexpr std::int64_t kRecordBytes = 80;
/// Room for more records is not made before some were read: the file may hold something else.
constexpr std::int64_t kMostExpected = std::int64_t{1} << 20;  // about 100 MB

std::size_t expected_records(const LineReader& lines) {
    return static_cast<std::size_t>(std::min(lines.bytes() / kRecordBytes, kMostExpected));
}

/// What tells the three files apart, in messages and at the progress.
struct SpsFileKind {
    char letter;
    const char* name;
    const char* caption;
};
constexpr SpsFileKind kSourceFile{'S', "SOURCE", "Reading SPS Source File."};
constexpr SpsFileKind kReceiverFile{'R', "RECEIVER", "Reading SPS Receiver File."};
constexpr SpsFileKind kRelationFile{'X', "RELATION", "Reading SPS Relation File."};

/// Whether a first header line names revision 2, whose points have other columns.
bool names_revision_2(std::string_view line) {
    if (!line.starts_with("H00")) return false;
    const std::size_t name = line.find("SPS", 32);
    if (name == line.npos) return false;
    const std::size_t number = line.find_first_not_of(' ', name + 3);
    return number != line.npos && line[number] == '2';
}

/// Why a file gave no record: a word on the line that should have been its first.
void refuse_empty(const Reporter& report, const SpsFileKind& kind, const std::string& file,
                  std::int64_t line_number, const std::string& line) {
    report.Error("%s file '%s' has no '%c' record.\n", kind.name, file.c_str(), kind.letter);
    if (line_number == 0) return;
    const auto number = static_cast<long long>(line_number);
    const std::size_t first = line.find_first_not_of(" \t");
    if (first != line.npos && first > 0 && line[first] == kind.letter) {
        report.Error("Line %lld: '%c' is in column %d, not in column 1: the record is shifted.\n",
                     number, kind.letter, static_cast<int>(first) + 1);
    } else if (std::isprint(static_cast<unsigned char>(line[0]))) {
        report.Error("Line %lld: column 1 holds '%c', not '%c'.\n", number, line[0], kind.letter);
    } else {
        report.Error("Line %lld: column 1 holds no printable character, not '%c'.\n", number,
                     kind.letter);
    }
}

/// Reads the records of one letter. `add` takes a line, `find_fault` says which of its fields is no
/// number, `slack_of` how far its numbers end before their columns.
template <class Add>
int read_records(const Reporter& report, LineReader& lines, const std::string& file,
                 const SpsFileKind& kind, Progress* progress, Add add,
                 std::optional<FieldFault> (*find_fault)(std::string_view line),
                 int (*slack_of)(std::string_view line)) {
    if (!lines.opened()) {
        report.Error("SPS Error: Cannot open %s file '%s' to read.\n", kind.name, file.c_str());
        return -1;
    }
    ProgressStep step(progress, kind.caption);
    std::int64_t records = 0;
    std::int64_t faulty = 0;
    std::int64_t first_faulty_line = 0;
    FieldFault first_fault{};
    int slack = 0;                      // of every record so far
    std::int64_t first_line = 0;        // of a record
    std::int64_t first_other_line = 0;  // neither header nor blank nor of the letter
    std::string first_other;
    std::string_view line;
    while (lines.next(line)) {
        // A file that still grows has more bytes than it had when it was opened.
        if (!step.reach(std::min(lines.position(), lines.bytes()), lines.bytes())) return -1;
        if (line.empty()) continue;
        if (line[0] != kind.letter) {
            if (names_revision_2(line)) {
                report.Warning(
                    "%s file '%s' says that it is of SPS revision 2.  It is read"
                    " with the columns of revision 0.\n",
                    kind.name, file.c_str());
            }
            if (first_other_line == 0 && line[0] != 'H' &&
                line.find_first_not_of(" \t\x1a") != line.npos) {
                first_other_line = lines.line_number();
                first_other = line;
            }
            continue;
        }
        if (const auto fault = find_fault(line); fault && faulty++ == 0) {
            first_fault = *fault;
            first_faulty_line = lines.line_number();
        }
        const int line_slack = slack_of(line);
        slack = records == 0 || line_slack == slack ? line_slack : 0;
        if (records == 0) first_line = lines.line_number();
        add(line);
        ++records;
    }
    if (lines.fault()) {
        report.Error("Cannot read %s file '%s': %s.\n", kind.name, file.c_str(),
                     lines.fault().reason().c_str());
        return -1;
    }
    if (records == 0) {
        refuse_empty(report, kind, file, first_other_line, first_other);
        return -1;
    }
    if (faulty > 0) {
        const auto say = faulty == records ? &Reporter::Error : &Reporter::Warning;
        (report.*say)("%s file '%s', line %lld, columns %d-%d: the %s is not a number.\n",
                      kind.name, file.c_str(), static_cast<long long>(first_faulty_line),
                      first_fault.first_column, first_fault.last_column, first_fault.field);
        if (faulty == records) {
            report.Error("No record of the file fits the columns of SPS revision 0.\n");
            return -1;
        }
        report.Warning(
            "%lld of its %lld records have such a field.  Only the number before it is read, 0 "
            "without one.\n",
            static_cast<long long>(faulty), static_cast<long long>(records));
    }
    if (slack > 0) {
        report.Error(
            "%s file '%s', line %lld: the fields end %d before their last columns, as in all its "
            "records: they are shifted.\n",
            kind.name, file.c_str(), static_cast<long long>(first_line), slack);
        return -1;
    }
    return 0;
}

int read_points(const Reporter& report, LineReader& lines, const std::string& file,
                const SpsFileKind& kind, Progress* progress, std::vector<SpsPoint>& points) {
    points.clear();
    points.reserve(expected_records(lines));
    return read_records(
        report, lines, file, kind, progress,
        [&](std::string_view line) { points.push_back(parse_sps_point(line)); },
        find_sps_point_fault, sps_point_slack);
}

auto place_on_line(const SpsPoint& point) { return std::tuple(point.point, point.index); }
auto sort_key(const SpsPoint& point) { return std::tie(point.line_name, point.point, point.index); }

constexpr std::uint64_t mix(std::uint64_t value) {
    value *= 0x9E3779B97F4A7C15u;
    return value ^ value >> 32;
}

/// The sources by point number, index and line name; of equal ones the first in the file.
class SourceIndex {
public:
    explicit SourceIndex(std::span<const SpsPoint> sources)
        : sources_(sources), slots_(std::bit_ceil(sources.size() * 2 + 2), -1) {
        for (std::size_t i = 0; i < sources.size(); ++i) {
            const SpsPoint& source = sources[i];
            int& slot = slot_of(source.point, source.index, source.line_name);
            if (slot < 0) slot = static_cast<int>(i);
        }
    }

    /// Its place among the sources, or -1.
    int find(int point, int index, const SpsLineName& line) { return slot_of(point, index, line); }

private:
    int& slot_of(int point, int index, const SpsLineName& line) {
        std::uint64_t hash = mix(static_cast<std::uint32_t>(point)) + static_cast<unsigned>(index);
        hash = mix(hash ^ std::hash<std::string_view>{}({line.data(), line.size()}));
        for (auto at = static_cast<std::size_t>(hash);; ++at) {
            int& slot = slots_[at & (slots_.size() - 1)];
            if (slot < 0) return slot;
            const SpsPoint& source = sources_[static_cast<std::size_t>(slot)];
            if (source.point == point && source.index == index && source.line_name == line) {
                return slot;
            }
        }
    }

    std::span<const SpsPoint> sources_;
    std::vector<int> slots_;  // [power of two] places of sources, at most half of them taken; or -1
};

}  // namespace

int SpsDataSet::read_sources(const std::string& path, Progress* progress) {
    LineReader lines(path, kLongestLine);
    return read_sources(lines, path, progress);
}

int SpsDataSet::read_receivers(const std::string& path, Progress* progress) {
    LineReader lines(path, kLongestLine);
    return read_receivers(lines, path, progress);
}

int SpsDataSet::read_relations(const std::string& path, Progress* progress) {
    LineReader lines(path, kLongestLine);
    return read_relations(lines, path, progress);
}

int SpsDataSet::read_sources(LineReader& lines, const std::string& name, Progress* progress) {
    prepared_ = false;
    return read_points(*report_, lines, name, kSourceFile, progress, sources_);
}

int SpsDataSet::read_receivers(LineReader& lines, const std::string& name, Progress* progress) {
    prepared_ = false;
    if (read_points(*report_, lines, name, kReceiverFile, progress, receivers_) != 0) return -1;
    const auto before = [](const SpsPoint& a, const SpsPoint& b) {
        return sort_key(a) < sort_key(b);
    };
    // One pass tells whether they are sorted, a second one sorts.
    if (std::is_sorted(receivers_.begin(), receivers_.end(), before)) {
        DebugPrint("SPS Receivers: already sorted\n");
    } else {
        std::stable_sort(receivers_.begin(), receivers_.end(), before);
        DebugPrint("SPS Receivers: sorted in %d passes\n", 2);
    }
    return 0;
}

int SpsDataSet::read_relations(LineReader& lines, const std::string& name, Progress* progress) {
    prepared_ = false;
    relations_.clear();
    relations_.reserve(expected_records(lines));
    return read_records(
        *report_, lines, name, kRelationFile, progress,
        [&](std::string_view line) { relations_.push_back(parse_sps_relation(line)); },
        find_sps_relation_fault, sps_relation_slack);
}

int SpsDataSet::prepare(Progress* progress) {
    if (prepared_) return 0;
    ProgressStep step(progress, "Preparing SPS Files.");
    const auto total = static_cast<long long>(relations_.size());
    links_.assign(relations_.size(), {.source = -1, .first_receiver = 0, .end_receiver = 0});
    by_ffid_.clear();
    cursor_ = last_receiver_ = 0;

    SourceIndex index(sources_);
    std::size_t last = 0;  // the source that matched last
    for (std::size_t i = 0; i < relations_.size(); ++i) {
        if (!step.reach(static_cast<long long>(i), total, 0, 25)) return -1;
        const SpsRelation& relation = relations_[i];
        const auto matches = [&](std::size_t place) {
            return place < sources_.size() && sources_[place].point == relation.source_point &&
                   sources_[place].index == relation.source_index &&
                   sources_[place].line_name == relation.source_line_name;
        };
        if (matches(last)) {
            links_[i].source = static_cast<int>(last);
        } else if (matches(last + 1)) {
            links_[i].source = static_cast<int>(++last);
        } else {
            links_[i].source =
                index.find(relation.source_point, relation.source_index, relation.source_line_name);
            if (links_[i].source >= 0) last = static_cast<std::size_t>(links_[i].source);
        }
    }
    for (std::size_t i = 0; i < relations_.size(); ++i) {
        if (!step.reach(static_cast<long long>(i), total, 25, 100)) return -1;
        link_receivers(i);
    }
    prepared_ = true;
    return 0;
}

void SpsDataSet::link_receivers(std::size_t relation) {
    const SpsLineName& line = relations_[relation].receiver_line_name;
    Link& link = links_[relation];
    if (relation > 0 && relations_[relation - 1].receiver_line_name == line) {
        link.first_receiver = links_[relation - 1].first_receiver;
        link.end_receiver = links_[relation - 1].end_receiver;
        return;
    }
    const auto first = std::ranges::lower_bound(receivers_, line, {}, &SpsPoint::line_name);
    const auto end = std::ranges::upper_bound(receivers_, line, {}, &SpsPoint::line_name);
    link.first_receiver = static_cast<int>(first - receivers_.begin());
    link.end_receiver = static_cast<int>(end - receivers_.begin());
}

SpsMatch SpsDataSet::find(int ffid, int channel) {
    const auto holds = [&](int place) {
        const SpsRelation& relation = relations_[static_cast<std::size_t>(place)];
        return relation.ffid == ffid && relation.first_channel <= channel &&
               channel <= relation.last_channel;
    };
    const int count = static_cast<int>(relations_.size());
    if (!prepared_ || count == 0) return {};
    if (holds(cursor_)) {
        // The trace before had the same relation.
    } else if (cursor_ + 1 < count && holds(cursor_ + 1)) {
        ++cursor_;
    } else {
        const SpsStatus status = search_relations(ffid, channel);
        if (status != SpsStatus::kFound) return {.status = status};
    }

    const SpsRelation& relation = relations_[static_cast<std::size_t>(cursor_)];
    const Link& link = links_[static_cast<std::size_t>(cursor_)];
    if (link.source < 0) return {.status = SpsStatus::kNoSource, .relation = &relation};
    SpsMatch match{.status = SpsStatus::kNoReceiver,
                   .relation = &relation,
                   .receiver_point = relation.receiver_point(channel),
                   .source = &sources_[static_cast<std::size_t>(link.source)]};
    match.receiver = find_receiver(link, match.receiver_point, relation.receiver_index);
    if (match.receiver) match.status = SpsStatus::kFound;
    return match;
}

const SpsPoint* SpsDataSet::find_receiver(const Link& link, int point, int index) {
    const std::tuple wanted(point, index);
    // Channels mostly go on by one receiver. That one is the first of its place on the line, as the
    // search below finds it, when the one before it has another place.
    const int guess = last_receiver_ + 1;
    if (guess > link.first_receiver && guess < link.end_receiver) {
        const auto at = static_cast<std::size_t>(guess);
        if (place_on_line(receivers_[at]) == wanted && place_on_line(receivers_[at - 1]) < wanted) {
            last_receiver_ = guess;
            return &receivers_[at];
        }
    }
    const auto begin = receivers_.begin() + link.first_receiver;
    const auto end = receivers_.begin() + link.end_receiver;
    const auto found = std::lower_bound(
        begin, end, wanted,
        [](const SpsPoint& receiver, const auto& key) { return place_on_line(receiver) < key; });
    if (found == end || place_on_line(*found) != wanted) return nullptr;
    last_receiver_ = static_cast<int>(found - receivers_.begin());
    return &*found;
}

bool SpsDataSet::ambiguous() const {
    struct Range {
        int ffid, first, last;
        bool operator<(const Range& other) const {
            return std::tie(ffid, first) < std::tie(other.ffid, other.first);
        }
    };
    std::vector<Range> ranges;
    ranges.reserve(relations_.size());
    for (const SpsRelation& relation : relations_) {
        ranges.push_back({relation.ffid, relation.first_channel, relation.last_channel});
    }
    if (!std::is_sorted(ranges.begin(), ranges.end())) std::sort(ranges.begin(), ranges.end());
    return std::adjacent_find(ranges.begin(), ranges.end(), [](const Range& a, const Range& b) {
               return a.ffid == b.ffid && b.first <= a.last;
           }) != ranges.end();
}

SpsStatus SpsDataSet::search_relations(int ffid, int channel) {
    if (by_ffid_.empty()) {
        by_ffid_.reserve(relations_.size());
        for (std::size_t i = 0; i < relations_.size(); ++i) {
            const SpsRelation& relation = relations_[i];
            by_ffid_.push_back({relation.ffid, relation.first_channel, relation.last_channel,
                                static_cast<int>(i)});
        }
        std::ranges::stable_sort(by_ffid_, {}, &FfidEntry::ffid);
    }
    auto entry = std::ranges::lower_bound(by_ffid_, ffid, {}, &FfidEntry::ffid);
    if (entry == by_ffid_.end() || entry->ffid != ffid) return SpsStatus::kNoFfid;
    for (; entry != by_ffid_.end() && entry->ffid == ffid; ++entry) {
        if (entry->first_channel <= channel && channel <= entry->last_channel) {
            cursor_ = entry->place;
            return SpsStatus::kFound;
        }
    }
    return SpsStatus::kNoRelation;
}

int write_sps_points(const std::string& path, std::span<const SpsPoint> points, char letter,
                     const Reporter& report) {
    std::string text;
    for (const SpsPoint& point : points) append_sps_point(text, letter, point);
    const Fault fault = replace_file(path, text);
    if (!fault) return 0;
    report.Error("SPS Error: Cannot open '%s' to write.\n", path.c_str());
    report.Error("%s.\n", fault.reason().c_str());
    return -1;
}

}  // namespace halvern
