#include <gtest/gtest.h>

#include "reduce/filters/dunlin_reduce_objects.h"
#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::CByteWriter;
using test::FileOf;
using test::SavedBytes;

/// As the newest form ends; the first one ends a byte before.
CByteWriter CameraInfo() {
    CByteWriter w;
    w.Text("one", 20).Text("exactly 20 letters..", 20).Text("", 20).Text("four", 20).Text("eleven long", 11);
    w.F32(1.5f).F32(-2).F32(3).F32(4).U8(5).U32(0xFFFFFFFA).U8(7).U8(8).U8(9).U8(10).U8(1);
    return w;
}

TEST(DunlinCameraInfo, StoredForms) {
    CDunlinCameraInfoReduceObject info;
    EXPECT_TRUE(info.version == 0x10001 && info.persist && !info.valid);
    for (const u32 size : {0u, 19u, 90u, 115u, 116u}) EXPECT_FALSE(info.Load(FileOf(CameraInfo(), size), 0x10001, 0));
    for (const auto& [version, size] : {std::pair{0x10001u, 117u}, {0x10000u, 116u}}) {
        info.useCameraClock = true;
        ASSERT_TRUE(info.Load(FileOf(CameraInfo(), size), version, 0));
        EXPECT_EQ(info.useCameraClock, version == 0x10001);
        EXPECT_STREQ(info.text1, "exactly 20 letters.");  // the last character gives way to a terminator
        EXPECT_TRUE(info.value1 == -2 && info.number0 == -6 && info.byte4 == 10);
        CByteWriter stored = CameraInfo();
        stored.bytes[39] = stored.bytes[90] = 0;
        stored.bytes[116] = version == 0x10001;
        EXPECT_EQ(SavedBytes(info), stored.bytes);
    }
}

TEST(DunlinCameraInfo, DefaultKeepsTextsAndNumberAndCopiesEndAtTheTerminator) {
    CDunlinCameraInfoReduceObject info;
    ASSERT_TRUE(info.Load(FileOf(CameraInfo()), 0x10001, 0));
    info.text0[5] = 'x';  // behind the terminator
    info.text1[19] = '!';
    info.valid = true;
    info.preset = 3;
    const auto copy = info.Duplicate().Cast<CDunlinCameraInfoReduceObject>();
    EXPECT_TRUE(copy->valid && copy->useCameraClock && copy->preset == 3 && copy->number0 == -6);
    EXPECT_TRUE(copy->text0[5] == '\0' && copy->text1[18] == '.' && copy->text1[19] == '\0');
    info.Default();
    CByteWriter expected = CameraInfo();
    std::fill(expected.bytes.begin() + 91, expected.bytes.end(), u8{0});
    std::copy_n(CameraInfo().bytes.begin() + 108, 4, expected.bytes.begin() + 108);
    expected.bytes[5] = 'x';
    expected.bytes[39] = '!';
    expected.bytes[90] = 0;
    EXPECT_EQ(SavedBytes(info), expected.bytes);
    EXPECT_TRUE(!info.valid && info.preset == 3);
}

TEST(DunlinFactoryCal, StoredFormAndFrameInfoHasNone) {
    CByteWriter w;
    w.U32(0xFFFFFFFE).F32(1).F32(2).F32(3).F32(4).F32(5).F32(6).F32(7).U32(8).U32(9).F32(10).F32(11).F32(77).F32(0.5f);
    CDunlinFactoryCalReduceObject cal;
    EXPECT_FALSE(cal.Load(FileOf(w, 55), 0x10000, 0));
    ASSERT_TRUE(cal.Load(FileOf(w), 0x10000, 0));
    EXPECT_TRUE(cal.calValue6 == 7 && cal.calWord2 == 9 && cal.calValue7 == 10 && cal.detectorTemp == 77);
    EXPECT_EQ(SavedBytes(*cal.Duplicate()), w.bytes);
    cal.Default();
    EXPECT_EQ(SavedBytes(cal), std::vector<u8>(56, 0));

    CDunlinFrameInfoReduceObject info;
    EXPECT_FALSE(info.persist || info.valid || info.Load(FileOf(w), 0x10000, 0));
    EXPECT_TRUE(SavedBytes(info).empty());
}

}  // namespace
}  // namespace ovix::reduce
