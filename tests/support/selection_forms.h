#pragma once

#include <gtest/gtest.h>

#include "support/forms.h"

namespace ovix::test {

/// Calls `convert` with the arguments of the ten buffer forms of a conversion, each over a frame of counts, and demands
/// the values `expected[count]` of the pixels that the form selects, or, where `mapsTakeTheFirst` and there is a preset
/// map, of as many from the start of the buffer.
inline void CheckForms(auto convert, const std::vector<float>& expected, bool mapsTakeTheFirst) {
    const SForms forms;
    std::vector<u16> counts(forms.Count() + forms.indices.size());
    for (u32 i = 0; i < counts.size(); ++i) counts[i] = static_cast<u16>(10000 + i);
    std::vector<u8> presets(counts.size());
    presets[0] = presets[1] = presets[700] = 2;
    const STypedData in{counts.data(), UInt16};
    for (const EForm form : kForms) {
        const std::vector<u32> visited = forms.Visited(form);
        for (const bool withMap : {false, true}) {
            SCOPED_TRACE("form " + std::to_string(static_cast<int>(form)) + (withMap ? " with map" : ""));
            std::vector<double> out(visited.size() + 1, -1.0);
            std::vector<u8> status(visited.size() + 1, 99);
            const STypedData to{out.data(), Flt64};
            const auto call = [&](auto... map) {
                return forms.Call(form, [&](auto... f) {
                    if constexpr (sizeof...(f) == 1) {
                        return convert(in, map..., to, status.data(), f...);
                    } else {
                        return convert(in, map..., f..., to, status.data());
                    }
                });
            };
            EXPECT_TRUE(withMap ? call(static_cast<const u8*>(presets.data())) : call());
            for (u32 i = 0; i < visited.size(); ++i) {
                ASSERT_EQ(out[i], expected[counts[withMap && mapsTakeTheFirst ? i : visited[i]]]) << i;
                ASSERT_EQ(status[i], 0) << i;
            }
            EXPECT_TRUE(out.back() == -1.0 && status.back() == 99);
        }
    }
    double out = -1;
    u8 status = 99;
    EXPECT_TRUE(convert(in, u16{6}, u16{4}, reduce::SArea{2, 0, 1, 5}, STypedData{&out, Flt64}, &status));
    EXPECT_TRUE(out == -1 && status == 99) << "nothing selected";
}

}  // namespace ovix::test
