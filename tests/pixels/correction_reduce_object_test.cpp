#include "reduce/pixels/correction_objects.h"

#include <gtest/gtest.h>

#include "core/norm_file.h"
#include "support/object_file.h"
#include "support/test_folder.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u8 kAll = CorrectionGain | CorrectionOffset | CorrectionBadPixels;

/// Tables in which every place tells itself apart; the map points from each pixel to the next one.
void Fill(CCorrectionReduceObject& object, u32 width, u32 height) {
    object.Create(width, height, object.preset, kAll);
    const u32 n = width * height;
    for (u32 i = 0; i < n; ++i) {
        object.gain[i] = 1.5f + static_cast<float>(i);
        object.offset[i] = static_cast<i16>(-static_cast<int>(i));
        object.mask[i] = static_cast<u8>(i);
        object.map[i] = (i + 1) % n;
    }
}

void Tables(CByteWriter& bytes, u32 n) {
    for (u32 i = 0; i < n; ++i) bytes.F32(1.5f + static_cast<float>(i));
    for (u32 i = 0; i < n; ++i) bytes.U16(0x10000 - i);
    for (u32 i = 0; i < n; ++i) bytes.U8(i);
    for (u32 i = 0; i < n; ++i) bytes.U32((i + 1) % n);
}

CByteWriter Record(u32 width, u32 height, u8 tables, u32 version = 0x10001) {
    CByteWriter bytes;
    bytes.U32(32).U32(version).U32(width).U32(height).U8(tables).PadTo(32);
    return bytes;
}

void ExpectFilled(const CCorrectionReduceObject& object, u32 width, u32 height) {
    ASSERT_EQ(object.width, width);
    ASSERT_EQ(object.height, height);
    ASSERT_EQ(object.present, kAll);
    const u32 n = width * height;
    for (u32 i = 0; i < n; ++i) {
        ASSERT_EQ(object.gain[i], 1.5f + static_cast<float>(i));
        ASSERT_EQ(object.offset[i], -static_cast<int>(i));
        ASSERT_EQ(object.mask[i], static_cast<u8>(i));
        ASSERT_EQ(object.map[i], (i + 1) % n);
    }
}

TEST(Correction, CreateMakesWhatIsMissingAndKeepsTheRest) {
    CCorrectionReduceObject object;
    object.Create(0, 5, 3, kAll);
    EXPECT_EQ(object.preset, 255);
    EXPECT_EQ(object.present, 0);
    object.Create(3, 2, 1, CorrectionGain);
    EXPECT_TRUE(object.gain && !object.offset && !object.mask && !object.map);
    object.gain[5] = 2.0f;
    object.valid = true;
    object.Create(3, 2, 0x101, kAll);  // presets are bytes: still the same
    EXPECT_TRUE(object.valid);
    EXPECT_EQ(object.gain[5], 2.0f);
    object.map[2] = 0;
    object.mask[2] = 1;
    object.Init(CorrectionBadPixels);
    EXPECT_EQ(object.gain[5], 2.0f);
    for (u32 i = 0; i < 6; ++i) {
        EXPECT_EQ(object.offset[i], 0);
        EXPECT_EQ(object.mask[i], 0);
        EXPECT_EQ(object.map[i], i);
    }

    object.flippedLeftRight = true;
    object.Create(3, 2, 2, CorrectionOffset);  // another preset drops all
    EXPECT_FALSE(object.valid || object.flippedLeftRight || object.gain || object.map);
    EXPECT_EQ(object.present, CorrectionOffset);
    object.Init(kAll);  // only what exists
    EXPECT_FALSE(object.gain || object.mask);
}

/// Every pixel and the pixel that it points to, by coordinates.
TEST(Correction, FlipMovesPlacesAndContents) {
    for (const auto& [width, height] : {std::pair{3u, 2u}, {2u, 3u}, {3u, 3u}, {1u, 4u}, {5u, 1u}, {1u, 1u}}) {
        for (int way = 0; way < 4; ++way) {
            const bool leftRight = way & 1;
            const bool topBottom = way & 2;
            SCOPED_TRACE(testing::Message() << width << " x " << height << " way " << way);
            const auto turned = [&, w = width, h = height](u32 i) {
                const u32 x = leftRight ? w - 1 - i % w : i % w;
                const u32 y = topBottom ? h - 1 - i / w : i / w;
                return y * w + x;
            };
            CCorrectionReduceObject object;
            Fill(object, width, height);
            const auto before = object.Duplicate().Cast<CCorrectionReduceObject>();
            object.Flip(leftRight, topBottom);
            for (u32 i = 0; i < width * height; ++i) {
                EXPECT_EQ(object.gain[turned(i)], before->gain[i]);
                EXPECT_EQ(object.offset[turned(i)], before->offset[i]);
                EXPECT_EQ(object.mask[turned(i)], before->mask[i]);
                EXPECT_EQ(object.map[turned(i)], turned(before->map[i]));
            }
            EXPECT_FALSE(object.flippedLeftRight || object.flippedTopBottom);
        }
    }
}

