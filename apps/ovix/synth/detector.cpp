#include "apps/ovix/synth/detector.h"

#include <algorithm>
#include <cmath>

namespace ovix::app {
namespace {

constexpr double kNoiseCounts = 2.0;  ///< standard deviation
constexpr double kGainSpread = 0.012;
constexpr double kOffsetSpread = 40;
constexpr double kColumnOffsetSpread = 25;
constexpr u32 kPixelsPerBadOne = 5000;
constexpr u32 kFarthestNeighbour = 3;

/// What the random numbers are for: each purpose has a sequence of its own.
enum EPurpose : u64 { ForNoise, ForGain, ForOffset, ForColumn, ForBadPixels };

/// 64 random bits for each place of each sequence (the mixer of SplitMix64).
u64 Random(u32 seed, EPurpose purpose, u64 frame, u64 place) {
    u64 z = (u64{seed} << 32 | purpose << 28) + frame * 0xD1B54A32D192ED03 + place * 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
}

/// Mean 0, deviation 1, and never beyond 3.47: the sum of four even numbers, of 16 of the bits each.
double Bell(u64 bits) {
    constexpr double kDeviation = 37837.2;  // 65536 * sqrt(4 / 12)
    const u64 sum = (bits & 0xFFFF) + (bits >> 16 & 0xFFFF) + (bits >> 32 & 0xFFFF) + (bits >> 48);
    return (static_cast<double>(sum) - 2 * 65535.0) / kDeviation;
}

}  // namespace

CDetector::CDetector(const SSynthOptions& options, u16 full)
    : width_(options.width),
      height_(options.height),
      seed_(options.seed),
      full_(full),
      noise_(options.noise),
      fixedPattern_(options.fixedPattern) {
    const std::size_t pixels = std::size_t{width_} * height_;
    gain_.assign(pixels, 1.0f);
    offset_.assign(pixels, 0);
    bad_.assign(pixels, 0);
    if (options.fixedPattern) MakePattern();
    if (options.badPixels) MakeBadPixels();
}

void CDetector::MakePattern() {
    for (u32 i = 0; i < gain_.size(); ++i) {
        const double column = kColumnOffsetSpread * Bell(Random(seed_, ForColumn, 0, i % width_));
        gain_[i] = static_cast<float>(1.0 + kGainSpread * Bell(Random(seed_, ForGain, 0, i)));
        offset_[i] = static_cast<i16>(std::lround(column + kOffsetSpread * Bell(Random(seed_, ForOffset, 0, i))));
    }
}

/// Single ones and pairs, as they occur. One without a good neighbour could not be replaced and stays good.
void CDetector::MakeBadPixels() {
    const u32 pixels = static_cast<u32>(bad_.size());
    const u32 wanted = pixels / kPixelsPerBadOne + 3;
    for (u32 n = 0; n < wanted; ++n) {
        const u32 place = static_cast<u32>(Random(seed_, ForBadPixels, 0, n) % pixels);
        bad_[place] = 1;
        if (n % 8 == 0 && (place + 1) % width_ != 0) bad_[place + 1] = 1;
    }
    std::vector<u8> checked = bad_;
    for (u32 i = 0; i < pixels; ++i) {
        if (bad_[i] && Neighbour(i) == i) checked[i] = 0;
    }
    bad_ = checked;
    for (u32 i = 0; i < pixels; ++i) {
        if (bad_[i]) badPixels_.push_back(i);
    }
}

u32 CDetector::Neighbour(u32 pixel) const {
    const u32 x = pixel % width_;
    const u32 y = pixel / width_;
    for (u32 far = 1; far <= kFarthestNeighbour; ++far) {
        if (x >= far && !bad_[pixel - far]) return pixel - far;
        if (x + far < width_ && !bad_[pixel + far]) return pixel + far;
        if (y >= far && !bad_[pixel - far * width_]) return pixel - far * width_;
        if (y + far < height_ && !bad_[pixel + far * width_]) return pixel + far * width_;
    }
    return pixel;
}

std::vector<u16> CDetector::Read(std::span<const float> even, u64 frame) const {
    std::vector<u16> raw(even.size());
    for (std::size_t i = 0; i < even.size(); ++i) {
        const double noise = noise_ ? kNoiseCounts * Bell(Random(seed_, ForNoise, frame + 1, i)) : 0.0;
        const double count = (double{even[i]} + noise - offset_[i]) / gain_[i];
        raw[i] = static_cast<u16>(std::clamp(count + 0.5, 0.0, static_cast<double>(full_)));
    }
    for (const u32 i : badPixels_) raw[i] = i % 2 ? full_ : u16{0};
    return raw;
}

TSharedPtr<reduce::CCorrectionReduceObject> CDetector::Correction() const {
    const bool badPixels = std::find(bad_.begin(), bad_.end(), 1) != bad_.end();
    if (!fixedPattern_ && !badPixels) return nullptr;
    auto correction = MakeShared<reduce::CCorrectionReduceObject>();
    const int tables = (fixedPattern_ ? reduce::CorrectionGain | reduce::CorrectionOffset : 0) |
                       (badPixels ? reduce::CorrectionBadPixels : 0);
    correction->Create(width_, height_, 0, static_cast<u8>(tables));
    if (fixedPattern_) {
        std::copy(gain_.begin(), gain_.end(), correction->gain.get());
        std::copy(offset_.begin(), offset_.end(), correction->offset.get());
    }
    for (u32 i = 0; badPixels && i < bad_.size(); ++i) {
        correction->mask[i] = bad_[i];
        correction->map[i] = bad_[i] ? Neighbour(i) : i;
    }
    correction->valid = true;
    return correction;
}

CResponse::CResponse(Formula formula) : formula_(std::move(formula)) {
    for (u32 step = 0; step <= kSteps; ++step)
        table_.push_back(static_cast<float>(formula_(double{kFirst} + step / double{kPerKelvin})));
}

std::vector<float> CResponse::At(std::span<const float> kelvin) const {
    std::vector<float> counts(kelvin.size());
    for (std::size_t i = 0; i < kelvin.size(); ++i) counts[i] = At(kelvin[i]);
    return counts;
}

}  // namespace ovix::app
