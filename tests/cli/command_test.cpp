// The command as it is typed: what it prints, its exit statuses, and what it leaves alone.

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "picture/png.h"
#include "support/small_segy.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::StartsWith;

/// A folder with a file of two traces, and what `halvern` did there last.
class Command : public testing::Test {
protected:
    Command() {
        folder.write(
            "in.sgy",
            small_segy(4000, 4,
                       {{.ffid = 1, .channel = 1, .offset = -50, .samples = {3, -4, 0, 2}},
                        {.ffid = 1, .channel = 2, .offset = 50, .samples = {0, 0, 0, 0}}}));
    }
    /// Exit status; `said` gets standard output and error. Nobody is at the keyboard.
    int run(const std::string& arguments) {
        const std::string command = "cd '" + folder.path().string() +
                                    "' && { '" HALVERN_COMMAND "' " + arguments +
                                    "; } > said 2>&1 < /dev/null";
        const int status = std::system(command.c_str());
        said = file_bytes(folder.file("said"));
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    struct Case {
        const char* arguments;
        int status;
        const char* words;
    };
    void expect(std::initializer_list<Case> cases) {
        for (const auto& [arguments, status, words] : cases) {
            EXPECT_EQ(run(arguments), status) << arguments << '\n' << said;
            EXPECT_THAT(said, HasSubstr(words)) << arguments;
        }
    }
    TemporaryFolder folder;
    std::string said;
};

/// The same as a system directory with the flow "gain".
class CommandAtWork : public Command {
protected:
    CommandAtWork() {
        EXPECT_EQ(run("init ."), 0) << said;
        EXPECT_EQ(run("flow new gain SEGYDINPUT FILE=in.sgy AGC WINDOWSIZE=8 SEGYDOUTPUT "
                      "FILE=out.sgy"),
                  0)
            << said;
        EXPECT_THAT(said, StartsWith("Writing parameters to '"));
    }
};

TEST_F(CommandAtWork, RunsAFlowToItsEnd) {
    ASSERT_EQ(run("run gain AGC.WINDOWSIZE=12"), 0) << said;
    EXPECT_THAT(said, HasSubstr("AGC: Window Size = 12\n"));
    EXPECT_THAT(said, HasSubstr("Job 1 is done"));
    EXPECT_THAT(file_bytes(folder.file("scratch/flow1")),
                StartsWith("$PROSPECT=default\n$SEGYDINPUT\n"));
    EXPECT_EQ(run("flow show gain"), 0);
    EXPECT_THAT(said, HasSubstr("WINDOWSIZE=8\n"));  // the flow has kept its own value
    EXPECT_EQ(run("jobs --csv"), 0);
    EXPECT_THAT(said, HasSubstr("\n1,gain,done,2,"));
    EXPECT_EQ(run("run gain --detach"), 0);
    EXPECT_THAT(said, HasSubstr("'halvern log 2 -f' follows its log, 'halvern stop 2' ends it"));
    EXPECT_EQ(run("log -f"), 0);
    EXPECT_THAT(said, HasSubstr("Job completed normally"));
}

TEST_F(CommandAtWork, SaysWhatIsWrongAndWhatToDoNext) {
    expect({
        {"run gain AGC.WINDOWSIZE=0", 1, "--no-check would start it"},
        {"run gain AGC.WINDOWSIZE=0 --no-check", 1, "job 1 failed; its log is"},
        {"run nothing", 1, "'halvern flow list' names those there are"},
        {"run gain AGC.SIZE=0", 1, "AGC has no parameter 'SIZE'"},
        {"flow set gain AGC", 2, "values is required"},
        {"flow new gain AGC", 1, "--force would replace it"},
        {"flow new 'a\nb' AGC", 1, "cannot name a flow"},
        {"flow item NOTHING", 1, "'halvern flow items' lists them"},
        {"flow check nothing", 1, "there is no flow"},
        {"stop 1", 1, "not running (failed)"},
        {"stop 9", 1, "'halvern jobs' lists those there are"},
        {"log 0", 2, "Value 0 not in range"},
        {"prospect use nowhere", 1, "'halvern prospect list' names"},
        {"prospect remove Default", 1, "stays"},
        {"flow list -p nowhere", 1, "there is no prospect 'nowhere'"},
        {"--root /usr jobs", 1, "'halvern init /usr' makes it one"},
        {"flow", 2, "subcommand is required"},
        {"", 2, "subcommand"},
        {"dance", 2, "no command 'dance'"},
        {"flow show gain > /dev/full", 1, "standard output cannot be written"},
    });
}

TEST_F(Command, HasHelpWithAnExampleForEveryCommandThatTheManualTakesOver) {
    EXPECT_EQ(run("__manual"), 0);
    int commands = 0;
    for (std::size_t at = 0; (at = said.find(".SS \"halvern ", at)) != std::string::npos;) {
        const std::size_t end = said.find(".fi", at);
        const std::string help = said.substr(at, end - at);
        EXPECT_TRUE(help.find("Example") != std::string::npos ||
                    help.starts_with(".SS \"halvern image "))
            << help;
        at = end;
        ++commands;
    }
    EXPECT_GT(commands, 25);
    expect({{"--help", 0, "Example"}, {"flow set --help", 0, "halvern flow set gain AGC"}});
}

TEST_F(CommandAtWork, CompletesWhatIsTyped) {
    const std::pair<const char*, const char*> kLines[] = {
        {"flow s", "set\nshow\n"},
        {"flow show g", "gain\n"},
        {"flow set gain AGC ''", "WINDOWSIZE=\n"},
        {"run gain AGC.", "AGC.WINDOWSIZE=\n"},
        {"flow set gain SEGYDOUTPUT OUTPUTFORMAT=I", "OUTPUTFORMAT=IEEE\nOUTPUTFORMAT=IBM\n"},
        {"flow new x AG", "AGC\n"},
        {"--root . prospect use ''", "default\n"},
        {"jobs --cs", "--csv\n"},
        {"plot x --style w", "wiggle\n"},
        {"info x --headers FFID,CHAN", "FFID,CHAN\nFFID,CHANSET\n"},
        {"info --select FF", "FFID=\n"},
        {"flow show nothing ''", ""}};
    for (const auto& [line, words] : kLines) {
        EXPECT_EQ(run(std::string("__complete ") + line), 0);
        EXPECT_EQ(said, words) << line;
    }
}

TEST_F(Command, ShowsDataToPeopleAndPrograms) {
    EXPECT_EQ(run("info in.sgy --headers CHAN,OFFSET --csv"), 0);
    EXPECT_EQ(said, "trace,CHAN,OFFSET\n1,1,-50\n2,2,50\n");
    EXPECT_EQ(run("info in.sgy --ranges --survey --samples"), 0);
    for (const char* line :
         {"in.sgy: SEG-Y file\n", "  traces                  2\n",
          "  samples                 4 every 4 ms, 12 ms long\n",
          "OFFSET       -50       50         2   100  Source to receiver offset\n",
          "  shots                   1, FFID 1\n", "  dead traces             1 (50 %)\n",
          "  zeros                   5 (62.5 %)\n"}) {
        EXPECT_THAT(said, HasSubstr(line));
    }
    EXPECT_THAT(said, Not(HasSubstr("Statistics:"))) << "the readers' log is kept away";
    expect({{"info no.sgy in.sgy", 1, "in.sgy: SEG-Y file"},
            {"info no.sgy", 1, "there is no file 'no.sgy'"},
            {"info in.sgy --headers NOSUCH", 1, "no word 'NOSUCH'"},
            {"info in.sgy --header none", 1, "cannot read the header description 'none'"},
            {"info in.sgy --ranges --range 3-1", 2, "backwards"},
            {"info in.sgy --range 1", 2, "choose the traces of --headers"},
            {"info in.sgy --ranges --samples --csv", 2, "one table"},
            {"info in.sgy in.sgy --csv", 2, "one file"},
            {"info in.sgy --csv", 0, "\nsamples,4\nsample interval ms,4\n"},
            {"info in.sgy --survey --csv", 0, "\noffsets minimum,-50\noffsets maximum,50\n"},
            {"info in.sgy --samples --csv", 0, "\nzeros,5\n"},
            {"info in.sgy --ranges --range 7", 1, "only 2 traces"}});
}

TEST_F(Command, DrawsPictures) {
    if (picture::png_problem()) GTEST_SKIP() << "built without PNG";
    expect({{"plot in.sgy", 2, "output"},
            {"plot in.sgy -o in.sgy", 1, "is the file to be shown"},
            {"plot in.sgy -o p.png --style pink", 2, "--style"},
            {"plot in.sgy -o p.png --gain nan", 2, "above 0"},
            {"plot in.sgy -o p.png --map --fold", 2, "pictures of their own"},
            {"plot in.sgy -o p.png --map --time 0-8", 2, "--time"},
            {"plot in.sgy -o p.png --fold --agc 10", 2, "--agc: is for pictures of traces"},
            {"plot in.sgy -o p.png --scale 2 --percentile 90", 2, "--percentile"},
            {"plot in.sgy -o p.png --map", 1, "hold no positions"},
            {"plot in.sgy -o p.png --fold", 1, "no CDP numbers"},
            {"plot in.sgy -o p.png --select CHAN=9", 1, "no trace is selected"},
            {"plot in.sgy -o no/p.png", 1, "cannot write 'no/p.png'"}});
    ASSERT_EQ(run("synthesize l.sgy --shots 3 --channels 6 --samples 200"), 0);
    for (const char* options : {"", "--style wiggle --agc 100 --words FFID,CHAN,OFFSET,trace",
                                "--style red-blue --balance --time 50-200", "--spectrum", "--map",
                                "--map --colour SRCELEV", "--fold", "--range 5 --width 400"}) {
        EXPECT_EQ(run(std::string("plot l.sgy -o p.png ") + options), 0) << options;
        EXPECT_EQ(said, "wrote p.png\n") << options;
        EXPECT_EQ(file_bytes(folder.file("p.png")).substr(1, 3), "PNG") << options;
    }
}

TEST_F(Command, SynthesizesALine) {
    const std::string small = " --shots 2 --channels 4 --samples 10 --sps line --model model";
    folder.write("line.x", "mine");
    EXPECT_EQ(run("synthesize line.sgy" + small), 1);
    EXPECT_THAT(said, HasSubstr("'line.x' exists"));
    EXPECT_EQ(file_bytes(folder.file("line.x")), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder.file("line.sgy"))) << "nothing is half done";
    ASSERT_EQ(run("synthesize line.sgy --force" + small), 0) << said;
    EXPECT_EQ(file_bytes(folder.file("line.sgy")).size(), 3600u + 8 * (240 + 40));
    EXPECT_THAT(said, HasSubstr("reflection t0 400 ms, velocity 2080 m/s"));
    for (const char* file : {"line.s", "line.r", "line.x", "model"}) {
        EXPECT_NE(file_bytes(folder.file(file)), "mine") << file;
    }
    expect({{"synthesize", 2, "output is required"},
            {"synthesize a --shots many", 2, "--shots"},
            {"synthesize a --shots 0", 2, "at least one shot"},
            {"synthesize a --interval 0.0005", 2, "sample interval"},
            {"synthesize a --interval 1.0005", 2, "whole number"},
            {"synthesize a --shot-spacing 30", 2, "multiple of --spacing"},
            {"synthesize a --format 7", 2, "--format"},
            {"synthesize a --reflections 400,x", 2, "--reflections"},
            {"synthesize a --shots 10000 --sps a", 2, "file numbers up to 9999"},
            {"synthesize a --model ./a", 2, "same file"}});
    EXPECT_FALSE(std::filesystem::exists(folder.file("a")));
}

}  // namespace
}  // namespace halvern
