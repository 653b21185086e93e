#include "core/record.h"

#include <gtest/gtest.h>

#include "core/bytes.h"
#include "core/file.h"

namespace ovix {
namespace {

TEST(ByteCursor, NeverPassesItsEnd) {
    const u8 bytes[] = {1, 2, 3, 4, 5, 6, 7};
    CByteCursor cursor(bytes, sizeof bytes);
    u16 little = 0, big = 0;
    u32 word = 9;
    EXPECT_TRUE(cursor.Read(little) && cursor.ReadBig(big) && little == 0x0201 && big == 0x0304);
    EXPECT_FALSE(cursor.Read(word) || cursor.ReadBig(word) || cursor.Take(4) || cursor.Take(~u64{0}));
    EXPECT_TRUE(word == 9 && cursor.Remaining() == 3);
    EXPECT_TRUE(cursor.Holds(3, 1) && cursor.Holds(1, 3) && cursor.Holds(~u64{0}, 0));
    EXPECT_FALSE(cursor.Holds(2, 2));
    EXPECT_FALSE(cursor.Holds(u64{1} << 63, 2));  // a product that would wrap to 0
    EXPECT_TRUE(cursor.Take(2) && *cursor.Take(1) == 7);
}

struct SInner {
    u16 a = 0;
    float b = 0;
};
constexpr TRecordField<SInner> kInner[] = {Field<&SInner::a>(0, "a"), Field<&SInner::b>(2, "b")};

struct SOuter {
    char name[5] = {};
    bool flag = false;
    i16 number = 0;
    u32 sum = 0;
    GUID id;
    CDateTime time;
    SInner inner[2];
    u8 rest[3] = {};
};
constexpr TRecordField<SOuter> kOuter[] = {
    CharsField<&SOuter::name>(0, "name"),
    Field<&SOuter::flag>(4, "flag"),
    Field<&SOuter::number>(5, "number"),
    Field<&SOuter::sum>(7, "sum", EStored::Hex),
    Field<&SOuter::id>(11, "id"),
    Field<&SOuter::time>(27, "time"),
    SubRecords<&SOuter::inner, kInner, 8>(35, "inner"),
    Field<&SOuter::rest>(51, "rest"),
};
static_assert(RecordEnd(kOuter) == 54 && IsGapless(kOuter) && !IsGapless({kOuter[0], kOuter[2]}));

/// "A", a quote, ESC and 0xFF; true; -2; 0xBEEF; a GUID of all groups; 1970 and a half second; 7 and 0.5, 9 and -1; 1.
constexpr u8 kBytes[54] = {
    'A', '"', 0x1B, 0xFF, 7,    0xFE, 0xFF, 0xEF, 0xBE, 0,    0,    4,    3,    2,    1,    6,    5,    8,
    7,   9,   10,   11,   12,   13,   14,   15,   16,   0x40, 0xCB, 0x8A, 0xD5, 0xDE, 0xB1, 0x9D, 0x01, 7,
    0,   0,   0,    0,    0x3F, 0,    0,    9,    0,    0,    0,    0x80, 0xBF, 0,    0,    0,    1,    0,
};

TEST(Record, OneTableReadsWritesAndDescribes) {
    SOuter object;
    LoadRecord(object, kOuter, kBytes);
    EXPECT_EQ(object.inner[1].b, -1.0f);
    u8 again[54] = {};
    SaveRecord(object, kOuter, again);
    EXPECT_EQ(again[4], 1);  // any byte but 0 is true
    again[4] = 7;
    EXPECT_EQ(std::memcmp(again, kBytes, sizeof again), 0);

    const char* kTexts[][2] = {{"name", "\"A\"\\x1B\\xFF\""},
                               {"flag", "set"},
                               {"number", "-2"},
                               {"sum", "0x0000BEEF"},
                               {"id", "{01020304-0506-0708-090A-0B0C0D0E0F10}"},
                               {"time", "1970-01-01T00:00:00.500000Z"},
                               {"a of inner 0", "7"},
                               {"b of inner 0", "0.5"},
                               {"a of inner 1", "9"},
                               {"b of inner 1", "-1"},
                               {"rest", "\\x00\\x01"}};
    const std::vector<SStoredPart> parts = StoredParts(kLayoutOf<kOuter>);
    ASSERT_EQ(parts.size(), std::size(kTexts));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        EXPECT_EQ(parts[i].name, kTexts[i][0]);
        EXPECT_EQ(parts[i].Text(kBytes), kTexts[i][1]) << parts[i].name;
    }
    EXPECT_EQ(parts[10].Text(std::vector<u8>(54).data()), "zeros");

    again[46] ^= 1;
    const std::vector<SStoredPart> differing = DifferingParts(kLayoutOf<kOuter>, kBytes, again);
    ASSERT_EQ(differing.size(), 1u);
    EXPECT_TRUE(differing[0].name == "b of inner 1" && differing[0].offset == 45);
}

TEST(Record, FieldsOfAStreamStopAtTheFirstFailure) {
    CMemFile file;
    SInner written;
    written.a = 0x1234;
    written.b = 0.5f;
    EXPECT_TRUE(WriteFields<kInner>(file, written));
    EXPECT_EQ(file.GetSize(), 6u);
    file.SetSize(5);
    file.SeekToBegin();
    SInner read;
    EXPECT_FALSE(ReadFields<kInner>(file, read));
    EXPECT_EQ(read.a, 0x1234);
    EXPECT_EQ(read.b, 0.0f);
}

}  // namespace
}  // namespace ovix
