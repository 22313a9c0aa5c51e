// The commands as they are typed, from an empty directory to a job that has ended.

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "support/small_segy.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;

class Commands : public testing::Test {
protected:
    Commands() {
        EXPECT_EQ(run("init ."), 0) << said;
        folder.write("in.sgy", small_segy(4000, 4, {{.samples = {3, 4, 0, 0}}}));
        EXPECT_EQ(run("flow new gain SEGYDINPUT FILE=in.sgy AGC WINDOWSIZE=8 SEGYDOUTPUT "
                      "FILE=out.sgy"),
                  0)
            << said;
        EXPECT_THAT(said, testing::StartsWith("Writing parameters to '"));
    }
    int run(const std::string& arguments) {
        const std::string command = "cd '" + folder.path().string() +
                                    "' && '" HALVERN_COMMAND "' " + arguments +
                                    " > said 2>&1 < /dev/null";
        const int status = std::system(command.c_str());
        said = file_bytes(folder.file("said"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    TemporaryFolder folder;
    std::string said;
};

TEST_F(Commands, RunAFlowToItsEnd) {
    ASSERT_EQ(run("run gain AGC.WINDOWSIZE=12"), 0) << said;
    EXPECT_THAT(said, HasSubstr("AGC: Window Size = 12\n"));
    EXPECT_THAT(said, HasSubstr("Job 1 is done"));
    EXPECT_THAT(file_bytes(folder.file("scratch/flow1")),
                testing::StartsWith("$PROSPECT=default\n$SEGYDINPUT\n"));
    EXPECT_EQ(run("jobs --csv"), 0);
    EXPECT_THAT(said, HasSubstr("\n1,gain,done,1,"));
    EXPECT_EQ(run("log"), 0);
    EXPECT_THAT(said, HasSubstr("Job completed normally"));
    EXPECT_EQ(run("flow show gain"), 0);
    EXPECT_THAT(said, HasSubstr("WINDOWSIZE=8\n"));  // the flow has kept its own value
}

TEST_F(Commands, FollowADetachedJobFromElsewhere) {
    EXPECT_EQ(run("run gain --detach"), 0);
    EXPECT_THAT(said, HasSubstr("'halvern log 1 -f' follows its log, 'halvern stop 1' ends it"));
    EXPECT_EQ(run("log 1 -f"), 0);
    EXPECT_THAT(said, HasSubstr("Job completed normally"));
}

TEST_F(Commands, SayWhatIsWrongAndWhatToDoNext) {
    const struct {
        const char* arguments;
        int status;
        const char* words;
    } kCases[] = {
        {"run gain AGC.WINDOWSIZE=0", 1, "job 1 failed; its log is"},
        {"run nothing", 1, "'halvern flow list' names those there are"},
        {"run gain AGC.SIZE=0", 1, "AGC has no parameter 'SIZE'"},
        {"flow set gain AGC", 2, "values is required"},
        {"flow new gain AGC", 1, "--force would replace it"},
        {"flow item NOTHING", 1, "'halvern flow items' lists them"},
        {"flow check nothing", 1, "cannot read the flow"},
        {"stop 1", 1, "not running (failed)"},
        {"stop 9", 1, "'halvern jobs' lists those there are"},
        {"log 0", 2, "Value 0 not in range"},
        {"prospect use nowhere", 1, "'halvern prospect list' names"},
        {"prospect remove default", 1, "stays"},
        {"flow list -p nowhere", 1, "there is no prospect 'nowhere'"},
        {"--root /usr jobs", 1, "'halvern init /usr' makes it one"},
        {"flow", 2, "subcommand is required"},
    };
    for (const auto& test : kCases) {
        EXPECT_EQ(run(test.arguments), test.status) << test.arguments << "\n" << said;
        EXPECT_THAT(said, HasSubstr(test.words)) << test.arguments;
    }
}

TEST_F(Commands, HaveHelpWithAnExampleThatTheManualTakesOver) {
    EXPECT_EQ(run("__manual"), 0);
    const std::string manual = said;
    for (const char* command : {"init",
                                "config",
                                "prospect",
                                "prospect list",
                                "prospect create",
                                "prospect use",
                                "prospect show",
                                "prospect remove",
                                "flow",
                                "flow items",
                                "flow item",
                                "flow new",
                                "flow set",
                                "flow enable",
                                "flow disable",
                                "flow list",
                                "flow show",
                                "flow check",
                                "flow edit",
                                "run",
                                "jobs",
                                "log",
                                "stop"}) {
        EXPECT_EQ(run(std::string(command) + " --help"), 0) << command;
        EXPECT_THAT(said, HasSubstr("Example")) << command;
        EXPECT_THAT(manual, HasSubstr("\"halvern " + std::string(command) + "\"")) << command;
    }
}

TEST_F(Commands, CompleteWhatIsTyped) {
    const std::pair<const char*, const char*> kLines[] = {{"flow s", "set\nshow\n"},
                                                          {"flow show g", "gain\n"},
                                                          {"flow set gain AGC ''", "WINDOWSIZE=\n"},
                                                          {"run gain AGC.", "AGC.WINDOWSIZE=\n"},
                                                          {"flow new x AG", "AGC\n"},
                                                          {"--root . prospect use ''", "default\n"},
                                                          {"jobs --c", "--csv\n"},
                                                          {"flow show nothing ''", ""}};
    for (const auto& [line, words] : kLines) {
        EXPECT_EQ(run(std::string("__complete ") + line), 0);
        EXPECT_EQ(said, words) << line;
    }
}

}  // namespace
}  // namespace halvern
