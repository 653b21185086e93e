#include <gtest/gtest.h>

#include <cmath>

#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "support/header_line_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// What comes of a header; the caller may have prepared the source.
struct SParsed {
    explicit SParsed(bool fixedPreset = false) {
        if (fixedPreset) objects.GetSourceInfo(true)->fixedPreset = true;
    }
    SParsed& Parse(const wchar_t* filter, GUID type, Bytes header = LORHeader()) {
        EXPECT_TRUE(
            filterFactory()->Create(filter)->ParseReduceObjects(header.data(), type, 60, 0, 120, objects, preset));
        return *this;
    }
    std::string Text(const wchar_t* name) { return objects.GetFrameInfo(preset, false)->GetValue(name).GetUTF8(); }

    CReduceObjectArray objects;
    u8 preset = 9;
};

TEST(LORFilter, YearOfTheCallerAndHoursInTwoPlaces) {
    Bytes header = LORHeader();
    Patch(header, 2, 366 << 2 | 1, 2);  // two bits for 16 hours and more
    Patch(header, 4, 7 << 12 | 59 << 6 | 58, 2);
    CDateTime time, expected;
    time.SetYYDHMS(2000, 1, 0, 0, 0, 0, 0);
    ASSERT_TRUE(filterFactory()->Create(L"LOR-RA")->ParseTime(header.data(), kLORRA, 640, 512, 120, time));
    expected.SetYYDHMS(2000, 366, 23, 59, 58, 789, 12);
    EXPECT_EQ(time, expected);
}

TEST(LORFilter, SomeDetectorsShowDegrees) {
    for (const auto& [type, subType, shown] :
         {std::tuple{3, 4, "-196.15"}, {3, 5, "-196.15"}, {3, 3, "77.00"}, {3, 6, "77.00"}, {2, 4, "77.00"}}) {
        Bytes header = LORHeader();
        header[60] = static_cast<u8>(type);
        header[61] = static_cast<u8>(subType);
        EXPECT_EQ(SParsed().Parse(L"LOR-RA", kLORRA, header).Text(L"FPATemp"), "77.00");
        EXPECT_EQ(SParsed().Parse(L"LOR-SB", kLORSB, header).Text(L"FPATemp"), shown) << type << ' ' << subType;
    }
}

TEST(LORFilter, LensBlockByItsLowestThreeBits) {
    for (const auto& [state, there] : {std::pair{1, true},
                                       {9, true},
                                       {0x81, true},
                                       {0xFF01, true},
                                       {0, false},
                                       {2, false},
                                       {3, false},
                                       {5, false}}) {
        Bytes header = LORHeader();
        Patch(header, 96, static_cast<u64>(state), 2);
        SParsed sb;
        EXPECT_EQ(!sb.Parse(L"LOR-SB", kLORSBHeader, header).Text(L"IHFOV").empty(), there) << state;
        const auto view = sb.objects.GetFOV(false);
        ASSERT_EQ(static_cast<bool>(view), there) << state;
        if (!there) continue;
        EXPECT_TRUE(view->valid);
        EXPECT_NEAR(view->IHFOV, 280, 1e-4);
        EXPECT_EQ(view->IVFOV, view->IHFOV);
    }
    Bytes header = LORHeader();
    Patch(header, 98, 0, 4);
    SParsed sb;
    EXPECT_EQ(sb.Parse(L"LOR-SB", kLORSB, header).Text(L"IVFOV"), "inf");
    EXPECT_TRUE(std::isinf(sb.objects.GetFOV(false)->IHFOV));
    EXPECT_FALSE(SParsed().Parse(L"LOR-RA", kLORRA).objects.GetFOV(false));
}

TEST(LORFilter, SourceFixesThePresetOfOneKindOfHeader) {
    SParsed fixed(true);
    EXPECT_EQ(fixed.Parse(L"LOR-SB", kLORSBHeader).preset, 0);
    EXPECT_EQ(fixed.objects.GetFrameInfo(0, false)->preset, 0);
    EXPECT_EQ(fixed.Text(L"ActivePreset"), "2");  // the header's own
    EXPECT_EQ(fixed.Parse(L"LOR-SB", kLORSB).preset, 2);
    EXPECT_EQ(fixed.Parse(L"LOR-SB", rootIRType).preset, 2);
    EXPECT_EQ(fixed.Parse(L"LOR-RA", kLORRAHeader).preset, 2);
    SParsed free;
    free.objects.GetSourceInfo(true);
    EXPECT_EQ(free.Parse(L"LOR-SB", kLORSBHeader).preset, 2);
}

TEST(LORFilter, Triggers) {
    for (const auto& [name, type, fields] : {std::tuple{L"LOR-RA", kLORRA, 1u}, {L"LOR-SB", kLORSB, 2u}}) {
        const auto filter = filterFactory()->Create(name);
        TArray<CString> names{L"left over"};
        EXPECT_TRUE(filter->GetTriggerFields(CGUID::Empty, names));
        ASSERT_EQ(names.size(), fields);
        EXPECT_TRUE(names[0] == L"Trigger" && (fields == 1 || names[1] == L"RecordStart"));
        bool triggered = false;
        u16 index = 9;
        Bytes header = LORHeader();
        for (const u32 inputs : {0x0000u, 0x4000u, 0x8000u, 0xC000u}) {
            Patch(header, 10, inputs, 2);
            for (u8 field = 0; field < 3; ++field) {
                ASSERT_EQ(filter->CheckForTrigger(header.data(), 96, type, 640, 512, 1, field, triggered, index),
                          field < fields);
                EXPECT_EQ(triggered, field < fields && (inputs & 0x8000u >> field) != 0) << inputs;
                EXPECT_EQ(index, 0);
            }
        }
        EXPECT_FALSE(filter->CheckForTrigger(header.data(), 95, type, 640, 512, 1, 0, triggered, index));
        EXPECT_FALSE(filter->CheckForTrigger(header.data(), 96, kOsprey, 640, 512, 1, 0, triggered, index));
    }
}

}  // namespace
}  // namespace ovix::reduce
