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

using testing_support::LogCapture;

// What a drive does, call by call; a queue that has run out answers with its last element.
struct Script {
    std::deque<int> ready = {0};
    std::deque<int> load = {0};
    struct Read {
        int status;
        int residual = 0;
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
        const Script::Read read = next_of(script_.reads);
        residual_ = read.residual;
        return read.status;
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
        const auto bytes = SenseData{.residual = residual_}.bytes();
        std::copy(bytes.begin(), bytes.end(), sense.begin());
        return 0;
    }

private:
    Script& script_;
    int residual_ = 0;
};

struct FakeClock final : TapeClock {
    long long now = 0;
    long long NowMs() override { return now; }
    void SleepMs(int ms) override { now += ms; }
};

struct TapeDeviceTest : testing::Test {
    TapeDevice make(const char* name = "EXABYTE ???????????????? - 4_7", int retries = 2) {
        return {name, [this] { return std::make_unique<ScriptedDrive>(script); }, retries, clock};
    }
    Script script;
    FakeClock clock;
    std::array<std::byte, 100> buffer{};
};

TEST_F(TapeDeviceTest, AnUnknownNameDoesNotOpen) {
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

// Of 100 bytes asked for: the residual is what is missing, negative for a longer block.
TEST_F(TapeDeviceTest, GivesTheLengthThatTheResidualLeaves) {
    script.reads = {{0, 0}, {0xA982, 60}, {0xA982, -5}, {0xA981}, {1}, {5}};
    TapeDevice device = make();
    for (const int expected : {100, 40, 100, -1, -1, -1}) EXPECT_EQ(device.read(buffer), expected);
}

TEST_F(TapeDeviceTest, RetriesFailedAndEmptyReads) {
    script.reads = {{0x1100}, {0xA982, 100}, {0, 1}, {0x1100}};
    TapeDevice device = make();
    LogCapture log;
    EXPECT_EQ(device.read(buffer), 99);
    EXPECT_EQ(log.text(), "Error Reading Tape..  Error Code = '4352' '1100'\n");
    script.calls.clear();
    EXPECT_EQ(device.read(buffer), TapeDevice::kFailed);
    EXPECT_EQ(script.calls,
              " read read read");  // once, and two retries, which a good read refilled
    EXPECT_EQ(device.read(buffer), TapeDevice::kFailed);
    EXPECT_EQ(script.calls, " read read read read");  // none is left
}

TEST_F(TapeDeviceTest, NothingButEmptyReadsIsNoData) {
    script.reads = {{0, 100}};
    TapeDevice device = make();
    LogCapture log;
    EXPECT_EQ(device.read(buffer), TapeDevice::kNoData);
    EXPECT_EQ(script.calls, " load read read read");
    EXPECT_EQ(log.text(), "");
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

TEST_F(TapeDeviceTest, UnloadRewindsEjectsAndReleases) {
    TapeDevice device = make();
    ASSERT_EQ(device.open(), 0);
    script.calls.clear();
    EXPECT_EQ(device.unload(), 0);
    EXPECT_EQ(script.calls, " rewind unload release");
}

TEST(TapeDrives, FirstDeviceAndImagesComeFromTheConfiguration) {
    GlobalConfig config;
    EXPECT_EQ(first_tape_device(config), "NONE");
    LogCapture log;
    config.read_line("TAPEDEVICE=/dev/nst0 8mm\n");
    config.read_line("TAPEDEVICE=/data/line 7.tap image\n");
    config.read_line("TAPEDEVICE=EXABYTE EXB-8500 - 4_7\n");
    EXPECT_EQ(first_tape_device(config), "/dev/nst0");
    EXPECT_FALSE(is_tape_image("/dev/nst0", config));
    EXPECT_EQ(make_tape_device("EXABYTE", TapeUse::kRead, config)->name(),
              "EXABYTE EXB-8500 - 4_7");
    EXPECT_EQ(make_tape_device("/dev/nst0", TapeUse::kRead, config)->name(), "/dev/nst0");
}

TEST(TapePrompt, WithNobodyToAskTheAnswerIsNo) {
    struct Operator final : TapePrompt {
        bool Ask(const TapeQuestion& question) override { return question.text == "Ready?"; }
    } present;
    EXPECT_FALSE(ask_operator({.text = "Ready?"}));
    SetTapePrompt(&present);
    EXPECT_TRUE(ask_operator({.text = "Ready?"}));
    EXPECT_FALSE(ask_operator({.text = "Else?"}));
    SetTapePrompt(nullptr);
}

}  // namespace
}  // namespace halvern
