#include "reduce/files/acquisition_file.h"

#include <cstring>

#include "core/file.h"
#include "core/pixel_types.h"
#include "reduce/files/info_file.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/object_file.h"
#include "support/test_folder.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;
using test::Text;

constexpr GUID kPixels = "{48A16EF9-457E-47E8-9F70-5495781A1B64}"_guid;
constexpr GUID kWide = "{7D0A2D5C-0000-4000-8000-000000000001}"_guid;  // two bytes per pixel, of this test

TSharedPtr<CSourceInfoReduceObject> AddSource(CReduceObjectArray& array) {
    RegisterPixelType(kWide, L"Wide", 2, UInt16, rootIRType);
    const auto source = array.GetSourceInfo(true);
    source->pixelType = kWide;
    source->width = source->frameWidth = source->packetWidth = 640;
    source->height = source->frameHeight = 480;
    source->packetHeight = 482;
    source->packetExtra = 3;
    return source;
}

CByteWriter PixelsBlock(u16 packetHeight, u16 packetExtra, u32 frameSize) {
    CByteWriter w;
    w.Text("Pixels", 32).Guid(kPixels).U32(0x10001).U8(255).U64(~u64{0}).U32(1).U64(~u64{0}).U32(0);
    w.U32(512).U32(0x10001).U32(512).Guid(kWide).U16(2).U16(640).U16(480).U16(640).U16(480);
    return w.U16(640).U16(packetHeight).U16(packetExtra).U32(frameSize).U32(frameSize).PadTo(77 + 512);
}

std::vector<u8> Last(CMemFile& file, std::size_t n) {
    const u8* end = file.GetData() + file.GetSize();
    return file.GetSize() < n ? std::vector<u8>() : std::vector<u8>(end - n, end);
}

TEST(AcquisitionFile, StartsWithTheMetadataAsTheSourcesOwnAndThePixelsBlock) {
    for (const bool unpacked : {false, true}) {
        CReduceObjectArray array;
        AddSource(array);
        array.GetObjectParameters(true)->fromSource = false;
        CMemFile memory;
        const TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
        ASSERT_TRUE(StartKRTFile(file, array, unpacked));
        const CByteWriter expected = unpacked ? PixelsBlock(480, 0, 614400) : PixelsBlock(482, 3, 616960);
        EXPECT_EQ(Last(memory, expected.bytes.size()), expected.bytes);
        const u32 counts[4] = {2, 0, 0, 0};
        ASSERT_TRUE(FinishKRTFile(file, counts, unpacked));
        file->SeekToBegin();
        CReduceObjectArray loaded;
        InfoFileDirectory blocks;
        ASSERT_TRUE(LoadInfoFile(file, loaded, blocks, 0));
        const auto source = loaded.GetSourceInfo(false);
        EXPECT_EQ(Text(loaded.GetObjectParameters(false)->fromSource, source->presets[0].frameCount,
                       source->packetHeight, source->packetExtra),
                  unpacked ? "1 2 480 0 " : "1 2 482 3 ");
        const SInfoFileBlock& last = blocks[blocks.size() - 1];
        SPixelsHeader header;
        ASSERT_TRUE(last.typeID == PixelsBlockTypeID && ReadPixelsHeader(file, last.version, header));
        EXPECT_TRUE(header.packetHeight == (unpacked ? 480 : 482) && file->GetRemaining() == 0);
        EXPECT_FALSE(ReadPixelsHeader(file, last.version, header));
    }
}

TEST(AcquisitionFile, IsStartedFilledAndFinishedAsOneFileOnTheDisk) {
    const test::CTestFolder folder;
    const CString path = folder.Path("recording.krt");
    const TSharedPtr<IFile> file = FileSystem->Open(path, IFileSystem::CreateForWriting);
    CReduceObjectArray array;
    AddSource(array);
    ASSERT_TRUE(file && StartKRTFile(file, array, true));
    const u64 framesAt = file->GetPosition();
    for (const char* frame : {"first", "other"}) ASSERT_TRUE(file->WriteBytes(frame, 5));
    const u32 counts[4] = {1, 0, 1, 0};
    ASSERT_TRUE(FinishKRTFile(file, counts, true));
    ASSERT_TRUE(file->Close());

    CReduceObjectArray loaded;
    InfoFileDirectory blocks;
    ASSERT_TRUE(LoadInfoFile(path, loaded, blocks, 0));
    const auto source = loaded.GetSourceInfo(false);
    EXPECT_EQ(Text(source->presets[0].frameCount, source->presets[2].frameCount, source->presets[1].enabled), "1 1 0 ");
    const TSharedPtr<IFile> again = FileSystem->Open(path, IFileSystem::OpenForReading);
    char frames[11] = {};
    ASSERT_TRUE(again->Seek(static_cast<i64>(framesAt), IFile::FromStart) && again->ReadBytes(frames, 10));
    EXPECT_STREQ(frames, "firstother");
    EXPECT_EQ(again->GetRemaining(), 0u);
}

