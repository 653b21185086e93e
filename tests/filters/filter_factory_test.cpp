#include "reduce/filters/filter_factory.h"

#include <gtest/gtest.h>

#include "core/pixel_types.h"
#include "support/k410_frames.h"

namespace ovix::reduce {
namespace {

using test::Bytes;

constexpr GUID kOwnType = "{0F0E0D0C-0B0A-0908-0706-050403020100}"_guid;

/// As little as a plug-in's decoder may supply. Its preset is the frame's first byte.
class CLeastFilter : public IFilter {
  public:
    const wchar_t* GetName() const override { return L"Least"; }
    bool HasPixels(GUID) const override { return false; }
    bool GetPixels(void*, GUID, u16, u16, u32, void**, i32&) override { return false; }
    bool ParseTime(void*, GUID, u16, u16, u32, CDateTime&) override { return false; }
    bool ParseBasicInfo(void*, GUID, u16, u16, u32, u8&, u64&, CDateTime&) override { return false; }
};
class CPresetFilter : public CLeastFilter {
  public:
    bool ParsePreset(void* frame, GUID, u16, u16, u32, u8& preset) override {
        preset = *static_cast<u8*>(frame);
        return preset != 0xFF;
    }
};

TEST(FilterFactory, TypesBelongToTheFirstWhoClaimsThem) {
    using Functions = TCreateAndDestroy<CLeastFilter, IFilter>;
    const auto registerAs = [](const wchar_t* name, TArray<GUID> types) {
        return filterFactory()->Register(name, types, Functions::Create, Functions::Destroy);
    };
    EXPECT_TRUE(registerAs(L"Claims K410", {test::kK410F7M0, kOwnType}));
    EXPECT_TRUE(registerAs(L"Claims late", {kOwnType}));
    EXPECT_FALSE(registerAs(L"Claims late", {}));
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(test::kK410F7M0) == L"K410");
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(kOwnType) == L"Claims K410");
    EXPECT_STREQ(filterFactory()->CreateForPixelType(kOwnType)->GetName(), L"Least");
    EXPECT_TRUE(filterFactory()->GetPixelTypeHandler(rootIRType).IsEmpty());
    EXPECT_FALSE(filterFactory()->IsPixelTypeHandled(rootIRType));
    EXPECT_FALSE(filterFactory()->CreateForPixelType(rootIRType));
    // A family that registered no check cannot vouch for a frame.
    SFrameFault fault;
    EXPECT_FALSE(CheckFrame(L"Claims late", nullptr, kOwnType, 0, 0, 0, &fault));
    EXPECT_TRUE(fault.found == L"Claims late");

    TArray<GUID> given{kOwnType};
    const SFilterFactoryExtraStuff extra(given);
    EXPECT_EQ(given.size(), 0u);
    EXPECT_EQ(extra.pixelTypes.size(), 1u);
}

TEST(Filter, WhatEveryDecoderStartsWith) {
    CLeastFilter filter;
    Bytes frame{1, 2, 3, 4}, small(3), large(5, 9);
    CReduceObjectArray objects;
    u8 preset = 9, other = 9;
    u64 counter = 9;
    EXPECT_FALSE(filter.ParseReduceObjects(frame.data(), kOwnType, 2, 1, 4, objects, preset));
    EXPECT_FALSE(filter.ParsePreset(frame.data(), kOwnType, 2, 1, 4, other));
    EXPECT_FALSE(filter.ParseFrameCounter(frame.data(), kOwnType, 2, 1, 4, counter));
    EXPECT_TRUE(preset == 0 && other == 0 && counter == 0 && filter.FrameCounterMaxValue(kOwnType) == 65535);

    EXPECT_TRUE(filter.StoreFrame(frame.data(), 4, kOwnType, 2, 1, 1, 0, small.data(), 3));
    EXPECT_TRUE(filter.StoreFrame(frame.data(), 4, kOwnType, 2, 1, 1, 0, large.data(), 5));
    EXPECT_TRUE(small == (Bytes{1, 2, 3}) && large == (Bytes{1, 2, 3, 4, 9}));
    bool triggered = true;
    u16 index = 9;
    EXPECT_TRUE(filter.CheckForTrigger(frame.data(), 4, kOwnType, 2, 1, 1, 0, triggered, index));
    TArray<CString> names{L"old"};
    EXPECT_FALSE(filter.GetTriggerFields(kOwnType, names));
    EXPECT_TRUE(!triggered && index == 0 && names.size() == 0);
    GUID header = kOwnType;
    u32 size = 9, config = 9;
    EXPECT_FALSE(filter.GetHeaderInfo(kOwnType, 2, 1, 4, header, size) || filter.GetConfigSize(kOwnType, config));
    EXPECT_TRUE(header == CGUID::Empty && size == 0 && config == 0);
}

TEST(Filter, PresetsAreCountedByTheFirstImage) {
    CPresetFilter filter;
    Bytes frame{3};
    u32 counts[256] = {};
    EXPECT_FALSE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 1, counts));
    EXPECT_EQ(counts[3], 0u);
    EXPECT_TRUE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    EXPECT_TRUE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    frame[0] = 0xFF;
    EXPECT_FALSE(filter.CountPresets(frame.data(), 1, kOwnType, 1, 1, 0, counts));
    for (u32 i = 0; i < 256; ++i) EXPECT_EQ(counts[i], i == 3 ? 2u : 0u);
}

}  // namespace
}  // namespace ovix::reduce
