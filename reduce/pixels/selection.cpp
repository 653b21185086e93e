#include "reduce/pixels/selection.h"

#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]) {
    for (std::size_t at = 0; at < count;) {
        const u8 preset = presets[at];
        if (preset >= kMapPresets || !usable[preset]) return false;
        const bool stretch = count - at >= kStretchStep && StartsStretch(presets + at);
        at += stretch ? simd::LeadingBytes(presets + at, count - at, preset) : 1;
    }
    return true;
}

}  // namespace ovix::reduce
