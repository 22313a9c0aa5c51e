#include "desk/prospects.h"

#include <gmock/gmock.h>

#include "desk/command_error.h"
#include "desk/configuration.h"
#include "support/system_place.h"

namespace halvern {
namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
namespace fs = std::filesystem;

class Prospects : public testing::Test {
protected:
    Prospects() { fs::create_directory(big); }
    SystemPlace place;
    const fs::path big = place.folder.path() / "big";
};

TEST_F(Prospects, AreMadeWhereTheyWereAskedFor) {
    EXPECT_EQ(create_prospect("north", {big.string()}).path("flow"), big / "north" / "flow");
    EXPECT_THAT(prospect_names(), ElementsAre("default", "north"));
    for (const char* name : {"north", "", "..", "a/b", "-x"}) {
        EXPECT_THROW(create_prospect(name, {}), CommandError) << name;
    }
    EXPECT_THROW(create_prospect("south", {"/no/such"}), CommandError);
    EXPECT_THAT(prospect_names(), ElementsAre("default", "north"));
}

TEST_F(Prospects, AreRemovedWithTheirOwnDirectoriesOnly) {
    const fs::path own = big / "north";
    create_prospect("north", {big.string()});
    place.folder.write("big/north/segy/a.sgy", "12345");
    place.folder.write("elsewhere", "precious");
    fs::create_symlink(place.folder.path(), own / "segy" / "link");
    const ProspectRemoval removal = plan_removal("NORTH");  // the tree knows no capitals
    EXPECT_EQ(removal.name, "north");
    EXPECT_THAT(removal.directories, ElementsAre(own.string()));
    EXPECT_EQ(removal.files, 2);
    EXPECT_EQ(removal.bytes, 5);
    EXPECT_THAT(remove_prospect(removal), IsEmpty());
    EXPECT_FALSE(fs::exists(own));
    EXPECT_TRUE(fs::exists(big));
    EXPECT_TRUE(fs::exists(place.folder.file("elsewhere")));
    EXPECT_THAT(prospect_names(), ElementsAre("default"));
}

TEST_F(Prospects, LeaveWhatIsNotTheirs) {
    create_prospect("north", {big.string()});
    place.folder.write("big/north/letter", "mine");
    EXPECT_THAT(remove_prospect(plan_removal("north")), ElementsAre((big / "north").string()));
    EXPECT_TRUE(fs::exists(big / "north" / "letter"));

    create_prospect("outer", {big.string()});
    create_prospect("inner", {(big / "outer" / "data").string()});
    EXPECT_THAT(plan_removal("outer").directories, IsEmpty());
    EXPECT_THAT(plan_removal("outer").kept, ElementsAre(HasSubstr("'inner' has data in it")));

    // A prospect whose own directory is the one that the system directory lies in.
    const fs::path above = place.folder.path();
    Prospect wide;
    wide.assign(above.filename().string(), {above.parent_path().string()});
    ASSERT_EQ(wide.save(), 0);
    EXPECT_THAT(plan_removal(wide.name()).kept, ElementsAre(HasSubstr("the system directory")));
    EXPECT_THROW(plan_removal("default"), CommandError);
}

TEST_F(Prospects, WorkInTheNearestDirectoryUpwards) {
    fs::create_directories(big / "a" / "b");
    EXPECT_EQ(directory_upwards(big / "a" / "b"), place.folder.path());
    place.folder.write("big/halvern.cfg", "");
    EXPECT_EQ(directory_upwards(big / "a" / "b"), big);
    EXPECT_EQ(directory_upwards("/proc"), std::nullopt);
}

TEST_F(Prospects, ConfigurationChangesOnlyWhatItIsToldTo) {
    const std::string here = big.string();
    const std::string text = "# ours\nMAXFILESIZE=1\nDATADIR=/a\nMAXFILESIZE=2\nDATADIR=/b\n";
    const auto edited = [&](std::vector<std::string> assignments) {
        return edited_configuration(text, assignments);
    };
    EXPECT_EQ(edited({"maxfilesize=3"}),
              "# ours\nMAXFILESIZE=1\nDATADIR=/a\nMAXFILESIZE=3\nDATADIR=/b\n");
    EXPECT_EQ(edited({"DATADIR+=" + here}), text + "DATADIR=" + here + "\n");
    EXPECT_EQ(edited({"DATADIR=" + here, "DATADIR=/"}),
              "# ours\nMAXFILESIZE=1\nMAXFILESIZE=2\nDATADIR=" + here + "\nDATADIR=/\n");
    EXPECT_EQ(edited({"TAPEDEVICE=/dev/nst0 8mm"}), text + "TAPEDEVICE=/dev/nst0 8mm\n");
    EXPECT_EQ(edited(std::vector<std::string>(62, "TAPEDEVICE+=a b")).size(),
              text.size() + 62 * 15);
    EXPECT_THROW(edited(std::vector<std::string>(65, "TAPEDEVICE+=a b")), CommandError);
    for (const char* wrong :
         {"MAXFILESIZE=0", "MAXFILESIZE=-1", "MAXFILESIZE=1 GB", "MAXFILESIZE+=1", "SIZE=1",
          "DATADIR=/no/such", "TAPEDEVICE=/dev/nst0,8mm", "MAXFILESIZE"}) {
        EXPECT_THROW(edited({wrong}), CommandError) << wrong;
    }
}

}  // namespace
}  // namespace halvern
