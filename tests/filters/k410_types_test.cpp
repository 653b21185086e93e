#include <gtest/gtest.h>

#include <tuple>

#include "core/pixel_types.h"
#include "reduce/filters/filter_factory.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using namespace test;

TEST(K410Types, FactoryAndRegistry) {
    const TSharedPtr<IFilter> filter = filterFactory()->Create(L"K410");
    struct SCase {
        GUID id;
        const wchar_t* name;
        GUID base;
        bool pixels, time, counter;
        u32 triggers;
    };
    constexpr GUID kF7M0 = "{44ACBC8C-03B3-4599-B784-14DAD5C4BBF8}"_guid;
    constexpr GUID kUYVY = "{BB8A3D05-C4F6-4193-B198-08D9E797E886}"_guid;
    constexpr GUID kYUY2 = "{88DF0B84-7417-41CB-9B49-2F585323D620}"_guid;
    constexpr GUID kBGR8 = "{5BA4C88B-EBB4-4676-88E4-FC5C0FF6EB36}"_guid;
    const SCase cases[] = {
        {kK410F7M0, L"K410 IR (F7M0)", kF7M0, true, true, true, 0},
        {kK410FNM0, L"K410 IR (FNM0)", kF7M0, true, false, false, 0},
        {kK410GigE, L"K410 IR (GigE)", kF7M0, true, false, true, 3},
        {kK410GigEFlipped, L"K410 IR (GigE, Flipped)", kF7M0, true, false, true, 3},
        {kK410UYVY, L"K410 YUV (UYVY)", kUYVY, false, false, false, 0},
        {kK410YUY2, L"K410 YUV (YUY2)", kYUY2, false, false, false, 0},
        {kK410BGR, L"K410 BGR (24-bit)", kBGR8, false, false, false, 0},
        {kK410MJLS, L"R7X IR (MJLS)", kF7M0, false, false, false, 0},
    };
    EXPECT_STREQ(filter->GetName(), L"K410");
    const auto& handled = filterFactory()->GetEntry(L"K410").extra.pixelTypes;
    ASSERT_EQ(handled.size(), std::size(cases));
    for (u32 i = 0; i < handled.size(); ++i) {
        const SCase& c = cases[i];
        SCOPED_TRACE(i);
        EXPECT_EQ(handled[i], c.id);
        SPixelType facts;
        ASSERT_TRUE(GetPixelType(c.id, facts));
        EXPECT_TRUE(facts.name == c.name);
        EXPECT_EQ(facts.bytesPerPixel, 2);  // video and the 24-bit type included
        EXPECT_EQ(facts.type, UInt16);
        EXPECT_EQ(facts.baseType, c.base);
        EXPECT_EQ(filter->HasPixels(c.id), c.pixels);
        EXPECT_EQ(filter->HasTime(c.id), c.time);
        EXPECT_EQ(filter->HasFrameCounter(c.id), c.counter);
        EXPECT_EQ(filter->FrameCounterMaxValue(c.id), 65535u);
        TArray<CString> names{L"old"};
        EXPECT_TRUE(filter->GetTriggerFields(c.id, names));
        EXPECT_EQ(names.size(), c.triggers);
        u8 byte = 0;
        void* pixels = nullptr;
        i32 stride = 0;
        ASSERT_EQ(filter->GetPixels(&byte, c.id, 640, 480, 0, &pixels, stride), c.pixels);
        EXPECT_EQ(pixels, c.pixels ? &byte : nullptr);
        EXPECT_EQ(stride, c.pixels ? 1280 : 0);
    }
    const std::tuple<GUID, const wchar_t*, int, EDataType, GUID> generic[] = {
        {kF7M0, L"F7M0", 2, UInt16, rootIRType},
        {"{F5143BE1-3F5C-46E8-99B7-E5BC2A0A9990}"_guid, L"F7M2", 2, UInt16, rootIRType},
        {"{6AAAF0FA-3BCF-41A4-842E-EEE17BFA1C00}"_guid, L"F7M3", 2, Opaque, rootScreenType},
        {kUYVY, L"UYVY", 2, Opaque, rootScreenType},
        {kYUY2, L"YUY2", 2, Opaque, rootScreenType},
        {"{327F8ED5-4584-48C7-9FB1-E326376CD4B8}"_guid, L"Y800", 2, Opaque, rootScreenType},
        {kBGR8, L"BGR8", 3, Opaque, rootScreenType},
    };
    for (const auto& [id, name, bytes, type, base] : generic) {
        SPixelType facts;
        ASSERT_TRUE(GetPixelType(id, facts));
        EXPECT_TRUE(facts.name == name && facts.bytesPerPixel == bytes && facts.type == type && facts.baseType == base);
    }
}

}  // namespace
}  // namespace ovix::reduce
