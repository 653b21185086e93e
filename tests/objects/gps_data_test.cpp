#include "reduce/objects/source_info_reduce_object.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/byte_writer.h"

namespace ovix {
namespace {

TEST(GPSData, InvalidRecordAndItsSwap) {
    test::CByteWriter expected;
    expected.U32(0).Zeros(12).F64(-1).F64(-1).F32(-1).U32(0).Zeros(24).F32(-1).Zeros(6).U16(0).F32(-1).F32(-1).F32(-1);
    expected.Text("WGS84", 28).U32(0).F64(-1).F64(-1).F32(-1).F32(-1).Zeros(32).U16(0).U16(53).U32(0);
    ASSERT_EQ(expected.bytes.size(), 184u);

    SGPSData gps;
    std::memset(static_cast<void*>(&gps), 0xAA, sizeof gps);
    gps.invalidate();
    EXPECT_EQ(std::memcmp(&gps, expected.bytes.data(), sizeof gps), 0);
    EXPECT_FALSE(gps.isValid());
    gps.status = 1;
    EXPECT_TRUE(gps.isValid());

    EXPECT_FALSE(gps.isSwapped());
    gps.swap();
    EXPECT_TRUE(gps.isSwapped());
    gps.swap();
    EXPECT_FALSE(gps.isSwapped());
}

TEST(GPSData, SwapTurnsExactlyTheNumbers) {
    u8 bytes[184];
    for (int i = 0; i < 184; ++i) bytes[i] = static_cast<u8>(i);
    SGPSData gps;
    std::memcpy(static_cast<void*>(&gps), bytes, sizeof gps);
    gps.swap();
    // offset and width of each field that turns
    const int fields[][2] = {{0, 4},  {16, 8},  {24, 8},  {32, 4},  {36, 4},  {64, 4},  {74, 2},  {76, 4},  {80, 4},
                             {84, 4}, {116, 4}, {120, 8}, {128, 8}, {136, 4}, {140, 4}, {176, 2}, {178, 2}, {180, 4}};
    for (const auto& [offset, width] : fields) {
        for (int i = 0; i < width; ++i) bytes[offset + i] = static_cast<u8>(offset + width - 1 - i);
    }
    EXPECT_EQ(std::memcmp(&gps, bytes, sizeof gps), 0);
}

}  // namespace
}  // namespace ovix
