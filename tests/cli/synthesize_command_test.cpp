#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::file_bytes;
using testing_support::TemporaryFolder;

/// Exit status of `halvern ARGUMENTS` run in `folder`; what it prints goes to the file "out".
int run(const TemporaryFolder& folder, const std::string& arguments) {
    const std::string command =
        "cd '" + folder.path().string() + "' && '" HALVERN_COMMAND "' " + arguments + " > out 2>&1";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(HalvernCommand, SynthesizesALine) {
    const TemporaryFolder folder;
    const std::string small = " --shots 2 --channels 4 --samples 10 --sps line --model model";
    ASSERT_EQ(run(folder, "synthesize line.sgy" + small), 0) << file_bytes(folder.file("out"));
    EXPECT_EQ(file_bytes(folder.file("line.sgy")).size(), 3600u + 8 * (240 + 40));
    EXPECT_NE(file_bytes(folder.file("out")).find("reflection t0 400 ms, velocity 2080 m/s"),
              std::string::npos);
    for (const char* file : {"line.s", "line.r", "line.x", "model"}) {
        EXPECT_TRUE(std::filesystem::exists(folder.file(file))) << file;
    }
}

TEST(HalvernCommand, ReplacesAFileOnlyWhenForced) {
    const TemporaryFolder folder;
    const std::string small = " --shots 1 --channels 1 --samples 1";
    folder.write("line.x", "mine");
    EXPECT_EQ(run(folder, "synthesize line.sgy --sps line" + small), 1);
    EXPECT_NE(file_bytes(folder.file("out")).find("'line.x' exists"), std::string::npos);
    EXPECT_EQ(file_bytes(folder.file("line.x")), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder.file("line.sgy"))) << "nothing is half done";
    EXPECT_EQ(run(folder, "synthesize line.sgy --sps line --force" + small), 0);
    EXPECT_NE(file_bytes(folder.file("line.x")), "mine");
}

TEST(HalvernCommand, WrongUsageIsStatusTwoAndSaysWhy) {
    const TemporaryFolder folder;
    const std::pair<const char*, const char*> kCommands[] = {
        {"", "subcommand"},
        {"dance", "no command 'dance'"},
        {"synthesize", "output is required"},
        {"synthesize a --shots many", "--shots"},
        {"synthesize a --shots 0", "at least one shot"},
        {"synthesize a --interval 0.0005", "sample interval"},
        {"synthesize a --interval 1.0005", "whole number"},
        {"synthesize a --shot-spacing 30", "multiple of --spacing"},
        {"synthesize a --format 7", "--format"},
        {"synthesize a --reflections 400,x", "--reflections"},
        {"synthesize a --shots 10000 --sps a", "file numbers up to 9999"},
        {"synthesize a --model ./a", "same file"}};
    for (const auto& [arguments, words] : kCommands) {
        EXPECT_EQ(run(folder, arguments), 2) << arguments;
        EXPECT_NE(file_bytes(folder.file("out")).find(words), std::string::npos)
            << arguments << "\n"
            << file_bytes(folder.file("out"));
        EXPECT_FALSE(std::filesystem::exists(folder.file("a"))) << arguments;
    }
    EXPECT_EQ(run(folder, "--help"), 0);
    EXPECT_EQ(run(folder, "synthesize --help"), 0);
    EXPECT_NE(file_bytes(folder.file("out")).find("Example:"), std::string::npos);
}

}  // namespace
}  // namespace halvern
