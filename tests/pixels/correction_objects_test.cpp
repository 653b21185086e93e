#include "reduce/pixels/correction_objects.h"

#include "core/norm_file.h"
#include "reduce/pixels/abate.h"
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

CByteWriter Record(u32 width, u32 height, u8 tables) {
    return test::Record(32, 0x10001, CByteWriter().U32(width).U32(height).U8(tables));
}

std::string Pixel(const CCorrectionReduceObject& object, u32 i) {
    return Text(object.gain[i], object.offset[i], object.mask[i], object.map[i]);
}

void ExpectFilled(const CCorrectionReduceObject& object, u32 width, u32 height) {
    ASSERT_EQ(Text(object.width, object.height, object.present), Text(width, height, kAll));
    CCorrectionReduceObject expected;
    Fill(expected, width, height);
    for (u32 i = 0; i < width * height; ++i) ASSERT_EQ(Pixel(object, i), Pixel(expected, i)) << i;
}

TEST(Correction, CreateMakesWhatIsMissingAndKeepsTheRest) {
    CCorrectionReduceObject object;
    object.Create(0, 5, 3, kAll);
    EXPECT_TRUE(object.preset == 255 && object.present == 0);
    object.Create(3, 2, 1, CorrectionGain);
    EXPECT_TRUE(object.gain && !object.offset && !object.mask && !object.map);
    object.gain[5] = 2.0f;
    object.valid = true;
    object.Create(3, 2, 0x101, kAll);  // presets are bytes: still the same
    object.map[2] = 0, object.mask[2] = 1;
    object.Init(CorrectionBadPixels);
    EXPECT_TRUE(object.valid);
    for (u32 i = 0; i < 6; ++i) EXPECT_EQ(Pixel(object, i), Text(i < 5 ? 1 : 2, 0, 0, i));

    object.flippedLeftRight = true;
    object.Create(3, 2, 2, CorrectionOffset);  // another preset drops all
    object.Init(kAll);                         // only what exists
    EXPECT_FALSE(object.valid || object.flippedLeftRight || object.gain || object.mask || object.map);
    EXPECT_EQ(object.present, CorrectionOffset);
}

/// Every pixel and the pixel that it points to, by coordinates.
TEST(Correction, FlipMovesPlacesAndContents) {
    for (const auto& [width, height] : {std::pair{3u, 2u}, {2u, 3u}, {3u, 3u}, {1u, 4u}, {5u, 1u}, {1u, 1u}}) {
        for (int way = 0; way < 4; ++way) {
            const bool leftRight = way & 1, topBottom = way & 2;
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
                EXPECT_EQ(Pixel(object, turned(i)),
                          Text(before->gain[i], before->offset[i], before->mask[i], turned(before->map[i])));
            }
            EXPECT_FALSE(object.flippedLeftRight || object.flippedTopBottom);
        }
    }
}

TEST(Correction, RecordHasItsOwnWayWhateverTheTablesAreHeldIn) {
    CCorrectionReduceObject object;
    Fill(object, 97, 43);
    const std::vector<u8> record = SavedBytes(object);
    for (int way = 0; way < 4; ++way) {
        object.SetFlipped(way & 1, way & 2);
        const float first = object.gain[0];
        EXPECT_EQ(SavedBytes(object), record);
        EXPECT_EQ(object.gain[0], first);
    }
    object.preset = 4;
    object.valid = true;
    ASSERT_TRUE(object.Load(FileOf({.bytes = record}), 0x10001, 0));
    ExpectFilled(object, 97, 43);
    EXPECT_FALSE(object.preset != 4 || object.valid || object.flippedLeftRight);
    // Of an empty size the older form keeps the bits that it said.
    ASSERT_TRUE(object.Load(FileOf(CByteWriter().U32(0).U32(2).U8(kAll)), 0, 0));
    EXPECT_TRUE(object.present == kAll && !object.gain);
    object.Flip(true, true);
    EXPECT_EQ(SavedBytes(object)[16], 0);  // taken from the tables
}

TEST(Correction, SizesAreHeldAgainstTheFile) {
    const std::tuple<u32, u32, u8> lies[] = {{0xFFFFFFFF, 0xFFFFFFFF, kAll},
                                             {0x80000001, 0x80000000, kAll},
                                             {65536, 65536, CorrectionOffset},
                                             {0x10000, 0x8000, CorrectionGain},
                                             {3, 3, kAll},
                                             {7, 1, CorrectionBadPixels | 0xF0}};
    for (const auto& [width, height, present] : lies) {
        CByteWriter tables, stream;
        tables.Zeros(present == kAll ? 66 : 34);  // six pixels, or one byte too few for seven
        stream.U32(width).U32(height).U8(present).Append(tables);
        CCorrectionReduceObject object;
        EXPECT_FALSE(object.Load(FileOf(Record(width, height, present).Append(tables)), 0x10001, 0));
        EXPECT_FALSE(object.Load(FileOf(stream), 0x10000, 0));
        EXPECT_FALSE(object.gain || object.offset || object.mask || object.map);
    }
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
        EXPECT_TRUE(object.gain[0] == (room < 32 ? 3.5f : 1.5f) && object.flippedLeftRight);
    }
}

TEST(Correction, CopiesShareTablesAndDuplicatesDoNot) {
    CCorrectionReduceObject object;
    Fill(object, 3, 2);
    object.flippedTopBottom = true;
    const CCorrectionReduceObject shallow = object;
    const auto deep = object.Duplicate().Cast<CCorrectionReduceObject>();
    object.gain[0] = 9.0f, object.offset[0] = 7, object.mask[0] = 7, object.map[0] = 0;
    object.Default();  // the copy keeps the tables
    EXPECT_EQ(Pixel(shallow, 0), "9 7 7 0 ");
    EXPECT_TRUE(deep->flippedTopBottom);
    ExpectFilled(*deep, 3, 2);
}

