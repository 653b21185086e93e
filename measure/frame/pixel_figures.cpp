#include "measure/frame/pixel_figures.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "measure/text.h"

namespace ovix::measure {

namespace {

void Require(const CPixelSet& pixels, const CFrame& frame) {
    if (pixels.FrameWidth() == frame.width && pixels.FrameHeight() == frame.height) return;
    throw CError({.id = EError::WrongArgument,
                  .problem = "region " + pixels.Shape().name,
                  .expected = Say("one for frames of ", frame.width, " x ", frame.height),
                  .found = Say("one for ", pixels.FrameWidth(), " x ", pixels.FrameHeight())});
}

template <class T>
std::span<const T> RowOf(std::span<const T> frame, const reduce::SScanLine& line, u16 width) {
    return frame.subspan(std::size_t{line.row} * width + line.left, std::size_t{line.right} - line.left + 1);
}

/// The status as it is, or for good pixels alone, with every other one made such that it does not count.
std::span<const u8> StatusFor(const std::vector<u8>& status, EPixels which, std::vector<u8>& changed) {
    if (which == EPixels::Counted) return status;
    changed.resize(status.size());
    std::ranges::transform(status, changed.begin(), [](u8 flags) { return flags ? reduce::kNotCounted : u8{0}; });
    return changed;
}

/// Nearly all stretches of a row hold one byte all through, as the compiler's vectors see at once, and most words of
/// the others, too.
template <std::size_t kStretch = 128>
void AddToHistogram(std::span<const u8> row, std::array<u32, 256>& ofByte) {
    constexpr std::size_t kWord = 8;
    for (std::size_t at = 0; at < row.size(); at += kStretch) {
        const std::span<const u8> stretch = row.subspan(at, std::min(kStretch, row.size() - at));
        u8 differs = 0;
        for (const u8 status : stretch) differs |= static_cast<u8>(status ^ stretch[0]);
        if (!differs) {
            ofByte[stretch[0]] += static_cast<u32>(stretch.size());
        } else if constexpr (kStretch > kWord) {
            AddToHistogram<kWord>(stretch, ofByte);
        } else {
            for (const u8 status : stretch) ++ofByte[status];
        }
    }
}

void CountFlags(const CFrame& frame, const CPixelSet& pixels, SPixelFigures& figures) {
    std::array<u32, 256> ofByte = {};
    for (const reduce::SScanLine& line : pixels.Lines())
        AddToHistogram(RowOf<u8>(frame.status, line, frame.width), ofByte);
    figures.pixels = pixels.Count();
    figures.good = ofByte[0];
    for (u32 status = 1; status < ofByte.size(); ++status) {
        for (u32 left = status; left; left &= left - 1)
            figures.flagged[static_cast<u32>(std::countr_zero(left))] += ofByte[status];
        figures.byHighestFlag[static_cast<u32>(std::bit_width(status)) - 1] += ofByte[status];
    }
}

}  // namespace

SPixelFigures FiguresOf(const CFrame& frame, const CPixelSet& pixels, EPixels which) {
    Require(pixels, frame);
    SPixelFigures figures;
    std::vector<u8> changed;
    const u8* flags = StatusFor(frame.status, which, changed).data();
    const STypedData data{const_cast<float*>(frame.values.data()), Flt32};
    const SRegion& box = pixels.Bounds();
    if (pixels.Shape().kind == EShape::Rectangle)
        reduce::GetStats(figures, data, flags, frame.width, frame.height,
                         reduce::SArea{.top = box.y,
                                       .left = box.x,
                                       .bottom = static_cast<u16>(box.y + box.height - 1),
                                       .right = static_cast<u16>(box.x + box.width - 1)});
    else
        reduce::GetStats(figures, data, flags, frame.width, frame.height, pixels.Lines());
    // The variance is made in one pass: equal values may give one a hair below 0, whose root is no number.
    if (figures.variance < 0) figures.variance = figures.standardDeviation = 0;
    CountFlags(frame, pixels, figures);
    return figures;
}

std::vector<float> ValuesOf(const CFrame& frame, const CPixelSet& pixels, EPixels which) {
    Require(pixels, frame);
    const u8 excluding = which == EPixels::Good ? 0xFF : reduce::kNotCounted;
    std::vector<float> found;
    found.reserve(pixels.Count());
    for (const reduce::SScanLine& line : pixels.Lines()) {
        const std::span row = RowOf<float>(frame.values, line, frame.width);
        const std::span flags = RowOf<u8>(frame.status, line, frame.width);
        for (std::size_t i = 0; i < row.size(); ++i) {
            if (!(flags[i] & excluding) && !std::isnan(row[i])) found.push_back(row[i]);
        }
    }
    return found;
}

}  // namespace ovix::measure
