#include "reduce/objects/reduce_object_array.h"

#include <cstdlib>

#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/abate.h"
#include "reduce/pixels/correction_objects.h"
#include "support/object_file.h"

namespace ovix::reduce {
namespace {

using test::Text;

struct SClassRow {
    const wchar_t* name;
    GUID typeID;
    u32 version;
    bool valid, persist, calibration = false;
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
    {L"MerlinFactoryCal", "{7ED232C7-2ECF-4552-BB67-D406D5E87E61}"_guid, 0x10001, false, true, true}};

TEST(ReduceObject, ClassesStartAsFilesExpectAndKeepTheirPlaceWhenReset) {
    for (const SClassRow& row : kClasses) {
        SCOPED_TRACE(CString(row.name).GetUTF8());
        const TSharedPtr<IReduceObject> object = reduceObjectFactory()->CreateByName(row.name);
        ASSERT_TRUE(object);
        EXPECT_EQ(object->GetTypeID(), row.typeID);
        const bool perFrame = object->GetTypeID() == CFrameInfoReduceObject::typeID;
        EXPECT_EQ(
            Text(object->GetName(), object->version, object->valid, object->ShouldPersist(0),
                 object->ShouldPersist(~0u), object->IsCalObj(), object->IsPerFrame(), object->IsPerPreset()),
            Text(row.name, row.version, row.valid, row.persist, row.persist, row.calibration, perFrame, perFrame));

        const auto state = [](const IReduceObject& o) {
            return Text(o.valid, o.IsPerFrame(), o.preset, o.persist, o.version);
        };
        const bool header = EqualsNoCase(row.name, L"FrameHeader");  // resets all, and copies the version
        object->valid = !row.valid;
        object->frameNumber = 0;
        object->preset = 254;
        object->persist = !row.persist;
        object->version = 77;
        EXPECT_EQ(state(*object->Duplicate()), Text(!row.valid, true, 254, !row.persist, header ? 77 : row.version));
        object->Default();
        EXPECT_EQ(state(*object), header ? Text(row.valid, false, 255, row.persist, row.version)
                                         : Text(row.valid, true, 254, !row.persist, 77));
    }
}

TEST(ReduceObject, ChecksumCoversWhatSaveWrites) {
    CSourceInfoReduceObject info;
    info.width = 640;
    u32 crc = 1;
    u64 size = 2;
    EXPECT_FALSE(CFrameInfoReduceObject().CalcCRC(crc, size, 0));
    EXPECT_TRUE(crc == 1 && size == 2);
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(info.CalcCRC(crc, size, 0));
        EXPECT_TRUE(size == 2048 && crc == test::BitwiseCRC(test::SavedBytes(info)));
    }
}

/// A class of which the factory makes another one, as plug-ins bring about.
template <u32 kNumber>
class TMine : public TReduceObject<TMine<kNumber>> {
  public:
    static constexpr GUID typeID{kNumber, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    static constexpr const wchar_t* kName = kNumber == 1 ? L"TestMine" : L"TestOther";
    int value = 5;
};
class CMinePlus : public TMine<1> {};

TEST(ReduceObject, DuplicateStaysWithTheClassOfAPlugInAndLosesNothingToAForeignOne) {
    const auto registerAs = []<class Made>(const auto& object, std::type_identity<Made>) {
        using Functions = TCreateAndDestroy<Made, IReduceObject>;
        return reduceObjectFactory()->Register(object.kName, object.typeID, Functions::Create, Functions::Destroy);
    };
    TMine<1> mine;
    TMine<2> other;
    mine.value = other.value = 6;
    const auto valueOf = []<class Made>(const IReduceObject& object, std::type_identity<Made>) {
        const TSharedPtr<Made> copy = object.Duplicate().template Cast<Made>();
        return copy ? copy->value : -1;
    };
    EXPECT_EQ(valueOf(mine, std::type_identity<TMine<1>>()), 6) << "nobody owns the name";
    ASSERT_TRUE(registerAs(mine, std::type_identity<CMinePlus>()));
    EXPECT_EQ(valueOf(mine, std::type_identity<CMinePlus>()), 6);
    ASSERT_TRUE(registerAs(other, std::type_identity<CFOVReduceObject>()));
    EXPECT_EQ(valueOf(other, std::type_identity<TMine<2>>()), 6) << "a foreign one owns the name";
}

TSharedPtr<CFOVReduceObject> NewFOV(u8 preset, double value = 0) {
    const TSharedPtr<CFOVReduceObject> fov = MakeShared<CFOVReduceObject>();
    fov->preset = preset;
    fov->IHFOV = value;
    return fov;
}

const GUID& kFOV = CFOVReduceObject::typeID;

TEST(ReduceObjectArray, AnObjectOfTheWholeSourceServesAPresetUntilItGetsItsOwn) {
    CReduceObjectArray objects;
    const auto wide = objects.GetCorrection(255, true);
    ASSERT_TRUE(wide && objects.GetCorrection(2, false) == wide);
    const auto own = objects.GetCorrection(2, true);
    EXPECT_TRUE(own != wide && own->preset == 2 && objects.GetCorrection(2, false) == own);
    EXPECT_EQ(objects.GetCorrection(3, false), wide);
}

TEST(ReduceObjectArray, LookupTellsMinusOneFrom255AndMakesNothingOfUnknownClasses) {
    CReduceObjectArray objects;
    EXPECT_FALSE(objects.GetObjectOfType(kFOV, 255, false));
    EXPECT_FALSE(objects.GetObjectOfType(CGUID::Empty, -1, true));
    EXPECT_FALSE(objects.GetObjectByName(L"fov ", -1, true));
    EXPECT_FALSE(objects.GetObjectByName(L"fov", -1, true));  // creation, unlike the search, looks at the case
    EXPECT_FALSE(objects.Add(TSharedPtr<IReduceObject>()) || objects.GetSize() || objects.GetAt(0));
    const auto first = NewFOV(255), last = NewFOV(255);
    for (const auto& fov : {first, NewFOV(254), last}) objects.Add(fov);
    EXPECT_EQ(objects.GetObjectOfType(kFOV, -1, false).ptr(), first.ptr());  // exact: the first
    EXPECT_EQ(objects.GetObjectOfType(kFOV, -1, true).ptr(), first.ptr());
    EXPECT_EQ(objects.GetObjectOfType(kFOV, 255, false).ptr(), last.ptr());  // fallback: the last
    EXPECT_EQ(objects.GetObjectByName(L"fov", -1, false).ptr(), first.ptr());
    EXPECT_EQ(objects.GetObjectByName(L"fov", 0, false).ptr(), last.ptr());
    EXPECT_EQ(objects.GetSize(), 3u);
    EXPECT_EQ(objects.GetObjectOfType(kFOV, 255, true)->preset, 255);  // never exact, so it makes one more
    EXPECT_EQ(objects.GetObjectByName(L"FOV", 7, true)->preset, 7);
    EXPECT_EQ(objects.GetSize(), 5u);
}

TEST(ReduceObjectArray, TypedShortcutsMakeTheirClassAtItsPreset) {
    CReduceObjectArray objects;
    for (const bool create : {true, false}) {
        EXPECT_EQ(Text(objects.GetSourceInfo(create)->preset, objects.GetObjectParameters(create)->preset,
                       objects.GetFOV(create)->preset, objects.GetCorrectionCfg(create)->preset,
                       objects.GetAbateCfg(create)->preset, objects.GetFrameInfo(3, create)->preset,
                       objects.GetCorrection(4, create)->preset),
                  "255 255 255 255 255 3 4 ");
        EXPECT_EQ(objects.GetSize(), 7u);
    }
}

/// A plug-in's class that answers with the type id of a built-in one.
class CImpostor : public TReduceObject<CImpostor> {
  public:
    static constexpr GUID typeID = CFOVReduceObject::typeID;
    static constexpr const wchar_t* kName = L"FOV";
};

TEST(ReduceObjectArray, ShortcutsAreEmptyForAForeignClass) {
    CReduceObjectArray objects;
    objects.Add(MakeShared<CImpostor>());
    EXPECT_TRUE(objects.GetObjectOfType(kFOV, -1, false));
    EXPECT_FALSE(objects.GetFOV(false) || objects.GetFOV(true));
}

TEST(ReduceObjectArray, ListsAndTestsByValidity) {
    CReduceObjectArray objects;
    objects.Add(NewFOV(0));
    objects.Add(MakeShared<CSourceInfoReduceObject>());
    objects.Add(NewFOV(1));
    TArray<GUID> ids{CGUID::Empty};
    objects.GetTypeIDs(ids, false);
    EXPECT_TRUE(ids.size() == 2 && ids.GetAt(0) == kFOV && ids.GetAt(1) == CSourceInfoReduceObject::typeID);
    TArray<CString> names;
    objects.GetNames(names, true);
    EXPECT_TRUE(names.size() == 1 && names.GetAt(0) == L"SourceInfo");
    EXPECT_TRUE(objects.HasObjectOfType(kFOV, false) && !objects.HasObjectOfType(kFOV, true));
    EXPECT_TRUE(objects.HasObjectWithName(L"sourceINFO", true) && !objects.HasObjectWithName(L"fov", true));
    objects.GetAt(2)->valid = true;
    objects.GetTypeIDs(ids, true);
    EXPECT_TRUE(objects.HasObjectOfType(kFOV, true) && ids.GetAt(0) == CSourceInfoReduceObject::typeID);
}

TEST(ReduceObjectArray, RemovesByTypeAndSignedPreset) {
    CReduceObjectArray objects;
    for (const u8 preset : {u8{1}, u8{255}, u8{1}, u8{254}}) objects.Add(NewFOV(preset));
    objects.Add(MakeShared<CSourceInfoReduceObject>());
    for (const auto& [preset, left] : {std::pair{255, 5u}, {9, 5u}, {1, 4u}, {-2, 3u}}) {  // 255 is no signed byte
        objects.RemoveObjectOfType(kFOV, preset);
        EXPECT_EQ(objects.GetSize(), left);
    }
    EXPECT_TRUE(objects.GetAt(0)->preset == 255 && objects.GetAt(1)->preset == 1);
    objects.RemoveAllObjectsOfType(kFOV);
    EXPECT_TRUE(objects.GetSize() == 1 && objects.GetSourceInfo(false));
}

TEST(ReduceObjectArray, CopiesShareObjectsAndDuplicatesDoNot) {
    CReduceObjectArray objects, deep;
    objects.Add(NewFOV(255, 1.5));
    deep.Add(MakeShared<CSourceInfoReduceObject>());
    objects.Duplicate(deep);
    const CReduceObjectArray shallow = objects;
    objects.GetFOV(false)->IHFOV = 2.5;
    EXPECT_TRUE(deep.GetSize() == 1 && deep.GetFOV(false)->IHFOV == 1.5);
    objects.Reset();
    EXPECT_TRUE(objects.GetSize() == 0 && shallow.GetAt(0).Cast<CFOVReduceObject>()->IHFOV == 2.5);
}

TEST(ReduceObjectFactory, NamesAndTypeIdsLeadToEachOther) {
    const CReduceObjectFactory& factory = *reduceObjectFactory();
    EXPECT_EQ(factory.GetTypeIDFromName(L"FOV"), kFOV);
    EXPECT_EQ(factory.GetTypeIDFromName(L"fov"), CGUID::Empty);
    EXPECT_STREQ(factory.GetNameFromTypeID(kFOV), L"FOV");
    EXPECT_STREQ(factory.GetNameFromTypeID(CGUID::Empty), L"");
    EXPECT_TRUE(factory.CreateByTypeID(kFOV).Cast<CFOVReduceObject>());
    EXPECT_FALSE(factory.CreateByTypeID(CGUID::Empty));
}

/// The lines go out from the load of the library on, so a fresh process has to be watched.
TEST(ReduceObjectFactoryDeathTest, RegistrationIsLogged) {
    ::setenv("OVIX_DEBUG_OUTPUT", "1", 1);
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CFOVReduceObject::Register();
            std::_Exit(0);
        },
        testing::ExitedWithCode(0),
        "\\[[0-9]+\\]: CReduceObjectFactory::Register: Registered FOV as id "
        "\\{42FD8DA7-B376-45C2-8255-B9267E512077\\}\n(.*\n)*"
        "\\[[0-9]+\\]: CReduceObjectFactory::Register: Failed to register FOV as id "
        "\\{42FD8DA7-B376-45C2-8255-B9267E512077\\}\n");
    ::unsetenv("OVIX_DEBUG_OUTPUT");
}

}  // namespace
}  // namespace ovix::reduce
