#include "reduce/objects/reduce_object.h"

#include <gtest/gtest.h>

#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/object_file.h"

namespace ovix::reduce {
namespace {

struct SClassRow {
    const wchar_t* name;
    GUID typeID;
    u32 version;
    bool valid;
    bool persist;
    bool calibration = false;
};

/// What files and plug-ins rely on.
constexpr SClassRow kClasses[] = {
    {L"SourceInfo", "{344ED254-76DC-4B4C-B47B-3548A6837C26}"_guid, 0x20000, true, true},
    {L"FrameInfo", "{881933BF-2488-4D97-A1FE-8D98DA688A3A}"_guid, 0x10000, true, false},
    {L"FrameHeader", "{ABB88590-614E-41F8-9CE0-6ACA00BBA514}"_guid, 0x10000, false, false},
    {L"ObjectParameters", "{616033EC-ED49-485A-B1FE-4F563DC20F52}"_guid, 0x10001, true, true},
    {L"FOV", "{42FD8DA7-B376-45C2-8255-B9267E512077}"_guid, 0x10001, false, true},
    {L"Correction", "{4AD3EFCE-D157-4203-BFC2-3979EE047FE4}"_guid, 0x10001, false, true},
    {L"CorrectionCfg", "{191F2684-72A2-407C-8DEC-39DD57B9ABE0}"_guid, 0x10000, true, false},
    {L"AbateCfg", "{12C99632-E051-4922-B9A3-A7259271C94D}"_guid, 0x20000, true, true},
    {L"RCal", "{E5D7371A-BD64-448F-8240-6FDFA6FC0110}"_guid, 0x10000, false, true},
    {L"CurlewCameraInfo", "{6471D16E-323A-4B50-92F9-5A76FAAA64FC}"_guid, 0x10000, false, true},
    {L"CurlewFactoryCal", "{245A5CD5-2F58-4D08-90AC-FB6E78C7EC41}"_guid, 0x10000, false, true},
    {L"TernFactoryCal", "{A2E5AE0D-AB11-489B-96C6-2B1C1A62F451}"_guid, 0x10001, false, true, true},
    {L"MerlinFactoryCal", "{7ED232C7-2ECF-4552-BB67-D406D5E87E61}"_guid, 0x10001, false, true, true},
};

TEST(ReduceObject, BuiltInClassesStartAsFilesExpect) {
    for (const SClassRow& row : kClasses) {
        SCOPED_TRACE(CString(row.name).GetUTF8());
        const TSharedPtr<IReduceObject> object = reduceObjectFactory()->CreateByName(row.name);
        ASSERT_TRUE(object);
        EXPECT_STREQ(object->GetName(), row.name);
        EXPECT_EQ(object->GetTypeID(), row.typeID);
        EXPECT_EQ(object->version, row.version);
        EXPECT_EQ(object->valid, row.valid);
        EXPECT_EQ(object->ShouldPersist(0), row.persist);
        EXPECT_EQ(object->ShouldPersist(~0u), row.persist);
        EXPECT_EQ(object->IsCalObj(), row.calibration);
        const bool perFrame = object->GetTypeID() == CFrameInfoReduceObject::typeID;
        EXPECT_EQ(object->IsPerFrame(), perFrame);
        EXPECT_EQ(object->IsPerPreset(), perFrame);
    }
}

TEST(ReduceObject, ResetKeepsThePlaceAndDuplicateTheVersionOfTheClass) {
    for (const SClassRow& row : kClasses) {
        SCOPED_TRACE(CString(row.name).GetUTF8());
        const TSharedPtr<IReduceObject> object = reduceObjectFactory()->CreateByName(row.name);
        const bool header = EqualsNoCase(row.name, L"FrameHeader");  // resets all, and copies the version
        object->valid = !row.valid;
        object->frameNumber = 0;
        object->preset = 254;
        object->persist = !row.persist;
        object->version = 77;
        const TSharedPtr<IReduceObject> copy = object->Duplicate();
        EXPECT_EQ(copy->valid, !row.valid);
        EXPECT_TRUE(copy->IsPerFrame());
        EXPECT_TRUE(copy->IsPerPreset());
        EXPECT_EQ(copy->persist, !row.persist);
        EXPECT_EQ(copy->version, header ? 77 : row.version);

        object->Default();
        EXPECT_EQ(object->valid, row.valid);
        EXPECT_EQ(object->IsPerFrame(), !header);
        EXPECT_EQ(object->preset, header ? 255 : 254);
        EXPECT_EQ(object->persist, header ? row.persist : !row.persist);
        EXPECT_EQ(object->version, header ? row.version : 77);
    }
}

TEST(ReduceObject, ChecksumCoversWhatSaveWrites) {
    CSourceInfoReduceObject info;
    info.width = 640;
    for (int time = 0; time < 2; ++time) {
        u32 crc = 0;
        u64 size = 0;
        ASSERT_TRUE(info.CalcCRC(crc, size, 0));
        EXPECT_EQ(size, 2048u);
        EXPECT_EQ(crc, test::BitwiseCRC(test::SavedBytes(info)));
    }
    CFrameInfoReduceObject transient;
    u32 crc = 1;
    u64 size = 2;
    EXPECT_FALSE(transient.CalcCRC(crc, size, 0));
    EXPECT_EQ(crc, 1u);
    EXPECT_EQ(size, 2u);
}

/// A class of which the factory makes another one, as plug-ins bring about.
class CMine : public TReduceObject<CMine> {
  public:
    static constexpr GUID typeID = "{00000001-0002-0003-0405-060708090A0B}"_guid;
    static constexpr const wchar_t* kName = L"TestMine";
    int value = 0;
};
class CMinePlus : public CMine {};

TEST(ReduceObject, DuplicateStaysWithTheClassOfAPlugInAndLosesNothingToAForeignOne) {
    CMine mine;
    mine.value = 5;
    const auto duplicate = [&] { return mine.Duplicate(); };

    TSharedPtr<CMine> copy = duplicate().Cast<CMine>();  // nobody owns the name
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->value, 5);

    using Functions = TCreateAndDestroy<CMinePlus, IReduceObject>;
    ASSERT_TRUE(reduceObjectFactory()->Register(CMine::kName, CMine::typeID, Functions::Create, Functions::Destroy));
    copy = duplicate().Cast<CMinePlus>();
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->value, 5);
}

class COther : public TReduceObject<COther> {
  public:
    static constexpr GUID typeID = "{00000002-0002-0003-0405-060708090A0B}"_guid;
    static constexpr const wchar_t* kName = L"TestOther";
    int value = 0;
};

TEST(ReduceObject, DuplicateOfAClassWhoseNameAForeignOneOwns) {
    using Functions = TCreateAndDestroy<CFOVReduceObject, IReduceObject>;
    ASSERT_TRUE(reduceObjectFactory()->Register(COther::kName, COther::typeID, Functions::Create, Functions::Destroy));
    COther other;
    other.value = 6;
    const TSharedPtr<COther> copy = other.Duplicate().Cast<COther>();
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->value, 6);
}

}  // namespace
}  // namespace ovix::reduce
