#pragma once

#include "reduce/api.h"
#include "reduce/pixels/selection.h"

namespace ovix::reduce {

/// The presets that a source can have, and that the number of a pixel's preset may be below.
inline constexpr u32 kMapPresets = 8;

/// Pixels of a map that are looked at together for whether they have one preset: maps hold long stretches of one.
inline constexpr u32 kStretchStep = 8;
inline bool StartsStretch(const u8* presets) {
    u64 word = 0;
    static_assert(sizeof word == kStretchStep);
    std::memcpy(&word, presets, sizeof word);
    return word == presets[0] * 0x0101010101010101u;
}

/// Whether `count` bytes of a preset map name only presets that are `usable`.
OVIX_REDUCE_API bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]);

/// The same for the selected pixels of a frame's map, so that a kernel can trust it. No map means preset 0 for all.
template <class Selection>
bool HoldsOnly(const Selection& selection, const u8* presetMap, const bool (&usable)[kMapPresets]) {
    if (!presetMap) return usable[0];
    bool all = true;
    ForEachRun(selection, [&](const auto& run) {
        TScratch<u8> gathered;
        all = all && HoldsOnly(run.View(presetMap, gathered), run.count, usable);
    });
    return all;
}

}  // namespace ovix::reduce
