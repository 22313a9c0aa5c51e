#include "items/deconvolution.h"

#include <gmock/gmock.h>

#include <limits>
#include <random>

#include "items/stack.h"
#include "support/item_bench.h"
#include "support/minimum_phase_steps.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::Not;
using Reals = std::vector<long double>;

struct Design {
    const char* name;
    int samples, interval_us;
    const char* operator_ms;
    const char* noise_percent;
    int lag;             // samples; 0: frequency domain
    std::size_t length;  // operator samples, by hand: whole ones within operator_ms, and one
};

std::vector<std::string> lines(const Design& design) {
    return {"DOMAIN=" + std::to_string(design.lag ? 1 : 2),
            std::string("PREWHITEN=") + design.noise_percent,
            std::string("FILTERLEN=") + design.operator_ms,
            "PRDCTLAG=" + std::to_string(design.lag)};
}

// Random reflections, each followed by a decaying tail and an echo after 12 samples.
std::vector<float> field_trace(int samples) {
    std::mt19937 random(11);
    std::vector<float> trace;
    float tail = 0;
    for (int i = 0; i < samples; ++i) {
        tail = -0.7f * tail + static_cast<float>(random() % 2001) - 1000.0f;
        trace.push_back(tail - (i < 12 ? 0 : 0.5f * trace[static_cast<std::size_t>(i - 12)]));
    }
    return trace;
}

Reals autocorrelation(const std::vector<float>& trace, std::size_t lags, const Design& design) {
    Reals r(lags);
    for (std::size_t k = 0; k < lags; ++k) {
        for (std::size_t i = 0; i + k < trace.size(); ++i) {
            r[k] += static_cast<long double>(trace[i]) * trace[i + k];
        }
    }
    r[0] *= 1 + std::stof(design.noise_percent) / 100.0L;
    return r;
}

// Time domain: the normal equations by Gaussian elimination, the prediction error by its
// definition.
std::vector<float> prediction_error(const std::vector<float>& trace, const Design& design) {
    const std::size_t n = design.length;
    const auto lag = static_cast<std::size_t>(design.lag);
    const Reals r = autocorrelation(trace, n + lag, design);
    std::vector<Reals> row(n, Reals(n + 1));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j) row[i][j] = r[i > j ? i - j : j - i];
        row[i][n] = r[i + lag];
    }
    for (std::size_t p = 0; p < n; ++p) {
        for (std::size_t i = 0; i < n; ++i) {
            if (i == p) continue;
            const long double factor = row[i][p] / row[p][p];
            for (std::size_t j = p; j <= n; ++j) row[i][j] -= factor * row[p][j];
        }
    }
    std::vector<float> error = trace;
    for (std::size_t i = lag; i < trace.size(); ++i) {
        long double sum = trace[i];
        for (std::size_t j = 0; j < n && j + lag <= i; ++j) {
            sum -= row[j][n] / row[j][j] * trace[i - lag - j];
        }
        error[i] = static_cast<float>(sum);
    }
    return error;
}

// Frequency domain: the trace through the minimum-phase inverse.
std::vector<float> spiked(const std::vector<float>& trace, const Design& design) {
    std::size_t points = 2;
    while (points < 2 * trace.size()) points *= 2;
    const Reals filter =
        minimum_phase_steps(autocorrelation(trace, design.length + 1, design), points);
    std::vector<float> out;
    for (std::size_t i = 0; i < trace.size(); ++i) {
        long double sum = 0;
        for (std::size_t j = 0; j < design.length && j <= i; ++j) sum += filter[j] * trace[i - j];
        out.push_back(static_cast<float>(sum));
    }
    return out;
}

class DeconvolutionOf : public testing::TestWithParam<Design> {};

