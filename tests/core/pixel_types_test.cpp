#include "core/pixel_types.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace ovix {
namespace {

constexpr GUID NumberedId(u32 n) { return {0x7E570000 + n, 0, 0, {}}; }

TEST(PixelTypes, FormChainsOfBaseTypes) {
    const GUID family = NumberedId(1), type = NumberedId(2), ring = NumberedId(3), ring2 = NumberedId(4);
    EXPECT_TRUE(RegisterPixelType(family, L"family", 2, UInt16, rootIRType));
    EXPECT_TRUE(RegisterPixelType(type, L"type", 3, Opaque, family));
    EXPECT_TRUE(RegisterPixelType(ring, L"ring", 1, UInt8, ring2));
    EXPECT_TRUE(RegisterPixelType(ring2, L"ring 2", 1, UInt8, ring));
    EXPECT_TRUE(RegisterPixelType(type, L"second", 9, Flt64, rootScreenType));  // does no harm, changes nothing

    SPixelType facts;
    ASSERT_TRUE(GetPixelType(type, facts));
    EXPECT_TRUE(facts.name.Equals(L"type") && facts.bytesPerPixel == 3 && facts.baseType == family);
    EXPECT_EQ(PixelWidth(type), 3);
    EXPECT_EQ(PixelWidth(NumberedId(99)), 0);

    const struct {
        GUID type, base;
        bool stands;
    } cases[] = {
        {type, type, true},
        {type, family, true},
        {type, rootIRType, true},
        {family, type, false},
        {type, rootScreenType, false},
        {rootIRType, rootIRType, true},
        {NumberedId(99), NumberedId(99), true},
        {NumberedId(99), rootIRType, false},
        {ring, ring2, true},
        {ring, rootIRType, false},
    };
    for (const auto& c : cases) EXPECT_EQ(IsPixelBaseType(c.type, c.base), c.stands) << c.type.data1 << c.base.data1;
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(0), rootIRType);
    EXPECT_EQ(OldPixelTypeUInt32ToNewPixelType(12345), rootIRType);
}

TEST(PixelTypes, MayBeRegisteredWhileOthersLook) {
    std::vector<std::thread> threads;
    for (u32 t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            for (u32 i = 0; i < 50; ++i) {
                const GUID id = NumberedId(1000 + t * 50 + i);
                RegisterPixelType(id, L"x", 2, UInt16, rootIRType);
                EXPECT_TRUE(IsPixelBaseType(id, rootIRType));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace ovix
