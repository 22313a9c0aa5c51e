#include "geometry/binning_file.h"

#include <algorithm>
#include <bit>
#include <concepts>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>

#include "platform/block_reader.h"
#include "platform/block_writer.h"
#include "platform/replace_file.h"

namespace halvern {

namespace {

constexpr std::string_view kMagicStem = "KELDARBIN00";  // a digit follows: the version
constexpr int kNewestVersion = 3;
constexpr std::size_t kMagicBytes = 12;

constexpr std::size_t kRowIncrement = 1;  // places in the numbering
constexpr std::size_t kColumnIncrement = 4;

constexpr std::size_t kMostMembers = std::numeric_limits<std::uint16_t>::max();
constexpr std::int64_t kLeastPointBytes = 3 * 4 + 2 * 8 + 2;

std::int64_t count_of(std::int32_t start, std::int32_t end, std::int32_t increment) {
    if (increment == 0) return 0;
    return std::max<std::int64_t>((std::int64_t{end} - start) / increment + 1, 0);
}

/// Takes little-endian values from the front of a file. Behind the end everything is 0, and
/// failed() says so.
class LittleEndianReader {
public:
    explicit LittleEndianReader(BlockReader& file) : file_(file) {}

    std::span<const std::byte> take(std::size_t bytes) {
        const std::span<const std::byte> taken = file_.next(bytes);
        if (taken.size() == bytes) return taken;
        failed_ = true;
        return {};
    }
    template <std::unsigned_integral Value>
    Value number() {
        Value value = 0;
        const std::span<const std::byte> bytes = take(sizeof(Value));
        for (std::size_t i = bytes.size(); i-- > 0;) {
            value = static_cast<Value>(value << (sizeof(Value) > 1 ? 8 : 0) |
                                       std::to_integer<Value>(bytes[i]));
        }
        return value;
    }
    std::int32_t integer() { return static_cast<std::int32_t>(number<std::uint32_t>()); }
    double real() { return std::bit_cast<double>(number<std::uint64_t>()); }

    /// Bytes after what was taken.
    std::int64_t left() const { return file_.size() - file_.position(); }
    bool failed() const { return failed_; }

private:
    BlockReader& file_;
    bool failed_ = false;
};

/// Collects little-endian values and hands them to a file block by block.
class LittleEndianWriter {
public:
    explicit LittleEndianWriter(BlockWriter& file) : file_(file) {}

    void text(std::string_view text) { put(std::as_bytes(std::span(text.data(), text.size()))); }
    template <std::unsigned_integral Value>
    void number(Value value) {
        std::array<std::byte, sizeof(Value)> bytes;
        for (std::size_t i = 0; i < sizeof(Value); ++i) {
            bytes[i] = static_cast<std::byte>(std::uint64_t{value} >> (8 * i));
        }
        put(bytes);
    }
    void integer(std::int32_t value) { number(static_cast<std::uint32_t>(value)); }
    void real(double value) { number(std::bit_cast<std::uint64_t>(value)); }

    bool failed() const { return failed_; }

private:
    void put(std::span<const std::byte> bytes) {
        failed_ = failed_ || file_.write(bytes) != bytes.size();
    }

