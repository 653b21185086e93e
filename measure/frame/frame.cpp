#include "measure/frame/frame_work.h"
#include "measure/frame/pixel_figures.h"
#include "measure/frame/unit_choice.h"
#include "measure/text.h"

namespace ovix::measure {

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
    const SShape shape =
        SShape::Rectangle(region.name, region.x, region.y, static_cast<u16>(columns), static_cast<u16>(rows));
    const SPixelFigures figures = FiguresOf(*this, CPixelSet(shape, width, height));
    return static_cast<const SRegionStats&>(figures);
}

reduce::CReduceObjectArray& CFrame::Objects() const { return work->objects; }

std::vector<SParameter> CFrame::Parameters() const {
    const auto scene = work->objects.GetObjectParameters(false);
    if (!scene || !work->prepared || !work->prepared->UsesScene()) return {};
    return SceneParameters(*scene, work->origins, work->prepared->Scene().ptr(), IsUserUnit(unit));
}

}  // namespace ovix::measure
