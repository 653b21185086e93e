#pragma once

#include "reduce/api.h"
#include "reduce/pixels/selection.h"

namespace ovix::reduce {

/// The presets that a source can have, and that the number of a pixel's preset may be below.
inline constexpr u32 kMapPresets = 8;

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
