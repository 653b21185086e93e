#include <array>

#include "reduce/pixels/abate.h"
#include "reduce/pixels/apply_lut.h"
#include "reduce/pixels/get_image_data.h"
#include "reduce/pixels/selection.h"
#include "reduce/pixels/temperature.h"
#include "tests/support/forms.h"
#include "tests/support/pixel_reference.h"

namespace ovix::reduce {
namespace {

using namespace test;

/// The pixels of the frame that each form visits, and their status, with and without either status buffer.
template <class S, class D>
void CheckForms(const SForms& forms, u32 seed) {
    TGuarded<S> frame(forms.Count(), seed % 4, false);
    TGuarded<u8> map(forms.Count(), 0, false);
    FillEdges(frame, seed);
    FillEdges(map, seed + 1);
    for (const EForm form : {EForm::L, EForm::A, EForm::S, EForm::M}) {
        const std::vector<u32> pixels = forms.Visited(form);
        for (int way = 0; way < 4; ++way) {
            const u8* const from = way & 1 ? map.data() : nullptr;
            TGuarded<u8> status(pixels.size() + 3, seed % 4);
            u8* const to = way & 2 ? status.data() : nullptr;
            // Lines with both status buffers stay at the first column of the row.
            const bool stuck = way == 3 && (form == EForm::A || form == EForm::S);
            const auto at = [&](u32 pixel) { return stuck ? pixel / forms.width * forms.width : pixel; };
            ExpectForm<D>(
                forms, form, 0, [&](u32 pixel) { return Cast<D>(frame[at(pixel)]); },
                [&](STypedData out, auto... f) requires(sizeof...(f) > 1) {  // there is none of a whole frame
                    return GetImageData(frame.Typed(), from, out, to, f...);
                });
            for (std::size_t i = 0; to && i < pixels.size(); ++i)
                ASSERT_EQ(status[i], from ? from[at(pixels[i])] : 0) << i;
            EXPECT_TRUE(status.Untouched(to ? pixels.size() : 0));
        }
    }
}

TEST(GetImageData, MovesEveryFormBetweenAllPairsOfTypes) {
    const std::pair<SArea, u32> kSelections[] = {// an area; the length of a list, around that of a block
                                                 {{0, 0, 40, 22}, 0},
                                                 {{3, 5, 9, 11}, 1},
                                                 {{4, 2, 3, 8}, 511},
                                                 {{2, 8, 4, 7}, 512},
                                                 {{40, 22, 40, 22}, 513}};
    for (const auto& [area, listed] : kSelections) {
        SCOPED_TRACE(listed);
        SForms forms;
        forms.area = area;
        forms.indices.resize(listed);
        if (listed == 0) forms.lines = {};
        u32 seed = 1;
        ForEachPair([&]<class S, class D>(TElement<S>, TElement<D>) {
            SCOPED_TRACE(testing::Message() << DataTypeOf<S>() << " to " << DataTypeOf<D>());
            CheckForms<S, D>(forms, seed++);
        });
    }
}

/// Every kernel that answers whether it takes two types of pixels.
TEST(Kernels, OtherTypesAreRefusedAndNothingIsWritten) {
    double pixels[2] = {1, 2}, result[2] = {-1, -1}, a[] = {0, 1};
    float lut[65536] = {};
    u8 status = 9, statusLut[65536] = {};
    const u32 index = 0;
    const SRadianceParams params{a, 1, 0, nullptr};
    void* const sources[8] = {pixels};
    const bool valid[8] = {true};
    const u8 order[8] = {};
    const u16 limits[8] = {};
    for (u32 i = 0; i < 13 * 13; ++i) {
        const EDataType from{i / 13}, to{i % 13};
        const STypedData in{pixels, from}, out{result, to};
        const auto expect = [&](bool taken, const auto& call) { EXPECT_EQ(call(taken ? 0u : 1u), taken) << i; };
        const bool floats = to == Flt32 || to == Flt64, both = floats && (from == Flt32 || from == Flt64);
        const bool numbers = from <= Flt64 && to <= Flt64;
        expect(numbers, [&](u32 n) { return GetImageData(in, nullptr, out, &status, &index, n); });
        expect(numbers, [&](u32 n) { return ApplyLUT(in, out, &status, n, lut, statusLut, 0, 65535); });
        expect(from == UInt16 || from == Flt32, [&](u32 n) {
            return Abate(from, sources, n, result, &status, valid, order, limits, limits, AbateFromFirst, nullptr,
                         nullptr, nullptr, false, 0, 0);
        });
        expect(numbers && floats && from != UInt64, [&](u32 n) { return ToRadiance(out, in, n, a, 1, 0.0, 1); });
        expect(numbers && floats, [&](u32 n) { return CountsToRadiance(in, out, n, params, {}); });
        expect(numbers && floats, [&](u32 n) { return CountsToTemperature(in, out, n, params, {}, {}); });
        expect(both, [&](u32 n) { return RadianceToTemperature(in, out, n, {}, {}); });
        expect(both, [&](u32 n) { return ToTemperatureCoeffs(out, in, n, a, 1, 1, Celsius); });
        expect(both, [&](u32 n) { return ToTemperatureLookup(out, in, n, a, a, 2, true, 1, Celsius); });
        expect(both, [&](u32 n) { return ToTemperaturePlanck(out, in, n, 12, 8, 1, Celsius); });
        expect(both, [&](u32 n) { return ToTemperatureRBF(out, in, n, 1, 1, 1, 0, 0, 0, 0, 0, 1, Celsius); });
    }
    EXPECT_TRUE(result[0] == -1 && status == 9);
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
