#include "geometry/ascii_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace halvern {
namespace {

// Columns 1-5, 6-10, 11-15, …
AsciiField column(int number, int compare = kEqual, bool floating = false) {
    return {.first_column = number * 5 - 4,
            .last_column = number * 5,
            .compare = compare,
            .floating = floating};
}

std::string line(std::initializer_list<int> numbers) {
    std::string text;
    for (const int number : numbers) {
        const std::string digits = std::to_string(number);
        text += std::string(5 - digits.size(), ' ') + digits;
    }
    return text + "\n";
}

AsciiTable table_of(const std::string& text, const std::vector<AsciiField>& match,
                    const std::vector<AsciiField>& data) {
    AsciiTable table(match, data);
    LineReader lines = LineReader::Over(text, 998);
    EXPECT_EQ(table.read(lines), 0);
    table.sort();
    return table;
}

/// The data value of the record that fits whole numbers, -1 for none.
int found(AsciiTable& table, std::vector<int> numbers, bool floating = false) {
    std::vector<AsciiValue> trace;
    for (const int number : numbers) trace.emplace_back(number, floating);
    const int record = table.find(trace);
    return record < 0 ? -1 : table.data_value(record, 0).integer();
}

// The second key's last run takes in the last record although its first key is another one: the
// records' second keys and data are ordered among all three, their first keys stay.
TEST(AsciiTable, TheLastRunGoesOnToTheLastRecord) {
    AsciiTable table = table_of(line({1, 5, 15}) + line({1, 3, 13}) + line({2, 1, 21}),
                                {column(1), column(2)}, {column(3)});
    const int first[] = {1, 1, 2}, second[] = {1, 3, 5}, data[] = {21, 13, 15};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(table.match_value(i, 0).integer(), first[i]);
        EXPECT_EQ(table.match_value(i, 1).integer(), second[i]);
        EXPECT_EQ(table.data_value(i, 0).integer(), data[i]);
    }
    EXPECT_EQ(found(table, {2, 1}), -1);
    EXPECT_EQ(found(table, {1, 5}), -1);
    EXPECT_EQ(found(table, {1, 1}), 21);
}

// A first field of whole numbers has every key sorted as whole numbers: fractions count as equal.
TEST(AsciiTable, TheFirstFieldsSortIsEveryKeys) {
    AsciiTable whole = table_of("    1  1.9\n    1 -0.9\n    1  0.9\n    1 -1.9\n",
                                {column(1), column(2, kEqual, true)}, {column(1)});
    const auto second = [&](int record) { return whole.match_value(record, 1).real(); };
    EXPECT_EQ(second(0), -1.9f);
    EXPECT_EQ(std::abs(second(1)), 0.9f);
    EXPECT_EQ(std::abs(second(2)), 0.9f);
    EXPECT_EQ(second(3), 1.9f);
    AsciiTable real = table_of(line({1, 7, 17}) + line({1, -7, 16}) + line({0, 3, 3}),
                               {column(1, kEqual, true), column(2, kEqual, true)}, {column(3)});
    EXPECT_EQ(found(real, {1, -7}, true), 16);
}

TEST(AsciiTable, EveryOperatorAsksTheTraceAgainstTheRecord) {
    const char* const kTrue[] = {"5", "46", "4", "45", "6", "56", ""};  // traces that fit record 5
    for (int compare = 0; compare < 7; ++compare) {
        for (const bool floating : {false, true}) {
            AsciiTable table = table_of(line({5, 1}), {column(1, compare, floating)}, {column(2)});
            for (const int trace : {4, 5, 6}) {
                const bool fits =
                    std::string(kTrue[compare]).find(std::to_string(trace)) != std::string::npos;
                EXPECT_EQ(found(table, {trace}, floating), fits ? 1 : -1) << compare << trace;
            }
        }
    }
}

// Without an "=" nothing is sorted, and the search starts at record 2 of 0 … 4.
TEST(AsciiTable, LooksDownwardFirst) {
    std::string text;
    for (const int value : {10, 20, 30, 40, 50}) text += line({value, value});
    AsciiTable at_most = table_of(text, {column(1, kGreaterOrEqual)}, {column(2)});
    EXPECT_EQ(found(at_most, {35}), 30);
    EXPECT_EQ(found(at_most, {15}), 10);
    EXPECT_EQ(found(at_most, {5}), -1);
    AsciiTable at_least = table_of(text, {column(1, kLessOrEqual)}, {column(2)});
    EXPECT_EQ(found(at_least, {25}), 30);
    EXPECT_EQ(found(at_least, {5}), 30);
    EXPECT_EQ(found(at_least, {35}), 40);
}

// The search halves places 0 … 6 until a record has the key, and tries from there downward, then
// upward: by hand for each case.
TEST(AsciiTable, TheProbeDecidesAmongEqualKeys) {
    const struct {
        std::string keys;  // [places]
        int key;
        std::vector<int> tried;  // places
    } kCases[] = {{"1222233", 2, {3, 2, 1, 4}}, {"1222233", 3, {5, 6}},
                  {"1222233", 1, {0}},          {"1111223", 2, {4, 5}},
                  {"1112233", 1, {1, 0, 2}},    {"1122222", 2, {3, 2, 4, 5, 6}}};
    for (const auto& [keys, key, tried] : kCases) {
        std::string text;
        for (int i = 0; const char digit : keys) {
            text += line({digit - '0', i * 3 % 7, i});
            ++i;
        }
        AsciiTable table = table_of(text, {column(1), column(2, kLessOrEqual)}, {column(3)});
        for (int value = 0; value < 7; ++value) {
            const auto place = std::ranges::find_if(
                tried, [&](int at) { return value <= table.match_value(at, 1).integer(); });
            const int wanted = place == tried.end() ? -1 : table.data_value(*place, 0).integer();
            EXPECT_EQ(found(table, {key, value}), wanted) << keys << ' ' << key << ' ' << value;
        }
    }
}

// What is found satisfies all fields, and something is found whenever some record does.
TEST(AsciiTable, FindsARecordWheneverThereIsOne) {
    std::mt19937 random(11);
    for (const int records : {1, 2, 3, 10, 500}) {
        for (const bool unique : {false, true}) {
            struct Record {
                int a, b, limit;
            };
            std::vector<Record> all;
            for (int i = 0; i + 2 < records; ++i) {
                all.push_back({static_cast<int>(random() % 30), static_cast<int>(random() % 8),
                               static_cast<int>(random() % 4)});
                if (unique) all.back() = {i % 30, i / 30, 2};
            }
            // Two of the highest first key: the last run of the second pass is then their own.
            for (int b = 0; static_cast<int>(all.size()) < records; ++b) all.push_back({99, b, 1});
            std::ranges::shuffle(all, random);
            std::string text;
            for (int i = 0; i < records; ++i) {
                const Record& record = all[static_cast<std::size_t>(i)];
                text += line({record.a, record.b, record.limit, i});
            }
            AsciiTable table =
                table_of(text, {column(1), column(2), column(3, kLessOrEqual)}, {column(4)});
            for (int a = 0; a < 31; ++a) {
                for (int b = 0; b < 20; ++b) {
                    for (const int value : {0, 2}) {
                        const auto fits = [&](const Record& record) {
                            return record.a == a && record.b == b && value <= record.limit;
                        };
                        const int got = found(table, {a, b, value});
                        ASSERT_EQ(got >= 0, std::ranges::any_of(all, fits)) << a << ' ' << b;
                        ASSERT_TRUE(got < 0 || fits(all[static_cast<std::size_t>(got)]));
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace halvern
