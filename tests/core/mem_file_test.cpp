#include "core/file.h"

#include <gtest/gtest.h>

#include <string>

#include "core/process.h"

namespace ovix {
namespace {

std::string Content(CMemFile& file) { return {reinterpret_cast<const char*>(file.GetData()), file.GetSize()}; }

TEST(MemFile, GrowsAndFillsGapsWithZeros) {
    CMemFile file;
    EXPECT_EQ(file.Write("abc", 3), 3u);
    EXPECT_TRUE(file.Seek(2, IFile::FromCurrent));
    EXPECT_EQ(file.Write("x", 1), 1u);
    EXPECT_EQ(Content(file), std::string("abc\0\0x", 6));
    EXPECT_TRUE(file.Seek(-5, IFile::FromEnd));
    EXPECT_EQ(file.Write("BC", 2), 2u);
    EXPECT_EQ(Content(file), std::string("aBC\0\0x", 6));
    EXPECT_TRUE(file.SetSize(2));
    EXPECT_EQ(file.GetPosition(), 2u);
    EXPECT_TRUE(file.SetSize(4));
    EXPECT_EQ(Content(file), std::string("aB\0\0", 4));  // what was there before does not come back
    file.Reset();
    EXPECT_EQ(file.GetSize(), 0u);
    EXPECT_EQ(file.Write("new", 3), 3u);
    EXPECT_EQ(Content(file), "new");
}

TEST(MemFile, RefusesPositionsAndSizesThatAreNone) {
    CMemFile file;
    file.Write("abc", 3);
    const struct {
        i64 offset;
        int origin;
    } cases[] = {
        {-1, IFile::FromStart},
        {-4, IFile::FromCurrent},
        {-4, IFile::FromEnd},
        {INT64_MIN, IFile::FromEnd},
        {INT64_MAX, IFile::FromStart},
        {INT64_MAX, IFile::FromEnd},
        {0, 0},
        {0, 4},
    };
    for (const auto& [offset, origin] : cases) {
        EXPECT_FALSE(file.Seek(offset, origin)) << offset << " " << origin;
        EXPECT_EQ(file.GetPosition(), 3u);
    }
    EXPECT_FALSE(file.SetSize(-1));
    EXPECT_FALSE(file.SetSize(INT64_MAX));
    EXPECT_EQ(Content(file), "abc");

    char buffer[4] = {};
    EXPECT_TRUE(file.Seek(10, IFile::FromStart));
    EXPECT_EQ(file.Read(buffer, 1), 0u);
    EXPECT_EQ(file.GetRemaining(), 0u);
}

TEST(MemFile, KeepsWithinACallersBuffer) {
    u8 buffer[5] = {'a', 'b', 'c', 'd', '#'};
    CMemFile file;
    file.Attach(buffer, 4, false);
    char read[4] = {};
    EXPECT_EQ(file.Read(read, 3), 3u);
    EXPECT_EQ(file.Write("xyz", 3), 1u);
    EXPECT_FALSE(file.SetSize(5));
    EXPECT_TRUE(file.SetSize(0));
    EXPECT_FALSE(file.WriteBytes("12345", 5));
    EXPECT_EQ(Content(file), "1234");
    EXPECT_TRUE(file.Seek(9, IFile::FromStart));
    EXPECT_EQ(file.Write("x", 1), 0u);
    file.Reset();
    EXPECT_EQ(std::string(buffer, buffer + 5), "1234#");

    file.Attach(static_cast<u8*>(Alloc(8)), 8, true);  // the leak checker sees whether it is freed
}

}  // namespace
}  // namespace ovix
