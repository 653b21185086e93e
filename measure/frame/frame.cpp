#include <algorithm>
#include <bit>

#include "measure/frame/frame_work.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// Adds the pixels of a row of status bytes to those that bear each flag. Most stretches of a row hold one byte only.
void CountFlags(std::span<const u8> row, SRegionStats& stats) {
    constexpr std::size_t kStretch = 64;
    for (std::size_t at = 0; at < row.size(); at += kStretch) {
        const std::span<const u8> stretch = row.subspan(at, std::min(kStretch, row.size() - at));
        const auto add = [&](u8 status, u32 pixels) {
            if (!status) stats.good += pixels;
            for (u32 left = status; left; left &= left - 1)
                stats.flagged[static_cast<u32>(std::countr_zero(left))] += pixels;
        };
        u8 differs = 0;
        for (const u8 status : stretch) differs |= static_cast<u8>(status ^ stretch[0]);
        if (!differs) {
            add(stretch[0], static_cast<u32>(stretch.size()));
        } else {
            for (const u8 status : stretch) add(status, 1);
        }
    }
}

}  // namespace

CFrame::CFrame() : work(std::make_unique<SWork>()) {}
CFrame::CFrame(CFrame&&) noexcept = default;
CFrame& CFrame::operator=(CFrame&&) noexcept = default;
CFrame::~CFrame() = default;

SRegionStats CFrame::Statistics(const SRegion& region) const {
    const bool whole = !region.width;
    const u32 columns = whole ? width : region.width, rows = whole ? height : region.height;
    if (!rows || !columns || u32{region.x} + columns > width || u32{region.y} + rows > height)
        throw CError({.id = EError::WrongArgument,
                      .problem = "region " + region.name,
                      .expected = Say("pixels of a frame of ", width, " x ", height),
                      .found = Say(columns, " x ", rows, " at ", region.x, ",", region.y)});
    SRegionStats stats;
    const reduce::SArea area{.top = region.y,
                             .left = region.x,
                             .bottom = static_cast<u16>(region.y + rows - 1),
                             .right = static_cast<u16>(region.x + columns - 1)};
    reduce::GetStats(stats, {const_cast<float*>(values.data()), Flt32}, status.data(), width, height, area);
    // The variance is made in one pass: equal values may give one a hair below 0, whose root is no number.
    if (stats.variance < 0) stats.variance = stats.standardDeviation = 0;
    stats.pixels = rows * columns;
    for (u32 y = region.y; y < region.y + rows; ++y)
        CountFlags(std::span(status).subspan(std::size_t{y} * width + region.x, columns), stats);
    return stats;
}

reduce::CReduceObjectArray& CFrame::Objects() const { return work->objects; }

std::vector<SParameter> CFrame::Parameters() const {
    const auto scene = work->objects.GetObjectParameters(false);
    if (!scene || !work->prepared || !work->prepared->UsesScene()) return {};
    return SceneParameters(*scene, work->origins, work->prepared->Scene().ptr(), IsUserUnit(unit));
}

}  // namespace ovix::measure
