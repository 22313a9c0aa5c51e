#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <string>
#include <tuple>
#include <vector>

#include "numerics/key_sort.h"
#include "numerics/paired_sort.h"
#include "widths.h"

namespace halvern::numerics {
namespace {

TEST(PairedHeapSort, MovesCompanionsWithTheirKeys) {
    std::vector<double> keys{300, 100, 200};
    std::vector<std::string> names{"c", "a", "b"};
    ASSERT_TRUE(paired_heap_sort(std::span(keys), std::span(names)));
    EXPECT_EQ(keys, (std::vector<double>{100, 200, 300}));
    EXPECT_EQ(names, (std::vector<std::string>{"a", "b", "c"}));
    names.pop_back();
    EXPECT_FALSE(paired_heap_sort(std::span(keys), std::span(names)));
}

TEST(PairedHeapSort, SortsEveryLengthWithEqualKeys) {
    for (std::size_t n = 0; n < 70; ++n) {
        const std::vector<double> given = whole_noise(n, n);  // 17 different values
        std::vector<int> keys(given.begin(), given.end());
        std::vector<std::size_t> places(n);
        std::iota(places.begin(), places.end(), 0u);
        ASSERT_TRUE(paired_heap_sort(std::span(keys), std::span(places)));
        EXPECT_TRUE(std::ranges::is_sorted(keys));
        for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(keys[i], given[places[i]]);
        std::ranges::sort(places);
        for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(places[i], i) << "lost or doubled";
    }
}

std::vector<std::int64_t> arrivals(std::span<const KeyRecord> records) {
    std::vector<std::int64_t> all;
    for (const KeyRecord& record : records) all.push_back(record.arrival);
    return all;
}

TEST(SortRecords, ComparesKeyByKeyThenArrival) {
    static_assert(sizeof(KeyRecord) == 48);
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    std::vector<KeyRecord> records{{{kNaN, 0, 0, 0}, 0, 10},      {{1, 2, 0, 0}, 1, 11},
                                   {{1, -2, 0, 0}, 2, 12},        {{0, 9, 0, 0}, 3, 13},
                                   {{-0., 9, 0, 0}, 4, 14},       {{-5, 0, 0, 1}, 5, 15},
                                   {{-5, 0, 0, 0}, 6, 16},        {{-5, 0, -1, 5}, 7, 17},
                                   {{kInfinity, 0, 0, 0}, 8, 18}, {{-kNaN, -1, 0, 0}, 9, 19}};
    sort_records(records);
    EXPECT_EQ(arrivals(records), (std::vector<std::int64_t>{7, 6, 5, 3, 4, 2, 1, 8, 9, 0}));
    for (const KeyRecord& record : records) EXPECT_EQ(record.position, record.arrival + 10);
}

}  // namespace
}  // namespace halvern::numerics
