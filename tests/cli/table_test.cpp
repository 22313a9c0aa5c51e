#include "cli/table.h"

#include <gmock/gmock.h>

namespace halvern {
namespace {

using testing::ElementsAre;

TEST(Table, PutsColumnsBesideEachOther) {
    Table table({"job", "flow", {"traces", true}, "state"});
    table.add({"1", "gain", "7", ""});
    table.add({"12", "ga\u00efn", "1200000", "d\033ne"});  // characters, not bytes
    EXPECT_EQ(table.text(),
              "job  flow   traces  state\n"
              "1    gain        7\n"
              "12   ga\u00efn  1200000  d?ne\n");
}

TEST(Table, NarrowsTheWidestTextAndGoesOnBelow) {
    Table table({"key", "help", {"number", true}});
    table.add({"FILE", "a file of any name\n\nor NONE", "123456789012"});
    EXPECT_EQ(table.text(30),
              "key   help              number\n"
              "FILE  a file of   123456789012\n"
              "      any name\n"
              "\n"
              "      or NONE\n");
}

TEST(Table, OfAnyLengthKeepsItsColumns) {
    for (const bool csv : {false, true}) {
        Table table({{"n", true}, "x"});
        testing::internal::CaptureStdout();
        for (int i = 999; i <= 2500; ++i) {
            table.add({std::to_string(i), "x"});
            table.print_full(csv);
        }
        table.add({"123456", "y"});
        table.print(csv);
        const std::string text = testing::internal::GetCapturedStdout();
        EXPECT_EQ(std::ranges::count(text, '\n'), 1504);
        EXPECT_TRUE(text.starts_with(csv ? "n,x\n999,x\n1000,x\n" : "   n  x\n 999  x\n1000  x\n"));
        EXPECT_TRUE(text.ends_with(csv ? "2500,x\n123456,y\n" : "2500  x\n123456  y\n")) << text;
    }
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

}  // namespace
}  // namespace halvern
