#include "tape/tape_device.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <deque>

#include "support/log_capture.h"
#include "tape/tape_drives.h"
#include "tape/tape_prompt.h"

namespace halvern {
namespace {

using testing_support::kTestReport;
using testing_support::LogCapture;

// What a drive does, call by call; a queue that has run out answers with its last element.
struct Script {
    std::deque<int> ready = {0};
    std::deque<int> load = {0};
    struct Read {
        int status;
        int residual = 0;
        int sense = 0;  // status of asking for the residual
    };
    std::deque<Read> reads = {{0, 0}};
    int write = 0;
    int filemark = 0;
    int rewind = 0;
    int unload = 0;
    std::string calls;
};

template <class T>
T next_of(std::deque<T>& queue) {
    const T value = queue.front();
    if (queue.size() > 1) queue.pop_front();
    return value;
}

class ScriptedDrive final : public SequentialScsi {
public:
    explicit ScriptedDrive(Script& script) : script_(script) {}
    ~ScriptedDrive() override { script_.calls += " release"; }
    int GetDeviceType(int device) override { return device == 2 ? 1 : device < 2 ? 5 : kNoDevice; }
    std::optional<std::string> GetVendorId(int) override { return "EXABYTE"; }
    std::optional<std::string> GetProductId(int) override { return std::nullopt; }
    std::uint32_t GetScsiPath(int) override { return 0xFF0704FF; }
    int TestUnitReady(int) override { return next_of(script_.ready); }
    int Load(int) override {
        script_.calls += " load";
        return next_of(script_.load);
    }
    int ReadVariableBlock(int, std::span<std::byte>, int) override {
        script_.calls += " read";
        read_ = next_of(script_.reads);
        return read_.status;
    }
    int WriteVariableBlock(int, std::span<const std::byte>) override { return script_.write; }
    int WriteFilemarks(int, int) override { return script_.filemark; }
    int Rewind(int) override {
        script_.calls += " rewind";
        return script_.rewind;
    }
    int Unload(int, int) override {
        script_.calls += " unload";
        return script_.unload;
    }
    int Space(int, SpaceUnit, int) override { return 0; }
    int RequestSense(int, MutableBytes<SenseData::kSize> sense) override {
        const auto bytes = SenseData{.residual = read_.residual}.bytes();
        std::copy(bytes.begin(), bytes.end(), sense.begin());
        return read_.sense;
    }

private:
    Script& script_;
    Script::Read read_{};
};

struct FakeClock final : TapeClock {
    long long now = 0;
    long long NowMs() override { return now; }
    void SleepMs(int ms) override { now += ms; }
};

struct TapeDeviceTest : testing::Test {
    TapeDevice make(const char* name = "EXABYTE ???????????????? - 4_7", int retries = 2) {
        return {name, [this](const Reporter&) { return std::make_unique<ScriptedDrive>(script); },
                kTestReport, retries, clock};
    }
    Script script;
    FakeClock clock;
    std::array<std::byte, 100> buffer{};
};

TEST_F(TapeDeviceTest, AnUnknownNameDoesNotOpen) {
    EXPECT_EQ(make("").open(), -1);  // no device of a system that has no names for them
    TapeDevice device = make("EXABYTE");
    LogCapture log;
    EXPECT_EQ(device.open(), -1);
    EXPECT_EQ(
        log.text(),
        "Cannot Open Device 'EXABYTE'.  Try reselecting the tape device in the flow and saving "
        "the flow item.\n");
    EXPECT_EQ(device.read(buffer), TapeDevice::kFailed);
    EXPECT_EQ(device.write(buffer), TapeDevice::kFailed);
    EXPECT_THAT(log.text(),
                testing::HasSubstr("Tape Read Attempted with non-opened tape device\n"));
    EXPECT_THAT(log.text(),
                testing::HasSubstr("Tape Write Attempted with non-opened tape device\n"));
}

TEST_F(TapeDeviceTest, WaitsTenSecondsForADriveThatIsNotReady) {
    script.ready = {0x3A00};
    TapeDevice device = make();
    LogCapture log;
    EXPECT_EQ(device.open(), -1);
    EXPECT_GE(clock.now, 10000);
    EXPECT_LT(clock.now, 10500);
    EXPECT_EQ(log.text(),  // 0x3A00 = 14848
              "Error Loading Tape.  Unit Not Ready..  Error Code = '14848' '3a00'\n"
              "Tape Error:  No tape in drive.\n");
    EXPECT_FALSE(device.is_open());
    script.ready = {0x0400, 0x0400, 0};
    EXPECT_EQ(device.open(), 0);
}

TEST_F(TapeDeviceTest, LoadsTwiceAndIsOpenEvenWhenBothFail) {
    script.load = {7, 0};
    LogCapture log;
    {
        TapeDevice device = make();
        EXPECT_EQ(device.open(), 0);
        EXPECT_EQ(log.text(), "");
    }
    EXPECT_EQ(script.calls, " load load rewind release");
    script.load = {7, 9};
    TapeDevice device = make();
    EXPECT_EQ(device.open(), 0);
    EXPECT_EQ(log.text(), "Error Loading Tape..  Error Code = '9' '9'\n");
}

// Of 100 bytes asked for: the residual is what is missing, negative for a longer block. A read is
// tried again twice; a good one refills the retries, a failed one leaves none.
TEST_F(TapeDeviceTest, ReadsGiveLengthsEndsAndFailures) {
    const std::string failed = "Error Reading Tape..  Error Code = '4352' '1100'\n";
    const struct {
        std::deque<Script::Read> reads;
        std::vector<int> results;
        int attempts;
        std::string log;
    } kCases[] = {
        {{{0, 0}, {0xA982, 60}, {0xA982, -5}, {0xA981}, {1}, {5}}, {100, 40, 100, -1, -1, -1}, 6},
        {{{0x1100}, {0xA982, 100}, {0, 1}}, {99}, 3, failed},
        {{{0x1100}}, {-2, -2}, 4, failed + failed + failed + failed + failed + failed},
        {{{0, 100}}, {-1}, 3},  // nothing but empty reads is no data
        // A block of a length that nobody knows has been passed.
        {{{0xA982, 60, 0x4400}, {0}},
         {-2, 100},
         2,
         "Error Reading Tape..  Error Code = '17408' '4400'\n"},
    };
    for (const auto& expected : kCases) {
        SCOPED_TRACE(expected.attempts);
        script.reads = expected.reads;
        TapeDevice device = make();
        LogCapture log;
        ASSERT_EQ(device.open(), 0);
        script.calls.clear();
        for (const int result : expected.results) EXPECT_EQ(device.read(buffer), result);
        EXPECT_EQ(script.calls.size(), 5u * static_cast<unsigned>(expected.attempts));  // " read"
        EXPECT_EQ(log.text(), expected.log);
    }
}

TEST_F(TapeDeviceTest, EveryOperationReportsItsOwnFailure) {
    TapeDevice device = make();
    ASSERT_EQ(device.open(), 0);
    script.write = 0xA981;
    EXPECT_EQ(device.write(buffer), TapeDevice::kNoData);
    script.write = 0x2700, script.filemark = 2, script.rewind = 3, script.unload = 4;
    LogCapture log;
    EXPECT_EQ(device.write(buffer), TapeDevice::kFailed);
    EXPECT_EQ(device.write_filemark(), -1);
    EXPECT_EQ(device.rewind(), -1);
    EXPECT_EQ(log.text(),
              "Error Writing Tape..  Error Code = '9984' '2700'\n"
              "Error Writing Filemark..  Error Code = '2' '2'\n"
              "Error Rewinding Tape..  Error Code = '3' '3'\n");
    script.rewind = 0;
    EXPECT_EQ(device.unload(), -1);
    EXPECT_THAT(log.text(), testing::HasSubstr("Error Unloading Tape..  Error Code = '4' '4'\n"));
    EXPECT_FALSE(device.is_open());
}

TEST(TapeDrives, FirstDeviceAndImagesComeFromTheConfiguration) {
    GlobalConfig config;
    EXPECT_EQ(first_tape_device(config), "NONE");
    LogCapture log;
    config.read_line("TAPEDEVICE=/dev/nst0 8mm\n");
    config.read_line("TAPEDEVICE=EXABYTE EXB-8500 - 4_7\n");
    config.read_line("TAPEDEVICE=EXABYTE EXB-8500 - 5_7\n");
    config.read_line("TAPEDEVICE=/data/line 7, reel 2.tap image\n");
    EXPECT_EQ(first_tape_device(config), "/dev/nst0");
    EXPECT_TRUE(is_tape_image("/data/line 7, reel 2.tap", config));
    EXPECT_THAT(config.text(), testing::HasSubstr("TAPEDEVICE=/data/line 7, reel 2.tap image\n"));
    EXPECT_FALSE(is_tape_image("/dev/nst0", config));
    EXPECT_EQ(make_tape_device("EXABYTE", TapeUse::kRead, kTestReport, config)->name(),
              "EXABYTE EXB-8500 - 4_7");
    EXPECT_EQ(find_tape_device("EXABYTE EXB-8500 - 5_7", config), &config.tape_devices()[2]);
    EXPECT_EQ(find_tape_device("EXB-8500", config), nullptr);
    EXPECT_EQ(make_tape_device("/dev/nst0", TapeUse::kRead, kTestReport, config)->name(),
              "/dev/nst0");
}

}  // namespace
}  // namespace halvern
