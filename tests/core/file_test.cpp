#include "core/file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "core/bytes.h"
#include "core/process.h"
#include "core/record.h"
#include "tests/support/byte_writer.h"

namespace ovix {
namespace {

using test::CByteWriter;

/// A caller's own file of n bytes, each its place: it knows only the two origins that it has to.
class COwnFile final : public IFile {
  public:
    explicit COwnFile(u64 size, bool moves = true) : size_(size), moves_(moves) {}

    u32 Write(const void*, u32) override { return 0; }
    u32 Read(void* data, u32 size) override {
        mostAsked = std::max(mostAsked, size);
        const u32 n = static_cast<u32>(std::min<u64>(size, size_ - std::min(size_, position_)));
        for (u32 i = 0; i < n; ++i) static_cast<u8*>(data)[i] = static_cast<u8>(position_++);
        return n;
    }
    u64 GetPosition() override { return position_; }
    bool Seek(i64 offset, int origin) override {
        if (!moves_ || (origin != FromStart && origin != FromCurrent)) return false;
        const u64 to = (origin == FromStart ? 0 : position_) + static_cast<u64>(offset);
        if (to > size_) return false;
        position_ = to;
        return true;
    }

    u32 mostAsked = 0;

  private:
    u64 size_;
    bool moves_;
    u64 position_ = 0;
};

TEST(File, FindsTheEndOfFilesThatDoNotKnowIt) {
    for (const u64 size : {0, 1, 2, 3, 7, 8, 9, 1000, 4096}) {
        for (const u64 at : {u64{0}, size / 2, size}) {
            COwnFile file(size);
            ASSERT_TRUE(file.Seek(static_cast<i64>(at), IFile::FromStart));
            u64 remaining = 99;
            EXPECT_TRUE(file.FindRemaining(remaining));
            EXPECT_EQ(remaining, size - at) << "at " << at << " of " << size;
            EXPECT_EQ(file.GetPosition(), at);
        }
    }
    COwnFile pipe(10, false);
    u64 remaining = 99;
    u32 crc = 99;
    EXPECT_FALSE(pipe.FindRemaining(remaining));
    EXPECT_FALSE(CalcCRC32(crc, BorrowShared<IFile>(pipe)));
    EXPECT_TRUE(remaining == 99 && crc == 99 && pipe.GetRemaining() == 0);
    COwnFile file(64);  // begins with the count 0x03020100, which is beyond its end
    CString text;
    EXPECT_TRUE(!file.GetString(text) && file.mostAsked <= 64);
}

TEST(File, PutsAndGetsLittleEndianValues) {
    const GUID id = "{6D4A7D67-C5FB-4DE1-9904-E56F067AB126}"_guid;
    CMemFile file;
    EXPECT_TRUE(file.PutBool(true) && file.PutBool(false) && file.PutInt8(-2) && file.PutUInt8(0xFE) &&
                file.PutUInt16(0x1234) && file.PutInt32(-2) && file.PutUInt32(0x12345678) &&
                file.PutUInt64(0x123456789ABCDEF0) && file.PutFlt32(1.5f) && file.PutFlt64(-2.0) && file.PutGUID(id) &&
                file.PutFixedLengthString("abc", 5) && file.PutFixedLengthString("abcdef", 3) && file.WriteZeros(2));
    const u8 expected[] = {
        1,    0,    0xFE, 0xFE, 0x34, 0x12, 0xFE, 0xFF, 0xFF, 0xFF, 0x78, 0x56, 0x34, 0x12,              // integers
        0xF0, 0xDE, 0xBC, 0x9A, 0x78, 0x56, 0x34, 0x12,                                                  // 64 bits
        0,    0,    0xC0, 0x3F, 0,    0,    0,    0,    0,    0,    0,    0xC0,                          // 1.5f, -2.0
        0x67, 0x7D, 0x4A, 0x6D, 0xFB, 0xC5, 0xE1, 0x4D, 0x99, 4,    0xE5, 0x6F, 6,    0x7A, 0xB1, 0x26,  // GUID
        'a',  'b',  'c',  0,    0,    'a',  'b',  'c',  0,    0,                                         // texts
    };
    ASSERT_EQ(file.GetSize(), sizeof expected);
    EXPECT_EQ(std::memcmp(file.GetData(), expected, sizeof expected), 0);

    EXPECT_EQ(file.SeekToBegin(), 0u);
    const auto expect = [&]<class T>(bool (IFile::*get)(T&), T value) {
        T read{};
        EXPECT_TRUE((file.*get)(read) && read == value) << file.GetPosition();
    };
    expect(&IFile::GetBool, true);
    expect(&IFile::GetBool, false);
    expect(&IFile::GetInt8, i8{-2});
    expect(&IFile::GetUInt8, u8{0xFE});
    expect(&IFile::GetUInt16, u16{0x1234});
    expect(&IFile::GetInt32, -2);
    expect(&IFile::GetUInt32, 0x12345678u);
    expect(&IFile::GetUInt64, u64{0x123456789ABCDEF0});
    expect(&IFile::GetFlt32, 1.5f);
    expect(&IFile::GetFlt64, -2.0);
    expect(&IFile::GetGUID, id);
    char text[6];
    EXPECT_TRUE(file.GetFixedLengthString(text, 5) && std::string(text) == "abc" && file.GetRemaining() == 5);
}

TEST(File, StopsAtTheEndAndKeepsTheValue) {
    u8 bytes[] = {2, 1, 0, 1};
    CMemFile file;
    file.Attach(bytes, sizeof bytes, false);
    bool truth = false;
    u32 word = 7;
    i64 wide = 7;
    EXPECT_TRUE(file.GetBool(truth) && truth);  // any byte but 0
    EXPECT_FALSE(file.GetUInt32(word) || file.GetInt64(wide));
    EXPECT_TRUE(word == 7 && wide == 7 && file.WriteBytes(nullptr, 0) && file.ReadBytes(nullptr, 0));
}

TEST(File, ReadsTextsByTheirCount) {
    const std::pair<CByteWriter, const char*> cases[] = {
        // null for a count that is not to be believed
        {CByteWriter().U32(0), ""},
        {CByteWriter().U32(3).Text("a\xC2\xB0", 3).Text("behind", 6), "a\xC2\xB0"},
        {CByteWriter().U32(2).Text("a\xC2\xB0", 3), "a\xEF\xBF\xBD"},
        {CByteWriter().U32(3).Text("ab", 2), nullptr},
        {CByteWriter().U32(0xFFFFFFFF).Text("ab", 2), nullptr},
        {CByteWriter().U16(0), nullptr}};
    for (const auto& [bytes, expected] : cases) {
        CMemFile file;
        std::vector<u8> content = bytes.bytes;
        file.Attach(content.data(), static_cast<u32>(content.size()), false);
        CString text(L"before");
        EXPECT_EQ(file.GetString(text), expected != nullptr);
        EXPECT_STREQ(text.GetUTF8(), expected ? expected : "before");
    }
}

std::string Content(CMemFile& file) { return {reinterpret_cast<const char*>(file.GetData()), file.GetSize()}; }

TEST(MemFile, GrowsAndFillsGapsWithZeros) {
    CMemFile file;
    EXPECT_TRUE(file.Write("abc", 3) == 3 && file.Seek(2, IFile::FromCurrent) && file.Write("x", 1) == 1);
    EXPECT_EQ(Content(file), std::string("abc\0\0x", 6));
    EXPECT_TRUE(file.Seek(-5, IFile::FromEnd) && file.Write("BC", 2) == 2);
    EXPECT_EQ(Content(file), std::string("aBC\0\0x", 6));
    EXPECT_TRUE(file.SetSize(2) && file.GetPosition() == 2 && file.SetSize(4));
    EXPECT_EQ(Content(file), std::string("aB\0\0", 4));  // what was there before does not come back
    file.Reset();
    EXPECT_TRUE(file.GetSize() == 0 && file.Write("new", 3) == 3);
    EXPECT_EQ(Content(file), "new");
}

TEST(MemFile, RefusesPositionsAndSizesThatAreNone) {
    CMemFile file;
    file.Write("abc", 3);
    const std::pair<i64, int> cases[] = {{-1, IFile::FromStart},
                                         {-4, IFile::FromCurrent},
                                         {-4, IFile::FromEnd},
                                         {INT64_MIN, IFile::FromEnd},
                                         {INT64_MAX, IFile::FromStart},
                                         {INT64_MAX, IFile::FromEnd},
                                         {0, 0},
                                         {0, 4}};
    for (const auto& [offset, origin] : cases)
        EXPECT_FALSE(file.Seek(offset, origin) || file.GetPosition() != 3) << offset << " " << origin;
    EXPECT_FALSE(file.SetSize(-1) || file.SetSize(INT64_MAX));
    EXPECT_EQ(Content(file), "abc");
    char buffer[4] = {};
    EXPECT_TRUE(file.Seek(10, IFile::FromStart) && file.Read(buffer, 1) == 0 && file.GetRemaining() == 0);
}

TEST(MemFile, KeepsWithinACallersBuffer) {
    u8 buffer[5] = {'a', 'b', 'c', 'd', '#'};
    CMemFile file;
    file.Attach(buffer, 4, false);
    char read[4] = {};
    EXPECT_TRUE(file.Read(read, 3) == 3 && file.Write("xyz", 3) == 1);
    EXPECT_TRUE(!file.SetSize(5) && file.SetSize(0) && !file.WriteBytes("12345", 5));
    EXPECT_EQ(Content(file), "1234");
    EXPECT_TRUE(file.Seek(9, IFile::FromStart) && file.Write("x", 1) == 0);
    file.Reset();
    EXPECT_EQ(std::string(buffer, buffer + 5), "1234#");

    file.Attach(static_cast<u8*>(Alloc(8)), 8, true);  // the leak checker sees whether it is freed
}

TEST(Crc32File, IsTheReflectedOneHoweverTheBytesComeAndFromAFilesPositionOn) {
    CCalcCRC32File whole, pieces;
    whole.Write("123456789", 9);
    EXPECT_EQ(whole.GetCRC(), 0xCBF43926u);  // the published check value
    EXPECT_EQ(CCalcCRC32File().GetCRC(), 0u);

    pieces.Write("1234", 4);
    pieces.Write(nullptr, 0);
    EXPECT_TRUE(pieces.PutFixedLengthString("56789", 5));
    EXPECT_TRUE(pieces.GetCRC() == whole.GetCRC() && pieces.GetSize() == 9);

    u32 crc = 1;
    CMemFile file;
    file.WriteZeros(100'000);
    file.Write("123456789", 9);
    EXPECT_TRUE(file.Seek(-9, IFile::FromEnd) && CalcCRC32(crc, BorrowShared<IFile>(file)) && crc == 0xCBF43926);

    CCalcCRC32File sum;
    sum.Write(file.GetData(), static_cast<u32>(file.GetSize()));
    file.SeekToBegin();
    EXPECT_TRUE(CalcCRC32(crc, BorrowShared<IFile>(file)) && crc == sum.GetCRC());
    EXPECT_FALSE(CalcCRC32(crc, {}));
}

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
constexpr TRecordField<SOuter> kOuter[] = {CharsField<&SOuter::name>(0, "name"),
                                           Field<&SOuter::flag>(4, "flag"),
                                           Field<&SOuter::number>(5, "number"),
                                           Field<&SOuter::sum>(7, "sum", EStored::Hex),
                                           Field<&SOuter::id>(11, "id"),
                                           Field<&SOuter::time>(27, "time"),
                                           SubRecords<&SOuter::inner, kInner, 8>(35, "inner"),
                                           Field<&SOuter::rest>(51, "rest")};
static_assert(RecordEnd(kOuter) == 54 && IsGapless(kOuter) && !IsGapless({kOuter[0], kOuter[2]}));

/// "A", a quote, ESC and 0xFF; true; -2; 0xBEEF; a GUID of all groups; 1970 and a half second; 7 and 0.5, 9 and -1; 1.
constexpr u8 kBytes[54] = {'A',  '"',  0x1B, 0xFF, 7,    0xFE, 0xFF, 0xEF, 0xBE, 0,  0,  4,  3,    2,
                           1,    6,    5,    8,    7,    9,    10,   11,   12,   13, 14, 15, 16,   0x40,
                           0xCB, 0x8A, 0xD5, 0xDE, 0xB1, 0x9D, 0x01, 7,    0,    0,  0,  0,  0x3F, 0,
                           0,    9,    0,    0,    0,    0x80, 0xBF, 0,    0,    0,  1,  0};

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
    EXPECT_TRUE(WriteFields<kInner>(file, written) && file.GetSize() == 6);
    file.SetSize(5);
    file.SeekToBegin();
    SInner read;
    EXPECT_FALSE(ReadFields<kInner>(file, read));
    EXPECT_TRUE(read.a == 0x1234 && read.b == 0);
}

}  // namespace
}  // namespace ovix
