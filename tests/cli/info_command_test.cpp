#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <string>

#include "picture/png.h"
#include "support/small_segy.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using testing_support::file_bytes;
using testing_support::TemporaryFolder;

struct Answer {
    int status;
    std::string text;  // standard output and error
};

Answer run(const TemporaryFolder& folder, const std::string& arguments) {
    const std::string command =
        "cd '" + folder.path().string() + "' && '" HALVERN_COMMAND "' " + arguments + " > out 2>&1";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, file_bytes(folder.file("out"))};
}

void write_small(const TemporaryFolder& folder) {
    folder.write("a.sgy", testing_support::small_segy(
                              4000, 4,
                              {{.ffid = 1, .channel = 1, .offset = -50, .samples = {1, -3, 0, 2}},
                               {.ffid = 1, .channel = 2, .offset = 50, .samples = {0, 0, 0, 0}}}));
}

TEST(InfoCommand, PrintsTablesForPeopleAndForPrograms) {
    const TemporaryFolder folder;
    write_small(folder);
    EXPECT_EQ(run(folder, "info a.sgy --headers FFID,CHAN,OFFSET --csv").text,
              "trace,FFID,CHAN,OFFSET\n1,1,1,-50\n2,1,2,50\n");
    EXPECT_EQ(run(folder, "info a.sgy --headers CHAN --select OFFSET=50 --csv").text,
              "trace,CHAN\n2,2\n");
    const Answer all = run(folder, "info a.sgy --ranges --survey --samples");
    EXPECT_EQ(all.status, 0);
    for (const char* line :
         {"a.sgy: SEG-Y file\n", "  traces                  2\n",
          "  samples                 4 every 4 ms, 12 ms long\n",
          "OFFSET       -50       50         2   100  Source to receiver offset\n",
          "  shots                   1, FFID 1\n", "  dead traces             1 (50 %)\n",
          "  zeros                   5 (62.5 %)\n"}) {
        EXPECT_NE(all.text.find(line), std::string::npos) << line << "in\n" << all.text;
    }
    EXPECT_EQ(all.text.find("Statistics:"), std::string::npos) << "the readers' log is kept away";
}

TEST(InfoCommand, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    write_small(folder);
    const struct {
        const char* arguments;
        int status;
        const char* words;
    } kCases[] = {{"info", 2, "files"},
                  {"info b.sgy", 1, "there is no file 'b.sgy'"},
                  {"info a.sgy --headers NOSUCH", 1, "no word 'NOSUCH'"},
                  {"info a.sgy --header none", 1, "cannot read the header description 'none'"},
                  {"info a.sgy --range 3-1", 2, "backwards"},
                  {"info a.sgy --ranges --range 7", 1, "only 2 traces"},
                  {"plot a.sgy", 2, "output"},
                  {"plot a.sgy -o a.sgy", 1, "is the file to be shown"},
                  {"plot a.sgy -o p.png --style pink", 2, "--style"},
                  {"plot a.sgy -o p.png --map --fold", 2, "pictures of their own"},
                  {"plot a.sgy -o p.png --map", 1, "hold no positions"},
                  {"plot a.sgy -o p.png --fold", 1, "no CDP numbers"},
                  {"plot a.sgy -o p.png --select CHAN=9", 1, "no trace is selected"},
                  {"plot a.sgy -o no/p.png", 1, "cannot write 'no/p.png'"},
                  {"info --help", 0, "Example:"},
                  {"plot --help", 0, "Example:"}};
    for (const auto& [arguments, status, words] : kCases) {
        if (std::string(arguments).starts_with("plot a") && !picture::png_problem().empty())
            continue;
        const Answer answer = run(folder, arguments);
        EXPECT_EQ(answer.status, status) << arguments << '\n' << answer.text;
        EXPECT_NE(answer.text.find(words), std::string::npos) << arguments << '\n' << answer.text;
    }
}

TEST(PlotCommand, WritesPictures) {
    if (!picture::png_problem().empty()) GTEST_SKIP() << "built without PNG";
    const TemporaryFolder folder;
    ASSERT_EQ(run(folder, "synthesize l.sgy --shots 3 --channels 6 --samples 200").status, 0);
    for (const char* options : {"", "--style wiggle --agc 100 --words FFID,CHAN,OFFSET,trace",
                                "--style red-blue --balance --time 50-200", "--spectrum", "--map",
                                "--map --colour SRCELEV", "--fold", "--range 5 --width 400"}) {
        const Answer answer = run(folder, std::string("plot l.sgy -o p.png ") + options);
        EXPECT_EQ(answer.text, "wrote p.png\n") << options;
        EXPECT_EQ(file_bytes(folder.file("p.png")).substr(1, 3), "PNG") << options;
    }
}

}  // namespace
}  // namespace halvern