TEST_P(DeconvolutionOf, AgreesWithItsDefinition) {
    const Design& design = GetParam();
    const std::vector<float> trace = field_trace(design.samples);
    const auto expected = design.lag ? prediction_error(trace, design) : spiked(trace, design);
    ItemBench<Deconvolution> bench({.interval_us = design.interval_us, .samples = design.samples},
                                   lines(design));
    // Predictions keep the trace's size, to some thousands; spikes come out near 1.
    expect_near(bench.process(trace), expected, design.lag ? 1e-3f : 1e-6f);
    EXPECT_THAT(bench.log(), HasSubstr("Deconvolution: Domain of Deconvolution = Time Domain\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Designs, DeconvolutionOf,
    testing::Values(Design{"Installed", 200, 4000, "94", "0.1", 1, 24},
                    Design{"GappedWithoutNoise", 150, 2000, "40", "0", 9, 21},
                    Design{"FractionOfAMillisecondDropped", 100, 2500, "21", "1", 2, 11},
                    Design{"OneTerm", 60, 4000, "3.9", "5", 12, 1},
                    Design{"AsLongAsAllowed", 40, 4000, "120", "0.1", 9, 31},
                    Design{"Spiking", 100, 4000, "94", "0.1", 0, 24},
                    Design{"SpikingOneTerm", 20, 4000, "1", "0", 0, 1},
                    Design{"SpikingAPowerOfTwo", 64, 2000, "124", "1", 0, 63},
                    Design{"SpikingThroughTheSpectrum", 300, 1000, "298", "0.1", 0, 299}),
    [](const auto& design) { return design.param.name; });

// What is muted stays out of a stack: samples 300 to 599 are live, the operator has 201 or 181.
TEST(Deconvolution, LeavesExactZerosWhereItsOperatorReachesNoLiveSample) {
    const struct {
        int interval_us, samples;
        std::vector<std::string> lines;
        std::size_t end;  // of what may be live
    } kCases[] = {{4000, 1500, {"FILTERLEN=800"}, 600 + 201},
                  {4000, 1500, {"FILTERLEN=800", "DOMAIN=2"}, 1500},
                  {1000, 3000, {"FILTERLEN=180", "PRDCTLAG=7"}, 600 + 181 + 6},
                  {1000, 3000, {"FILTERLEN=180", "DOMAIN=2"}, 3000}};
    for (const auto& c : kCases) {
        const BenchLine line{.interval_us = c.interval_us, .samples = c.samples};
        const std::vector<float> whole = field_trace(c.samples);
        std::vector<float> muted(whole.size());
        std::copy(whole.begin() + 300, whole.begin() + 600, muted.begin() + 300);
        ItemBench<Deconvolution> bench(line, c.lines);
        ItemBench<Stack> stack(line, {"SORTED=1"});
        const std::vector<float> full = bench.process(whole), part = bench.process(muted);
        stack.process(full);
        stack.process(part);
        stack.finish();
        const std::vector<float>& stacked = stack.passed().at(0).samples;
        for (std::size_t i = 0; i < whole.size(); i = i == 299 ? c.end : i + 1) {
            ASSERT_EQ(part[i], 0) << c.lines[0] << ", sample " << i;
            ASSERT_EQ(stacked[i], full[i]) << c.lines[0] << ", sample " << i;
        }
        EXPECT_NE(part[300], 0);
    }
}

// By hand: r = 5, 2, so that with one term and without noise f = 2 / 5; with 25 % f = 2 / 6.25. Two
// samples on, r[2] = 0 leaves the trace alone; r[1] of 2, 0, 1 is 0, r[2] = 2.
TEST(Deconvolution, SubtractsThePredictionALagLater) {
    struct Case {
        std::vector<std::string> lines;
        std::vector<float> trace, expected;
    };
    for (const Case& hand : {
             Case{{"FILTERLEN=3", "PREWHITEN=0"}, {2, 1, 0, 0}, {2, .2f, -.4f, 0}},
             Case{{"FILTERLEN=3", "PREWHITEN=25"}, {2, 1, 0, 0}, {2, .36f, -.32f, 0}},
             Case{{"FILTERLEN=3", "PREWHITEN=0", "PRDCTLAG=2"}, {2, 1, 0, 0}, {2, 1, 0, 0}},
             Case{{"FILTERLEN=3", "PREWHITEN=0", "PRDCTLAG=2"}, {2, 0, 1, 0}, {2, 0, .2f, 0}},
         }) {
        ItemBench<Deconvolution> bench({.interval_us = 4000, .samples = 4}, hand.lines);
        expect_near(bench.process(hand.trace), hand.expected, 1e-7f);
        bench.finish();
        EXPECT_THAT(bench.log(), Not(HasSubstr("could not")));
    }
}

TEST(Deconvolution, ReportsTracesItCannotDoAndCountsThem) {
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    for (const char* domain : {"1", "2"}) {
        ItemBench<Deconvolution> bench({.interval_us = 4000, .samples = 8},
                                       {std::string("DOMAIN=") + domain, "FILTERLEN=8"});
        EXPECT_EQ(bench.process({1, 2, kInfinity, 4, 5, 6, 7, 8}).size(), 0u);
        const bool dead_passes = !bench.process(std::vector<float>(8)).empty();
        EXPECT_EQ(bench.process({5, -3, 1, 0, 0, 2, -1, 0}).size(), 8u);
        // Silence cannot be predicted; spiked it is silence still.
        EXPECT_EQ(dead_passes, *domain == '2');
        EXPECT_EQ(bench.base_item().GetSentCount(), *domain == '2' ? 2 : 1);
        if (dead_passes) {
            EXPECT_THAT(bench.passed()[0].samples, testing::Each(0.0f));
        }
        bench.finish();
        const std::string log = bench.log();
        EXPECT_TRUE(log.ends_with(
            *domain == '2' ? "Deconvolution: Traces that could not be deconvolved = 1\n"
                           : "Deconvolution: Traces that could not be deconvolved = 2\n"));
        EXPECT_THAT(
            log, HasSubstr(*domain == '2'
                               ? "*** ERROR in Deconvolution: This trace can't be deconvolved by "
                                 "minimum-phase filter with operator length = 8.0 ms and percent "
                                 "prewhitening = 0.100000%\n"
                               : "*** ERROR in Deconvolution: This trace can't be deconvolved by "
                                 "Wiener filter with operator length = 8.0 ms, prediction lag = "
                                 "1 and percent prewhitening = 0.100000%\n"));
    }
}

TEST(Deconvolution, ChecksItsParameters) {
    struct Case {
        std::vector<std::string> lines;  // of 26 samples at 4 ms: 96 and 100 ms
        const char* words;               // null: accepted
    };
    for (const Case& check : {
             Case{{"PREWHITEN=-0.5", "FILTERLEN=0"},
                  "*** ERROR in Deconvolution: \nPre-Whitening noise must be >= 0.0.\n   You "
                  "entered "
                  "'-0.50'.\n"},
             Case{{"FILTERLEN=0"},
                  "\nThe filter(or operator) length must be > 0.\n   You entered '0.0'.\n"},
             Case{{"FILTERLEN=96"}, nullptr},
             Case{{"FILTERLEN=96.1"},
                  "\nThe filter(or operator) length can't be greater than trace length, 96.0(ms).\n"
                  "   You entered '96.1(ms)'.\n"},
             Case{{"PRDCTLAG=0"},
                  "\nThe prediction lag should be a positive integer.\n   You entered '0'.\n"},
             Case{{"FILTERLEN=80", "PRDCTLAG=5"}, nullptr},
             Case{
                 {"FILTERLEN=80.5", "PRDCTLAG=5"},
                 "\nThe filter(or operator) length plus (prediction lag)*(sample rate) can't be "
                 "greater than trace length, 100.0(ms).\n   You entered filter length = '80.5(ms)' "
                 "and prediction lag = '5'. \n   The sample rate = '4.0(ms)'.\n"},
             Case{{"PRDCTLAG=2147483647"}, "prediction lag = '2147483647'"},
             Case{{"DOMAIN=2", "PRDCTLAG=-7"}, nullptr},
         }) {
        ItemBench<Deconvolution> bench({.interval_us = 4000, .samples = 26}, check.lines);
        if (!check.words) {
            bench.prepare();
            EXPECT_EQ(bench.process(field_trace(26)).size(), 26u) << bench.log();
        } else {
            EXPECT_JOB_ERROR(bench.prepare(), check.words);
        }
    }
    ItemBench<Deconvolution> empty({.interval_us = 4000, .samples = 0}, {});
    EXPECT_JOB_ERROR(empty.prepare(), "greater than trace length, -8.0(ms)");
}

}  // namespace
}  // namespace halvern
