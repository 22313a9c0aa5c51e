#include "foundation/prospect.h"

#include <gmock/gmock.h>

#include "foundation/global_config.h"
#include "foundation/installation_tree.h"
#include "foundation/system_root.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using namespace testing_support;

TEST(TreePath, ResolvesEachLevelWhateverItsCase) {
    const SystemRoot root;
    root.write("PROSPECTS/Line7", "");
    root.write("data/x", "");
    root.write("Data/y", "");
    const std::pair<const char*, const char*> kNames[] = {
        {"prospects/LINE7", "PROSPECTS/Line7"},
        {"prospects/line8", "PROSPECTS/line8"},  // spelled as given when it is new
        {"data", "data"},                        // exact before all
        {"DATA", "Data"},
        {"data//x", "data/x"},
    };
    for (const auto& [name, resolved] : kNames) {
        EXPECT_EQ(TreePath(root.path().string(), name), root.file(resolved)) << name;
    }
    EXPECT_EQ(TreePath("/", "no-such-entry"), "/no-such-entry");
    EXPECT_EQ(TreePath("", "no-such-entry"), "no-such-entry");
}

TEST(InstallationTree, CompletesOneOfAnotherCaseAndThenLeavesItAlone) {
    const SystemRoot root;
    root.write("data/DEFAULT/Segy/line1.sgy", "");
    CreateInstallationTree();
    EXPECT_FALSE(fs::exists(root.file("Data")));
    EXPECT_FALSE(fs::exists(root.file("data/DEFAULT/segy")));
    EXPECT_TRUE(fs::is_directory(root.file("data/DEFAULT/spectra/phase")));
    EXPECT_EQ(file_bytes(root.file("Prospects/default")), "DATADIR=" + root.file("data") + "\n");
    root.write("Halvern.defaults", "PROSPECT=mine\n");
    root.write("Prospects/default", "DATADIR=/elsewhere\n");
    const auto before = root.entries();
    CreateInstallationTree();
    EXPECT_EQ(root.entries(), before);
    EXPECT_EQ(LastProspect(), "mine");
    EXPECT_EQ(file_bytes(root.file("Prospects/default")), "DATADIR=/elsewhere\n");
}

TEST(Prospect, FormsPathsInItsFirstDataDirectoryOrTheConfigurations) {
    const SystemRoot root;
    root.write("prospects/North Sea", "DATADIR=/d1\r\nIGNORED=1\nDATADIR=/d2");
    root.write("prospects/bare", "");
    const LogCapture quiet;
    Prospect prospect;
    ASSERT_EQ(prospect.open("North Sea"), 0);
    EXPECT_THAT(prospect.data_directories(), ElementsAre("/d1", "/d2"));
    EXPECT_EQ(prospect.path("segy", "NONE"), "/d1/North Sea/segy/NONE");
    ASSERT_EQ(ReadGlobalConfig(root.file("halvern.cfg")), 0);
    ASSERT_EQ(prospect.open("bare"), 0);
    EXPECT_EQ(prospect.path("flow"), root.file("data/bare/flow"));
}

TEST(Prospect, OneThatCannotBeReadLeavesTheOpenOne) {
    const SystemRoot root;
    root.write("Prospects/first", "DATADIR=/d1\n");
    root.write("outside", "DATADIR=/d2\n");
    fs::create_directory(root.file("Prospects/folder"));
    Prospect prospect;
    const LogCapture quiet;
    ASSERT_EQ(prospect.open("first"), 0);
    for (const char* name : {"missing", "folder", "", ".", "..", "../outside", "first/", "a\\b"}) {
        const LogCapture log;
        EXPECT_EQ(prospect.open(name), -1) << name;
        EXPECT_THAT(log.text(), testing::MatchesRegex(
                                    "Cannot open prospect file '.*Prospects.*' to read\\.\n"));
        EXPECT_EQ(prospect.name(), "first");
    }
}

TEST(LastProspect, IsRemembered) {
    const SystemRoot root;
    EXPECT_EQ(LastProspect(), "default");
    const std::pair<const char*, const char*> kFiles[] = {{"PROSPECT=north\n", "north"},
                                                          {"PROSPECT=C:\\H\\Prospects\\x\r\n", "x"},
                                                          {"PROSPECT=/h/Prospects/\n", "default"},
                                                          {"nothing", "default"}};
    for (const auto& [text, name] : kFiles) {
        root.write("Halvern.defaults", text);
        EXPECT_EQ(LastProspect(), name) << text;
    }
    EXPECT_EQ(RememberProspect("rv"), 0);
    EXPECT_EQ(LastProspect(), "rv");
}

}  // namespace
}  // namespace halvern
