#include "apps/ovix/in_order.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

namespace ovix::app {
namespace {

/// The later a thing of four, the sooner it is made.
void Dawdle(u64 number) { std::this_thread::sleep_for(std::chrono::microseconds(100 * (4 - number % 4))); }

TEST(InOrder, HandsOverInOrderAndKeepsLittle) {
    std::atomic<u64> made = 0;
    u64 taken = 0;
    const auto make = [&](u64 number) {
        Dawdle(number);
        ++made;
        return std::make_unique<u64>(number);
    };
    MakeInOrder(200, 3, make, [&](u64 number, std::unique_ptr<u64> thing) {
        EXPECT_EQ(number, taken++);
        EXPECT_EQ(*thing, number);
        EXPECT_LE(made, number + 1 + 6);
    });
    EXPECT_EQ(taken, 200u);
    MakeInOrder(0, 3, make, [](u64, std::unique_ptr<u64>) { FAIL(); });
}

TEST(InOrder, EndsWithTheFirstFailure) {
    u64 taken = 0;
    const auto make = [](u64 number) {
        Dawdle(number);
        if (number >= 5) throw std::runtime_error(std::to_string(number));
        return number;
    };
    const auto run = [&](const auto& take) {
        try {
            MakeInOrder(1000, 4, make, take);
            return std::string();
        } catch (const std::exception& error) {
            return std::string(error.what());
        }
    };
    EXPECT_EQ(run([&](u64, u64) { ++taken; }), "5");
    EXPECT_EQ(taken, 5u);
    EXPECT_EQ(run([](u64 number, u64) {
                  if (number == 2) throw std::runtime_error("disk");
              }),
              "disk");
}

}  // namespace
}  // namespace ovix::app
