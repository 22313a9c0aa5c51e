#include "geometry/ascii_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <tuple>

namespace halvern {
namespace {

TEST(AsciiField, ReadsItsColumnsOfALine) {
    std::string wide(51, ' ');  // then 1 and 2
    wide.replace(50, 1, "12");
    const struct {
        int first, last;
        std::string line;
        bool ended, floating;
        double value;
    } kCases[] = {
        {3, 8, "ab  12.7cd", true, true, 12.7},
        {1, 6, "-12.5 ", true, false, -13},
        {1, 6, "  12.4", true, false, 12},
        // Four characters from the first column on, the line end among them.
        {5, 9, "1234567", true, true, 567},
        {5, 9, "1234567", false, true, 0},
        {5, 9, "123456", true, true, 0},
        {1, 60, wide, true, true, 1},  // the 52nd character is not looked at
        {6, 5, "1234567890", true, true, 0},
        {0, 5, "1234567890", true, true, 0},
        {2147483647, 2147483647, "1234567890", true, true, 0},
    };
    for (const auto& c : kCases) {
        const AsciiField field{
            .first_column = c.first, .last_column = c.last, .floating = c.floating};
        EXPECT_EQ(field.value(c.line, c.ended), c.value) << c.line << ", " << field.range_text();
    }
}

TEST(AsciiField, StandsInTheFlowFile) {
    using Fields = std::tuple<std::string, int, int, bool, std::string>;
    const struct {
        const char* text;
        Fields fields;
        const char* written;
    } kCases[] = {
        {"FFID 1 8", {"FFID", 1, 8, true, ""}, "FFID 1 8"},
        {"SRCX  10  20 0 S 1 ", {"SRCX", 10, 20, false, "S 1 "}, "SRCX 10 20 0 S 1 "},
        {"SRCX 10 20 7 K", {"SRCX", 10, 20, true, "K"}, "SRCX 10 20 1 K"},
        {"SRCX 10 20 0", {"SRCX", 10, 20, false, ""}, "SRCX 10 20"},
        {"SRCX", {"SRCX", 0, 0, true, ""}, "SRCX 0 0"},
        {"", {"", 0, 0, true, ""}, " 0 0"},
    };
    for (const auto& c : kCases) {
        const AsciiField data = AsciiField::parse_data(c.text);
        EXPECT_EQ(Fields(data.name, data.first_column, data.last_column, data.trace, data.key),
                  c.fields);
        EXPECT_EQ(data.data_text(), c.written);
        const AsciiField match = AsciiField::parse_match("4 " + std::string(c.text));
        EXPECT_EQ(match.compare, kGreater);
        EXPECT_EQ(match.match_text(), "4 " + std::string(c.written));
    }
    EXPECT_EQ(AsciiField::parse_match("").name, "");
    EXPECT_EQ(AsciiField::parse_match("x FFID 1 8").compare, 9) << "matches nothing";
}

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

// A second key that all records share: its last run, which is the last two, leaves their data
// alone.
TEST(AsciiTable, TiesStayInTheOrderOfTheFile) {
    AsciiTable table =
        table_of(line({3, 7, 13}) + line({1, 7, 11}) + line({4, 7, 14}) + line({2, 7, 12}),
                 {column(1), column(2)}, {column(3)});
    for (int first = 1; first <= 4; ++first) EXPECT_EQ(found(table, {first, 7}), 10 + first);
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
    const int cases[][3] = {// operator, trace, record
                            {kGreaterOrEqual, 35, 30}, {kGreaterOrEqual, 15, 10},
                            {kGreaterOrEqual, 5, -1},  {kLessOrEqual, 25, 30},
                            {kLessOrEqual, 5, 30},     {kLessOrEqual, 35, 40}};
    for (const auto& [compare, trace, record] : cases) {
        AsciiTable table = table_of(text, {column(1, compare)}, {column(2)});
        EXPECT_EQ(found(table, {trace}), record) << compare << ' ' << trace;
    }
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
            using Record = std::array<int, 3>;  // two keys and a limit
            const auto number = [&](unsigned end) { return static_cast<int>(random() % end); };
            std::vector<Record> all;
            for (int i = 0; i + 2 < records; ++i) {
                all.push_back(unique ? Record{i % 30, i / 30, 2}
                                     : Record{number(30), number(8), number(4)});
            }
            // Two of the highest first key: the last run of the second pass is then their own.
            for (int b = 0; static_cast<int>(all.size()) < records; ++b) all.push_back({99, b, 1});
            std::ranges::shuffle(all, random);
            std::string text;
            for (int i = 0; const auto& [a, b, limit] : all) text += line({a, b, limit, i++});
            AsciiTable table =
                table_of(text, {column(1), column(2), column(3, kLessOrEqual)}, {column(4)});
            for (int a = 0; a < 31; ++a) {
                for (int b = 0; b < 20; ++b) {
                    for (const int value : {0, 2}) {
                        const auto fits = [&](const Record& record) {
                            return record[0] == a && record[1] == b && value <= record[2];
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
