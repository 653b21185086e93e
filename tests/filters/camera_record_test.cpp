#include "reduce/filters/camera_record.h"

#include <gtest/gtest.h>

#include <vector>

namespace ovix::reduce {
namespace {

/// Fields of the first 1148 bytes that have a byte order, one behind the other.
struct SFields {
    u32 offset, count, width;
};
constexpr SFields kDescribed[] = {
    {0, 14, 2},  {776, 2, 4},  {28, 9, 4},  {784, 4, 2},  {80, 1, 4},  {792, 2, 4},  {88, 23, 4}, {824, 2, 4},
    {180, 5, 2}, {832, 1, 2},  {364, 1, 4}, {872, 2, 4},  {432, 2, 2}, {880, 3, 2},  {436, 7, 4}, {900, 2, 4},
    {464, 2, 2}, {908, 1, 2},  {488, 1, 4}, {912, 8, 4},  {556, 2, 2}, {960, 3, 2},  {560, 7, 4}, {968, 1, 4},
    {588, 2, 2}, {972, 6, 2},  {612, 1, 4}, {1100, 2, 2}, {680, 2, 2}, {1104, 2, 4}, {684, 7, 4}, {1112, 2, 2},
    {712, 2, 2}, {1116, 1, 4}, {736, 2, 4}, {1120, 6, 2},
};

/// For each byte of the record, the place that it comes from.
std::vector<u32> ExpectedOrigins(bool whole) {
    std::vector<u32> origin(camera_record::kSize);
    for (u32 i = 0; i < origin.size(); ++i) origin[i] = i;
    const auto turn = [&](u32 offset, u32 width) {
        for (u32 i = 0; i < width; ++i) origin[offset + i] = offset + width - 1 - i;
    };
    for (const SFields& fields : kDescribed) {
        for (u32 i = 0; i < fields.count; ++i) turn(fields.offset + i * fields.width, fields.width);
    }
    for (u32 row = 0; whole && row < 20; ++row) {
        for (const u32 field : {0u, 20u, 24u}) turn(1148 + 28 * row + field, 4);
        turn(1708 + 20 * row, 4);
    }
    return origin;
}

TEST(CameraRecord, SwapTurnsEveryFieldAndNothingElse) {
    std::vector<u8> original(camera_record::kSize);
    for (u32 i = 0; i < original.size(); ++i) original[i] = static_cast<u8>(i * 37 + i / 256);
    original[0] = 0;
    original[1] = 2;
    for (const bool whole : {false, true}) {
        SCOPED_TRACE(whole);
        std::vector<u8> record = original;
        const auto swap = whole ? camera_record::Swap : camera_record::SwapShort;
        if (!whole) record.resize(camera_record::kShortSize);  // nothing behind is touched
        EXPECT_TRUE(camera_record::IsSwapped(record.data()));
        swap(record.data());
        EXPECT_FALSE(camera_record::IsSwapped(record.data()));
        const std::vector<u32> origin = ExpectedOrigins(whole);
        for (u32 i = 0; i < record.size(); ++i) ASSERT_EQ(record[i], original[origin[i]]) << i;
        swap(record.data());
        EXPECT_TRUE(std::equal(record.begin(), record.end(), original.begin()));
    }
}

}  // namespace
}  // namespace ovix::reduce
