#pragma once

#include "support/forms.h"

namespace ovix::test {

/// Calls `convert` with the arguments of the ten buffer forms of a conversion over `in`, and demands
/// `expected(pixel, place in the selection, whether by the map)`, and a status of 0 that the forms of parts leave alone
/// where they `keepStatus`.
inline void CheckForms(const auto& convert, STypedData in, const u8* map, const auto& expected, double part = 0,
                       bool keepStatus = false) {
    const SForms forms;
    for (const EForm form : kForms) {
        for (const bool withMap : {false, true}) {
            SCOPED_TRACE(withMap ? "with map" : "");
            const std::vector<u32> visited = forms.Visited(form);
            std::vector<u8> status(visited.size() + 1, 99);
            u32 place = 0;
            const auto call = [&](STypedData out, auto... f) {
                const auto of = [&](auto... mapped) {
                    if constexpr (sizeof...(f) == 1)
                        return convert(in, mapped..., out, status.data(), f...);
                    else
                        return convert(in, mapped..., f..., out, status.data());
                };
                return withMap ? of(map) : of();
            };
            ExpectForm<double>(
                forms, form, part, [&](u32 pixel) { return expected(pixel, place++, withMap); }, call);
            const u8 flags = keepStatus && form != EForm::W && form != EForm::L ? 99 : 0;
            EXPECT_EQ(std::vector<u8>(status.begin(), status.end() - 1), std::vector<u8>(visited.size(), flags));
            EXPECT_EQ(status.back(), 99);
        }
    }
    double out = -1;
    u8 status = 99;
    EXPECT_TRUE(convert(in, u16{6}, u16{4}, reduce::SArea{2, 0, 1, 5}, STypedData{&out, Flt64}, &status));
    EXPECT_TRUE(out == -1 && status == 99) << "nothing selected";
}

/// The same over a frame of counts from 10,000 on, whose values are those of `table`; or, where `mapsTakeTheFirst` and
/// there is a preset map, of as many pixels from the start of the buffer.
inline void CheckForms(const auto& convert, const std::vector<float>& table, bool mapsTakeTheFirst) {
    std::vector<u16> counts(2000);
    for (u32 i = 0; i < counts.size(); ++i) counts[i] = static_cast<u16>(10000 + i);
    std::vector<u8> presets(counts.size());
    presets[0] = presets[1] = presets[700] = 2;
    CheckForms(convert, STypedData{counts.data(), UInt16}, presets.data(), [&](u32 pixel, u32 place, bool withMap) {
        return table[counts[withMap && mapsTakeTheFirst ? place : pixel]];
    });
}

}  // namespace ovix::test
