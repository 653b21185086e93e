#include "apps/ovix/recording/frame_counts.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/ovix/fault.h"

namespace ovix::app {

void CFrameCounts::Add(reduce::IFilter& filter, const SFrameFormat& format, std::span<u8> frame) {
    u32 all[256] = {};  // a preset is a byte, whatever it says
    if (!filter.CountPresets(frame.data(), static_cast<u32>(frame.size()), format.pixelType, format.width,
                             format.height, 0, all))
        throw CFault({.problem = "the decoder does not find the frame's preset"});
    const auto preset = static_cast<u32>(std::find(std::begin(all), std::end(all), 1u) - std::begin(all));
    if (preset >= kPresets) throw CFault({.expected = "a preset from 0 to 7", .found = fmt::format("{}", preset)});
    ++counts_[fixedPreset_ ? 0 : preset];
}

}  // namespace ovix::app
