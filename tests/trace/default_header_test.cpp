#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

#include "support/temporary_folder.h"
#include "trace/header_definition.h"

namespace halvern {
namespace {

class DefaultHeader : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(definition.load(std::string(HALVERN_SOURCE_DIR) + "/header/default"), 0);
    }
    TraceHeaderDefinition definition;
};

// Bytes counted from 1 and widths of the SEG-Y standard's trace header (revision 1 from 181 on).
TEST_F(DefaultHeader, HasTheStandardsFieldsWhereTheStandardHasThem) {
    struct Place {
        int byte;
        HeaderType type;
    };
    constexpr HeaderType kI2 = HeaderType::kI2;
    constexpr HeaderType kI4 = HeaderType::kI4;
    const std::map<std::string, Place> places = {
        {"TRNUML", {1, kI4}},     {"TRNUMR", {5, kI4}},    {"FFID", {9, kI4}},
        {"CHAN", {13, kI4}},      {"SOUPOINT", {17, kI4}}, {"CDPN", {21, kI4}},
        {"TRACE", {25, kI4}},     {"TRACEID", {29, kI2}},  {"FOLD", {33, kI2}},
        {"OFFSET", {37, kI4}},    {"RECELEV", {41, kI4}},  {"SRCELEV", {45, kI4}},
        {"SOUDEPTH", {49, kI4}},  {"SWATDEP", {61, kI4}},  {"RWATDEP", {65, kI4}},
        {"SRCX", {73, kI4}},      {"SRCY", {77, kI4}},     {"RECX", {81, kI4}},
        {"RECY", {85, kI4}},      {"SUPHOLE", {95, kI2}},  {"RUPHOLE", {97, kI2}},
        {"SSTATIC", {99, kI2}},   {"RSTATIC", {101, kI2}}, {"NUMSAMPS", {115, kI2}},
        {"SAMPRATE", {117, kI2}}, {"DTIME", {159, kI2}},   {"HTIME", {161, kI2}},
        {"MTIME", {163, kI2}},    {"STIME", {165, kI2}},   {"WEIGHT", {169, kI2}},
        {"CDPX", {181, kI4}},     {"CDPY", {185, kI4}},    {"INLINE", {189, kI4}},
        {"XLINE", {193, kI4}},
    };
    for (const auto& [name, place] : places) {
        const int index = definition.find(name);
        ASSERT_GE(index, 0) << name;
        EXPECT_EQ(definition.location(index), place.byte - 1) << name;
        EXPECT_EQ(definition.type(index), static_cast<int>(place.type)) << name;
    }
}

TEST_F(DefaultHeader, HasTheSystemsOwnWords) {
    for (const char* name :
         {"TOTSAMP",  "STSAMP",   "CHANSET",  "SEQFFID", "SEQCHAN", "TIME",     "AZIMUTH",
          "SOULINE",  "SOUINDEX", "SOUERROR", "SOUCOMP", "RECLINE", "RECPOINT", "RECINDEX",
          "RECGROUP", "RECERROR", "RECCOMP",  "NEWSRCX", "NEWSRCY", "NEWRECX",  "NEWRECY",
          "SLINE",    "SPOINT",   "RLINE",    "RPOINT",  "BINX",    "BINY",     "SLIN",
          "SBIN",     "TEMP",     "PICKFB",   "COMPFB"}) {
        EXPECT_GE(definition.find(name), 0) << name;
    }
    // The source time counts to 366235959, more than a float or two bytes hold exactly.
    EXPECT_EQ(definition.type(definition.find("TIME")), static_cast<int>(HeaderType::kI4));
    // At index 0 it would never mark a shortened trace.
    EXPECT_GT(definition.find("TRACEID"), 0);
    EXPECT_LE(definition.count(), 200);  // what a text header lists
}

TEST_F(DefaultHeader, NoTwoWordsShareAByteOrAName) {
    std::map<int, std::string> owner;
    std::set<std::string> names;
    for (const HeaderWord& word : definition.words()) {
        EXPECT_TRUE(names.insert(word.name).second) << word.name;
        EXPECT_TRUE(word.type >= 0 && word.type <= 2) << word.name;
        EXPECT_GT(word.category, 0) << word.name << " is under no category";
        const int bytes = word.type == 0 ? 2 : 4;
        EXPECT_LE(word.location + bytes, kTraceHeaderBytes) << word.name;
        for (int byte = word.location; byte < word.location + bytes; ++byte) {
            const auto [other, free] = owner.try_emplace(byte, word.name);
            EXPECT_TRUE(free) << word.name << " and " << other->second << " share byte " << byte;
        }
    }
}

TEST_F(DefaultHeader, SavesAsTheVeryFileItIs) {
    testing_support::TemporaryFolder folder;
    ASSERT_EQ(definition.save(folder.file("saved")), 0);
    EXPECT_EQ(testing_support::file_bytes(folder.file("saved")),
              testing_support::file_bytes(std::string(HALVERN_SOURCE_DIR) + "/header/default"));
}

}  // namespace
}  // namespace halvern
