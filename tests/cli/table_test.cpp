#include "cli/table.h"

#include <gmock/gmock.h>

namespace halvern {
namespace {

using testing::ElementsAre;

TEST(Table, PutsColumnsBesideEachOther) {
    Table table({"job", "flow", "state"});
    table.add({"1", "gain", ""});
    table.add({"12", "ga\u00efn", "done"});  // counted in characters, not bytes
    EXPECT_EQ(table.text(), "job  flow  state\n1    gain\n12   ga\u00efn  done\n");
}

TEST(Table, NarrowsTheWidestColumnAndGoesOnBelow) {
    Table table({"key", "help"});
    table.add({"FILE", "a file of any name\n\nor NONE"});
    EXPECT_EQ(table.text(16),
              "key   help\n"
              "FILE  a file of\n"
              "      any name\n"
              "\n"
              "      or NONE\n");
}

TEST(Table, WritesCsvAsItsReadersExpect) {
    Table table({"a", "b"});
    table.add({"1,5", "say \"no\""});
    table.add({"two\nlines", ""});
    EXPECT_EQ(table.csv(), "a,b\n\"1,5\",\"say \"\"no\"\"\"\n\"two\nlines\",\n");
}

TEST(Wrapped, BreaksAtBlanksElseBehindSlashesElseAnywhere) {
    EXPECT_THAT(wrapped("one two  three", 8), ElementsAre("one two", "three"));
    EXPECT_THAT(wrapped("/data/north/flow", 12), ElementsAre("/data/north/", "flow"));
    EXPECT_THAT(wrapped("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
    EXPECT_THAT(wrapped("", 3), ElementsAre(""));
}

TEST(Numbers, AreGroupedByThousands) {
    const std::pair<long long, const char*> kNumbers[] = {
        {0, "0"}, {999, "999"}, {1000, "1,000"}, {-12345, "-12,345"}, {1234567, "1,234,567"}};
    for (const auto& [number, text] : kNumbers) EXPECT_EQ(grouped(number), text);
}

}  // namespace
}  // namespace halvern
