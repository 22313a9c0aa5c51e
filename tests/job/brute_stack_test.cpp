// From raw shots to a stacked section, as the example flow does it: the reflections of the line's
// known earth must stand where its model says, whatever the items in between do to the samples.

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "job/whole_job.h"
#include "segy/segy_reader.h"
#include "synthetic/synthesize_files.h"

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

// A line as it comes from the field: its trace headers say file number and channel, and the SPS
// files beside it the rest.
class RawLine : public WholeJob {
protected:
    RawLine() {
        std::ifstream full(HALVERN_SOURCE_DIR "/header/default");
        std::ofstream raw(folder.file("raw-header"));
        for (std::string text; std::getline(full, text);) {
            for (const char* word : {"FFID ", "CHAN ", "TRACEID ", "NUMSAMPS ", "SAMPRATE "}) {
                if (text.find(word) != std::string::npos) raw << text << '\n';
            }
        }
        raw.close();
        EXPECT_FALSE(synthetic::write_line(line, {.segy = folder.file("raw.sgy"),
                                                  .sps = folder.file("line"),
                                                  .header_definition = folder.file("raw-header")}));
    }
    int run_here(const std::string& flow) {
        return start("cd " + quoted(folder.path().string()) + " && bin/halvern2 log1 rv3086 " +
                     flow);
    }
    synthetic::SyntheticLine line;  // 2 ms; 40 shots into 120 channels: fold 30
};

TEST_F(RawLine, SpsAndBinningGiveEveryCdpItsFold) {
    folder.write("flow",
                 "$SEGYDINPUT\nFILE=raw.sgy\n$MERGE\nSOURCEFILE=line.s\nRECEIVERFILE=line.r\n"
                 "RELATIONFILE=line.x\n$TRACEBINNING\nXORIGIN=610590\nYORIGIN=5719995\n"
                 "XBINSIZE=10\nYBINSIZE=10\nXLINESTART=1\nXLINEEND=1\nNLINESTART=1\n"
                 "NLINEEND=276\n$SEGYDOUTPUT\nFILE=binned.sgy\nOUTPUTFORMAT=1\n");
    ASSERT_EQ(run_here("flow"), 0) << log;
    SegyReader reader;
    ASSERT_EQ(reader.open(folder.file("binned.sgy"),
                          {.header_path = HALVERN_SOURCE_DIR "/header/default"}),
              SegyOpening::kOpened);
    const int cdpn = reader.definition().find("CDPN");
    std::vector<int> fold(277);
    while (reader.read_next() == 1) {
        const int cdp = reader.definition().get_int(cdpn);
        ASSERT_TRUE(cdp >= 1 && cdp <= 276) << cdp;
        ++fold[static_cast<std::size_t>(cdp)];
    }
    // By the geometry: midpoints of 40 shots every 4 CDPs, 120 channels, each a CDP wide.
    for (int cdp = 1; cdp <= 276; ++cdp) {
        int expected = 0;
        for (int shot = 0; shot < 40; ++shot) expected += cdp > 4 * shot && cdp <= 4 * shot + 120;
        EXPECT_EQ(fold[static_cast<std::size_t>(cdp)], expected) << "CDP " << cdp;
    }
}

TEST_F(RawLine, ABruteStackShowsTheReflectionsAtTheirTimes) {
    ASSERT_EQ(run_here(HALVERN_SOURCE_DIR "/examples/brute-stack"), 0) << log;
    EXPECT_THAT(log, EndsWith("Job completed normally at 'TIME'\n"));

    const std::vector<double> mean = mean_trace(folder.file("stack.sgy"), 30);
    // Zero-offset times and signs of the default earth.
    constexpr std::pair<int, int> kReflections[] = {{400, 1},  {620, -1},  {850, 1},  {1120, -1},
                                                    {1400, 1}, {1750, -1}, {2150, 1}, {2600, -1}};
    for (const auto& [t0_ms, sign] : kReflections) {
        const int expected = t0_ms / 2, around = 15;  // samples; half a wavelet to either side
        int peak = expected - around;
        const auto value = [&, factor = sign](int i) {
            return factor * mean[static_cast<std::size_t>(i)];
        };
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
