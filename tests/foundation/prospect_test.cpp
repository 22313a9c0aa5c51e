#include "foundation/prospect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "foundation/global_config.h"
#include "foundation/installation_tree.h"
#include "foundation/system_root.h"
#include "support/log_capture.h"

namespace halvern {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing_support::file_bytes;
using testing_support::LogCapture;
using testing_support::SystemRoot;

TEST(TreePath, ResolvesEachLevelWhateverItsCase) {
    const SystemRoot root;
    root.write("PROSPECTS/Line7", "");
    root.write("data/x", "");
    root.write("Data/y", "");
    const std::pair<const char*, const char*> kNames[] = {
        {"Prospects", "PROSPECTS"},
        {"prospects/LINE7", "PROSPECTS/Line7"},
        {"prospects/line8", "PROSPECTS/line8"},  // spelled as given when it is new
        {"New/Sub", "New/Sub"},
        {"data", "data"},  // exact before all
        {"Data", "Data"},
        {"DATA", "Data"},
        {"data//x", "data/x"},
        {"prospects/*", "PROSPECTS/*"},
    };
    for (const auto& [name, resolved] : kNames) {
        EXPECT_EQ(TreePath(root.path(), name), root.file(resolved)) << name;
    }
    EXPECT_EQ(TreePath("/", "no-such-entry"), "/no-such-entry");
    EXPECT_EQ(TreePath("", "no-such-entry"), "no-such-entry");
    EXPECT_EQ(DefaultHeaderPath(), root.file("header/default"));
}

TEST(SystemDirectoryOf, IsTheParentOfTheProgramsDirectory) {
    EXPECT_EQ(SystemDirectoryOf("/opt/halvern/bin/halvern2"), "/opt/halvern");
    EXPECT_EQ(SystemDirectoryOf("/bin/halvern2"), "/");
    EXPECT_EQ(SystemDirectoryOf("/halvern2"), "/");
    EXPECT_EQ(SystemDirectoryOf(""), "");
}

TEST(InstallationTree, IsMadeOnceAndThenLeftAlone) {
    const SystemRoot root;
    CreateInstallationTree();
    EXPECT_THAT(root.entries(),
                ElementsAre("Data/", "Data/default/", "Data/default/bin/", "Data/default/data/",
                            "Data/default/decon/", "Data/default/flow/", "Data/default/geo/",
                            "Data/default/gif/", "Data/default/nav/", "Data/default/segy/",
                            "Data/default/spectra/", "Data/default/spectra/phase/",
                            "Data/default/spectra/power/", "Halvern.defaults", "Prospects/",
                            "Prospects/default"));
    EXPECT_EQ(file_bytes(root.file("Halvern.defaults")),
              "PROSPECT=" + root.file("Prospects/default") + "\n");
    EXPECT_EQ(file_bytes(root.file("Prospects/default")), "DATADIR=" + root.file("Data") + "\n");

    root.write("Halvern.defaults", "PROSPECT=mine\n");
    root.write("Prospects/default", "DATADIR=/elsewhere\n");
    const auto before = root.entries();
    CreateInstallationTree();
    EXPECT_EQ(root.entries(), before);
    EXPECT_EQ(file_bytes(root.file("Halvern.defaults")), "PROSPECT=mine\n");
    EXPECT_EQ(file_bytes(root.file("Prospects/default")), "DATADIR=/elsewhere\n");
}

TEST(InstallationTree, CompletesOneOfAnotherCase) {
    const SystemRoot root;
    root.write("data/DEFAULT/Segy/line1.sgy", "");
    CreateInstallationTree();
    EXPECT_FALSE(fs::exists(root.file("Data")));
    EXPECT_FALSE(fs::exists(root.file("data/default")));
    EXPECT_FALSE(fs::exists(root.file("data/DEFAULT/segy")));
    EXPECT_TRUE(fs::is_directory(root.file("data/DEFAULT/flow")));
    EXPECT_EQ(file_bytes(root.file("Prospects/default")), "DATADIR=" + root.file("data") + "\n");
}

TEST(Prospect, OpensAndFormsPaths) {
    const SystemRoot root;
    root.write("prospects/North Sea", "DATADIR=/d1\r\nIGNORED=1\nDATADIR=/d2");
    const LogCapture log;
    Prospect prospect;
    EXPECT_FALSE(prospect.is_open());
    ASSERT_EQ(prospect.open("North Sea"), 0);
    EXPECT_EQ(log.text(), "Loading Prospect        = North Sea\n");
    EXPECT_TRUE(prospect.is_open());
    EXPECT_THAT(prospect.data_directories(), ElementsAre("/d1", "/d2"));
    EXPECT_EQ(prospect.path("segy", "NONE"), "/d1/North Sea/segy/NONE");
    EXPECT_EQ(prospect.path("data"), "/d1/North Sea/data");
}

TEST(Prospect, WithoutADataDirectoryLiesInTheConfigurationsFirst) {
    const SystemRoot root;
    root.write("Prospects/bare", "");
    const LogCapture log;
    ASSERT_EQ(ReadGlobalConfig(root.file("halvern.cfg")), 0);
    Prospect prospect;
    ASSERT_EQ(prospect.open("bare"), 0);
    EXPECT_EQ(prospect.path("flow", "f1"), root.file("data/bare/flow/f1"));
}

TEST(Prospect, OneThatCannotBeReadLeavesTheOpenOne) {
    const SystemRoot root;
    root.write("Prospects/first", "DATADIR=/d1\n");
    root.write("outside", "DATADIR=/d2\n");
    fs::create_directory(root.file("Prospects/folder"));
    Prospect prospect;
    {
        const LogCapture quiet;
        ASSERT_EQ(prospect.open("first"), 0);
    }
    for (const char* name : {"missing", "folder", "", ".", "..", "../outside", "first/", "a\\b"}) {
        const LogCapture log;
        EXPECT_EQ(prospect.open(name), -1) << name;
        EXPECT_THAT(log.text(), testing::MatchesRegex(
                                    "Cannot open prospect file '.*Prospects.*' to read\\.\n"));
        EXPECT_EQ(prospect.name(), "first");
    }
    const LogCapture log;
    EXPECT_EQ(prospect.open("missing"), -1);
    EXPECT_EQ(log.text(),
              "Cannot open prospect file '" + root.file("Prospects/missing") + "' to read.\n");
}

TEST(Prospect, IsSavedWithItsDirectories) {
    const SystemRoot root;
    Prospect prospect;
    prospect.assign("rv", {root.file("d1"), root.file("d2")});
    {
        const LogCapture log;
        EXPECT_EQ(prospect.save(), -1);  // there is no directory of prospects yet
        EXPECT_EQ(log.text(),
                  "Cannot open prospect file '" + root.file("Prospects/rv") + "' to write\n");
    }
    CreateInstallationTree();
    ASSERT_EQ(prospect.save(), 0);
    EXPECT_EQ(file_bytes(root.file("Prospects/rv")),
              "DATADIR=" + root.file("d1") + "\nDATADIR=" + root.file("d2") + "\n");
    prospect.create_directories();
    EXPECT_TRUE(fs::is_directory(root.file("d2/rv/spectra/power")));
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
    EXPECT_EQ(file_bytes(root.file("Halvern.defaults")),
              "PROSPECT=" + root.file("Prospects/rv") + "\n");
}

}  // namespace
}  // namespace halvern
