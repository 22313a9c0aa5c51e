#include "flow/parameter.h"

#include <gmock/gmock.h>

#include "flow/process_flow_item.h"
#include "support/item_bench.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

// One parameter of every sort.
class Sample final : public ProcessFlowItem {
public:
    explicit Sample(const FlowSection& section, LogFlag log = LogFlag::kQuiet)
        : ProcessFlowItem(FlowItemKind::kTraceMath, log) {
        Configure(section);
    }
    ParameterList Parameters() override {
        return {
            {.key = "COUNT", .format = "%d", .value = Bound{&count, 3}, .log = "Count = %d\n"},
            {.key = "MODE",
             .format = "%d",
             .value = Bound{&mode, 1},
             .log = "Mode = %s\n",
             .field = {.label = "Mode",
                       .prompt = "Which?",
                       .choices = {{"ONE", 1}, {"TWO", 2}},
                       .position = 2}},
            {.key = "GAIN",
             .format = "%3.1f",
             .value = Bound{&gain, 0.5f},
             .log = "Gain = %f\n",
             .field = {.label = "Gain", .prompt = "Gain?", .position = 1}},
            {.key = "NAME",
             .format = "%s",
             .value = Bound{&name, "NONE"},
             .log = "Name = '%s'\n",
             .longest = 4},
            {.key = "PAIR",
             .format = "",
             .value = Rows{.clear = [this] { pairs.clear(); },
                           .read =
                               [this](const char* rest) {
                                   pairs.emplace_back(rest);
                                   return true;
                               },
                           .lines =
                               [this](const std::string& key) {
                                   std::vector<std::string> lines;
                                   for (const std::string& pair : pairs) {
                                       lines.push_back(key + "=" + pair);
                                   }
                                   return lines;
                               }}},
        };
    }
    std::string RefuseParameters() override { return count < 0 ? "Count is negative." : ""; }

    int count{}, mode{};
    float gain{};
    std::string name;
    std::vector<std::string> pairs;
};

TEST(Parameters, DefaultsLinesAndLogFollowFromTheList) {
    LogCapture log;
    Sample item(
        section_of(FlowItemKind::kTraceMath, {"MODE=2", "COUNT=x", "GAIN=2.25", "count=9",
                                              "PAIR=1 2", "NAME=ABCDEF", "PAIR=3 4", "MODE=1"}),
        LogFlag::kLog);
    EXPECT_EQ(item.count, 0);  // no number reads as 0
    EXPECT_EQ(item.mode, 1);   // the later line wins
    EXPECT_EQ(written(item),
              "$TRACEMATH\nCOUNT=0\nMODE=1\nGAIN=2.2\nNAME=ABCD\nPAIR=1 2\nPAIR=3 4\n");
    EXPECT_EQ(log.text(),
              "Trace Math: Initializing Flow Item\nTrace Math: Count = 0\n"
              "Trace Math: Mode = ONE\nTrace Math: Gain = 2.250000\n"
              "Trace Math: Name = 'ABCD'\n");
    item.SetDefaults();
    EXPECT_EQ(item.count, 3);
    EXPECT_EQ(item.gain, 0.5f);
    EXPECT_EQ(item.name, "NONE");
    EXPECT_TRUE(item.pairs.empty());
}

class FakeHost final : public DialogHost {
public:
    FakeHost() { SetDialogHost(this); }
    ~FakeHost() override { SetDialogHost(nullptr); }
    bool IsUp(const FlowItem& item) const override { return up && up->item == &item; }
    void Open(ParameterDialog dialog) override { up = std::move(dialog); }
    void ShowMessage(const std::string& text) override { messages.push_back(text); }
    void Accept() {
        if (const std::string why = up->refuse(); !why.empty()) return ShowMessage(why);
        if (up->flow_changed) *up->flow_changed = 1;
        up.reset();
    }
    std::optional<ParameterDialog> up;
    std::vector<std::string> messages;
};

TEST(Interface, ShowsLabelledFieldsInTheirOrderOnce) {
    FakeHost host;
    Sample item(section_of(FlowItemKind::kTraceMath, {}));
    int changed = 0;
    item.ShowInterface(nullptr, 0, 0, &changed);
    ASSERT_TRUE(host.up);
    EXPECT_EQ(host.up->texts.title, "Trace Math Parameters");
    ASSERT_EQ(host.up->fields.size(), 2u);
    EXPECT_STREQ(host.up->fields[0].field.label, "Gain");
    EXPECT_STREQ(host.up->fields[1].field.label, "Mode");
    item.ShowInterface(nullptr, 0, 0, &changed);
    *std::get<Bound<int>>(host.up->fields[1].value).variable = 2;
    EXPECT_EQ(item.mode, 2);
    item.count = -1;
    host.Accept();
    EXPECT_TRUE(host.up);
    EXPECT_EQ(changed, 0);
    EXPECT_THAT(host.messages,
                ElementsAre("Trace Math Interface is already up.", "Count is negative."));
    item.count = 1;
    host.Accept();
    EXPECT_EQ(changed, 1);
    EXPECT_FALSE(host.up);
}

}  // namespace
}  // namespace halvern
