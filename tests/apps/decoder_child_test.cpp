#include "apps/ovix/pipeline/decoder_child.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "apps/ovix/fault.h"

namespace ovix::app {
namespace {

/// Copies the frame to the pixels, unless its first byte says otherwise.
bool Obey(std::span<u8> frame, void* pixels) {
    if (frame[0] == 'A') std::abort();
    if (frame[0] == 'E') std::_Exit(7);
    if (frame[0] == 'F') return false;
    std::memcpy(pixels, frame.data(), 4);
    return true;
}

std::vector<u8> Frame(char first, std::size_t size) {
    std::vector<u8> frame(size, u8{0x42});
    frame[0] = static_cast<u8>(first);
    return frame;
}

TEST(DecoderChild, OutlivesTheEndOfItsChild) {
    CDecoderChild child(4, Obey);
    void* const pixels = child.Pixels();
    const struct {
        char first;
        std::size_t size;  // a larger frame takes new memory, and so a new child
        const char* fault;
    } steps[] = {{'a', 10, nullptr},    {'A', 10, "signal 6"},   {'b', 10, nullptr},    {'c', 5000, nullptr},
                 {'E', 10, "status 7"}, {'A', 9000, "signal 6"}, {'d', 100000, nullptr}};
    for (const auto& step : steps) {
        const std::vector<u8> frame = Frame(step.first, step.size);
        SCOPED_TRACE(step.first);
        try {
            EXPECT_TRUE(child.Run(frame));
            EXPECT_EQ(step.fault, nullptr);
            ASSERT_EQ(child.Pixels(), pixels);
            EXPECT_EQ(std::memcmp(pixels, frame.data(), 4), 0);
        } catch (const CFault& fault) {
            ASSERT_NE(step.fault, nullptr) << fault.what();
            EXPECT_NE(std::string(fault.what()).find(step.fault), std::string::npos) << fault.what();
        }
    }
    EXPECT_FALSE(child.Run(Frame('F', 10)));
    EXPECT_TRUE(child.Run(Frame('e', 10)));
}

}  // namespace
}  // namespace ovix::app
