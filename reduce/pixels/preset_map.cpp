#include "reduce/pixels/preset_map.h"

namespace ovix::reduce {

bool HoldsOnly(const u8* presets, std::size_t count, const bool (&usable)[kMapPresets]) {
    const auto bytesAre = [&](std::size_t from, std::size_t to) {
        return std::all_of(presets + from, presets + to, [&](u8 p) { return p < kMapPresets && usable[p]; });
    };
    // Maps hold long stretches of one preset: eight bytes that equal the eight before need no second look.
    std::size_t at = 0;
    for (u64 word = 0, known = 0; at + sizeof word <= count; at += sizeof word) {
        std::memcpy(&word, presets + at, sizeof word);
        if (at && word == known) continue;
        if (!bytesAre(at, at + sizeof word)) return false;
        known = word;
    }
    return bytesAre(at, count);
}

}  // namespace ovix::reduce
