#include "trace/header_definition.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "support/log_capture.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::LogCapture;
using testing_support::TemporaryFolder;

constexpr const char* kDefault = HALVERN_SOURCE_DIR "/header/default";

/// A word's line: the description padded to 50 columns, then the rest as given.
std::string line(std::string description, const std::string& rest) {
    description.resize(50, ' ');
    return description + ' ' + rest + '\n';
}

struct Loaded {
    explicit Loaded(const std::string& text) {
        EXPECT_EQ(definition.load(folder.write("words", text)), 0);
    }
    TemporaryFolder folder;
    std::array<std::byte, kTraceHeaderBytes> image{};
    TraceHeaderDefinition definition{image.data()};
};

TEST(HeaderDefinition, ReadsTheFixedColumns) {
    Loaded file(line("Before any category", "FIRST      0 1") + "!Line one\n" + "!Line two\r\n" +
                line("Eight letters", "EIGHTLET  28 0") + line("", "FREE     \t 100   2\r") +
                line("Again", "FIRST      4 1"));
    const TraceHeaderDefinition& d = file.definition;
    ASSERT_EQ(d.count(), 4);
    EXPECT_EQ(d.find("FIRST"), 0);  // the first of two wins
    EXPECT_EQ(d.find("first"), -1);
    EXPECT_STREQ(d.description(1), (std::string("Eight letters") + std::string(37, ' ')).c_str());
    EXPECT_EQ(d.location(d.find("EIGHTLET")), 28);
    EXPECT_EQ(d.location(2), 100);
    EXPECT_EQ(d.type(2), 2);
    EXPECT_STREQ(d.category(0), "No Category");
    EXPECT_STREQ(d.category(1), "Line two");  // "Line one" has no words
    EXPECT_EQ(d.words()[1].category, 2);
    EXPECT_TRUE(d.name(4) == nullptr && d.category(4) == nullptr);
    EXPECT_TRUE(d.type(-1) == 1 && d.location(-1) == 0);
}

TEST(HeaderDefinition, SurvivesWhatIsNoDescription) {
    const std::string kInputs[] = {
        "",
        "\n\n\n",
        line("No numbers", "NAME"),
        line("Overflow", "NAME     99999999999999999999 -99999999999999999999"),
        line("Outside", "NAME     -4 1") + line("Outside", "NAME2    238 1"),
        line("Unknown type", "NAME     0 77"),
        std::string(5000, 'x'),
        "!" + std::string(5000, '!'),
        std::string(70, '\0') + "\n" + line("After", "NAME     0 1"),
    };
    for (const std::string& input : kInputs) {
        SCOPED_TRACE(input.substr(0, 80));
        Loaded file(input);
        for (int i = -2; i < file.definition.count() + 2; ++i) {
            file.definition.set_double(i, 1.0);
            file.definition.get_double(i);
            file.definition.get_int(i);
        }
        EXPECT_EQ(file.definition.save(file.folder.file("saved")), 0);
    }
}

TEST(HeaderDefinition, AWordWithoutAPlaceTouchesNothing) {
    Loaded file("too short\n" + line("Ends at 241", "PAST     237 1") +
                line("In", "IN       236 1"));
    TraceHeaderDefinition& d = file.definition;
    for (const int i : {0, 1}) {
        d.set_double(i, 7);
        EXPECT_EQ(d.get_double(i), 0.0);
        EXPECT_EQ(d.get_int(i), 0);
    }
    EXPECT_EQ(file.image, (std::array<std::byte, kTraceHeaderBytes>{}));
    d.set_double(2, 7);
    EXPECT_EQ(file.image[239], std::byte{7});
    d.attach(nullptr);
    d.set_double(2, 8);
    EXPECT_EQ(d.get_int(2), 0);
}

// 198 characters fit the line buffer, so the rest of a longer line is a line of its own.
TEST(HeaderDefinition, AnOverlongLineIsReadInPieces) {
    std::string head = line("Head", "HEAD     0 1");
    head.back() = ' ';
    head.resize(198, ' ');
    Loaded file(head + line("Tail", "TAIL     4 1"));
    ASSERT_EQ(file.definition.count(), 2);
    EXPECT_EQ(file.definition.find("HEAD"), 0);
    EXPECT_EQ(file.definition.location(file.definition.find("TAIL")), 4);
}

TEST(HeaderDefinition, StoresByType) {
    Loaded file(line("", "SHORT      1 0") + line("", "LONG       1 1") +
                line("", "REAL       1 2") + line("", "OTHER      1 9"));
    struct Case {
        int word;
        double value, read;
        int as_int;
        std::array<int, 4> bytes;
    };
    const Case cases[] = {
        {0, 40000.0, -25536, -25536, {0x9C, 0x40, 0, 0}},
        {0, -2.9, -2, -2, {0xFF, 0xFE, 0, 0}},
        {0, 65536.0 * 3 + 5, 5, 5, {0x00, 0x05, 0, 0}},
        {1, -123456.9, -123456, -123456, {0xFF, 0xFE, 0x1D, 0xC0}},
        {1, 1e12, 2147483647, 2147483647, {0x7F, 0xFF, 0xFF, 0xFF}},
        {1, -1e12, -2147483648.0, std::numeric_limits<int>::min(), {0x80, 0, 0, 0}},
        {1, NAN, 0, 0, {0, 0, 0, 0}},
        {2, -118.625, -118.625, -118, {0xC2, 0xED, 0x40, 0x00}},
        {2, 0x1p40, 0x1p40, 2147483647, {0x53, 0x80, 0, 0}},
        {3, 513, 513, 513, {0x02, 0x01, 0, 0}},  // an unknown type is two bytes
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "word " << c.word << " value " << c.value);
        file.image.fill(std::byte{});
        file.definition.set_double(c.word, c.value);
        EXPECT_EQ(file.definition.get_double(c.word), c.read);
        EXPECT_EQ(file.definition.get_int(c.word), c.as_int);
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(static_cast<int>(file.image[1 + i]), c.bytes[i]) << "byte " << i;
        }
    }
}

