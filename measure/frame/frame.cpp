#include "measure/frame/frame_work.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

/// Adds the pixels of a row of status bytes to those that bear each flag.
void CountFlags(std::span<const u8> row, SRegionStats& stats) {
    u8 all = 0;
    for (const u8 status : row) all |= status;
    if (!all) {
        stats.good += static_cast<u32>(row.size());
        return;
    }
    for (std::size_t bit = 0; bit < stats.flagged.size(); ++bit) {
        u32 count = 0;
        for (const u8 status : row) count += status >> bit & 1u;
        stats.flagged[bit] += count;
    }
    for (const u8 status : row) stats.good += status == 0;
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
