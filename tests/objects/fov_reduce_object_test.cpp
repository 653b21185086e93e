#include "reduce/objects/object_parameters_reduce_object.h"

#include <gtest/gtest.h>

#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using namespace test;

CByteWriter FOVRecord(u32 version) {
    CByteWriter bytes;
    bytes.U32(64).U32(version).F64(0.25).F64(-0.5).PadTo(64);
    return bytes;
}

TEST(FOV, RecordAndOldStream) {
    CFOVReduceObject object;
    ASSERT_TRUE(object.Load(FileOf(FOVRecord(0x10001)), 0x10001, 0));
    EXPECT_EQ(object.IHFOV, 0.25);
    EXPECT_EQ(object.IVFOV, -0.5);
    EXPECT_EQ(SavedBytes(object, PersistInitialState), FOVRecord(0x10001).bytes);

    CByteWriter old;
    old.F64(1.0).F64(2.0);
    ASSERT_TRUE(object.Load(FileOf(old), 0x10000, 0));
    EXPECT_EQ(object.IVFOV, 2.0);
    EXPECT_FALSE(object.Load(FileOf(old, 15), 0x10000, 0));

    // The limit is looser by one than elsewhere.
    EXPECT_TRUE(object.Load(FileOf(FOVRecord(0x20000)), 0x10001, 0));
    EXPECT_FALSE(object.Load(FileOf(FOVRecord(0x20001)), 0x10001, 0));
    EXPECT_FALSE(object.Load(FileOf(FOVRecord(0x10001), 63), 0x10001, 0));
}

}  // namespace
}  // namespace ovix::reduce
