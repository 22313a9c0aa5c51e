// From raw shots to a stacked section, as the example flow does it: the reflections of the line's
// known earth must stand where its model says, whatever the items in between do to the samples.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "cli/synthesize_files.h"
#include "job/whole_job.h"
#include "segy/segy_reader.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::EndsWith;

// The mean trace of the CDPs that have at least half of the full fold.
std::vector<double> mean_trace(const std::string& path, int full_fold) {
    SegyReader reader;
    EXPECT_EQ(reader.open(path, {.header_path = HALVERN_SOURCE_DIR "/header/default"}),
              SegyOpening::kOpened);
    const int fold = reader.definition().find("FOLD");
    std::vector<double> mean(static_cast<std::size_t>(reader.layout().samples));
    while (reader.read_next() == 1) {
        if (reader.definition().get_int(fold) < full_fold / 2) continue;
        const auto samples = reader.samples().floats(reader.definition());
        for (std::size_t i = 0; i < mean.size(); ++i) mean[i] += samples[i];
    }
    return mean;
}

TEST_F(WholeJob, ABruteStackShowsTheReflectionsAtTheirTimes) {
    synthetic::SyntheticLine line;  // 2 ms; 40 shots into 120 channels: fold 30
    ASSERT_EQ(
        synthetic::write_line(line, {.segy = folder.file("line.sgy"),
                                     .header_definition = HALVERN_SOURCE_DIR "/header/default"}),
        std::nullopt);
    ASSERT_EQ(start("cd " + quoted(folder.path().string()) + " && bin/halvern2 log1 rv3086 " +
                    HALVERN_SOURCE_DIR "/examples/brute-stack"),
              0)
        << log;
    EXPECT_THAT(log, EndsWith("Job completed normally at 'TIME'\n"));

    const std::vector<double> mean = mean_trace(folder.file("stack.sgy"), 30);
    // Zero-offset times and signs of the default earth.
    constexpr std::pair<int, int> kReflections[] = {{400, 1},  {620, -1},  {850, 1},  {1120, -1},
                                                    {1400, 1}, {1750, -1}, {2150, 1}, {2600, -1}};
    for (const auto& [t0_ms, sign] : kReflections) {
        const int expected = t0_ms / 2, around = 15;  // samples; half a wavelet to either side
        int peak = expected - around;
        const auto value = [&](int i) { return sign * mean[static_cast<std::size_t>(i)]; };
        for (int i = peak; i <= expected + around; ++i) {
            if (value(i) > value(peak)) peak = i;
        }
        EXPECT_LE(std::abs(peak - expected), 2) << "reflection at " << t0_ms << " ms";
        // It stands out: well above everything half way to its neighbours.
        const auto quiet = [&](int from) {
            double largest = 0;
            for (int i = from; i < from + 20; ++i) largest = std::max(largest, std::abs(value(i)));
            return largest;
        };
        EXPECT_GT(value(peak), 2 * quiet(expected + 35)) << "reflection at " << t0_ms << " ms";
    }
}

}  // namespace
}  // namespace halvern