TEST(AcquisitionFile, HeadersOfTheCallersGoInAsTheyStand) {
    CReduceObjectArray array;
    const auto source = AddSource(array);
    SPixelsHeader header;
    ASSERT_TRUE(InitPixelsHeader(header, source, false));
    header.frameSize = 12345;
    header.reserved1[0] = 7;
    CMemFile memory, own;
    ASSERT_TRUE(StartKRTFile(BorrowShared<IFile>(memory), array, header));
    EXPECT_EQ(std::memcmp(Last(memory, 512).data(), &header, 512), 0);
    ASSERT_TRUE(WritePixelsHeader(BorrowShared<IFile>(own), source, kWide, 99, true));
    EXPECT_EQ(Last(own, 589), PixelsBlock(480, 0, 99).bytes);
}

TEST(AcquisitionFile, ReadsTheOldestRecord) {
    CByteWriter sizes, expected;
    sizes.U16(640).U16(480).U16(641).U16(481).U16(642).U16(482).U16(3).U32(614400);
    const TSharedPtr<IFile> file =
        test::FileOf(CByteWriter().Guid(kWide).U16(2).U64(0xEEEEEEEEEEEEEEEE).Append(sizes).Zeros(600));
    SPixelsHeader header;
    std::memset(static_cast<void*>(&header), 0xFF, sizeof header);
    ASSERT_TRUE(ReadPixelsHeader(file, 0x10000, header));
    EXPECT_EQ(file->GetPosition(), 44u);
    expected.U32(44).U32(0x10000).U32(44).Guid(kWide).U16(2).Append(sizes).U32(614400).PadTo(512);
    EXPECT_EQ(std::memcmp(&header, expected.bytes.data(), 512), 0);
}

/// The layouts say where the members stand: a record of which each byte is another one goes through them unchanged.
TEST(PixelsHeader, LayoutsAreThoseOfTheRecordsInMemory) {
    SPixelsHeader header;
    for (u32 i = 0; i < sizeof header; ++i) reinterpret_cast<u8*>(&header)[i] = static_cast<u8>(i ^ i >> 8);
    u8 record[512];
    StorePixelsHeader(header, 0x10001, record);
    EXPECT_EQ(std::memcmp(record, &header, sizeof record), 0);
    ASSERT_EQ(PixelsHeaderBytes(0x10000), 44u);
    StorePixelsHeader(header, 0x10000, record);
    SPixelsHeaderV0 oldest;
    std::memcpy(&oldest, record, sizeof oldest);
    EXPECT_EQ(Text(oldest.pixelType == header.pixelType, oldest.notRead[7], oldest.width, oldest.packetExtra,
                   oldest.frameSize),
              Text(1, 0, header.width, header.packetExtra, header.frameSize));
    for (const auto& [version, offset] : {std::pair{0x10001u, 36u}, {0x10000u, 32u}}) {
        SPixelsHeader other = header;
        other.frameHeight++;
        u8 changed[512];
        StorePixelsHeader(header, version, record);
        StorePixelsHeader(other, version, changed);
        const auto parts = DifferingParts(PixelsHeaderLayout(version), record, changed);
        ASSERT_EQ(parts.size(), 1u);
        EXPECT_TRUE(parts[0].offset == offset && parts[0].name == "height of a frame");
    }
}

TEST(PixelsHeader, FrameBlocksAreAddedOnceAndAtMostEightTimes) {
    SPixelsHeader header = {};
    header.frameBlocks[1].used = 1;  // a zero id in use is not free
    GUID id = kWide;
    for (const int expected : {0, 2, 3, 4, 5, 6, 7, -1}) {
        id.data1++;
        EXPECT_EQ(header.AddFrameBlock({id, 1, {}}), expected);
    }
    GUID first = kWide;
    first.data1++;
    EXPECT_EQ(header.AddFrameBlock({first, 1, {}}), -1);
    EXPECT_EQ(Text(header.FindFrameBlock(first), header.FindFrameBlock(id), header.FindFrameBlock(CGUID::Empty)),
              "0 -1 1 ");
}

}  // namespace
}  // namespace ovix::reduce