TEST(Correction, RecordIsReadAndWrittenAsSpelled) {
    for (const auto& [width, height] : {std::pair{3u, 2u}, {97u, 43u}}) {
        CByteWriter record = Record(width, height, kAll);
        Tables(record, width * height);
        CCorrectionReduceObject object;
        object.preset = 4;
        object.flippedLeftRight = true;
        ASSERT_TRUE(object.Load(FileOf(record), 0x10001, 0));
        ExpectFilled(object, width, height);
        EXPECT_EQ(object.preset, 4);
        EXPECT_FALSE(object.valid || object.flippedLeftRight);
        // Whatever way the tables are held, the file has its own, and the object keeps its own.
        for (int way = 0; way < 4; ++way) {
            object.SetFlipped(way & 1, way & 2);
            const float first = object.gain[0];
            EXPECT_EQ(SavedBytes(object), record.bytes);
            EXPECT_EQ(object.gain[0], first);
        }
    }
}

TEST(Correction, OldStream) {
    CByteWriter stream;
    stream.U32(3).U32(2).U8(kAll);
    Tables(stream, 6);
    CCorrectionReduceObject object;
    ASSERT_TRUE(object.Load(FileOf(stream), 0x10000, 0));
    ExpectFilled(object, 3, 2);

    CByteWriter empty;
    empty.U32(0).U32(2).U8(kAll);
    ASSERT_TRUE(object.Load(FileOf(empty), 0, 0));
    EXPECT_EQ(object.present, kAll);  // exactly what was read
    EXPECT_FALSE(object.gain);
    object.Flip(true, true);
    EXPECT_EQ(SavedBytes(object)[16], 0);  // taken from the tables
}

TEST(Correction, SizesAreHeldAgainstTheFile) {
    struct {
        u32 width, height;
        u8 tables;
    } const lies[] = {
        {0xFFFFFFFF, 0xFFFFFFFF, kAll},
        {0x80000001, 0x80000000, kAll},
        {65536, 65536, CorrectionOffset},
        {0x10000, 0x8000, CorrectionGain},
        {3, 3, kAll},
        {7, 1, CorrectionBadPixels | 0xF0},
    };
    for (const auto& lie : lies) {
        CByteWriter tables;
        tables.Zeros(lie.tables == kAll ? 66 : 34);  // six pixels, or one byte too few for seven
        CByteWriter record = Record(lie.width, lie.height, lie.tables);
        CByteWriter stream;
        stream.U32(lie.width).U32(lie.height).U8(lie.tables);
        CCorrectionReduceObject object;
        EXPECT_FALSE(object.Load(FileOf(record.Append(tables)), 0x10001, 0));
        EXPECT_FALSE(object.Load(FileOf(stream.Append(tables)), 0x10000, 0));
        EXPECT_FALSE(object.gain || object.offset || object.mask || object.map);
    }
    CByteWriter record = Record(3, 2, kAll);
    Tables(record, 6);
    for (std::size_t size = 0; size < record.bytes.size(); ++size) {
        CCorrectionReduceObject object;
        EXPECT_FALSE(object.Load(FileOf(record, size), 0x10001, 0)) << size;
        EXPECT_FALSE(object.gain) << size;
    }
    EXPECT_FALSE(CCorrectionReduceObject().Load(FileOf(Record(0, 0, 0, 0x20000)), 0x10001, 0));
    EXPECT_TRUE(CCorrectionReduceObject().Load(FileOf(Record(0, 0, kAll, 0x1FFFF)), 0x10001, 0));
    CByteWriter wrongHeader = Record(0, 0, 0);
    wrongHeader.bytes[0] = 33;
    EXPECT_FALSE(CCorrectionReduceObject().Load(FileOf(wrongHeader), 0x10001, 0));
}

TEST(Correction, MapEntriesBeyondTheTableBecomeThePixelItself) {
    CByteWriter record = Record(2, 2, CorrectionBadPixels);
    record.U32(0).U32(4).U32(3).U32(0xFFFFFFFF).U32(0);
    CCorrectionReduceObject object;
    ASSERT_TRUE(object.Load(FileOf(record), 0x10001, 0));
    const u32 expected[] = {0, 3, 2, 0};
    EXPECT_TRUE(std::equal(expected, expected + 4, object.map.get()));
}

