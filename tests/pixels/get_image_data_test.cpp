#include "reduce/pixels/get_image_data.h"

#include <functional>

#include "tests/support/pixel_buffers.h"
#include "tests/support/pixel_reference.h"

namespace ovix::reduce {
namespace {

using namespace test;

constexpr u16 kWidth = 37, kHeight = 31;
constexpr u32 kStride = 41;

/// What was asked for beside the pixels: which status buffers are there.
struct SStatusCase {
    bool source, destination;
};
constexpr SStatusCase kStatusCases[] = {{false, false}, {false, true}, {true, false}, {true, true}};

/// Demands that `get` writes the pixels of the frame, in this order and no more, and their status.
using FGet = std::function<bool(STypedData, const u8*, STypedData, u8*)>;

template <class S, class D>
void Check(const char* form, TGuarded<S>& frame, TGuarded<u8>& map, const std::vector<u32>& pixels, std::size_t shift,
           const FGet& get) {
    for (const SStatusCase& c : kStatusCases) {
        TGuarded<D> out(pixels.size() + 3, shift);
        TGuarded<u8> status(pixels.size() + 3, shift);
        ASSERT_TRUE(
            get(frame.Typed(), c.source ? map.data() : nullptr, out.Typed(), c.destination ? status.data() : nullptr));
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            // Lines with both status buffers stay at the first column of the row.
            const bool stuck = c.source && c.destination && (form[0] == 'A' || form[0] == 'S');
            const u32 pixel = stuck ? pixels[i] / kWidth * kWidth : pixels[i];
            ASSERT_TRUE(Same(out[i], Cast<D>(frame[pixel]))) << form << i << " of " << +frame[pixel];
            if (!c.destination) continue;
            ASSERT_EQ(status[i], c.source ? map[pixel] : 0) << form << i;
        }
        EXPECT_TRUE(out.Untouched(pixels.size())) << form;
        EXPECT_TRUE(status.Untouched(c.destination ? pixels.size() : 0)) << form;
    }
}

template <class S, class D>
void CheckForms(u32 seed) {
    TGuarded<S> frame(kWidth * kHeight, seed % 4, false);
    TGuarded<u8> map(kWidth * kHeight, 0, false), mask(kStride * kHeight, 0, false);
    FillEdges(frame, seed);
    FillEdges(map, seed + 1);
    CRandom random(seed);
    for (u8& m : mask) m = random.Below(3) ? u8{0} : u8{7};

    const auto list = [&](u32 count) {
        std::vector<u32> indices;
        for (u32 i = 0; i < count; ++i) indices.push_back(random() % (kWidth * kHeight));
        Check<S, D>("L", frame, map, indices, count % 4,
                    [&](auto... buffers) { return GetImageData(buffers..., indices.data(), count); });
    };
    for (const u32 count : {0u, 1u, 511u, 512u, 513u}) list(count);

    for (const SArea& area : {SArea{0, 0, kHeight - 1, kWidth - 1}, SArea{3, 5, 9, 11}, SArea{4, 2, 3, 8},
                              SArea{2, 8, 4, 7}, SArea{30, 36, 30, 36}}) {
        Check<S, D>("A", frame, map, Area(kWidth, area), area.left % 4,
                    [&](auto... buffers) { return GetImageData(buffers..., kWidth, kHeight, area); });
        Check<S, D>("M", frame, map, Area(kWidth, area, mask.data(), kStride), area.left % 4, [&](auto... buffers) {
            return GetImageData(buffers..., kWidth, kHeight, area, mask.data(), kStride);
        });
    }
    const TArray<SScanLine> lines{{7, 1, 6}, {2, 36, 36}, {2, 3, 2}, {30, 0, 36}}, none;
    for (const TArray<SScanLine>* region : {&lines, &none}) {
        Check<S, D>("S", frame, map, Lines(kWidth, *region), 1,
                    [&](auto... buffers) { return GetImageData(buffers..., kWidth, kHeight, *region); });
    }
}

TEST(GetImageData, MovesEveryFormBetweenAllPairsOfTypes) {
    u32 seed = 1;
    ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
        SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
        CheckForms<S, D>(seed++);
    });
}

TEST(GetImageData, TruncatesAndWraps) {
    const float values[] = {3.99F, -3.99F, 300.0F};
    const u32 indices[] = {0, 1, 2};
    i8 small[3];
    u8 bytes[3];
    ASSERT_TRUE(GetImageData({const_cast<float*>(values), Flt32}, nullptr, {small, Int8}, nullptr, indices, 2));
    ASSERT_TRUE(GetImageData({const_cast<float*>(values), Flt32}, nullptr, {bytes, UInt8}, nullptr, indices, 3));
    EXPECT_EQ(small[0], 3);
    EXPECT_EQ(small[1], -3);
    EXPECT_EQ(bytes[2], 44);
}

TEST(GetImageData, RefusesOtherTypes) {
    u16 source[2] = {1, 2}, dest[2] = {7, 7};
    u8 status[2] = {9, 9};
    const u32 indices[] = {0, 1};
    for (const EDataType type : {Opaque, OpaqueWide, NoPixels, static_cast<EDataType>(0x80000003u)}) {
        EXPECT_FALSE(GetImageData({source, type}, nullptr, {dest, UInt16}, status, indices, 2));
        EXPECT_FALSE(GetImageData({source, UInt16}, nullptr, {dest, type}, status, 2, 1, SArea{0, 0, 0, 1}));
    }
    EXPECT_EQ(dest[0], 7);
    EXPECT_EQ(status[0], 9);
}

}  // namespace
}  // namespace ovix::reduce
