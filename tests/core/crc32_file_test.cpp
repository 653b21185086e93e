#include "core/file.h"

#include <gtest/gtest.h>

namespace ovix {
namespace {

TEST(Crc32File, IsTheReflectedOneHoweverTheBytesCome) {
    CCalcCRC32File whole, pieces;
    whole.Write("123456789", 9);
    EXPECT_EQ(whole.GetCRC(), 0xCBF43926u);  // the published check value
    EXPECT_EQ(CCalcCRC32File().GetCRC(), 0u);

    pieces.Write("1234", 4);
    pieces.Write(nullptr, 0);
    EXPECT_TRUE(pieces.PutFixedLengthString("56789", 5));
    EXPECT_EQ(pieces.GetCRC(), whole.GetCRC());
    EXPECT_EQ(pieces.GetSize(), 9u);
}

TEST(Crc32File, CoversAFileFromItsPosition) {
    u32 crc = 1;
    CMemFile file;
    file.WriteZeros(100'000);
    file.Write("123456789", 9);
    EXPECT_TRUE(file.Seek(-9, IFile::FromEnd));
    EXPECT_TRUE(CalcCRC32(crc, BorrowShared<IFile>(file)));
    EXPECT_EQ(crc, 0xCBF43926u);

    CCalcCRC32File sum;
    sum.Write(file.GetData(), static_cast<u32>(file.GetSize()));
    file.SeekToBegin();
    EXPECT_TRUE(CalcCRC32(crc, BorrowShared<IFile>(file)));
    EXPECT_EQ(crc, sum.GetCRC());
    EXPECT_FALSE(CalcCRC32(crc, {}));
}

}  // namespace
}  // namespace ovix
