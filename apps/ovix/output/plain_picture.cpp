#include "apps/ovix/output/plain_picture.h"

#include <algorithm>
#include <cmath>

#include "apps/ovix/status_flags.h"

namespace ovix::app {
namespace {

constexpr double kGreatest = 65535;

/// The least of 1, 2 or 5 times a power of ten that is not below.
double RoundUp(double least) {
    const double decade = std::pow(10, std::floor(std::log10(least)));
    for (double times : {1, 2, 5}) {
        if (times * decade >= least) return times * decade;
    }
    return 10 * decade;
}

}  // namespace

CPlainScale::CPlainScale(SRange ends, const SUnitText& unit)
    : ownNumbers_(unit.symbol == "counts" && ends.low >= 0 && ends.high <= kGreatest) {
    if (ownNumbers_) return;
    constexpr double kUsed = kGreatest - 2;  // 0 is no data, and the lower end need not be a multiple of the scale
    const double span = std::max(double{ends.high} - ends.low, std::abs(double{ends.high}) * 1e-6);
    scale_ = RoundUp(span > 0 ? span / kUsed : 1);
    offset_ = (std::floor(ends.low / scale_) - 1) * scale_;
}

Json CPlainScale::Describe() const {
    return {{"scale", scale_}, {"offset", offset_}, {"noData", ownNumbers_ ? Json() : Json(0)}};
}

u16 CPlainScale::NumberOf(float value, u64& beyond) const {
    const double number = std::round((value - offset_) / scale_), least = ownNumbers_ ? 0 : 1;
    if (!(number >= least && number <= kGreatest)) ++beyond;
    return static_cast<u16>(std::clamp(number, least, kGreatest));
}

SPngRows CPlainScale::Rows(const SPicture& picture, u16 width, u64& beyond) const {
    constexpr u8 kSub = 1;  // bytes are differences to those of the pixel to the left
    beyond = 0;
    const std::size_t height = picture.values.size() / width;
    SPngRows rows{width, static_cast<u32>(height), true, {}};
    rows.bytes.reserve(height * (1 + 2 * std::size_t{width}));
    for (std::size_t y = 0; y < height; ++y) {
        rows.bytes.push_back(kSub);
        u16 left = 0;
        for (std::size_t i = y * width; i < (y + 1) * width; ++i) {
            const bool none =
                std::isnan(picture.values[i]) || (!picture.status.empty() && picture.status[i] & kStatusNoData);
            const u16 number = none ? u16{0} : NumberOf(picture.values[i], beyond);
            rows.bytes.push_back(static_cast<u8>((number >> 8) - (left >> 8)));
            rows.bytes.push_back(static_cast<u8>(number - left));
            left = number;
        }
    }
    return rows;
}

CCanvas DrawPixels(std::span<const u32> colours, u16 width, u16 height) {
    CCanvas canvas(width, height, ColourOf(0));
    for (std::size_t i = 0; i < colours.size(); ++i)
        canvas.Fill(static_cast<int>(i % width), static_cast<int>(i / width), 1, 1, ColourOf(colours[i]));
    return canvas;
}

}  // namespace ovix::app