    BlockWriter& file_;
    bool failed_ = false;
};

/// What prevents reading on, in words; nothing when all is well.
using Damage = std::optional<std::string_view>;
constexpr std::string_view kStopped = "it was not read to its end";
constexpr std::string_view kTooShort = "it ends too early";

Damage read_bins(LittleEndianReader& in, BinningFile& file, ProgressStep& step) {
    const std::int64_t rows = file.rows();
    const std::int64_t columns = file.columns();
    if (rows < 1 || columns < 1) return "its rows and columns make no grid";
    // Every bin takes a byte at least.
    if (columns > in.left() || rows > in.left() / columns) return kTooShort;
    for (std::int64_t row = 0; row < rows; ++row) {
        if (!step.reach(row, rows, 0, 50)) return kStopped;
        for (std::int64_t column = 0; column < columns; ++column) {
            const auto filled = in.number<std::uint8_t>();
            if (filled > 1) return "a bin is neither empty nor filled";
            if (filled == 0) continue;
            const std::size_t members = in.number<std::uint16_t>();
            if (static_cast<std::int64_t>(members) * 8 > in.left()) return kTooShort;
            Bin& bin = file.bins.emplace_back(Bin{.row = row, .column = column, .members = {}});
            bin.members.resize(members);
            for (BinMember& member : bin.members) member.first = in.number<std::uint32_t>();
            for (BinMember& member : bin.members) member.second = in.number<std::uint32_t>();
        }
        if (in.failed()) return kTooShort;
    }
    return {};
}

Damage read_points(LittleEndianReader& in, std::vector<BinnedPoint>& points, ProgressStep& step,
                   int first_percent) {
    const std::int32_t count = in.integer();
    if (count < 0) return "a number of points is negative";
    if (count > in.left() / kLeastPointBytes) return kTooShort;
    points.resize(static_cast<std::size_t>(count));
    std::int64_t done = 0;
    for (BinnedPoint& point : points) {
        if (!step.reach(done++, count, first_percent, first_percent + 25)) return kStopped;
        for (std::int32_t& number : point.numbers) number = in.integer();
        for (double& coordinate : point.coordinates) coordinate = in.real();
        const std::size_t members = in.number<std::uint16_t>();
        if (static_cast<std::int64_t>(members) * 4 > in.left()) return kTooShort;
        point.members.resize(members);
        for (std::uint32_t& member : point.members) member = in.number<std::uint32_t>();
    }
    return {};
}

Damage read_contents(LittleEndianReader& in, BinningFile& file, Progress* progress) {
    const std::span<const std::byte> bytes = in.take(kMagicBytes);
    if (bytes.empty()) return kTooShort;
    char magic[kMagicBytes];
    std::memcpy(magic, bytes.data(), kMagicBytes);
    file.version = magic[kMagicBytes - 1] - '0';
    if (!std::string_view(magic, kMagicBytes).starts_with(kMagicStem) || file.version < 1 ||
        file.version > kNewestVersion) {
        return "it does not begin as one";
    }
    file.version_mark = static_cast<char>(in.number<std::uint8_t>());
    for (std::int32_t* range : {&file.row_start, &file.row_end, &file.column_start,
                                &file.column_end, &file.more_ranges[0], &file.more_ranges[1]}) {
        *range = in.integer();
    }
    file.x_origin = in.real();
    file.y_origin = in.real();
    for (double& value : file.more_geometry) value = in.real();
    for (std::int32_t& value : file.numbering) value = in.integer();
    if (in.failed()) return kTooShort;

    ProgressStep step(progress, "Reading Binning File");
    if (const Damage damage = read_bins(in, file, step)) return damage;
    if (const Damage damage = read_points(in, file.first_points, step, 50)) return damage;
    if (const Damage damage = read_points(in, file.second_points, step, 75)) return damage;
    if (in.failed()) return kTooShort;
    if (in.left() > 0) return "it goes on after its end";
    return {};
}

bool write_points(LittleEndianWriter& out, const std::vector<BinnedPoint>& points,
                  ProgressStep& step, int first_percent) {
    out.integer(static_cast<std::int32_t>(points.size()));
    std::int64_t done = 0;
    for (const BinnedPoint& point : points) {
        if (!step.reach(done++, static_cast<std::int64_t>(points.size()), first_percent,
                        first_percent + 25)) {
            return false;
        }
        for (const std::int32_t number : point.numbers) out.integer(number);
        for (const double coordinate : point.coordinates) out.real(coordinate);
        out.number(static_cast<std::uint16_t>(point.members.size()));
        for (const std::uint32_t member : point.members) out.number(member);
    }
    return !out.failed();
}

bool write_contents(LittleEndianWriter& out, const BinningFile& file, Progress* progress) {
    out.text(kMagicStem);
    out.number(static_cast<std::uint8_t>('0' + kNewestVersion));
    out.number(static_cast<std::uint8_t>(file.version_mark));
    for (const std::int32_t range : {file.row_start, file.row_end, file.column_start,
                                     file.column_end, file.more_ranges[0], file.more_ranges[1]}) {
        out.integer(range);
    }
    out.real(file.x_origin);
    out.real(file.y_origin);
    for (const double value : file.more_geometry) out.real(value);
    for (const std::int32_t value : file.numbering) out.integer(value);

    ProgressStep step(progress, "Writing Binning File");
    const std::int64_t rows = file.rows();
    const std::int64_t columns = file.columns();
    auto bin = file.bins.begin();
    for (std::int64_t row = 0; row < rows; ++row) {
        if (!step.reach(row, rows, 0, 50)) return false;
        for (std::int64_t column = 0; column < columns; ++column) {
            const bool filled = bin != file.bins.end() && bin->row == row && bin->column == column;
            out.number(static_cast<std::uint8_t>(filled));
            if (!filled) continue;
            out.number(static_cast<std::uint16_t>(bin->members.size()));
            for (const BinMember& member : bin->members) out.number(member.first);
            for (const BinMember& member : bin->members) out.number(member.second);
            ++bin;
        }
        if (out.failed()) return false;
    }
    return write_points(out, file.first_points, step, 50) &&
           write_points(out, file.second_points, step, 75);
}

/// Why a binning file cannot say what `file` holds; nothing when it can.
Damage unwritable(const BinningFile& file) {
    const std::int64_t rows = file.rows();
    const std::int64_t columns = file.columns();
    if (rows < 1 || columns < 1) return "its rows and columns make no grid";
    const Bin* before = nullptr;
    for (const Bin& bin : file.bins) {
        if (bin.row < 0 || bin.row >= rows || bin.column < 0 || bin.column >= columns) {
            return "a bin is outside the grid";
        }
        if (before && std::tie(bin.row, bin.column) <= std::tie(before->row, before->column)) {
            return "its bins are not in order";
        }
        if (bin.members.size() > kMostMembers) return "a bin has more than 65535 members";
        before = &bin;
    }
    constexpr auto kMostPoints = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
    if (file.first_points.size() > kMostPoints || file.second_points.size() > kMostPoints) {
        return "it has too many points";
    }
    for (const std::vector<BinnedPoint>* points : {&file.first_points, &file.second_points}) {
        for (const BinnedPoint& point : *points) {
            if (point.members.size() > kMostMembers) return "a point has more than 65535 members";
        }
    }
    return {};
}

}  // namespace

std::int64_t BinningFile::rows() const {
    return count_of(row_start, row_end, numbering[kRowIncrement]);
}

std::int64_t BinningFile::columns() const {
    return count_of(column_start, column_end, numbering[kColumnIncrement]);
}

int read_binning_file(const std::string& path, BinningFile& file, const Reporter& report,
                      Progress* progress) {
    file = {};
    Result<BlockReader> blocks = BlockReader::open(path);
    Damage damage = blocks.fault().reason();
    if (blocks) {
        LittleEndianReader in(*blocks);
        damage = read_contents(in, file, progress);
        if (blocks->fault()) damage = blocks->fault().reason();
    }
    if (!damage) return 0;
    file = {};
    report.Error("Binning file '%s': %s.\n", path.c_str(), std::string(*damage).c_str());
    if (damage != kStopped) report.Error("Invalid Binning File.  Delete this one and re-load.\n");
    return -1;
}

int write_binning_file(const std::string& path, const BinningFile& file, const Reporter& report,
                       Progress* progress) {
    if (const Damage damage = unwritable(file)) {
        report.Error("Binning file '%s' cannot be written: %s.\n", path.c_str(),
                     std::string(*damage).c_str());
        return -1;
    }
    const auto write = [&]() -> Fault {
        Result<ReplacedFile> replaced = ReplacedFile::begin(path);
        if (!replaced) return replaced.fault();
        BlockWriter blocks;
        if (Fault fault = blocks.open(replaced->beside(), BlockWriter::Mode::kCreate)) return fault;
        LittleEndianWriter out(blocks);
        const bool whole = write_contents(out, file, progress);
        if (Fault fault = blocks.finish()) return fault;
        return whole ? replaced->commit() : Fault("the writing was stopped");
    };
    const Fault fault = write();
    if (!fault) return 0;
    report.Error("Binning file '%s' cannot be written: %s.\n", path.c_str(),
                 fault.reason().c_str());
    return -1;
}

}  // namespace halvern
