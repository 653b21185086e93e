#include "reduce/convert/factory_calibrations.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;

constexpr u32 kMinus2 = 0xFFFFFFFE;

/// Doubles from `first` on.
CByteWriter Doubles(int first, int count) {
    CByteWriter bytes;
    for (int i = 0; i < count; ++i) bytes.F64(first + i);
    return bytes;
}
CByteWriter Tables() { return CByteWriter().F64(0.5).F64(1.5).F64(2.5).F64(-0.5).F64(-1.5).F64(-2.5); }

CByteWriter Floats() { return CByteWriter().F32(-10.0f).F32(60.0f).F32(1.5f).F32(2.5f); }

CByteWriter Block(u32 tableCount, u32 size = 512, u32 version = 0x10001) {
    CByteWriter bytes;
    bytes.U32(size).U32(version).U32(kMinus2);
    bytes.Append(Doubles(1, 8)).U32(77).Append(Doubles(20, 9));  // 12: c0 to c6, the signal's offset; 76; 80
    bytes.Append(Doubles(9, 3)).Append(Doubles(12, 5));          // 152: Planck, atmosphere
    return bytes.Append(Floats()).U16(300).U16(0xFFFF).U32(tableCount).PadTo(512);  // 216; 232; 236
}
CByteWriter OldForm(u32 tableCount, const CByteWriter& tables) {
    CByteWriter bytes;
    bytes.U32(kMinus2).Append(Doubles(1, 8)).Append(Doubles(9, 3)).U32(tableCount).Append(tables);
    return bytes.U32(77).Append(Doubles(20, 9)).Append(Doubles(12, 5)).Append(Floats()).U16(300).U16(0xFFFF);
}

void ExpectFields(const CMerlinFactoryCalReduceObject& cal) {
    EXPECT_EQ(cal.degree, -2);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(cal.c[i], i + 1.0);
    const double found[] = {cal.signalOffset, cal.planckR,   cal.planckB,  cal.planckF, cal.atmX,
                            cal.atmAlpha1,    cal.atmAlpha2, cal.atmBeta1, cal.atmBeta2};
    for (u32 i = 0; i < std::size(found); ++i) EXPECT_EQ(found[i], i + 8.0);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(cal.reservedDoubles[i], i + 20.0);
    EXPECT_EQ(cal.reserved32, 77);
    EXPECT_EQ(cal.lowTemp, -10.0f);
    EXPECT_EQ(cal.highTemp, 60.0f);
    EXPECT_EQ(cal.reservedFloats[0], 1.5f);
    EXPECT_EQ(cal.reservedFloats[1], 2.5f);
    EXPECT_EQ(cal.fitLowSignal, 300);
    EXPECT_EQ(cal.fitHighSignal, 0xFFFF);
}
void ExpectTables(const CMerlinFactoryCalReduceObject& cal) {
    ASSERT_EQ(cal.tableCount, 3);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(cal.table1[i], i + 0.5);
        EXPECT_EQ(cal.table2[i], -i - 0.5);
    }
}

TEST(MerlinFactoryCal, StoredForms) {
    const CByteWriter block = Block(3).Append(Tables());
    CMerlinFactoryCalReduceObject cal;
    cal.valid = true;
    ASSERT_TRUE(cal.Load(test::FileOf(block), 0x10001, 0));
    EXPECT_FALSE(cal.valid);  // the caller's to set
    ExpectFields(cal);
    ExpectTables(cal);
    EXPECT_EQ(test::SavedBytes(cal), block.bytes);

    CMerlinFactoryCalReduceObject old;
    ASSERT_TRUE(old.Load(test::FileOf(OldForm(3, Tables())), 0x10000, 0));
    ExpectFields(old);
    ExpectTables(old);
    EXPECT_EQ(test::SavedBytes(old), block.bytes);  // the newest form
    for (const u32 none : {0u, kMinus2}) {
        ASSERT_TRUE(old.Load(test::FileOf(OldForm(none, {})), 0x10000, 0));
        ExpectFields(old);
        ASSERT_TRUE(cal.Load(test::FileOf(Block(none)), 0x10001, 0));
        EXPECT_EQ(cal.tableCount, 0);
        EXPECT_FALSE(cal.table1);
        EXPECT_EQ(test::SavedBytes(cal), Block(0).bytes);
    }
}

TEST(MerlinFactoryCal, RefusesWhatIsCutOrLiesAboutItsSize) {
    CMerlinFactoryCalReduceObject cal;
    for (const auto& [bytes, version] :
         {std::pair{Block(3).Append(Tables()), 0x10001u}, {OldForm(3, Tables()), 0x10000u}}) {
        for (u32 size = 0; size < bytes.bytes.size(); ++size) {
            EXPECT_FALSE(cal.Load(test::FileOf(bytes, size), version, 0)) << size;
        }
    }
    for (const u32 many : {4u, 0x10000000u, 0x7FFFFFFFu}) {
        EXPECT_FALSE(cal.Load(test::FileOf(Block(many).Append(Tables())), 0x10001, 0)) << many;
        EXPECT_EQ(cal.tableCount, 0);
        EXPECT_FALSE(cal.Load(test::FileOf(OldForm(many, {})), 0x10000, 0)) << many;
    }
    EXPECT_FALSE(cal.Load(test::FileOf(Block(0, 511)), 0x10001, 0));
    EXPECT_FALSE(cal.Load(test::FileOf(Block(0, 512, 0x20000)), 0x10001, 0));
}

TEST(MerlinFactoryCal, CopiesShareTablesAndDuplicatesHaveTheirOwn) {
    CMerlinFactoryCalReduceObject cal;
    ASSERT_TRUE(cal.Load(test::FileOf(Block(3).Append(Tables())), 0x10001, 0));
    const CMerlinFactoryCalReduceObject shared = cal;
    const TSharedPtr<CMerlinFactoryCalReduceObject> own = cal.Duplicate().Cast<CMerlinFactoryCalReduceObject>();
    EXPECT_EQ(shared.table1.get(), cal.table1.get());
    EXPECT_NE(own->table1.get(), cal.table1.get());
    EXPECT_TRUE(cal.CreateLUT(5));
    EXPECT_EQ(cal.table2[4], 0.0);
    ExpectTables(shared);
    ExpectTables(*own);
    EXPECT_TRUE(cal.CreateLUT(-1));
    EXPECT_FALSE(cal.table1);
    EXPECT_EQ(CMerlinFactoryCalReduceObject().Duplicate().Cast<CMerlinFactoryCalReduceObject>()->tableCount, 0);
}

}  // namespace
}  // namespace ovix::reduce
