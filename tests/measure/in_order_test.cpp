#include "measure/in_order.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>

namespace ovix::measure {
namespace {

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
