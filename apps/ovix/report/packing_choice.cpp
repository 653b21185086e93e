#include "apps/ovix/report/packing_choice.h"

#include <algorithm>
#include <cmath>

namespace ovix::app {

void CPackingChoice::Sample(std::span<const float> values, std::span<const u8> status) {
    sample_.push_back({{values.begin(), values.end()}, {status.begin(), status.end()}});
}

std::vector<SPacking> CPackingChoice::Candidates(EUnit unit, u64 frames, u64 otherBytes) const {
    std::vector<SPacking> packings = Open(unit);
    if (!wish_.mostBytes || sample_.empty()) return packings;
    std::erase_if(packings, [&](const SPacking& packing) {
        const double bytes = BytesOfFrame(packing) * static_cast<double>(frames) + static_cast<double>(otherBytes);
        return bytes > static_cast<double>(*wish_.mostBytes);
    });
    return packings;
}

u64 CPackingChoice::LeastBytesOfFrame(EUnit unit) const { return static_cast<u64>(BytesOfFrame(Open(unit).back())); }

SPacking CPackingChoice::Finest(EUnit unit) const {
    constexpr double kTemperatureStep = 0.05;  // K
    double step = 1;
    if (IsTemperature(unit)) {
        step = kTemperatureStep;
    } else if (unit != Counts) {
        CCommonRange range;
        for (const SFrame& frame : sample_) range.Add(SuitingRange(frame.values, frame.status, width_));
        step = SuitingStep(range.Range().low, range.Range().high);
    }
    return {wish_.bin.value_or(1), wish_.step.value_or(step)};
}

std::vector<SPacking> CPackingChoice::Open(EUnit unit) const {
    return CoarserPackings(Finest(unit), wish_.step.has_value(), wish_.bin.has_value(), width_, height_);
}

double CPackingChoice::BytesOfFrame(const SPacking& packing) const {
    constexpr double kBesides = 160;  // the element around a frame and what the head says of it
    double bytes = 0;
    for (const SFrame& frame : sample_) {
        const SPagePixels pixels = BinPixels(frame.values, frame.status, width_, height_, packing.bin);
        bytes += static_cast<double>(PackFrame(pixels, packing.step).text.size());
    }
    return kBesides + bytes / static_cast<double>(std::max<std::size_t>(1, sample_.size()));
}

std::vector<SPacking> CoarserPackings(SPacking finest, bool stepIsFixed, bool binIsFixed, u16 width, u16 height) {
    constexpr u32 kLeastSide = 16;
    std::vector<SPacking> packings;
    for (u32 bin = finest.bin; bin == finest.bin || std::min(width, height) / bin >= kLeastSide; bin *= 2) {
        for (double times : {1, 2, 4}) {
            packings.push_back({bin, finest.step * times});
            if (stepIsFixed) break;
        }
        if (binIsFixed) break;
    }
    return packings;
}

double SuitingStep(float lowest, float highest) {
    const double span = double{highest} - lowest;
    const double most = (span > 0 ? span : std::max(1.0, std::abs(double{lowest}))) / 1e4;
    const double decade = std::pow(10, std::floor(std::log10(most)));
    return most >= 5 * decade ? 5 * decade : most >= 2 * decade ? 2 * decade : decade;
}

}  // namespace ovix::app
