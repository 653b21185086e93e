#include "core/norm_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/test_folder.h"

namespace ovix {
namespace {

using test::CByteWriter;
using test::CTestFolder;

std::vector<u8> BytesOf(const CString& path) {
    const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::OpenForReading);
    std::vector<u8> bytes(file ? file->GetRemaining() : 0);
    EXPECT_TRUE(file && file->ReadBytes(bytes.data(), static_cast<u32>(bytes.size())));
    return bytes;
}

void Store(const CString& path, const std::vector<u8>& bytes) {
    const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::CreateForWriting);
    EXPECT_TRUE(file && file->WriteBytes(bytes.data(), static_cast<u32>(bytes.size())) && file->Close());
}

/// The bytes with their right checksum behind them.
std::vector<u8> Sealed(CByteWriter writer) { return writer.U32(test::BitwiseCRC(writer.bytes)).bytes; }

CByteWriter Head(u32 version, u32 size, u32 type, u32 width, u32 height) {
    CByteWriter writer;
    writer.Text("OVIXNORM", 8).U32(version).U32(size);
    return writer.U32(type).U32(width).U32(height).U16(3).U16(0);
}

TEST(NormFile, HasTheDescribedBytes) {
    // The example of docs/formats/norm_file.md: an offset table of 2 by 1 for preset 3.
    const std::vector<u8> expected = Sealed(Head(0x10000, 20, 1, 2, 1).U16(0x10000 - 10).U16(300));
    const u8 crc[] = {0xC4, 0xB0, 0x55, 0x1D};
    EXPECT_TRUE(std::equal(std::begin(crc), std::end(crc), expected.end() - 4));
    const CTestFolder folder;
    const i16 offsets[] = {-10, 300};
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("a"), 2, 1, 3, offsets));
    EXPECT_EQ(BytesOf(folder.Path("a")), expected);
}

TEST(NormFile, ReadsBackEveryTable) {
    const CTestFolder folder;
    const float gains[] = {1.0f, 0.5f, -2.0f, 1e-30f, 3.0f, 4.0f};
    const i16 offsets[] = {0, -32768, 32767, 1, 2, 3};
    const u8 mask[] = {0, 1, 0, 255, 0, 0};
    const u32 map[] = {0, 0, 2, 5, 6, 0xFFFFFFFF};  // the last two point behind the table
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, folder.Path("g"), 3, 2, 7, gains));
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("o"), 2, 3, 0, offsets));
    ASSERT_TRUE(CNormFile::SaveBadPixelTable(FileSystem, folder.Path("b"), 6, 1, 255, mask, map));

    CNormFile file;
    EXPECT_EQ(file.GetGains(), nullptr);
    ASSERT_TRUE(file.Load(FileSystem, folder.Path("g")));
    EXPECT_TRUE(file.GetType() == GainTable && file.xPixels() == 3 && file.yPixels() == 2 && file.GetPreset() == 7);
    EXPECT_EQ(std::memcmp(file.GetGains(), gains, sizeof gains), 0);
    EXPECT_EQ(file.GetOffsets(), nullptr);

    const CNormFile kept(file);
    ASSERT_TRUE(file.Load(FileSystem, folder.Path("o")));
    EXPECT_TRUE(file.GetType() == OffsetTable && file.xPixels() == 2 && file.yPixels() == 3);
    EXPECT_EQ(std::memcmp(file.GetOffsets(), offsets, sizeof offsets), 0);
    EXPECT_EQ(file.GetGains(), nullptr);
    EXPECT_EQ(CNormFile(kept).GetGains()[5], 4.0f);

    ASSERT_TRUE(file.Load(FileSystem, folder.Path("b")));
    EXPECT_EQ(file.GetType(), BadPixelTable);
    EXPECT_EQ(std::memcmp(file.GetBadPixels().mask, mask, sizeof mask), 0);
    const u32 safe[] = {0, 0, 2, 5, 4, 5};
    EXPECT_EQ(std::memcmp(file.GetBadPixels().map, safe, sizeof safe), 0);
}

TEST(NormFile, RefusesDamageAndStaysAsItWas) {
    const CTestFolder folder;
    const CString path = folder.Path("table");
    const float gains[] = {1.0f, 2.0f, 3.0f, 4.0f};
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, path, 2, 2, 0, gains));
    const std::vector<u8> good = BytesOf(path);
    CNormFile file;
    ASSERT_TRUE(file.Load(FileSystem, path));
    const auto refused = [&](const std::vector<u8>& bytes) {
        Store(path, bytes);
        return !file.Load(FileSystem, path) && file.xPixels() == 2 && std::memcmp(file.GetGains(), gains, 16) == 0;
    };
    for (std::size_t at = 0; at < good.size(); ++at) {
        std::vector<u8> flipped = good;
        flipped[at] ^= 0x10;
        EXPECT_TRUE(refused(flipped)) << "byte " << at;
        EXPECT_TRUE(refused(std::vector<u8>(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(at))))
            << "cut at " << at;
    }
    std::vector<u8> longer = good;
    longer.push_back(0);
    EXPECT_TRUE(refused(longer));

    // Wrong, but with a right checksum.
    EXPECT_TRUE(refused(Sealed(Head(0x20000, 20, 0, 1, 1).F32(1)))) << "another major version";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 20, 3, 1, 1).F32(1)))) << "no type";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0, 1)))) << "no width";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0x10000, 0x10000)))) << "a product that wraps";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 16, 0, 0xFFFF, 0xFFFF)))) << "more than the file holds";
    EXPECT_TRUE(refused(Sealed(Head(0x10000, 20, 2, 2, 1).U32(1)))) << "a mask without its map";
    EXPECT_FALSE(file.Load(FileSystem, folder.Path("none")));

    Store(path, Sealed(Head(0x10001, 24, 0, 1, 1).F32(8).U32(9)));
    EXPECT_TRUE(file.Load(FileSystem, path)) << "a later minor version appends fields";
    EXPECT_EQ(file.GetGains()[0], 8.0f);
}

TEST(NormFile, ReportsWhatCouldNotBeSaved) {
    const CTestFolder folder;
    const i16 offset = 1;
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("none/a"), 1, 1, 0, &offset));
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, L"/dev/full", 1, 1, 0, &offset));
    EXPECT_FALSE(CNormFile::SaveOffsetTable(FileSystem, folder.Path("a"), 0, 5, 0, nullptr));
    EXPECT_FALSE(FileSystem->Open(folder.Path("a"), IFileSystem::OpenForReading));
}

}  // namespace
}  // namespace ovix