TEST(Correction, AFailedWriteLeavesTheTablesTurned) {
    for (const u32 room : {31u, 32u, 60u}) {
        CCorrectionReduceObject object;
        Fill(object, 3, 2);
        object.SetFlipped(true, false);
        u8 buffer[60];
        const TSharedPtr<CMemFile> file = MakeShared<CMemFile>();
        file->Attach(buffer, room, false);
        EXPECT_FALSE(object.Save(file, 0));
        EXPECT_EQ(object.gain[0], room < 32 ? 3.5f : 1.5f);
        EXPECT_TRUE(object.flippedLeftRight);
    }
}

TEST(Correction, CopiesShareTablesAndDuplicatesDoNot) {
    CCorrectionReduceObject shallow;
    TSharedPtr<CCorrectionReduceObject> deep;
    {
        CCorrectionReduceObject object;
        Fill(object, 3, 2);
        object.flippedTopBottom = true;
        shallow = object;
        deep = object.Duplicate().Cast<CCorrectionReduceObject>();
        object.gain[0] = 9.0f;
        object.map[0] = 0;
    }
    EXPECT_EQ(shallow.gain[0], 9.0f);
    EXPECT_TRUE(deep->flippedTopBottom);
    ExpectFilled(*deep, 3, 2);
}

TEST(Correction, FilesOfOneStem) {
    const float gain[] = {1, 2, 3, 4, 5, 6};
    const i16 offset[] = {-1, -2, -3, -4, -5, -6};
    const test::CTestFolder disk;
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, disk.Path("stem.mvg"), 3, 2, 1, gain));
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, disk.Path("stem.mvo"), 3, 2, 1, offset));
    ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, disk.Path("other.x.mvo"), 2, 2, 1, offset));
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, disk.Path("other.x.mvg"), 3, 2, 1, gain));
    ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, disk.Path("wrong.mvb"), 3, 2, 1, gain));

    for (const char* path : {"stem", "stem.MVO", "stem.mvb", "stem.mvg"}) {
        CCorrectionReduceObject object;
        object.preset = 5;
        ASSERT_TRUE(object.Load(FileSystem, disk.Path(path))) << path;
        EXPECT_TRUE(object.valid);
        EXPECT_EQ(object.preset, 5);
        EXPECT_EQ(object.present, CorrectionGain | CorrectionOffset);
        EXPECT_EQ(object.width, 3u);
        EXPECT_TRUE(std::equal(gain, gain + 6, object.gain.get()));
        EXPECT_TRUE(std::equal(offset, offset + 6, object.offset.get()));
        EXPECT_FALSE(object.mask);
    }

    // Of an object of that size, a table without a file survives, and so does the mirroring.
    CCorrectionReduceObject object;
    Fill(object, 3, 2);
    object.flippedLeftRight = object.flippedTopBottom = true;
    ASSERT_TRUE(object.Load(FileSystem, disk.Path("stem")));
    EXPECT_TRUE(object.flippedLeftRight);
    EXPECT_FALSE(object.flippedTopBottom);
    EXPECT_EQ(object.map[0], 1u);
    EXPECT_EQ(object.gain[0], 1.0f);

    for (const char* path : {"none", "other.x", "other.x.mvb", "wrong", "stem.mvx"}) {
        Fill(object, 2, 2);
        object.valid = object.flippedTopBottom = true;
        EXPECT_FALSE(object.Load(FileSystem, disk.Path(path))) << path;
        EXPECT_TRUE(object.flippedTopBottom);
        ExpectFilled(object, 2, 2);
    }
}

TEST(Correction, AllTablesAreSavedUnderOneName) {
    const test::CTestFolder disk;
    CCorrectionReduceObject object;
    Fill(object, 3, 2);
    ASSERT_TRUE(object.Save(FileSystem, disk.Path("stem.MVB")));
    EXPECT_FALSE(FileSystem->Open(disk.Path("stem.mvb"), IFileSystem::OpenForReading));
    CNormFile file;
    ASSERT_TRUE(file.Load(FileSystem, disk.Path("stem.mvg")));
    EXPECT_EQ(file.GetType(), BadPixelTable);
    EXPECT_EQ(file.GetPreset(), 255);
    EXPECT_TRUE(std::equal(object.map.get(), object.map.get() + 6, file.GetBadPixels().map));

    CCorrectionReduceObject wide;
    wide.Create(65536, 1, 0, CorrectionGain);
    EXPECT_FALSE(wide.Save(FileSystem, disk.Path("wide")));
    EXPECT_FALSE(FileSystem->Open(disk.Path("wide.mvg"), IFileSystem::OpenForReading));
}

}  // namespace
}  // namespace ovix::reduce
