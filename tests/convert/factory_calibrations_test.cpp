#include "reduce/convert/factory_calibrations.h"

#include <gtest/gtest.h>

#include <string>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;

constexpr u32 kMinus2 = 0xFFFFFFFE;

/// `count` floats from `first` on.
CByteWriter Floats(float first, int count) {
    CByteWriter bytes;
    for (int i = 0; i < count; ++i) bytes.F32(first + static_cast<float>(i));
    return bytes;
}
CByteWriter Doubles(int first, int count) {
    CByteWriter bytes;
    for (int i = 0; i < count; ++i) bytes.F64(first + i);
    return bytes;
}
/// The values count up from `first`.
template <class T>
void ExpectCounting(std::initializer_list<T> found, T first) {
    for (const T value : found) EXPECT_EQ(value, first++) << "expected " << first - 1;
}

using CCurlew = CCurlewFactoryCalReduceObject;
using CTern = CTernFactoryCalReduceObject;
using CMerlin = CMerlinFactoryCalReduceObject;

void ExpectFields(const CCurlew& c) {
    EXPECT_EQ(c.nonlinearGain, 0.5f);
    EXPECT_EQ(c.gain, 1.5f);
    ExpectCounting<i32>({c.offset, c.nonlinearOffset}, -3);
    ExpectCounting<int>({c.nonlinearOn, c.imgMin, c.imgMax}, 1);
    ExpectCounting<float>(
        {c.planckR, c.planckB, c.planckF, c.atmAlpha1, c.atmAlpha2, c.atmBeta1, c.atmBeta2, c.atmX, c.overflowTemp,
         c.upperTemp, c.lowerTemp, c.underflowTemp, c.radFitHighTemp, c.radFitLowTemp},
        10);
}
CByteWriter CurlewForm() {
    return CByteWriter().F32(0.5f).U32(kMinus2).U32(kMinus2 - 1).F32(1.5f).U16(1).U16(2).U16(3).Append(Floats(10, 14));
}

void ExpectFields(const CTern& c) {
    ExpectCounting<float>({c.atmAlpha1,       c.atmAlpha2,       c.atmBeta1,       c.atmBeta2,     c.atmX,
                           c.tdriftReserved1, c.driftR,          c.driftB,         c.driftF,       c.drift3,
                           c.drift4,          c.drift5,          c.drift6,         c.drift7,       c.drift8,
                           c.drift9,          c.tdriftReserved2, c.adjustGain,     c.adjustOffset, c.planckR,
                           c.planckB,         c.planckF,         c.gainDrift0,     c.gainDrift1,   c.gainDrift2,
                           c.gainDrift3,      c.overflowTemp,    c.upperTemp,      c.lowerTemp,    c.underflowTemp,
                           c.radFitHighTemp,  c.radFitLowTemp,   c.frontPanelTemp, c.airGapTemp,   c.dewarTemp,
                           c.unused[0],       c.unused[1],       c.unused[2],      c.unused[3],    c.unused[4],
                           c.unused[5],       c.unused[6],       c.lastFloat},
                          1);
    ExpectCounting<int>({c.reservedSigned16, static_cast<int>(c.tdriftMode) - 2, c.reserved16 - 0xABCD}, -2);
    EXPECT_EQ(std::string(c.text1) + c.text2 + std::string(c.text3, 16) + c.text4 + c.text5 + c.text6 + c.text7 +
                  c.text8 + std::string(c.text9, 10) + c.text10,
              "onetwoa text of 16 is.fourfivesixseveneightten bytes.ten");
}
/// The fields one behind the other.
CByteWriter OldTernForm() {
    CByteWriter bytes = Floats(1, 5).U32(1).Append(Floats(6, 12)).U16(0xABCD).Append(Floats(18, 25)).U16(0xFFFE);
    bytes.Text("one", 32).Text("two", 16).Text("a text of 16 is.", 16);
    for (const char* text : {"four", "five", "six", "seven", "eight", "ten bytes."}) bytes.Text(text, 10);
    return bytes.Text("ten", 32).F32(43);
}
CByteWriter TernForm(u32 size = 512, u32 version = 0x10001) {
    return CByteWriter().U32(size).U32(version).Append(OldTernForm()).PadTo(512);
}

