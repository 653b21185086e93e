// Compressed frames are decoded by helper processes: whatever threads and processes come and go, the pixels are right.

#include <signal.h>
#include <sys/wait.h>

#include <atomic>

#include "source_files.h"

#ifdef __SANITIZE_THREAD__
/// Children forked off while threads run are what is tested here.
extern "C" const char* __tsan_default_options() { return "die_after_fork=0"; }  // NOLINT(*reserved-identifier)
#endif

namespace ovix::measure {
namespace {

using namespace test;

constexpr u32 kPixels = kWidth * kHeight;
constexpr u16 kFrames = 6;

std::vector<u16> PixelsOf(u64 number) {
    std::vector<u16> pixels = Ramp(kPixels, 14);
    for (u16& pixel : pixels) pixel = static_cast<u16>((pixel + 1000 * number) & 0x3FFF);
    return pixels;
}

Bytes Compressed(u64 number) {
    return CompressedFrame(EncodeJpegLs(PixelsOf(number), kWidth, kHeight), {.record = {.width = kWidth}});
}

bool IsRight(const CFrame& frame) {
    const std::vector<u16> pixels = PixelsOf(frame.number);
    return std::equal(frame.values.begin(), frame.values.end(), pixels.begin(), pixels.end());
}

bool MeasuresRight(const CMeasurement& measurement, u64 number) {
    try {
        return IsRight(measurement.Measure(number));
    } catch (const CError&) {
        return false;
    }
}

/// What a process says of itself: whose child it is, and its name.
std::pair<pid_t, std::string> ParentAndName(const std::string& process) {
    std::ifstream file("/proc/" + process + "/stat");
    std::string text;
    std::getline(file, text);  // of a process that is gone, nothing
    const auto open = text.find('('), close = text.rfind(')');
    if (close == std::string::npos) return {};
    return {std::atoi(text.c_str() + close + 4), text.substr(open + 1, close - open - 1)};
}

std::vector<pid_t> Helpers(pid_t parent) {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") == std::string::npos &&
            ParentAndName(name) == std::pair<pid_t, std::string>(parent, "ovix-decode"))
            found.push_back(std::atoi(name.c_str()));
    }
    return found;
}

/// Runs an action in a forked child, which leaves with its answer; no child takes longer than a minute.
pid_t Fork(const auto& action) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    ::alarm(60);
    ::_exit(action() ? 0 : 1);
}
bool WasGood(pid_t child) {
    int status = -1;
    return ::waitpid(child, &status, 0) == child && status == 0;
}

class CompressedFrames : public ::testing::Test {
  protected:
    CSource Dump(const std::vector<Bytes>& frames) const {
        return Open(folder.Put("dump", Joined(frames)), AsDump(kStream));
    }
    CSource Dump() const {
        std::vector<Bytes> frames;
        for (u64 i = 0; i < kFrames; ++i) frames.push_back(Compressed(i));
        return Dump(frames);
    }

    CTestFolder folder;
};

