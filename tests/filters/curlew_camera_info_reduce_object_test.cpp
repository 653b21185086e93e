#include "reduce/filters/camera_record.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

TEST(CurlewCameraInfo, StoredForm) {
    test::CByteWriter bytes;
    for (u32 i = 0; i < 2428; ++i) bytes.U8(i * 7 + 1);
    bytes.U8(1);
    for (u32 i = 0; i < 32; ++i) bytes.U8(200 + i);
    bytes.U8(0);
    ASSERT_EQ(bytes.bytes.size(), 2462u);

    CCurlewCameraInfoReduceObject info;
    ASSERT_TRUE(info.Load(test::FileOf(bytes), 0x10000, 0));
    EXPECT_EQ(info.record[2427], bytes.bytes[2427]);
    EXPECT_TRUE(info.recordPresent);
    EXPECT_EQ(info.digitalHeader[31], 231);
    EXPECT_FALSE(info.digitalHeaderPresent);
    EXPECT_EQ(test::SavedBytes(info), bytes.bytes);
    EXPECT_EQ(test::SavedBytes(*info.Duplicate()), bytes.bytes);

    for (const u32 size : {0u, 2427u, 2428u, 2460u, 2461u}) {
        EXPECT_FALSE(info.Load(test::FileOf(bytes, size), 0x10000, 0)) << size;
    }
    ASSERT_TRUE(info.Load(test::FileOf(bytes), 0x10000, 0));
    EXPECT_FALSE(info.Load(test::FileOf(bytes), 0x10001, 0));
    EXPECT_EQ(test::SavedBytes(info), std::vector<u8>(2462, 0));  // at its defaults
}

}  // namespace
}  // namespace ovix::reduce