void ExpectFields(const CMerlin& c) {
    EXPECT_EQ(c.degree, -2);
    ExpectCounting<double>({c.c[0], c.c[1], c.c[2], c.c[3], c.c[4], c.c[5], c.c[6], c.signalOffset, c.planckR,
                            c.planckB, c.planckF, c.atmX, c.atmAlpha1, c.atmAlpha2, c.atmBeta1, c.atmBeta2},
                           1);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(c.reservedDoubles[i], i + 20.0);
    ExpectCounting<float>({c.lowTemp, c.highTemp, c.reservedFloats[0], c.reservedFloats[1]}, -10);
    ExpectCounting<int>({c.reserved32, c.fitLowSignal, c.fitHighSignal}, 77);
    for (int i = 0; i < c.tableCount; ++i) {
        EXPECT_EQ(c.table1[i], i + 0.5);
        EXPECT_EQ(c.table2[i], -i - 0.5);
    }
}
CByteWriter MerlinTables() { return CByteWriter().F64(0.5).F64(1.5).F64(2.5).F64(-0.5).F64(-1.5).F64(-2.5); }
CByteWriter MerlinBlock(u32 tableCount, u32 size = 512, u32 version = 0x10001) {
    CByteWriter bytes = CByteWriter().U32(size).U32(version).U32(kMinus2);
    bytes.Append(Doubles(1, 8)).U32(77).Append(Doubles(20, 9)).Append(Doubles(9, 8));
    return bytes.Append(Floats(-10, 4)).U16(78).U16(79).U32(tableCount).PadTo(512);
}
CByteWriter OldMerlinForm(u32 tableCount, const CByteWriter& tables) {
    CByteWriter bytes = CByteWriter().U32(kMinus2).Append(Doubles(1, 11)).U32(tableCount).Append(tables);
    return bytes.U32(77).Append(Doubles(20, 9)).Append(Doubles(12, 5)).Append(Floats(-10, 4)).U16(78).U16(79);
}

template <class Cal>
void ExpectForm(const CByteWriter& form, u32 version, const CByteWriter& saved) {
    Cal cal;
    cal.valid = true;
    ASSERT_TRUE(cal.Load(test::FileOf(form), version, 0));
    EXPECT_FALSE(cal.valid);  // the caller's to set
    ExpectFields(cal);
    EXPECT_EQ(test::SavedBytes(cal), saved.bytes);  // the newest form
    ExpectFields(*cal.Duplicate().template Cast<Cal>());
    for (u32 size = 0; size < form.bytes.size(); ++size) {
        EXPECT_FALSE(cal.Load(test::FileOf(form, size), version, 0)) << size;
    }
}

TEST(FactoryCalibrations, StoredForms) {
    ExpectForm<CCurlew>(CurlewForm(), 0x10000, CurlewForm());
    ExpectForm<CTern>(TernForm(), 0x10001, TernForm());
    ExpectForm<CTern>(OldTernForm(), 0x10000, TernForm());
    const CByteWriter block = MerlinBlock(3).Append(MerlinTables());
    ExpectForm<CMerlin>(block, 0x10001, block);
    ExpectForm<CMerlin>(OldMerlinForm(3, MerlinTables()), 0x10000, block);
    for (const u32 none : {0u, kMinus2}) {
        ExpectForm<CMerlin>(MerlinBlock(none), 0x10001, MerlinBlock(0));
        ExpectForm<CMerlin>(OldMerlinForm(none, {}), 0x10000, MerlinBlock(0));
    }
}

TEST(FactoryCalibrations, WhatIsOfAnotherKindOrLiesAboutItsSize) {
    CCurlew curlew;
    EXPECT_FALSE(curlew.Load(test::FileOf(CurlewForm(), 77), 0x10000, 0));
    EXPECT_EQ(curlew.radFitHighTemp, 22.0f);  // what was read stays
    EXPECT_FALSE(curlew.Load(test::FileOf(CurlewForm()), 0x10001, 0));
    EXPECT_EQ(curlew.nonlinearGain, 0.0f);
    CTern tern;
    CMerlin merlin;
    for (const auto& [size, version, taken] :
         {std::tuple{511u, 0x10001u, false}, {512u, 0x20000u, false}, {512u, 0x1FFFFu, true}}) {
        EXPECT_EQ(tern.Load(test::FileOf(TernForm(size, version)), version, 0), taken);
        EXPECT_EQ(merlin.Load(test::FileOf(MerlinBlock(0, size, version)), version, 0), taken);
    }
    for (const u32 many : {4u, 0x10000000u, 0x7FFFFFFFu}) {
        EXPECT_FALSE(merlin.Load(test::FileOf(MerlinBlock(many).Append(MerlinTables())), 0x10001, 0)) << many;
        EXPECT_EQ(merlin.tableCount, 0);
        EXPECT_FALSE(merlin.Load(test::FileOf(OldMerlinForm(many, {})), 0x10000, 0)) << many;
    }
}

TEST(FactoryCalibrations, CopiesShareTablesAndDuplicatesHaveTheirOwn) {
    CMerlin cal;
    ASSERT_TRUE(cal.Load(test::FileOf(MerlinBlock(3).Append(MerlinTables())), 0x10001, 0));
    const CMerlin shared = cal;
    const TSharedPtr<CMerlin> own = cal.Duplicate().Cast<CMerlin>();
    EXPECT_EQ(shared.table1.get(), cal.table1.get());
    EXPECT_NE(own->table1.get(), cal.table1.get());
    EXPECT_NE(own->table2.get(), cal.table2.get());
    EXPECT_TRUE(cal.CreateLUT(5));
    EXPECT_EQ(cal.table2[4], 0.0);
    EXPECT_EQ(shared.tableCount, 3);
    ExpectFields(shared);
    EXPECT_TRUE(cal.CreateLUT(-1));
    EXPECT_FALSE(cal.table1);
    EXPECT_EQ(CMerlin().Duplicate().Cast<CMerlin>()->tableCount, 0);
}

}  // namespace
}  // namespace ovix::reduce
