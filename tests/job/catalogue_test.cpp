#include "job/catalogue.h"

#include <gmock/gmock.h>

#include <cstring>
#include <set>
#include <sstream>

#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;

std::vector<std::string> lines_of(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

// The conversion of `format` (exactly one, or none) is one of `letters`.
bool fits(const std::string& format, const std::string& letters) {
    std::string conversions;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') continue;
        if (format[++i] == '%') continue;
        while (i < format.size() && std::strchr("0123456789.-+ ", format[i])) ++i;
        conversions += format.at(i);
    }
    return conversions.size() == 1 && letters.find(conversions) != std::string::npos;
}

// What every kind's list must keep to, whatever is in it.
class EveryKind : public testing::TestWithParam<int> {};

TEST_P(EveryKind, DeclaresItsParametersSoundly) {
    const auto kind = static_cast<FlowItemKind>(GetParam());
    const auto item = CreateFlowItem(section_of(kind, {}), LogFlag::kQuiet);
    ASSERT_TRUE(item);
    EXPECT_EQ(item->GetKindId(), kind);
    std::set<std::string> keys;
    for (const Parameter& parameter : item->Parameters()) {
        SCOPED_TRACE(parameter.key);
        EXPECT_TRUE(keys.insert(parameter.key).second) << "occurs twice";
        if (std::holds_alternative<Rows>(parameter.value)) continue;
        const bool chosen = !parameter.field.choices.empty();
        const char* letters = std::holds_alternative<Bound<int>>(parameter.value)           ? "d"
                              : std::holds_alternative<Bound<std::string>>(parameter.value) ? "s"
                                                                                            : "f";
        EXPECT_TRUE(fits(parameter.format, letters)) << parameter.format;
        EXPECT_TRUE(!parameter.log || fits(parameter.log, chosen ? "s" : letters));
        if (!parameter.field.label) continue;
        EXPECT_STRNE(parameter.field.prompt, "");
        if (const auto* number = std::get_if<Bound<int>>(&parameter.value); number && chosen) {
            EXPECT_TRUE(std::any_of(parameter.field.choices.begin(), parameter.field.choices.end(),
                                    [&](const Choice& c) { return c.value == number->standard; }))
                << "the default is no choice";
        }
    }
}

TEST_P(EveryKind, ReadsBackWhatItWrites) {
    const auto kind = static_cast<FlowItemKind>(GetParam());
    const auto item = CreateFlowItem(section_of(kind, {}), LogFlag::kQuiet);
    // Every value away from its default, so that a line that is lost shows.
    for (const Parameter& parameter : item->Parameters()) {
        if (const auto* number = std::get_if<Bound<int>>(&parameter.value)) *number->variable += 1;
        if (const auto* real = std::get_if<Bound<float>>(&parameter.value)) *real->variable += 2;
        if (const auto* real = std::get_if<Bound<double>>(&parameter.value)) *real->variable += 2;
        if (const auto* text = std::get_if<Bound<std::string>>(&parameter.value)) {
            *text->variable = "X y";
        }
    }
    const std::string first = written(*item);
    EXPECT_EQ(first.substr(0, first.find('\n')), "$" + std::string(flow_item_kind(kind).keyword));
    auto lines = lines_of(first);
    lines.erase(lines.begin());
    const auto again = CreateFlowItem(section_of(kind, lines), LogFlag::kQuiet);
    EXPECT_EQ(written(*again), first);
}

INSTANTIATE_TEST_SUITE_P(Catalogue, EveryKind, testing::Range(0, kFlowItemKinds),
                         [](const auto& kind) {
                             return std::string(
                                 flow_item_kind(static_cast<FlowItemKind>(kind.param)).keyword);
                         });

TEST(Catalogue, KnowsNoOtherKind) {
    EXPECT_FALSE(CreateFlowItem({.kind = FlowItemKind::kNumberOfKinds}, LogFlag::kQuiet));
    EXPECT_FALSE(CreateFlowItem({.kind = static_cast<FlowItemKind>(-1)}, LogFlag::kQuiet));
}

}  // namespace
}  // namespace halvern