TEST(Correction, FilesOfOneStem) {
    const float gain[] = {1, 2, 3, 4, 5, 6};
    const i16 offset[] = {-1, -2, -3, -4, -5, -6};
    const test::CTestFolder disk;
    for (const char* name : {"stem.mvg", "other.x.mvg", "wrong.mvb", "low.mvg"})
        ASSERT_TRUE(CNormFile::SaveGainTable(FileSystem, disk.Path(name), 3, 2, 1, gain));
    const std::tuple<const char*, u16, u16> offsets[] = {{"stem.mvo", 3, 2}, {"other.x.mvo", 2, 2}, {"low.mvo", 3, 1}};
    for (const auto& [name, width, height] : offsets)
        ASSERT_TRUE(CNormFile::SaveOffsetTable(FileSystem, disk.Path(name), width, height, 1, offset));
    CCorrectionReduceObject object;
    object.preset = 5;
    for (const char* path : {"stem", "stem.MVO", "stem.mvb", "stem.mvg"}) {
        ASSERT_TRUE(object.Load(FileSystem, disk.Path(path))) << path;
        EXPECT_EQ(Text(object.valid, object.preset, object.present, object.width, object.height),
                  Text(true, 5, CorrectionGain | CorrectionOffset, 3, 2));
        EXPECT_TRUE(std::equal(gain, gain + 6, object.gain.get()) && !object.mask);
        EXPECT_TRUE(std::equal(offset, offset + 6, object.offset.get()));
        object.Default();
    }
    // Of an object of that size, a table without a file survives, and so does the mirroring.
    Fill(object, 3, 2);
    object.flippedLeftRight = object.flippedTopBottom = true;
    ASSERT_TRUE(object.Load(FileSystem, disk.Path("stem")));
    EXPECT_TRUE(object.flippedLeftRight && !object.flippedTopBottom && object.map[0] == 1 && object.gain[0] == 1.0f);

    for (const char* path : {"none", "other.x", "other.x.mvb", "low", "wrong", "stem.mvx"}) {
        Fill(object, 2, 2);
        object.valid = object.flippedTopBottom = true;
        EXPECT_FALSE(object.Load(FileSystem, disk.Path(path)) || !object.flippedTopBottom) << path;
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
    EXPECT_TRUE(file.GetType() == BadPixelTable && file.GetPreset() == 255);
    EXPECT_TRUE(std::equal(object.map.get(), object.map.get() + 6, file.GetBadPixels().map));

    CCorrectionReduceObject wide;
    wide.Create(65536, 1, 0, CorrectionGain);
    EXPECT_FALSE(wide.Save(FileSystem, disk.Path("wide")));
    EXPECT_FALSE(FileSystem->Open(disk.Path("wide.mvg"), IFileSystem::OpenForReading));
}

TEST(AbateCfg, PresetsAreLimitedInBothDirections) {
    CAbateCfgReduceObject cfg;
    ASSERT_TRUE(cfg.Load(FileOf(AbateBlock({200, 6, 5, 4, 3, 2, 1, 0}, 0x20000, true)), 0x20000, 0));
    EXPECT_TRUE(cfg.order[0] == 7 && cfg.low[7] == 300);
    cfg.order[1] = 99;
    const std::vector<u8> saved = SavedBytes(cfg);
    EXPECT_TRUE(saved[8] == 1 && saved[32 + 32 + 4] == 7 && saved[32 + 32 + 5] == (300 & 0xFF));
    cfg.enabled = false;
    EXPECT_TRUE(SavedBytes(cfg)[8] == 0 && SavedBytes(cfg, PersistInitialState)[8] == 1);
    cfg.Default();
    EXPECT_TRUE(cfg.mode == AbateFromFirst && cfg.order[0] == 0 && cfg.low[7] == 1000 && cfg.high[7] == 15000);
}

TEST(AbateCfg, BlocksThatLieChangeNothing) {
    const CByteWriter good = AbateBlock({0, 1, 2, 3, 4, 5, 6, 7}, 0x20000, true);
    const CByteWriter old = AbateBlock({0, 1, 2, 3}, 0x10001, true);
    // The number of steps, the size of one, and a block of the other form.
    const std::tuple<CByteWriter, u32, std::size_t, u8> cases[] = {{good, 0x20000, 10, 4}, {good, 0x20000, 256, 0},
                                                                   {good, 0x1FFFF, 8, 1},  {old, 0x10001, 10, 8},
                                                                   {old, 0x10001, 128, 0}, {old, 0x20000, 8, 1}};
    for (auto [block, version, offset, value] : cases) {
        block.bytes[offset] = value;
        CAbateCfgReduceObject cfg;
        EXPECT_FALSE(cfg.Load(FileOf(block), version, 0) || cfg.enabled || cfg.low[0] != 1000) << offset;
    }
}

TEST(AbateSortHelper, FirstKeyUpSecondDown) {
    TArray<SAbateSortHelper> elements{{0, 2, 1}, {1, 1, 5}, {2, 2, 3}, {3, 1, 7}, {4, -1, 0}, {5, 2, 2}};
    SAbateSortHelper::Sort(elements);
    const u32 expected[] = {4, 3, 1, 2, 5, 0};
    for (u32 i = 0; i < 6; ++i) EXPECT_EQ(elements.GetAt(i).tag, expected[i]);
}

}  // namespace
}  // namespace ovix::reduce
