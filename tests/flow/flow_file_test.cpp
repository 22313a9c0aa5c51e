#include "flow/flow_file.h"

#include <gmock/gmock.h>

#include "flow/flow_item.h"
#include "support/job_end.h"
#include "support/temporary_folder.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

class FlowFile : public testing::Test {
protected:
    int read(std::string_view text) {
        file = FlowParameterFile(folder.write("flow", text));
        return file.read([this](const std::string& name) {
            opened.push_back(name);
            return 0;
        });
    }
    TemporaryFolder folder;
    FlowParameterFile file{""};
    std::vector<std::string> opened;
};

TEST_F(FlowFile, ReadsSectionsWithTheirLines) {
    EXPECT_EQ(read("STRAY=1\n$PROSPECT=north sea\n$SEGYDINPUT\nFILE=a b.sgy\r\n\n$$AGC\n"
                   "WINDOWSIZE=9\nUNKNOWN\n$AGCX\n"),
              0);
    EXPECT_THAT(opened, ElementsAre("north sea"));
    EXPECT_EQ(file.prospect(), "north sea");
    ASSERT_EQ(file.sections().size(), 3u);
    auto section = file.sections().begin();
    EXPECT_EQ(section->kind, FlowItemKind::kSegyDiskInput);
    EXPECT_THAT(section->lines, ElementsAre("FILE=a b.sgy\r", ""));
    EXPECT_EQ(section->line_number, 3);
    ++section;
    EXPECT_TRUE(section->disabled);
    EXPECT_EQ(section->kind, FlowItemKind::kAgc);
    EXPECT_THAT(section->lines, ElementsAre("WINDOWSIZE=9", "UNKNOWN"));
    ++section;
    EXPECT_FALSE(section->disabled);
    EXPECT_EQ(section->keyword, "AGC");
    EXPECT_EQ(section->line_number, 9);
}

TEST_F(FlowFile, LongLinesAreReadInPiecesOf198) {
    const std::string a(197, 'a'), b(198, 'b'), c(400, 'c');
    EXPECT_EQ(read("$AGC\n" + a + "\n" + b + "\n" + c + "\n"), 0);
    EXPECT_THAT(file.sections().front().lines,
                ElementsAre(a, b, "", std::string(198, 'c'), std::string(198, 'c'), "cccc"));
}

TEST_F(FlowFile, WhatCannotBeReadIsSaid) {
    LogCapture log;
    FlowParameterFile missing(folder.file("none"));
    EXPECT_EQ(missing.read({}), -1);
    FlowParameterFile directory(folder.path().string());
    EXPECT_EQ(directory.read({}), -1);
    EXPECT_EQ(read("$AGC\nWINDOWSIZE=1\n$$FOO BAR\n$MUTE\n"), -1);
    EXPECT_EQ(file.sections().size(), 1u);
    EXPECT_EQ(log.text(), "CANNOT OPEN PARAMETER FILE: " + missing.path() +
                              "\nCANNOT OPEN PARAMETER FILE: " + directory.path() +
                              "\nREASON: it is a directory\nERROR IN PARAMETER FILE: " +
                              file.path() + "\nUNDEFINED STRING:        FOO BAR\n");
}

// The later line wins, so what a flow says itself overrides what the site says.
TEST_F(FlowFile, SiteDefaultsComeBeforeTheSectionsOwnLines) {
    folder.write("defaults/10", "$AGC\nWINDOWSIZE=500\n$$MUTE\nX=1\n");
    folder.write("defaults/20", "$AGC\nWINDOWSIZE=600\n");
    file = FlowParameterFile(folder.write("flow", "$AGC\nWINDOWSIZE=7\n$MUTE\n"));
    EXPECT_EQ(file.load_site_defaults(folder.file("absent")), 0);
    EXPECT_EQ(file.load_site_defaults(folder.file("defaults")), 0);
    EXPECT_EQ(file.read({}), 0);
    EXPECT_THAT(file.sections().front().lines,
                ElementsAre("WINDOWSIZE=500", "WINDOWSIZE=600", "WINDOWSIZE=7"));
    EXPECT_TRUE(file.sections().back().lines.empty());
}

// Every keyword must find its own kind although they are compared as prefixes.
TEST(FlowItemKinds, EveryKeywordIsReachableAndIdsAreInPlace) {
    int id = 0;
    std::vector<int> order;
    for (const FlowItemKindEntry& entry : flow_item_kinds()) {
        EXPECT_EQ(static_cast<int>(entry.kind), id++);
        EXPECT_EQ(match_keyword(entry.keyword), entry.kind) << entry.keyword;
        EXPECT_EQ(entry.menu == FlowItemMenu::kNone, entry.menu_order == 0) << entry.name;
        if (entry.menu_order > 0) order.push_back(entry.menu_order);
    }
    std::sort(order.begin(), order.end());
    for (std::size_t i = 0; i < order.size(); ++i) EXPECT_EQ(order[i], static_cast<int>(i) + 1);
    EXPECT_EQ(match_keyword("DECONX"), FlowItemKind::kDeconvolution);
    EXPECT_EQ(match_keyword("agc"), std::nullopt);
    EXPECT_EQ(match_keyword(""), std::nullopt);
}

}  // namespace
}  // namespace halvern
