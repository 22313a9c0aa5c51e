#pragma once

#include <bit>
#include <cstdint>
#include <span>
#include <vector>

#include "geometry/ascii_field.h"
#include "geometry/line_reader.h"

namespace halvern {

/// A value of a header word in the precision of the word: R4 as a float, I2 and I4 as an integer.
class AsciiValue {
public:
    AsciiValue() = default;
    /// `number` as a field of that sort holds it; held at the ends of the type's range.
    AsciiValue(double number, bool floating);

    float real() const { return std::bit_cast<float>(bits_); }
    std::int32_t integer() const { return bits_; }
    double number(bool floating) const { return floating ? double{real()} : integer(); }

private:
    std::int32_t bits_ = 0;
};

/// The records of an ASCII file in memory: the values of its match and data fields, ordered by the
/// match fields that ask for equality, to be searched for the record that fits a trace.
class AsciiTable {
public:
    AsciiTable() = default;
    /// Match fields with "=" must come before all others.
    AsciiTable(std::span<const AsciiField> match, std::span<const AsciiField> data);

    /// Takes all lines that are left. A value belongs to the record that the next completing line
    /// completes; a record without a value for a field has 0 there. 0, or -1 when reading fails or
    /// when there are more records than an int counts.
    [[nodiscard]] int read(LineReader& lines);

    /// Orders the records key by key: by the first "=" field, then within runs that agree in it by
    /// the second, and so on; ties stay in the order of the file. What is sorted are numbers of the
    /// first match field's sort, and the last run of each pass goes on to the last record, whose
    /// earlier keys may differ and then stay where they are. Once, after reading.
    void sort();

    /// The record for a trace with these values of the match fields, or -1. From the place where a
    /// binary search by the "=" fields ends, records are tried downward and then upward, each way
    /// until one satisfies all fields or fails an "=".
    int find(std::span<const AsciiValue> trace);

    int records() const { return records_; }
    AsciiValue match_value(int record, std::size_t field) const {
        return match_[static_cast<std::size_t>(record) * fields_.size() + field];
    }
    AsciiValue data_value(int record, std::size_t field) const {
        return data_[static_cast<std::size_t>(record) * data_fields_.size() + field];
    }

private:
    struct MatchField {
        int compare;
        bool floating;
    };
    enum class Test { kFits, kFails, kFailsKey };

    bool same_keys(int a, int b, std::size_t keys) const;
    template <class Key>
    void sort_run(int first, int end, std::size_t field, std::vector<Key>& sorted);
    int compare_keys(std::span<const AsciiValue> trace, int record) const;
    int search_start(std::span<const AsciiValue> trace) const;
    Test test(std::span<const AsciiValue> trace, int record) const;

    std::vector<AsciiField> data_fields_;
    std::vector<AsciiField> match_fields_;
    std::vector<MatchField> fields_;  // of match_fields_, what the search needs
    std::size_t keys_ = 0;            // leading "=" fields
    int records_ = 0;
    std::vector<AsciiValue> rows_;   // [records][match + data], until sorted
    std::vector<AsciiValue> match_;  // [records][match], once sorted
    std::vector<AsciiValue> data_;   // [records][data], once sorted
    std::vector<AsciiValue> moved_;  // rows of a run while it is sorted
    std::vector<std::uint32_t> order_;
    bool ascending_ = false;  // every record's keys are above those of the one before it
    int last_found_ = -1;
};

}  // namespace halvern
