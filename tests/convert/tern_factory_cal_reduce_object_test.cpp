#include "reduce/convert/factory_calibrations.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;

/// The fields one behind the other, each with a value of its own.
CByteWriter Fields() {
    CByteWriter bytes;
    float next = 1;
    const auto floats = [&](int count) {
        for (int i = 0; i < count; ++i) bytes.F32(next++);
    };
    floats(5);     // atmosphere: 1 to 5
    bytes.U32(1);  // mode of the drift's compensation
    floats(11);    // reserved; drift R, B, F: 7 to 9; 3 to 9: 10 to 16
    floats(1);     // reserved: 17
    bytes.U16(0xABCD);
    floats(2);  // gain, offset: 18, 19
    floats(3);  // Planck: 20 to 22
    floats(4);  // the gain's drift: 23 to 26
    floats(6);  // limits: 27 to 32
    floats(3);  // the instrument: 33 to 35
    floats(7);  // unused: 36 to 42
    bytes.U16(0xFFFE);
    bytes.Text("one", 32).Text("two", 16).Text("a text of 16 is.", 16);
    for (const char* text : {"four", "five", "six", "seven", "eight", "ten bytes."}) bytes.Text(text, 10);
    bytes.Text("ten", 32);
    floats(1);  // 43
    return bytes;
}

void ExpectFields(const CTernFactoryCalReduceObject& cal) {
    const float found[] = {
        cal.atmAlpha1,       cal.atmAlpha2,       cal.atmBeta1,       cal.atmBeta2,     cal.atmX,
        cal.tdriftReserved1, cal.driftR,          cal.driftB,         cal.driftF,       cal.drift3,
        cal.drift4,          cal.drift5,          cal.drift6,         cal.drift7,       cal.drift8,
        cal.drift9,          cal.tdriftReserved2, cal.adjustGain,     cal.adjustOffset, cal.planckR,
        cal.planckB,         cal.planckF,         cal.gainDrift0,     cal.gainDrift1,   cal.gainDrift2,
        cal.gainDrift3,      cal.overflowTemp,    cal.upperTemp,      cal.lowerTemp,    cal.underflowTemp,
        cal.radFitHighTemp,  cal.radFitLowTemp,   cal.frontPanelTemp, cal.airGapTemp,   cal.dewarTemp};
    for (u32 i = 0; i < std::size(found); ++i) EXPECT_EQ(found[i], static_cast<float>(i + 1));
    for (u32 i = 0; i < 7; ++i) EXPECT_EQ(cal.unused[i], static_cast<float>(i + 36));
    EXPECT_EQ(cal.lastFloat, 43.0f);
    EXPECT_EQ(cal.tdriftMode, 1u);
    EXPECT_EQ(cal.reserved16, 0xABCD);
    EXPECT_EQ(cal.reservedSigned16, -2);
    EXPECT_STREQ(cal.text1, "one");
    EXPECT_EQ(std::string(cal.text3, 16), "a text of 16 is.");
    EXPECT_STREQ(cal.text8, "eight");
    EXPECT_EQ(std::string(cal.text9, 10), "ten bytes.");
    EXPECT_STREQ(cal.text10, "ten");
}

TEST(TernFactoryCal, StoredForms) {
    const CByteWriter block = CByteWriter().U32(512).U32(0x10001).Append(Fields()).PadTo(512);
    ASSERT_EQ(Fields().bytes.size(), 336u);
    CTernFactoryCalReduceObject cal;
    cal.valid = true;
    ASSERT_TRUE(cal.Load(test::FileOf(block), 0x10001, 0));
    EXPECT_FALSE(cal.valid);  // the caller's to set
    ExpectFields(cal);
    EXPECT_EQ(test::SavedBytes(cal), block.bytes);
    const TSharedPtr<CTernFactoryCalReduceObject> copy = cal.Duplicate().Cast<CTernFactoryCalReduceObject>();
    ExpectFields(*copy);

    CTernFactoryCalReduceObject old;
    ASSERT_TRUE(old.Load(test::FileOf(Fields()), 0x10000, 0));
    ExpectFields(old);
    EXPECT_EQ(test::SavedBytes(old), block.bytes);  // the newest form
}

TEST(TernFactoryCal, RefusesWhatIsCutOrOfAnotherKind) {
    const auto block = [](u32 size, u32 version) {
        return CByteWriter().U32(size).U32(version).Append(Fields()).PadTo(512);
    };
    CTernFactoryCalReduceObject cal;
    EXPECT_FALSE(cal.Load(test::FileOf(block(511, 0x10001)), 0x10001, 0));
    EXPECT_FALSE(cal.Load(test::FileOf(block(512, 0x20000)), 0x10001, 0));
    EXPECT_TRUE(cal.Load(test::FileOf(block(512, 0x1FFFF)), 0x1FFFF, 0));
    for (u32 size = 0; size < 512; ++size) EXPECT_FALSE(cal.Load(test::FileOf(block(512, 0x10001), size), 0x10001, 0));
    EXPECT_EQ(cal.planckR, 0.0f);
    for (u32 size = 0; size < 336; ++size) EXPECT_FALSE(cal.Load(test::FileOf(Fields(), size), 0x10000, 0));
}

}  // namespace
}  // namespace ovix::reduce
