#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/progress.h"
#include "foundation/report.h"
#include "geometry/line_reader.h"
#include "geometry/sps_record.h"

namespace halvern {

/// How far the search for a trace's source and receiver came.
enum class SpsStatus : int {
    kNoFfid = 0,      ///< no relation record has the file number
    kNoRelation = 1,  ///< some have, but none of them the channel
    kNoSource = 2,    ///< the relation's source point is not in the source file
    kNoReceiver = 3,  ///< the relation's receiver point is not in the receiver file
    kFound = 4,
};

struct SpsMatch {
    SpsStatus status = SpsStatus::kNoFfid;
    const SpsRelation* relation = nullptr;  ///< from kNoSource on
    int receiver_point = 0;                 ///< from kNoReceiver on: what the relation leads to
    const SpsPoint* source = nullptr;       ///< from kNoReceiver on
    const SpsPoint* receiver = nullptr;     ///< kFound only
};

/// The three lists of an SPS survey: sources and relations in the order of their files, receivers
/// sorted by line name, point number and index (equal ones in the order of the file).
///
/// Reading answers 0, or -1 with an error to the reporter: when the file cannot be opened or read
/// to its end, holds no record of its letter, holds none that fits the columns (the error then
/// names the first one's line and field), or, without an error, when the progress asks to stop.
/// Records of other letters are skipped. A record with a field that is no number is kept, with the
/// number before it or 0 there, and a warning counts such records.
class SpsDataSet {
public:
    /// `report` outlives the data set.
    explicit SpsDataSet(const Reporter& report) : report_(&report) {}

    [[nodiscard]] int read_sources(const std::string& path, Progress* progress = nullptr);
    [[nodiscard]] int read_receivers(const std::string& path, Progress* progress = nullptr);
    [[nodiscard]] int read_relations(const std::string& path, Progress* progress = nullptr);

    /// The same from an open reader; `name` is for messages.
    [[nodiscard]] int read_sources(LineReader& lines, const std::string& name,
                                   Progress* progress = nullptr);
    [[nodiscard]] int read_receivers(LineReader& lines, const std::string& name,
                                     Progress* progress = nullptr);
    [[nodiscard]] int read_relations(LineReader& lines, const std::string& name,
                                     Progress* progress = nullptr);

    /// Leads every relation to its source point and its receiver line. Once after reading: a data
    /// set that is prepared already stays as it is. 0, or -1 when the progress asks to stop.
    [[nodiscard]] int prepare(Progress* progress = nullptr);
    bool prepared() const { return prepared_; }

    /// The source and receiver of a trace, in a data set that is prepared. The relation found last
    /// is tried first, then the one after it, then all in the order of the file; so where several
    /// relations hold the trace, which of them is found depends on the trace before. Any order is
    /// fast, the order of the relations fastest.
    SpsMatch find(int ffid, int channel);

    /// Whether some trace is held by more than one relation, so that what find() gives depends on
    /// the traces before. Looks through all relations.
    bool ambiguous() const;

    std::span<const SpsPoint> sources() const { return sources_; }
    std::span<const SpsPoint> receivers() const { return receivers_; }
    std::span<const SpsRelation> relations() const { return relations_; }
    /// The source that prepare() found for a relation, by their places in the lists; -1 for none.
    int source_of(std::size_t relation) const { return links_[relation].source; }

private:
    /// What prepare() adds to a relation record.
    struct Link {
        int source;          // place in sources_, or -1
        int first_receiver;  // places in receivers_ of the receiver line: first …
        int end_receiver;    // … and after the last; equal when there is no such line
    };

    void link_receivers(std::size_t relation);
    const SpsPoint* find_receiver(const Link& link, int point, int index);
    SpsStatus search_relations(int ffid, int channel);

    const Reporter* report_;
    std::vector<SpsPoint> sources_;
    std::vector<SpsPoint> receivers_;
    std::vector<SpsRelation> relations_;
    std::vector<Link> links_;  // [relations] when prepared
    bool prepared_ = false;

    int cursor_ = 0;         // place of the relation that was found last
    int last_receiver_ = 0;  // place of the receiver that was found last

    /// A relation in the order of file numbers, those of one number in the order of the file.
    struct FfidEntry {
        int ffid;
        int first_channel;
        int last_channel;
        int place;  // in relations_
    };
    std::vector<FfidEntry> by_ffid_;  // made when the first trace leaves the order of the relations
};

/// Writes a point file, or replaces it. 0, or -1 with an error, and the old file as it was.
[[nodiscard]] int write_sps_points(const std::string& path, std::span<const SpsPoint> points,
                                   char letter, const Reporter& report);

}  // namespace halvern
