#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <ranges>
#include <stdexcept>

#include "measure/in_order.h"
#include "turning_camera.h"

namespace ovix::measure {
namespace {

using namespace test;

static_assert(std::ranges::input_range<CSeries>);

std::vector<STurningFrame> Turning(u16 count, std::initializer_list<std::pair<u16, u8>> presets = {}) {
    std::vector<STurningFrame> frames;
    for (u16 i = 0; i < count; ++i) frames.push_back({0, {i, i, i, i}});
    for (const auto& [number, preset] : presets) frames[number].preset = preset;
    return frames;
}

auto CountThreads() { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); }

std::vector<u64> NumbersOf(CSeries& series) {
    std::vector<u64> numbers;
    for (const CFrame& frame : series) numbers.push_back(frame.number);
    return numbers;
}

TEST(Series, HandsResultsOverInOrderFromManyThreadsInBoundedMemory) {
    const CTurningDump dump(Turning(300));
    const CMeasurement measurement(dump.Source(), {});
    CSeries series(measurement, {.threads = 4});
    std::atomic<int> mapped = 0;
    const auto caller = std::this_thread::get_id();
    std::vector<float> means;
    series.Run(
        [&](const CFrame& frame) {
            EXPECT_NE(std::this_thread::get_id(), caller);
            ++mapped;
            if (frame.number % 7 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
            return static_cast<float>(frame.Statistics().mean);
        },
        [&](float mean) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            EXPECT_LE(mapped, static_cast<int>(means.size()) + 8) << "frames in memory";
            means.push_back(mean);
        });
    ASSERT_EQ(means.size(), 300u);
    for (std::size_t i = 0; i < means.size(); ++i) EXPECT_EQ(means[i], static_cast<float>(i));
    EXPECT_EQ(series.Done(), 300u);
}

TEST(Series, TreatsFaultsAsItIsToldAndEverythingElseAsTheEnd) {
    const CTurningDump dump(Turning(12, {{2, 200}, {5, 100}, {11, 200}}));
    const CMeasurement measurement(dump.Source(), {});
    for (const unsigned threads : {1, 3}) {
        CSeries skips(measurement, {.threads = threads, .onFault = EOnFault::Skip});
        EXPECT_EQ(NumbersOf(skips), (std::vector<u64>{0, 1, 3, 4, 6, 7, 8, 9, 10}));
        EXPECT_TRUE(skips.FaultCount() == 3 && skips.Faults().size() == 3 && skips.Faults()[1].Facts().frame == 5);

        CSeries fills(measurement, {.threads = threads, .onFault = EOnFault::Fill});
        u64 number = 0;
        for (const CFrame& frame : fills) {
            const bool bad = number == 2 || number == 5 || number == 11;
            EXPECT_EQ(frame.number, number++);
            EXPECT_EQ(frame.status, std::vector<u8>(4, bad ? 32 : 0));
            for (const float value : frame.values) EXPECT_EQ(std::isnan(value), bad);
        }
        EXPECT_EQ(number, 12u);

        CSeries stops(measurement, {.threads = threads});
        std::vector<u64> good;
        const auto stop = [&] {
            for (const CFrame& frame : stops) good.push_back(frame.number);
        };
        EXPECT_EQ(FrameFaultOf(stop), std::pair(EError::FrameRefused, u64{2}));
        EXPECT_EQ(good, (std::vector<u64>{0, 1}));

        // A frame that is not there is a mistake of the caller.
        CSeries beyond(measurement,
                       {.frames = CFrameNumbers({{10, 13}}), .threads = threads, .onFault = EOnFault::Skip});
        EXPECT_EQ(IdOf([&] { NumbersOf(beyond); }), EError::NoSuchFrame);
        CSeries maps(measurement, {.threads = threads, .onFault = EOnFault::Skip});
        int sunk = 0;
        EXPECT_THROW(maps.Run([](const CFrame& frame) { return frame.number == 4 ? throw frame.number : 0; },
                              [&](int) { ++sunk; }),
                     u64);
        EXPECT_EQ(sunk, 3);
        EXPECT_THROW(maps.Run([](const CFrame& frame) { return frame.number; }, [](u64 n) { throw n; }), u64);
        const auto before = CountThreads();
        int taken = 0;
        for ([[maybe_unused]] CFrame& frame : maps)
            if (++taken == 2) break;
        EXPECT_EQ(CountThreads(), before) << "threads that stay";
    }
}

TEST(Series, EndsOnRequestAndTellsHowFarItIs) {
    const CTurningDump dump(Turning(50));
    const CMeasurement measurement(dump.Source(), {});
    for (const unsigned threads : {1, 3}) {
        std::stop_source stop;
        std::vector<u64> told;
        CSeries series(measurement, {.frames = CFrameNumbers({{40, 49}, {0, 30, 3}}),
                                     .threads = threads,
                                     .stop = stop.get_token(),
                                     .progress = [&](u64 done, std::optional<u64> total) {
                                         EXPECT_EQ(total, 21u);
                                         told.push_back(done);
                                         if (done == 12) stop.request_stop();
                                     }});
        std::vector<u64> numbers;
        const auto run = [&] {
            for (const CFrame& frame : series) numbers.push_back(frame.number);
        };
        EXPECT_EQ(IdOf(run), EError::Interrupted);
        EXPECT_EQ(numbers, (std::vector<u64>{40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 0, 3}));
        EXPECT_EQ(told.size(), 12u);
    }
}

TEST(Series, MergesEachCycleOfPresetsToOneFrame) {
    CTurningDump dump({{0, {100, 15000, 15001, 16000}},
                       {1, {10, 2000, 2000, 16000}},
                       {0, {1, 2, 3, 4}},
                       {209, {}},
                       {1, {5, 6, 7, 8}},
                       {1, {100, 200, 300, 400}},
                       {0, {20000, 20000, 9, 9}},
                       {0, {15002, 1, 2, 3}}});
    const CMeasurement measurement(dump.Source(), TurningRadiance());
    // Above 15,000 counts the next preset is taken; the last of a cycle whatever it counts. Counts as those of preset
    // 0.
    const struct {
        u64 number;
        std::vector<u64> merged;
        std::array<double, 4> counts;
    } expected[] = {{0, {0, 1}, {100, 15000, 4 * 2000, 4 * 16000}},
                    {2, {2, 4}, {1, 2, 3, 4}},
                    {5, {5, 6}, {4 * 100, 4 * 200, 9, 9}},
                    {7, {7}, {15002, 1, 2, 3}}};
    for (const unsigned threads : {1, 2, 5}) {
        CSeries series(measurement, {.threads = threads, .onFault = EOnFault::Skip, .mergePresets = true});
        const auto* next = expected;
        for (const CFrame& frame : series) {
            ASSERT_NE(next, std::end(expected));
            EXPECT_TRUE(frame.number == next->number && frame.merged == next->merged) << frame.number;
            for (u32 p = 0; p < 4; ++p)
                EXPECT_NEAR(frame.values[p] / kRadiancePerCount, next->counts[p], 0.01) << frame.number << ' ' << p;
            ++next;
        }
        EXPECT_EQ(next, std::end(expected));
        EXPECT_EQ(series.FaultCount(), 1u);
        CSeries stops(measurement, {.threads = threads, .mergePresets = true});
        EXPECT_EQ(FactsOf([&] { NumbersOf(stops); }).frame, 3u);
        EXPECT_EQ(stops.Done(), 1u) << "the cycle that the damaged frame stands in is not whole";
    }
    // What is known of preset 0 alone does not do for a cycle of both.
    CSeries one(CMeasurement(dump.Source(), TurningRadiance(1)), {.onFault = EOnFault::Skip, .mergePresets = true});
    EXPECT_EQ(NumbersOf(one), std::vector<u64>{7});
    EXPECT_EQ(one.Faults().front().Id(), EError::NoCalibration);
}

TEST(Series, TakesTheFramesOfAPipeAsTheyCome) {
    for (const unsigned threads : {1, 3}) {
        const CPipe pipe(test::Frames(40), 1000, true);
        const CMeasurement measurement(OpenDescriptor(pipe.Reader(), "pipe", AsDump()),
                                       {.quantity = EQuantity::Counts});
        EXPECT_FALSE(measurement.Unit());
        CSeries chosen(measurement, {.frames = CFrameNumbers({{2, 8, 3}, {11, 35}}), .threads = threads});
        std::vector<u64> numbers;
        for (const CFrame& frame : chosen) {
            numbers.push_back(frame.number);
            EXPECT_EQ(frame.values[0], static_cast<float>(1000 + frame.number));
            if (numbers.size() == 12) break;
        }
        EXPECT_EQ(numbers, (std::vector<u64>{2, 5, 8, 11, 12, 13, 14, 15, 16, 17, 18, 19}));
        // The end of the pipe stays open: who waits for more is ended on request.
        std::stop_source stop;
        CSeries rest(measurement, {.threads = threads, .stop = stop.get_token()});
        std::jthread patience([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
            stop.request_stop();
        });
        EXPECT_EQ(IdOf([&] { NumbersOf(rest); }), EError::Interrupted);
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // these keep freed memory
TEST(Series, AHundredThousandFramesOfAPipeLeaveMemoryFlat) {
    constexpr u64 kFrames = 100'000;
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::jthread writer([&] {
        const Bytes frames = test::Frames(100);
        for (u64 i = 0; i < kFrames / 100; ++i)
            for (std::size_t at = 0; at < frames.size();)
                at += static_cast<std::size_t>(::write(ends[1], &frames[at], frames.size() - at));
        ::close(ends[1]);
    });
    const auto resident = [] {
        std::ifstream facts("/proc/self/statm");
        u64 all = 0, pages = 0;
        facts >> all >> pages;
        return pages * static_cast<u64>(::sysconf(_SC_PAGESIZE));
    };
    const CMeasurement measurement(OpenDescriptor(ends[0], "pipe", AsDump()), {.quantity = EQuantity::Counts});
    CSeries series(measurement, {.threads = 2});
    u64 early = 0, seen = 0;
    for (const CFrame& frame : series) {
        EXPECT_EQ(frame.number, seen);
        if (++seen == 1000) early = resident();
    }
    EXPECT_EQ(seen, kFrames);
    EXPECT_LT(resident(), early + (u64{2} << 20));  // where the frames came to 270 MB
    ::close(ends[0]);
}
#endif

TEST(Series, GoesOnOnBothSidesOfAFork) {
    const CTurningDump dump(Turning(60));
    const CMeasurement measurement(dump.Source(), {});
    for (const unsigned threads : {1u, kThreadsAcrossForks}) {
        std::vector<u64> numbers;
        pid_t child = -1;
        {
            CSeries series(measurement, {.threads = threads});
            for (const CFrame& frame : series) {
                numbers.push_back(frame.number);
                if (frame.number == 20) child = ::fork();
            }
        }
        bool good = numbers.size() == 60;
        for (u64 i = 0; i < numbers.size(); ++i) good = good && numbers[i] == i;
        if (child == 0) ::_exit(good ? 0 : 1);
        int status = -1;
        ::waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
        EXPECT_TRUE(good);
    }
}

/// The later an item of four, the sooner it is made.
void Dawdle(u64 number) { std::this_thread::sleep_for(std::chrono::microseconds(100 * (4 - number % 4))); }

TEST(InOrder, HandsOverInOrderAndKeepsLittle) {
    std::atomic<u64> made = 0;
    u64 taken = 0;
    const auto make = [&](u64 number) {
        Dawdle(number);
        ++made;
        return std::make_unique<u64>(number);
    };
    InOrder(3, Numbers(200), make, [&](std::unique_ptr<u64> thing) {
        EXPECT_EQ(*thing, taken++);
        EXPECT_LE(made, *thing + 1 + 6);
    });
    EXPECT_EQ(taken, 200u);
    InOrder(3, Numbers(0), make, [](std::unique_ptr<u64>) { FAIL(); });
}

TEST(InOrder, EndsWithTheFirstFailure) {
    u64 taken = 0;
    const auto make = [](u64 number) {
        Dawdle(number);
        if (number >= 5) throw std::runtime_error(std::to_string(number));
        return number;
    };
    const auto run = [&](const auto& next, const auto& take) {
        try {
            InOrder(4, next, make, take);
            return std::string();
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(run(Numbers(1000), [&](u64) { ++taken; }), "5");
    EXPECT_EQ(taken, 5u);
    const auto full = [](u64 number) {
        if (number == 2) throw std::runtime_error("disk");
    };
    EXPECT_EQ(run(Numbers(1000), full), "disk");
    // What gives the items may wait for the next one when it comes to that, or fail itself.
    const auto waits = [n = u64{0}](const std::stop_token& stop) mutable -> std::optional<u64> {
        while (n == 4 && !stop.stop_requested()) std::this_thread::yield();
        return n++;
    };
    EXPECT_EQ(run(waits, full), "disk");
    const auto fails = [n = u64{0}](const std::stop_token&) mutable -> std::optional<u64> {
        if (n == 3) throw std::runtime_error("source");
        return n++;
    };
    taken = 0;
    EXPECT_EQ(run(fails, [&](u64) { ++taken; }), "source");
    EXPECT_EQ(taken, 3u);
}

}  // namespace
}  // namespace ovix::measure
