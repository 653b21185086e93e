#include "reduce/pixels/preset_map.h"

#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]) {
    // Maps hold long stretches of one preset, which are found out about at once.
    for (std::size_t at = 0; at < count;) {
        const u8 preset = presets[at];
        if (preset >= kMapPresets || !usable[preset]) return false;
        const bool stretches = at + 1 < count && presets[at + 1] == preset;
        at += stretches ? simd::LeadingBytes(presets + at, count - at, preset) : 1;
    }
    return true;
}

}  // namespace ovix::reduce
