#include <gtest/gtest.h>

#include "reduce/filters/dunlin_camera_info_reduce_object.h"
#include "reduce/filters/dunlin_factory_cal_reduce_object.h"
#include "reduce/filters/dunlin_frame_info_reduce_object.h"
#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;
using test::FileOf;
using test::SavedBytes;

CByteWriter CameraInfo(bool withClock) {
    CByteWriter w;
    w.Text("one", 20).Text("exactly 20 letters..", 20).Text("", 20).Text("four", 20).Text("eleven long", 11);
    w.F32(1.5f).F32(-2).F32(3).F32(4).U8(5).U32(0xFFFFFFFA).U8(7).U8(8).U8(9).U8(10);
    if (withClock) w.U8(1);
    return w;
}

TEST(DunlinCameraInfo, StoredFormsAndTexts) {
    CDunlinCameraInfoReduceObject info;
    EXPECT_EQ(info.version, 0x10001u);
    EXPECT_TRUE(info.persist && !info.valid);
    ASSERT_TRUE(info.Load(FileOf(CameraInfo(true)), 0x10001, 0));
    EXPECT_STREQ(info.text1, "exactly 20 letters.");  // the last character gives way to a terminator
    EXPECT_STREQ(info.text4, "eleven lon");
    EXPECT_EQ(info.value1, -2.0f);
    EXPECT_EQ(info.number0, -6);
    EXPECT_EQ(info.byte4, 10);
    EXPECT_TRUE(info.useCameraClock);
    CByteWriter stored = CameraInfo(true);
    stored.bytes[39] = stored.bytes[90] = 0;
    EXPECT_EQ(SavedBytes(info), stored.bytes);

    for (const u32 size : {0u, 19u, 90u, 115u, 116u}) {
        EXPECT_FALSE(info.Load(FileOf(CameraInfo(true), size), 0x10001, 0)) << size;
    }
    // The first form ends before the clock, and what is saved has it.
    info.useCameraClock = true;
    ASSERT_TRUE(info.Load(FileOf(CameraInfo(false)), 0x10000, 0));
    EXPECT_FALSE(info.useCameraClock);
    stored.bytes[116] = 0;
    EXPECT_EQ(SavedBytes(info), stored.bytes);
}

TEST(DunlinCameraInfo, DefaultKeepsTextsAndNumberAndCopiesEndAtTheTerminator) {
    CDunlinCameraInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(CameraInfo(true)), 0x10001, 0));
    info.text0[5] = 'x';  // behind the terminator
    info.text1[19] = '!';
    info.valid = true;
    info.preset = 3;
    const auto copy = info.Duplicate().Cast<CDunlinCameraInfoReduceObject>();
    EXPECT_TRUE(copy->valid && copy->useCameraClock);
    EXPECT_EQ(copy->preset, 3);
    EXPECT_EQ(copy->number0, -6);
    EXPECT_EQ(copy->text0[5], '\0');
    EXPECT_EQ(copy->text1[19], '\0');
    EXPECT_STREQ(copy->text3, "four");

    info.Default();
    EXPECT_FALSE(info.valid || info.useCameraClock);
    EXPECT_EQ(info.preset, 3);
    EXPECT_EQ(info.value0 + info.value3 + static_cast<float>(info.byte0 + info.byte1 + info.byte4), 0.0f);
    EXPECT_EQ(info.number0, -6);
    EXPECT_EQ(info.text0[5], 'x');
    EXPECT_EQ(info.text1[19], '!');
}

TEST(DunlinFactoryCal, StoredForm) {
    CByteWriter w;
    w.U32(0xFFFFFFFE).F32(1).F32(2).F32(3).F32(4).F32(5).F32(6).F32(7).U32(8).U32(9).F32(10).F32(11).F32(77).F32(0.5f);
    ASSERT_EQ(w.bytes.size(), 56u);
    CDunlinFactoryCalReduceObject cal;
    ASSERT_TRUE(cal.Load(FileOf(w), 0x10000, 0));
    EXPECT_EQ(cal.calWord0, 0xFFFFFFFEu);
    EXPECT_EQ(cal.calValue6, 7.0f);
    EXPECT_EQ(cal.calWord2, 9u);
    EXPECT_EQ(cal.calValue7, 10.0f);
    EXPECT_EQ(cal.detectorTemp, 77.0f);
    EXPECT_EQ(cal.integrationTime, 0.5f);
    EXPECT_EQ(SavedBytes(cal), w.bytes);
    EXPECT_EQ(SavedBytes(*cal.Duplicate()), w.bytes);
    EXPECT_FALSE(cal.Load(FileOf(w, 55), 0x10000, 0));
    cal.Default();
    EXPECT_EQ(SavedBytes(cal), std::vector<u8>(56, 0));
}

TEST(DunlinFrameInfo, IsNotStored) {
    CDunlinFrameInfoReduceObject info;
    EXPECT_FALSE(info.persist || info.valid);
    EXPECT_TRUE(SavedBytes(info).empty());
    EXPECT_FALSE(info.Load(FileOf(CByteWriter()), 0x10000, 0));
    info.year = 26;
    info.lockinMean[3] = 5;
    info.Default();
    EXPECT_EQ(info.year + info.lockinMean[3], 0);
}

}  // namespace
}  // namespace ovix::reduce
