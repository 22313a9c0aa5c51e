#include "job/chain.h"

#include <gmock/gmock.h>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;

class AnyItem final : public FlowItem {
public:
    explicit AnyItem(FlowItemKind kind) : FlowItem(kind, LogFlag::kQuiet) {}
};

std::unique_ptr<FlowItem> create_any(const FlowSection& section) {
    if (section.kind == FlowItemKind::kTraceMix) return nullptr;  // a kind that cannot be made
    return std::make_unique<AnyItem>(section.kind);
}

std::vector<std::string> names(const std::vector<std::pair<FlowItemKind, bool>>& sections) {
    std::list<FlowSection> list;
    for (const auto& [kind, disabled] : sections) {
        list.push_back(section_of(kind, {}));
        list.back().disabled = disabled;
    }
    const auto head = BuildChain(list, create_any);
    std::vector<std::string> found;
    for (const FlowItem* item = head.get(); item; item = item->next()) {
        found.emplace_back(item->GetName());
    }
    return found;
}

constexpr auto kInput = FlowItemKind::kSegyDiskInput;
constexpr auto kSort = FlowItemKind::kTraceSort;
constexpr auto kDisplay = FlowItemKind::kTraceDisplay2d;
constexpr auto kExclusive = FlowItemKind::kGeometryDisplay;

TEST(BuildChain, LinksEnabledItemsInOrder) {
    EXPECT_THAT(names({{kInput, false},
                       {FlowItemKind::kAgc, true},
                       {FlowItemKind::kTraceMix, false},
                       {kDisplay, false},
                       {kSort, false}}),
                ElementsAre("SEG-Y Disk Input", "Trace Display 2D", "Trace Sort"));
    EXPECT_THAT(names({{kInput, true}, {kExclusive, false}, {kInput, true}}),
                ElementsAre("Geometry Display"));
    EXPECT_TRUE(names({{kInput, true}}).empty());
}

TEST(BuildChain, RefusesWhatCannotRunTogether) {
    EXPECT_JOB_ERROR(names({{kInput, false}, {kSort, false}, {kDisplay, false}}),
                     "PARAMETER ERROR:  A display 'Trace Display 2D' cannot be run with a 'TRACE "
                     "SORT' process.\nRun the 'TRACE SORT' to an output file");
    constexpr char kAlone[] =
        "PARAMETER ERROR:  An exclusive process 'Geometry Display' cannot be "
        "run with other flow items.\n";
    EXPECT_JOB_ERROR(names({{kInput, false}, {kExclusive, false}}), kAlone);
    EXPECT_JOB_ERROR(names({{kExclusive, false}, {kInput, false}}), kAlone);
    constexpr char kSecond[] =
        "PARAMETER ERROR:  An input 'SEG-Y Disk Input' must be the first item of its flow";
    EXPECT_JOB_ERROR(names({{kInput, false}, {kInput, false}}), kSecond);
    EXPECT_JOB_ERROR(names({{FlowItemKind::kAgc, false}, {kInput, false}}), kSecond);
}

}  // namespace
}  // namespace halvern
