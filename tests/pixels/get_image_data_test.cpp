#include <gtest/gtest.h>

#include <array>
#include <vector>

#include "reduce/pixels/get_image_data.h"
#include "reduce/pixels/selection.h"
#include "tests/support/forms.h"
#include "tests/support/pixel_buffers.h"
#include "tests/support/pixel_reference.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// The pixels of the frame that each form visits, in this order and no more, and their status, with and without either
/// status buffer.
template <class S, class D>
void CheckForms(const SForms& forms, u32 seed) {
    TGuarded<S> frame(forms.Count(), seed % 4, false);
    TGuarded<u8> map(forms.Count(), 0, false);
    FillEdges(frame, seed);
    FillEdges(map, seed + 1);
    for (const EForm form : {EForm::L, EForm::A, EForm::S, EForm::M}) {
        const std::vector<u32> pixels = forms.Visited(form);
        for (const auto& [from, to] : {std::pair{false, false}, {false, true}, {true, false}, {true, true}}) {
            TGuarded<D> out(pixels.size() + 3, seed % 4);
            TGuarded<u8> status(pixels.size() + 3, seed % 4);
            const u8* const source = from ? map.data() : nullptr;
            u8* const destination = to ? status.data() : nullptr;
            ASSERT_TRUE(forms.Call(
                form, [&](auto... f) requires(sizeof...(f) > 1) {  // there is none of a whole frame
                    return GetImageData(frame.Typed(), source, out.Typed(), destination, f...);
                }));
            // Lines with both status buffers stay at the first column of the row.
            const bool stuck = from && to && (form == EForm::A || form == EForm::S);
            for (std::size_t i = 0; i < pixels.size(); ++i) {
                const u32 pixel = stuck ? pixels[i] / forms.width * forms.width : pixels[i];
                ASSERT_TRUE(Same(out[i], Cast<D>(frame[pixel]))) << i << " of " << +frame[pixel];
                ASSERT_TRUE(!to || status[i] == (from ? map[pixel] : 0)) << i;
            }
            EXPECT_TRUE(out.Untouched(pixels.size()));
            EXPECT_TRUE(status.Untouched(to ? pixels.size() : 0));
        }
    }
}

TEST(GetImageData, MovesEveryFormBetweenAllPairsOfTypes) {
    const struct {
        SArea area;
        u32 listed;  // around the length of a block
    } kSelections[] = {
        {{0, 0, 40, 22}, 0}, {{3, 5, 9, 11}, 1}, {{4, 2, 3, 8}, 511}, {{2, 8, 4, 7}, 512}, {{40, 22, 40, 22}, 513}};
    for (const auto& selection : kSelections) {
        SForms forms;
        forms.area = selection.area;
        forms.indices.resize(selection.listed);
        if (selection.listed == 0) forms.lines = {};
        u32 seed = 1;
        ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
            SCOPED_TRACE(testing::Message()
                         << DataTypeOf<S>() << " to " << DataTypeOf<D>() << ", " << selection.listed);
            CheckForms<S, D>(forms, seed++);
        });
    }
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

TEST(PresetMap, EachSelectedPixelIsHeldAgainstThePresets) {
    const bool usable[8] = {true, false, true, true};
    for (u32 size = 1; size < 40; ++size) {
        std::vector<u8> map(size, u8{2});
        if (size > 20) std::fill_n(map.begin(), 11, u8{0});
        EXPECT_TRUE(HoldsOnly(SWhole{size}, map.data(), usable)) << size;
        for (u32 i = 0; i < size * 4; ++i) {
            std::vector<u8> wrong = map;
            const u32 at = i / 4;
            wrong[at] = std::array<u8, 4>{1, 7, 8, 255}[i % 4];
            EXPECT_FALSE(HoldsOnly(SWhole{size}, wrong.data(), usable)) << size << ' ' << at;
            EXPECT_TRUE(HoldsOnly(SWhole{at}, wrong.data(), usable));
            EXPECT_FALSE(HoldsOnly(SIndexList{&at, 1}, wrong.data(), usable));
        }
    }
    EXPECT_TRUE(HoldsOnly(SWhole{9}, nullptr, usable)) << "no map means preset 0";
    EXPECT_FALSE(HoldsOnly(SWhole{9}, nullptr, {false, true}));
}

}  // namespace
}  // namespace ovix::reduce
