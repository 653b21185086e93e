#include "core/bytes.h"

#include <gtest/gtest.h>

namespace ovix {
namespace {

TEST(ByteCursor, NeverPassesItsEnd) {
    const u8 bytes[] = {1, 2, 3, 4, 5, 6, 7};
    CByteCursor cursor(bytes, sizeof bytes);
    u16 little = 0, big = 0;
    u32 word = 9;
    EXPECT_TRUE(cursor.Read(little) && cursor.ReadBig(big));
    EXPECT_EQ(little, 0x0201);
    EXPECT_EQ(big, 0x0304);
    EXPECT_FALSE(cursor.Read(word));
    EXPECT_FALSE(cursor.ReadBig(word));
    EXPECT_EQ(word, 9u);
    EXPECT_EQ(cursor.Take(4), nullptr);
    EXPECT_EQ(cursor.Take(~u64{0}), nullptr);
    EXPECT_EQ(cursor.Remaining(), 3u);
    EXPECT_TRUE(cursor.Holds(3, 1) && cursor.Holds(1, 3) && cursor.Holds(~u64{0}, 0));
    EXPECT_FALSE(cursor.Holds(2, 2));
    EXPECT_FALSE(cursor.Holds(u64{1} << 63, 2));  // a product that would wrap to 0
    EXPECT_NE(cursor.Take(2), nullptr);
    EXPECT_EQ(*cursor.Take(1), 7);
}

}  // namespace
}  // namespace ovix