TEST(HeaderDefinition, SavingNamesTheFirstCategoryAgain) {
    Loaded file(line("A", "A          0 1") + "!Second\n" + line("B", "B        104 0"));
    const std::string saved = file.folder.file("saved");
    ASSERT_EQ(file.definition.save(saved), 0);
    EXPECT_EQ(testing_support::file_bytes(saved), "!No Category\n" + line("A", "A          0 1") +
                                                      "!Second\n" + line("B", "B        104 0"));
    EXPECT_EQ(file.definition.save(file.folder.file("none/saved")), -1);
    EXPECT_EQ(TraceHeaderDefinition().save(saved), -1);
}

TEST(HeaderDefinition, AMissingFileIsLoggedAndForgetsTheOldWords) {
    Loaded file(line("A", "A          0 1"));
    LogCapture log;
    const std::string folder = file.folder.path().string();  // opens, but does not read
    EXPECT_EQ(file.definition.load(folder), -1);
    EXPECT_EQ(log.text(), "Cannot Open Trace Header Description File '" + folder + "'\n");
    EXPECT_EQ(file.definition.find("A"), -1);
    EXPECT_EQ(file.definition.count(), 0);
}

// Bytes counted from 1 and widths of the SEG-Y standard's trace header (revision 1 from 181 on).
TEST(DefaultHeader, HasTheStandardsFieldsWhereTheStandardHasThem) {
    TraceHeaderDefinition definition;
    ASSERT_EQ(definition.load(kDefault), 0);
    const std::map<std::string, int> i4 = {
        {"TRNUML", 1},    {"TRNUMR", 5},   {"FFID", 9},     {"CHAN", 13},    {"SOUPOINT", 17},
        {"CDPN", 21},     {"TRACE", 25},   {"OFFSET", 37},  {"RECELEV", 41}, {"SRCELEV", 45},
        {"SOUDEPTH", 49}, {"SWATDEP", 61}, {"RWATDEP", 65}, {"SRCX", 73},    {"SRCY", 77},
        {"RECX", 81},     {"RECY", 85},    {"CDPX", 181},   {"CDPY", 185},   {"INLINE", 189},
        {"XLINE", 193}};
    const std::map<std::string, int> i2 = {
        {"TRACEID", 29},  {"FOLD", 33},      {"SUPHOLE", 95},   {"RUPHOLE", 97}, {"SSTATIC", 99},
        {"RSTATIC", 101}, {"NUMSAMPS", 115}, {"SAMPRATE", 117}, {"DTIME", 159},  {"HTIME", 161},
        {"MTIME", 163},   {"STIME", 165},    {"WEIGHT", 169}};
    for (const auto& [places, type] : {std::pair{&i4, HeaderType::kI4}, {&i2, HeaderType::kI2}}) {
        for (const auto& [name, byte] : *places) {
            const int index = definition.find(name);
            ASSERT_GE(index, 0) << name;
            EXPECT_EQ(definition.location(index), byte - 1) << name;
            EXPECT_EQ(definition.type(index), static_cast<int>(type)) << name;
        }
    }
    // The source time counts to 366235959, more than a float or two bytes hold exactly.
    EXPECT_EQ(definition.type(definition.find("TIME")), static_cast<int>(HeaderType::kI4));
    // At index 0 it would never mark a shortened trace.
    EXPECT_GT(definition.find("TRACEID"), 0);
    EXPECT_LE(definition.count(), 200);  // what a text header lists
}

TEST(DefaultHeader, NoTwoWordsShareAByteOrANameAndItSavesAsItIs) {
    Loaded file(testing_support::file_bytes(kDefault));
    std::map<int, std::string> owner;
    std::set<std::string> names;
    for (const HeaderWord& word : file.definition.words()) {
        EXPECT_TRUE(names.insert(word.name).second) << word.name;
        EXPECT_TRUE(word.type >= 0 && word.type <= 2) << word.name;
        EXPECT_GT(word.category, 0) << word.name << " is under no category";
        const int end = word.location + (word.type == 0 ? 2 : 4);
        EXPECT_LE(end, kTraceHeaderBytes) << word.name;
        for (int byte = word.location; byte < end; ++byte) {
            const auto [other, free] = owner.try_emplace(byte, word.name);
            EXPECT_TRUE(free) << word.name << " and " << other->second << " share byte " << byte;
        }
    }
    ASSERT_EQ(file.definition.save(file.folder.file("saved")), 0);
    EXPECT_EQ(testing_support::file_bytes(file.folder.file("saved")),
              testing_support::file_bytes(kDefault));
}

}  // namespace
}  // namespace halvern
