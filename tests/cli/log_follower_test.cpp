#include "cli/log_follower.h"

#include <gtest/gtest.h>

#include "support/log_capture.h"

namespace halvern {
namespace {

using namespace testing_support;

// By hand: 3,000 of 12,000 is a quarter, 6 of 24 cells; at 500 a second 9,000 more take 18 s.
TEST(ProgressBar, TellsShareRateAndTimeLeft) {
    EXPECT_EQ(progress_text({.done = 3000, .total = 12000, .rate = 500}),
              "[######..................] 25 %  3,000 of 12,000  500/s  0:18 left");
    EXPECT_EQ(progress_text({.done = 5}), "[........................] 0 %  5 of 0");
    EXPECT_TRUE(progress_text({.done = 1LL << 62, .total = 3})
                    .starts_with("[########################] 100 %"));
    EXPECT_EQ(clock_text(3723), "1:02:03");
}

TEST(LogView, ColoursWarningsAndFoldsTheLinesOfSingleTraces) {
    std::FILE* out = std::tmpfile();
    LogView view(out, {.colour = true, .progress = true});
    for (const char* line :
         {"a\033[1m", "*** WARNING in AGC: w", "  Number of Traces:  9", "Reading Trace 5",
          "S: Sorting 9 traces.", "S: Writing Sorted Trace #4", "end"}) {
        view.take_line(line);
    }
    view.finish();
    EXPECT_EQ(text_of(out),
              "a?[1m\n\033[33m*** WARNING in AGC: w\033[0m\n  Number of Traces:  9\n"
              "\r\033[KS: Sorting 9 traces.\n\r\033[Kend\n\r\033[K");
    std::fclose(out);
}

}  // namespace
}  // namespace halvern