TEST_F(CompressedFrames, AreDecodedForThreadsThatComeAndGo) {
    const CMeasurement measurement(Dump(), {.quantity = EQuantity::Counts});
    std::atomic<int> wrong = 0;
    for (int round = 0; round < 10; ++round) {
        std::vector<std::jthread> threads;
        for (u64 i = 0; i < 4; ++i)
            threads.emplace_back(
                [&, i] { wrong += !MeasuresRight(measurement, (i + static_cast<u64>(round)) % kFrames); });
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_LE(Helpers(::getpid()).size(), 4u);
}

TEST_F(CompressedFrames, SurviveTwoHundredForksUnderLoad) {
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "a child waits for ever for locks that the sanitizer's allocator held at the fork";
#endif
    const CMeasurement measurement(Dump(), {.quantity = EQuantity::Counts});
    std::atomic<int> wrong = 0;
    {
        std::vector<std::jthread> load;
        for (u64 i = 0; i < 2; ++i)
            load.emplace_back([&, i](const std::stop_token& stop) {
                for (u64 n = i; !stop.stop_requested(); ++n) wrong += !MeasuresRight(measurement, n % kFrames);
            });
        std::vector<pid_t> children;
        for (u64 i = 0; i < 200; ++i) {
            children.push_back(Fork([&] {
                return MeasuresRight(measurement, i % kFrames) && MeasuresRight(measurement, (i + 1) % kFrames);
            }));
            if (children.size() < 8 && i < 199) continue;
            for (const pid_t child : children) wrong += !WasGood(child);
            children.clear();
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_F(CompressedFrames, OutliveTheirHelpers) {
    const CMeasurement measurement(Dump(),
                                   {.quantity = EQuantity::Counts, .decodePatience = std::chrono::milliseconds(300)});
    ASSERT_TRUE(MeasuresRight(measurement, 0));
    // One that ended between two frames is no fault of the second.
    for (const pid_t helper : Helpers(::getpid())) ::kill(helper, SIGKILL);
    EXPECT_TRUE(MeasuresRight(measurement, 1));
    // One that stays silent is a fault of the frame at hand alone.
    for (const pid_t helper : Helpers(::getpid())) ::kill(helper, SIGSTOP);
    EXPECT_EQ(FrameFaultOf([&] { measurement.Measure(2); }), std::pair(EError::PixelsDamaged, u64{2}));
    EXPECT_TRUE(MeasuresRight(measurement, 2) && MeasuresRight(measurement, 3));
}

TEST_F(CompressedFrames, FaultsOfOneAreNoneOfTheOthers) {
    Bytes torn = EncodeJpegLs(PixelsOf(1), kWidth, kHeight);
    torn.erase(torn.begin() + 80, torn.end() - 2);
    const CMeasurement measurement(
        Dump({Compressed(0), CompressedFrame(torn, {.record = {.width = kWidth}}), Compressed(2)}),
        {.quantity = EQuantity::Counts});
    CSeries series(measurement, {.threads = 2, .onFault = EOnFault::Skip});
    for (const CFrame& frame : series) EXPECT_TRUE(IsRight(frame)) << frame.number;
    ASSERT_EQ(series.FaultCount(), 1u);
    EXPECT_EQ(FrameFaultOf([&] { throw series.Faults()[0]; }), std::pair(EError::PixelsDamaged, u64{1}));
}

TEST_F(CompressedFrames, LeaveNothingBehindAndTakeNothingAlong) {
    int inherited[2];
    ASSERT_EQ(::pipe(inherited), 0);  // as a host opens them that does not think of its children
    {
        const CMeasurement measurement(Dump(), {.quantity = EQuantity::Counts});
        ASSERT_TRUE(MeasuresRight(measurement, 0));
        const std::vector<pid_t> helpers = Helpers(::getpid());
        ASSERT_EQ(helpers.size(), 1u);
        for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(helpers[0]) + "/fd"))
            EXPECT_LE(std::stoi(entry.path().filename()), 4) << std::filesystem::read_symlink(entry.path());
    }
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a helper is left";

    // A host that is ended by force takes its helper along.
    const pid_t host = Fork([&] {
        const CMeasurement measurement(Dump(), {.quantity = EQuantity::Counts});
        bool right = MeasuresRight(measurement, 0);
        const pid_t helper = Helpers(::getpid()).at(0);
        right = right && ::write(inherited[1], &helper, sizeof helper) == sizeof helper;
        return right && ::kill(::getpid(), SIGKILL) == 0;
    });
    pid_t helper = -1;
    ASSERT_EQ(::read(inherited[0], &helper, sizeof helper), ssize_t{sizeof helper});
    EXPECT_FALSE(WasGood(host));
    for (int i = 0; i < 500 && ParentAndName(std::to_string(helper)).second == "ovix-decode"; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_NE(ParentAndName(std::to_string(helper)).second, "ovix-decode");
    ::close(inherited[0]);
    ::close(inherited[1]);
}

}  // namespace
}  // namespace ovix::measure
