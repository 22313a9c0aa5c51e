#include "platform/command_line.h"

#include <gtest/gtest.h>

namespace halvern {
namespace {

using Arguments = std::vector<std::string>;

TEST(CommandLine, SplitsAtBlanksOutsideQuotes) {
    const std::pair<const char*, Arguments> kLines[] = {
        {"", {}},
        {"  ", {}},
        {"a bc", {"a", "bc"}},
        {" a  bc ", {"a", "bc"}},
        {R"("C:\My Jobs\halvern2.exe" "C:\s\log7" rv3086 "C:\s\flow7" "")",
         {R"(C:\My Jobs\halvern2.exe)", R"(C:\s\log7)", "rv3086", R"(C:\s\flow7)", ""}},
        {R"(a"b c"d e)", {"ab cd", "e"}},  // quotes open and close inside a word
        {R"("" "" x)", {"", "", "x"}},
        {R"(x "not closed)", {"x", "not closed"}},
        {R"("ends with \" y)", {R"(ends with \)", "y"}},  // no escape by backslash
        {"tab\tstays", {"tab\tstays"}},
    };
    for (const auto& [line, arguments] : kLines) {
        EXPECT_EQ(split_command_line(line), arguments) << line;
    }
}

TEST(CommandLine, JoinsWithEveryValueQuotedButTheBareOne) {
    const Arguments arguments = {R"(C:\My Jobs\halvern2.exe)", "log7", "rv3086", "flow7", ""};
    const std::string line = join_command_line(arguments, 2);
    EXPECT_EQ(line, R"("C:\My Jobs\halvern2.exe" "log7" rv3086 "flow7" "")");
    EXPECT_EQ(split_command_line(line), arguments);
    EXPECT_EQ(join_command_line(Arguments{R"(a"b)", "c"}), R"("ab" "c")");
}

}  // namespace
}  // namespace halvern
