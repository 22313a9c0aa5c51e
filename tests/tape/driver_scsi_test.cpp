#include "tape/posix/driver_scsi.h"

#include <gtest/gtest.h>
#include <sys/mtio.h>

#include <fcntl.h>
#include <cerrno>
#include <filesystem>

#include "support/log_capture.h"
#include "support/temporary_folder.h"
#include "tape/image_bytes.h"
#include "tape/tape_device.h"

namespace halvern {
namespace {

using namespace testing_support;

// A drive as the driver's documentation describes it, with a tape of blocks ("" a filemark).
class FakeDriver final : public TapeCalls {
public:
    std::vector<std::string> tape;
    std::size_t position = 0;
    std::size_t largest_read = 1 << 20;  // beyond it: EBUSY
    std::size_t bad_block = SIZE_MAX;    // its data cannot be read; the tape passes it
    int refused_reads = 0;
    bool at_end = false;  // a read has met the end of the data
    bool loaded = true;
    bool write_protected = false;
    std::string ioctls;

    bool is_device(const std::string& node) override { return node == "/dev/nst1"; }
    int open(const std::string& node, int flags) override {
        EXPECT_EQ(node, "/dev/nst1");
        return write_protected && (flags & O_ACCMODE) == O_RDWR ? -EROFS : 3;
    }
    void close(int) override { ioctls += " close"; }
    ssize_t read(int, std::span<std::byte> buffer) override {
        if (buffer.size() > largest_read && ++refused_reads) return -EBUSY;
        at_end = position >= tape.size();
        if (at_end) return -EIO;
        const std::string& data = tape[position++];
        if (position - 1 == bad_block) return -EIO;
        if (data.size() > buffer.size()) return -ENOMEM;
        std::copy_n(bytes_of(data).begin(), data.size(), buffer.begin());
        return static_cast<ssize_t>(data.size());
    }
    ssize_t write(int, std::span<const std::byte> block) override {
        if (tape.size() >= 3) return -ENOSPC;
        tape.push_back(text_of(block));
        return static_cast<ssize_t>(block.size());
    }
    int operate(int, int operation, int count) override {
        ioctls += " " + std::to_string(operation) + ":" + std::to_string(count);
        if (operation == MTLOAD) return -EIO;  // loaded already
        if (operation == MTREW) position = 0;
        if (operation == MTBSR) position -= static_cast<std::size_t>(count);
        for (int i = 0; operation == MTFSR && i < count; ++i) {
            if (tape[position++].empty()) return -EIO;
        }
        for (int i = 0; operation == MTFSF && i < count;) {
            if (tape[position++].empty()) ++i;
        }
        return 0;
    }
    int status(int, Status& status) override {
        status = {.online = loaded, .no_tape = !loaded, .end_of_data = at_end};
        status.block_number = 0;
        for (std::size_t i = 0; i < position; ++i) {
            status.block_number = tape[i].empty() ? 0 : status.block_number + 1;
        }
        return 0;
    }
};

struct DriverTest : testing::Test {
    TapeDevice make(const std::string& name = "/dev/nst1") {
        return {name,
                [this, name](const Reporter&) {
                    return std::make_unique<DriverScsi>(name, driver, folder.path().string());
                },
                testing_support::kTestReport};
    }
    std::string read(TapeDevice& device) {
        const int count = device.read_block();
        return count > 0 ? text_of(device.block()) : std::to_string(count);
    }
    TemporaryFolder folder;
    FakeDriver driver;
};

TEST_F(DriverTest, ReadsVariableBlocksOfAnyLength) {
    const std::string longer(3'000'000, 'x');
    driver.largest_read = 8 << 20;
    driver.tape = {"abc", "", longer, "de"};
    TapeDevice device = make();
    ASSERT_EQ(device.open(), 0);
    EXPECT_NE(driver.ioctls.find(" 20:0"), std::string::npos);  // MTSETBLK 0
    EXPECT_EQ(read(device), "abc");
    EXPECT_EQ(read(device), "-1");
    EXPECT_EQ(read(device), longer);  // first too long for the read, then read again
    std::vector<std::byte> small(10);
    EXPECT_EQ(device.rewind(), 0);
    EXPECT_EQ(device.skip_files(1), 0);
    EXPECT_EQ(device.read(small), 10);
    EXPECT_EQ(read(device), "de");
    EXPECT_EQ(read(device), "-1");  // the data end without a filemark
}

TEST_F(DriverTest, FindsOnceHowMuchTheDriverTakes) {
    driver.largest_read = 100'000;
    driver.tape = {std::string(90'000, 'x'), "ab", std::string(90'000, 'y')};
    TapeDevice device = make();
    EXPECT_EQ(read(device), driver.tape[0]);
    driver.refused_reads = 0;
    EXPECT_EQ(read(device), "ab");
    EXPECT_EQ(read(device), driver.tape[2]);
    EXPECT_EQ(driver.refused_reads, 0);
}

TEST_F(DriverTest, ARetryReadsTheSameBlockAgain) {
    driver.tape = {"ab", "bad", "cd", "", "ef"};
    driver.bad_block = 1;
    TapeDevice device = make();
    EXPECT_EQ(read(device), "ab");
    EXPECT_EQ(read(device), "-2");
    EXPECT_EQ(driver.position, 1u);
    EXPECT_EQ(device.skip_blocks(1), 0);
    EXPECT_EQ(read(device), "cd");
    EXPECT_EQ(device.skip_blocks(1), -1);  // a filemark
    EXPECT_EQ(read(device), "ef");
}

TEST_F(DriverTest, WritesUntilTheTapeIsFullAndNotWhenProtected) {
    TapeDevice device = make();
    for (int i = 0; i < 3; ++i) EXPECT_EQ(device.write(bytes_of("block")), 0);
    EXPECT_EQ(device.write(bytes_of("block")), TapeDevice::kNoData);
    EXPECT_EQ(device.write_filemark(), 0);
    driver.ioctls.clear();
    EXPECT_EQ(device.unload(), 0);
    EXPECT_EQ(driver.ioctls, " 6:1 7:1 close");  // MTREW, MTOFFL

    driver.write_protected = true;
    driver.tape = {"ab"};
    TapeDevice protected_device = make();
    EXPECT_EQ(read(protected_device), "ab");
}

TEST_F(DriverTest, DrivesAreFoundByVendorProductAndAddress) {
    namespace fs = std::filesystem;
    fs::create_directories(folder.path() / "devices" / "2:0:4:1");
    for (const char* node : {"st1", "nst1", "nst1a"}) {
        fs::create_directories(folder.path() / node);
        fs::create_directory_symlink(folder.path() / "devices" / "2:0:4:1",
                                     folder.path() / node / "device");
    }
    folder.write("devices/2:0:4:1/vendor", "HP      \n");
    folder.write("devices/2:0:4:1/model", "Ultrium 3-SCSI  \n");
    driver.tape = {"ab"};
    TapeDevice device = make("HP Ultrium 3-SCSI - 4_1");
    EXPECT_EQ(read(device), "ab");
    DriverScsi scsi("", driver, folder.path().string());
    EXPECT_EQ(scsi.GetSystemName(0), "/dev/nst1");
    EXPECT_EQ(scsi.GetDeviceType(1), kNoDevice);
}

}  // namespace
}  // namespace halvern
