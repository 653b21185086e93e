#include "reduce/filters/describe_frame.h"

#include <gtest/gtest.h>

#include "reduce/filters/filter_factory.h"
#include "support/short_record_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 6, kHeight = 4;
constexpr u32 kImage = 2 * kWidth * kHeight;

TArray<SFrameField> FieldsOf(const Bytes& frame, GUID type) {
    TArray<SFrameField> fields{{7, 7, L"left", L"over"}};
    EXPECT_TRUE(DescribeFrame(L"K410", frame.data(), type, kWidth, kHeight, static_cast<u32>(frame.size()), fields));
    return fields;
}

TEST(DescribeFrame, K410) {
    SK410Container container;
    container.recordSize = 44;  // ends within the parameters
    const auto fields = FieldsOf(PlainFrame(Ramp(kWidth * kHeight), container), kK410GigE);
    const SFrameField& last = fields[fields.size() - 1];
    EXPECT_TRUE(last.offset == kImage + 128 + 40 && last.size == 4 && last.name == L"ReflectedTemp" &&
                last.value == L"40.25 K");
    for (const SFrameField& field : fields) EXPECT_LE(field.offset + field.size, kImage + 128 + 44);

    const Bytes stream = EncodeJpegLs(Ramp(kWidth * kHeight, 14), kWidth, kHeight);
    const auto ofStream = FieldsOf(CompressedFrame(stream, {}), kK410MJLS);
    EXPECT_TRUE(ofStream[1].offset == 4 && ofStream[1].size == stream.size() && ofStream[1].name == L"Image");
    EXPECT_TRUE(ofStream[2].offset == 4 + stream.size() && ofStream[2].value == L"0x004D4B4D");
    EXPECT_EQ(FieldsOf(Bytes(3 * kWidth * kHeight), kK410BGR).size(), 0u);
}

TEST(DescribeFrame, AsksTheCheckFirst) {
    const Bytes frame = ShortRecordFrame(Ramp(kWidth * kHeight), {});
    const u32 size = static_cast<u32>(frame.size());
    TArray<SFrameField> fields{{7, 7, L"left", L"over"}};
    EXPECT_FALSE(DescribeFrame(L"MV310", frame.data(), kMV310, kWidth, kHeight, size - 1, fields));
    EXPECT_EQ(fields.size(), 0u);
    EXPECT_FALSE(DescribeFrame(L"MV310", frame.data(), kPlover, kWidth, kHeight, size, fields));
    EXPECT_FALSE(DescribeFrame(L"Nobody", frame.data(), kMV310, kWidth, kHeight, size, fields));
}

}  // namespace
}  // namespace ovix::reduce
