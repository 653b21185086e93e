#include <gtest/gtest.h>

#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "support/header_line_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

TEST(MVFalconFilter, PresetAndDayWithoutTheirLimits) {
    const auto filter = filterFactory()->Create(L"MVFalcon");
    const struct {
        int high, low;
        int day;
    } cases[] = {{0x03, 0x65, 365}, {0x12, 0x33, 1233}, {0x12, 0x34, 1}, {0x20, 0x00, 767}};
    for (const auto& c : cases) {
        Bytes header = MVFalconHeader(130);
        PutLow(header, 30, {c.low, c.high});
        u8 preset = 0;
        u64 counter = 0;
        CDateTime time, expected;
        ASSERT_TRUE(filter->ParseBasicInfo(header.data(), kMVFalconHeader, 130, 9, 256, preset, counter, time));
        EXPECT_EQ(preset, 6);  // the whole byte, of which `ParseFrame` takes two bits
        expected.SetYDHMS(c.day, 14, 25, 36, 789, 12);
        EXPECT_EQ(time, expected);
        CReduceObjectArray objects;
        ASSERT_TRUE(filter->ParseReduceObjects(header.data(), kMVFalconHeader, 130, 9, 256, objects, preset));
        EXPECT_EQ(preset, 2);
        EXPECT_EQ(objects.GetFrameInfo(2, false)->time, expected);
    }
}

}  // namespace
}  // namespace ovix::reduce
