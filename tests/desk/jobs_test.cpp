#include "desk/jobs.h"

#include <gmock/gmock.h>

#include <thread>

#include "desk/command_error.h"
#include "foundation/global_config.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using Kind = LogReading::LineKind;

class Jobs : public testing::Test {
protected:
    std::string scratch(const std::string& name) const { return "scratch/" + name; }
    SystemPlace place;
};

TEST_F(Jobs, TakeTheNumberAboveTheHighestOfAnyOfTheirFiles) {
    for (const char* name : {"flow2", "log7", "job5", "SCR99", "flow", "log8x", "flow-9"}) {
        place.folder.write(scratch(name), "");
    }
    EXPECT_THAT(job_numbers(), ElementsAre(2, 5, 7));
    EXPECT_EQ(reserve_job("$AGC\n").number, 8);
    EXPECT_EQ(file_bytes(place.folder.file("scratch/flow8")), "$AGC\n");
    place.folder.write(scratch("log2147483647"), "");  // there is no number above
    EXPECT_THROW(reserve_job("x"), CommandError);
}

TEST_F(Jobs, NeverShareANumber) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int k = 0; k < 10; ++k) (void)reserve_job("x");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(job_numbers().size(), 80u);
    EXPECT_EQ(job_numbers().back(), 80);
}

TEST_F(Jobs, AreJudgedByTheirLogAndProcess) {
    const std::string reading = "  Number of Traces:           2500\nReading Trace 1000\n";
    const struct {
        std::string record, log;
        JobState state;
        long long read;
    } kCases[] = {
        {"PROCESS=0\n", "", JobState::kStarting, 0},
        {"PROCESS=0\nSTART=1000\n", "", JobState::kKilled, 0},  // whoever started it is gone
        {"PROCESS=999999999\n", reading, JobState::kKilled, 1000},
        {"PROCESS=1\nLOG=not its log\n", reading, JobState::kKilled, 1000},  // number used again
        {"PROCESS=1\n", reading + "Job completed normally at 'x'\n", JobState::kDone, 2500},
        {"PROCESS=1\n", reading + "Job terminated with error at 'x'\n", JobState::kFailed, 1000},
        {"PROCESS=1\n", "The job was asked to stop.\nJob terminated with error at 'x'\n",
         JobState::kStopped, 0},
    };
    int number = 0;
    for (const auto& job : kCases) {
        const std::string n = std::to_string(++number);
        place.folder.write(scratch("flow" + n), "$AGC\n");
        place.folder.write(scratch("job" + n), job.record);
        if (!job.log.empty()) place.folder.write(scratch("log" + n), job.log);
        EXPECT_STREQ(state_name(job_status(number).state), state_name(job.state)) << n;
        EXPECT_EQ(job_status(number).log.read(), job.read) << n;
    }
    EXPECT_THROW(job_status(99), CommandError);
}

TEST(LogLines, AreToldApart) {
    const std::pair<const char*, Kind> kLines[] = {
        {"AGC: Window Size = 256", Kind::kPlain},
        {"Reading Trace 3000", Kind::kProgress},
        {"Reading Traces of the line", Kind::kPlain},
        {"*** WARNING in AGC: The window size is greater", Kind::kWarning},
        {"*** ERROR in AGC: no", Kind::kError},
        {"PARAMETER ERROR:  A display", Kind::kError},
        {"No flow to process.", Kind::kError},
        {"Cannot Read parameters from 'x'", Kind::kError},
        {"Job terminated with error at 'x'", Kind::kError}};
    for (const auto& [line, kind] : kLines) {
        LogReading reading;
        EXPECT_EQ(reading.take(line), kind) << line;
    }
}

TEST_F(Jobs, AreCleanedWhenTheyHaveEnded) {
    for (const char* name : {"flow1", "flow2", "flow3"})
        place.folder.write(scratch(name), "$AGC\n");
    place.folder.write(scratch("log1"), "Job completed normally at 'x'\n");
    place.folder.write(scratch("job3"), JobRecord{.start = std::time(nullptr)}.text());  // starts
    EXPECT_THROW(clean_jobs({3}), CommandError);
    EXPECT_THROW(clean_jobs({9}), CommandError);
    place.folder.write(scratch("job2"), "PROCESS=999999999\n");
    EXPECT_EQ(clean_jobs({}), 2);
    EXPECT_THAT(job_numbers(), ElementsAre(3));
}

// The second pass of a sort reads the input again, in another order.
TEST(LogProgress, FollowsTheSortedTracesAfterTheInput) {
    LogReading reading;
    for (const char* line : {"  Number of Traces:           400", "Reading Trace 300"}) {
        (void)reading.take(line);
    }
    EXPECT_EQ(reading.progress().done, 300);
    EXPECT_EQ(reading.progress().total, 400);
    for (const char* line : {"Trace Sort: Sorting 200 traces.", "Reading Trace 3"}) {
        (void)reading.take(line);
    }
    EXPECT_EQ(reading.progress().done, 0);
    EXPECT_EQ(reading.take("Trace Sort: Writing Sorted Trace #50"), Kind::kProgress);
    EXPECT_EQ(reading.progress().done, 50);
    EXPECT_EQ(reading.progress().total, 200);
    EXPECT_EQ(reading.read(), 300);
}

TEST(GrowingLogs, GiveWholeLines) {
    TemporaryFolder folder;
    GrowingLog log(folder.file("log"));
    std::vector<std::string> lines;
    const auto read = [&](bool last) {
        log.read([&](std::string_view line) { lines.emplace_back(line); }, last);
    };
    read(false);
    folder.write("log", "a\nb");
    read(false);
    EXPECT_THAT(lines, ElementsAre("a"));
    folder.write("log", "a\nbc\nd");
    read(true);
    EXPECT_THAT(lines, ElementsAre("a", "bc", "d"));
}

}  // namespace
}  // namespace halvern
