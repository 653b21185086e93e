#include "apps/ovix/report/packed_frame.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "apps/ovix/output/file_kinds.h"

namespace ovix::app {

namespace {

/// The mean of some pixels of one block.
struct SMean {
    double sum = 0;
    u32 count = 0;

    void Add(float value) {
        sum += value;
        ++count;
    }
    float Value() const { return static_cast<float>(sum / count); }
};

std::string Base64(std::span<const u8> bytes) {
    static constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t here = std::min<std::size_t>(3, bytes.size() - i);
        u32 word = 0;
        for (std::size_t k = 0; k < 3; ++k) word = word << 8 | (k < here ? bytes[i + k] : 0u);
        for (std::size_t k = 0; k < 4; ++k) text += k > here ? '=' : kDigits[word >> (18 - 6 * k) & 63];
    }
    return text;
}

i32 StepsOf(float value, double step) {
    const double steps = std::round(value / step);
    if (std::abs(steps) <= std::numeric_limits<i32>::max()) return static_cast<i32>(steps);
    throw CAppError(ExitBadData, fmt::format("expected values of at most 2^31 steps of {}, "
                                             "found {}: a larger --step is needed",
                                             step, value));
}

/// Small numbers of either sign as small numbers without one: 0, -1, 1, -2, 2 become 0, 1, 2, 3, 4.
u32 Zigzag(u32 difference) { return difference << 1 ^ (difference >> 31 ? ~u32{0} : 0); }

/// To the left neighbour, in the first column to the pixel above, at the very first to 0; they wrap.
std::vector<u32> Differences(std::span<const i32> codes, u32 width) {
    std::vector<u32> result(codes.size());
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const i32 before = i % width > 0 ? codes[i - 1] : i > 0 ? codes[i - width] : 0;
        result[i] = Zigzag(static_cast<u32>(codes[i]) - static_cast<u32>(before));
    }
    return result;
}

}  // namespace

SPagePixels BinPixels(std::span<const float> values, std::span<const u8> status, u16 width, u16 height, u32 bin) {
    SPagePixels page{(width + bin - 1) / bin, (height + bin - 1) / bin, {}, {}};
    for (u32 top = 0; top < height; top += bin) {
        for (u32 left = 0; left < width; left += bin) {
            SMean good;
            SMean any;
            u8 flags = 0;
            for (u32 y = top; y < std::min<u32>(top + bin, height); ++y) {
                for (u32 x = left; x < std::min<u32>(left + bin, width); ++x) {
                    const std::size_t i = std::size_t{y} * width + x;
                    flags |= status[i];
                    if (!std::isfinite(values[i])) continue;
                    any.Add(values[i]);
                    if (!status[i]) good.Add(values[i]);
                }
            }
            page.values.push_back(good.count ? good.Value() : any.count ? any.Value() : NAN);
            page.status.push_back(flags);
        }
    }
    return page;
}

void SPackFigures::Add(const SPackFigures& other) {
    largestRounding = std::max(largestRounding, other.largestRounding);
    gaps += other.gaps;
    range.Add(other.range.Widest());
}

SPackedFrame PackFrame(const SPagePixels& pixels, double step) {
    constexpr int kLevel = 8;  // from here on a tenth of the size costs many times the time
    const std::size_t size = pixels.values.size();
    SPackedFrame packed;
    SPackFigures& figures = packed.figures;
    std::vector<i32> codes(size);
    std::vector<u8> gaps(size);
    for (std::size_t i = 0; i < size; ++i) {
        const float value = pixels.values[i];
        if (!std::isfinite(value)) {
            codes[i] = i > 0 ? codes[i - 1] : 0;  // costs least
            gaps[i] = 1;
            ++figures.gaps;
            continue;
        }
        codes[i] = StepsOf(value, step);
        figures.largestRounding = std::max(figures.largestRounding, std::abs(value - codes[i] * step));
    }

    const std::vector<u32> differences = Differences(codes, pixels.width);
    const u32 largest = differences.empty() ? 0 : *std::max_element(differences.begin(), differences.end());
    const u8 planes = largest >> 24 ? 4 : largest >> 16 ? 3 : largest >> 8 ? 2 : 1;
    std::vector<u8> bytes{planes, static_cast<u8>(figures.gaps > 0)};
    for (u8 plane = planes; plane-- > 0;) {
        for (u32 difference : differences) bytes.push_back(static_cast<u8>(difference >> 8 * plane));
    }
    if (figures.gaps) bytes.insert(bytes.end(), gaps.begin(), gaps.end());
    bytes.insert(bytes.end(), pixels.status.begin(), pixels.status.end());
    packed.text = Base64(Deflated(bytes, kLevel));
    figures.range.Add(SuitingRange(pixels.values, pixels.status, pixels.width));
    return packed;
}

}  // namespace ovix::app
