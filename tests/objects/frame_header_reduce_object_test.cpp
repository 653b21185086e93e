#include "reduce/objects/frame_info_reduce_object.h"

#include <gtest/gtest.h>

namespace ovix::reduce {
namespace {

TEST(FrameHeader, DuplicateOwnsItsBytesAndDefaultKeepsTheCapacity) {
    CFrameHeaderReduceObject header;
    header.headerType = "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid;
    header.headerData = {1, 2, 3};
    const auto copy = header.Duplicate().Cast<CFrameHeaderReduceObject>();
    const u32 capacity = header.headerData.GetCapacity();
    header.Default();
    EXPECT_EQ(header.headerType, CGUID::Empty);
    EXPECT_EQ(header.headerData.size(), 0u);
    EXPECT_EQ(header.headerData.GetCapacity(), capacity);
    ASSERT_EQ(copy->headerData.size(), 3u);
    EXPECT_EQ(copy->headerData.GetAt(2), 3);
    EXPECT_EQ(copy->headerType, "{01020304-0506-0708-090A-0B0C0D0E0F10}"_guid);
}

}  // namespace
}  // namespace ovix::reduce
