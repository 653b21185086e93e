#include "reduce/files/info_file.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/file.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/correction_objects.h"
#include "support/byte_writer.h"
#include "support/text.h"

namespace ovix::reduce {
namespace {

using test::BitwiseCRC;
using test::CByteWriter;
using test::Text;

constexpr GUID kFileType = "{9C3C13F6-1A10-49C5-86C9-ACF8A928DCC6}"_guid;
constexpr GUID kFov = "{42FD8DA7-B376-45C2-8255-B9267E512077}"_guid;
constexpr GUID kSource = "{344ED254-76DC-4B4C-B47B-3548A6837C26}"_guid;
constexpr GUID kCorrection = "{4AD3EFCE-D157-4203-BFC2-3979EE047FE4}"_guid;
constexpr GUID kNobodys = "{00000001-0002-0003-0405-060708090A0B}"_guid;
constexpr u64 kOpenEnd = ~u64{0};

CByteWriter Header(std::string_view name, GUID id, u32 version, u8 preset, u32 flags, u64 size, u32 crc) {
    CByteWriter w;
    return w.Text(name, 32).Guid(id).U32(version).U8(preset).U64(~u64{0}).U32(flags).U64(size).U32(crc);
}
CByteWriter FileHeader() { return Header("QUOR KRT-LM File", kFileType, 4096, 255, 0, 0, 0); }
CByteWriter PixelsHeaderOnly() { return Header("Pixels", kNobodys, 0x10001, 255, 1, kOpenEnd, 0); }
CByteWriter Block(std::string_view name, GUID id, u32 version, const CByteWriter& data, u8 preset = 255,
                  u32 flags = 3) {
    return Header(name, id, version, preset, flags, data.bytes.size(), BitwiseCRC(data.bytes)).Append(data);
}
CByteWriter FovRecord(double h, double v) { return CByteWriter().U32(64).U32(0x10001).F64(h).F64(v).PadTo(64); }
CByteWriter FovBlock(double h, double v) { return Block("FOV", kFov, 0x10001, FovRecord(h, v)); }
CByteWriter CorrectionBlock(float gain, u8 preset, u32 flags = 3) {
    CByteWriter record;
    record.U32(32).U32(0x10001).U32(1).U32(1).U8(1).PadTo(32).F32(gain);
    return Block("Correction", kCorrection, 0x10001, record, preset, flags);
}

/// A file in memory over a copy of the bytes.
struct SFile {
    explicit SFile(const std::vector<u8>& bytes) {
        memory.WriteBytes(bytes.data(), static_cast<u32>(bytes.size()));
        memory.SeekToBegin();
    }
    std::vector<u8> Bytes() { return {memory.GetData(), memory.GetData() + memory.GetSize()}; }
    CMemFile memory;
    TSharedPtr<IFile> file = BorrowShared<IFile>(memory);
};

TEST(InfoFile, WritesHeaderAndBlocksByteForByteInTheOrderOfTheArray) {
    CReduceObjectArray array;
    const auto fov = array.GetFOV(true);
    fov->IHFOV = 0.0005;
    fov->IVFOV = 0.00025;
    fov->valid = true;
    const auto correction = array.GetCorrection(2, true);
    correction->Create(1, 1, 2, 1);
    correction->gain[0] = 1.5f;
    array.GetFrameInfo(0, true);  // does not persist

    const CByteWriter withoutTables = FileHeader().Append(FovBlock(0.0005, 0.00025));
    const CByteWriter whole = CByteWriter(withoutTables).Append(CorrectionBlock(1.5f, 2, 2));
    for (const u32 flags : {0u, u32{PersistWithoutTables}}) {
        SFile f({});
        ASSERT_TRUE(SaveInfoFile(f.file, array, flags));
        EXPECT_EQ(f.Bytes(), flags ? withoutTables.bytes : whole.bytes);
    }
    EXPECT_FALSE(SaveInfoFile(L"/dev/full", array, 0));
}

TEST(InfoFile, LoadsWhatItKnowsListsAllAndStopsAtTheOpenEnd) {
    CByteWriter damaged = FovRecord(1, 2);
    damaged.bytes[0] = 63;
    CByteWriter w = FileHeader();
    w.Append(CorrectionBlock(2, 0));
    w.Append(Block("", CGUID::Empty, 0, CByteWriter().Zeros(100), 255, 0));  // free
    w.Append(Block("Alien", kNobodys, 7, CByteWriter().Zeros(9)));
    w.Append(Block("FOV", kFov, 0x10001, damaged));
    w.Append(CorrectionBlock(3, 1, 2));
    w.Append(Block("FOV", kFov, 0x10001, FovRecord(1, 2).Zeros(20)));  // the object reads less than its block holds
    const u64 pixelsData = w.bytes.size() + 77;
    w.Append(PixelsHeaderOnly()).Zeros(50);

    SFile f(w.bytes);
    CReduceObjectArray array;
    InfoFileDirectory blocks;
    ASSERT_TRUE(LoadInfoFile(f.file, array, blocks, 0));
    EXPECT_EQ(f.file->GetPosition(), pixelsData);
    ASSERT_TRUE(blocks.size() == 7 && array.GetSize() == 3);
    EXPECT_EQ(Text(blocks[0].name, blocks[0].headerOffset, blocks[0].dataOffset), "Correction 77 154 ");
    EXPECT_TRUE(blocks[1].typeID == CGUID::Empty && blocks[6].dataOffset == pixelsData);
    const auto first = array.GetCorrection(0, false), second = array.GetCorrection(1, false);
    EXPECT_EQ(Text(first->gain[0], first->valid, second->gain[0], second->valid, array.GetFOV(false)->IVFOV),
              "2 1 3 0 2 ");

    f.file->SeekToBegin();
    ASSERT_TRUE(LoadInfoFile(f.file, array, blocks, PersistWithoutTables));
    EXPECT_TRUE(blocks.size() == 5 && array.GetSize() == 1);
    f.file->SeekToBegin();
    ASSERT_TRUE(ScanInfoFile(f.file, blocks, PersistWithoutTables));
    EXPECT_EQ(blocks.size(), 7u);
}

TEST(InfoFile, RefusesAFileHeaderThatDiffersInAnyField) {
    // The name and its end, type, version, preset, frame, flags, size, CRC.
    for (const std::size_t offset : {0, 31, 32, 48, 52, 53, 61, 65, 73}) {
        std::vector<u8> bytes = FileHeader().bytes;
        bytes[offset] ^= 1;
        SFile f(bytes);
        CReduceObjectArray array;
        array.GetFOV(true);
        InfoFileDirectory blocks;
        blocks.SetSize(2);
        EXPECT_FALSE(LoadInfoFile(f.file, array, blocks, 0)) << offset;
        EXPECT_TRUE(array.GetSize() == 1 && blocks.size() == 2);
    }
}

/// Every truncation of a file: true only where a whole number of blocks stands, and never more than what is whole.
TEST(InfoFile, EveryTruncationIsAnsweredAndKeepsTheWholeBlocks) {
    CByteWriter w = FileHeader();
    std::vector<std::size_t> ends = {w.bytes.size()};
    for (const double value : {1.0, 2.0}) {
        w.Append(FovBlock(value, value));
        ends.push_back(w.bytes.size());
    }
    for (std::size_t length = 0; length <= w.bytes.size(); ++length) {
        SFile f({w.bytes.begin(), w.bytes.begin() + static_cast<std::ptrdiff_t>(length)});
        CReduceObjectArray array;
        const bool whole = std::find(ends.begin(), ends.end(), length) != ends.end();
        EXPECT_EQ(LoadInfoFile(f.file, array, 0), whole) << length;
        const auto there = std::count_if(ends.begin() + 1, ends.end(), [&](std::size_t end) { return end <= length; });
        EXPECT_EQ(array.GetSize(), static_cast<u32>(there)) << length;
    }
}

TEST(InfoFile, ABlockThatEndsBehindTheFileEndsTheReadingAfterItWasListed) {
    for (const u64 size : {u64{65}, u64{1} << 40, ~u64{0} - 1, ~u64{0} - 200}) {
        SFile f(FileHeader().Append(Header("FOV", kFov, 0x10001, 255, 3, size, 0)).Append(FovRecord(1, 2)).bytes);
        CReduceObjectArray array;
        InfoFileDirectory blocks;
        EXPECT_FALSE(LoadInfoFile(f.file, array, blocks, 0) || blocks.size() != 1);
        f.file->SeekToBegin();
        EXPECT_FALSE(ScanInfoFile(f.file, blocks, 0) || blocks.size() != 1);
    }
}

TEST(InfoFile, BlockHeadersOfObjectsAndBuffers) {
    SInfoFileBlock block;
    ASSERT_TRUE(InitInfoFileBlock(block, MakeShared<CFOVReduceObject>()));
    EXPECT_EQ(Text(block.flags, block.size, block.dataOffset), "2 64 0 ");
    std::vector<u8> buffer(78, 0xA5);
    ASSERT_TRUE(WriteInfoFileBlock(buffer.data(), block));
    EXPECT_EQ(buffer, Header("FOV", kFov, 0x10001, 255, 2, 64, BitwiseCRC(FovRecord(0, 0).bytes)).U8(0xA5).bytes);
    EXPECT_FALSE(InitInfoFileBlock(block, MakeShared<CFrameInfoReduceObject>()));  // cannot be saved

    SFile f({});
    ASSERT_TRUE(WriteFreeInfoFileBlock(f.file, 5000));
    EXPECT_EQ(f.Bytes(), Header("", CGUID::Empty, 0, 255, 0, 5000, 0).Zeros(5000).bytes);
}

/// A stored source info of the newest form with bytes of a later version in its reserved space.
CByteWriter SourceRecord(bool fixedPreset) {
    CByteWriter w;
    w.U32(2048).U32(0x20000).PadTo(78).U8(fixedPreset).PadTo(123).U16(640).U16(480).U16(640).U16(482).U16(7);
    return w.PadTo(900).U32(0xC0FFEE).PadTo(1024).U8(1).PadTo(2048);
}

CByteWriter RecordingWith(const CByteWriter& first, const CByteWriter& second) {
    CByteWriter w = FileHeader();
    w.Append(Block("SourceInfo", kSource, 0x20000, first)).Append(FovBlock(1, 2));
    return w.Append(Block("SourceInfo", kSource, 0x20000, second)).Append(PixelsHeaderOnly()).Zeros(64);
}

TEST(UpdateInfoFile, PatchesEverySourceInfoAndNothingElse) {
    const u32 counts[4] = {0, 5, 0, 70000};
    for (const bool unpacked : {false, true}) {
        const auto patched = [&](bool fixedPreset) {
            CByteWriter record = SourceRecord(fixedPreset);
            for (std::size_t p = 0; p < 4; ++p) {
                u8* preset = record.bytes.data() + 1024 + 128 * p;
                if (!fixedPreset) preset[0] = counts[p] ? 1 : 0;
                for (std::size_t i = 0; i < 4; ++i) preset[15 + i] = static_cast<u8>(counts[p] >> (8 * i));
            }
            if (unpacked) {
                record.bytes[129] = 0xE0;  // 480 lines as the frame has, and nothing extra
                record.bytes[131] = 0;
            }
            return record;
        };
        SFile f(RecordingWith(SourceRecord(false), SourceRecord(true)).bytes);
        ASSERT_TRUE(UpdateInfoFile(f.file, counts, unpacked));
        EXPECT_EQ(f.Bytes(), RecordingWith(patched(false), patched(true)).bytes);
    }
}

TEST(UpdateInfoFile, AnswersFalseWhenASourceInfoCannotBeLoadedAndTrueWithoutOne) {
    const u32 counts[4] = {1, 1, 1, 1};
    CByteWriter broken = SourceRecord(false);
    broken.bytes[0] = 1;
    const CByteWriter w = FileHeader().Append(Block("SourceInfo", kSource, 0x20000, broken));
    SFile bad(w.bytes);
    EXPECT_FALSE(UpdateInfoFile(bad.file, counts, false));
    EXPECT_EQ(bad.Bytes(), w.bytes);

    SFile none(FileHeader().bytes);
    EXPECT_TRUE(UpdateInfoFile(none.file, counts, false));
}

}  // namespace
}  // namespace ovix::reduce
