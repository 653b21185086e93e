#include <algorithm>

#include "measure/sources/frame_layout.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr std::size_t kMostTears = 256;

/// Looks for the places at which frames leave their grid, from the front to a place near the end that is known to hold
/// a frame.
class CTearSearch {
  public:
    CTearSearch(const IBytes& bytes, const CFrameProbe& probe, u64 step, std::span<const u8> first, u64 end)
        : bytes_(bytes),
          probe_(probe),
          step_(step),
          size_(first.size()),
          smallest_(probe.SmallestSize(first)),
          end_(end) {}

    bool PassesAt(u64 offset) const {
        const std::vector<u8> frame = bytes_.Get(offset, size_);
        return frame.size() == size_ && probe_.Passes(frame);
    }
    /// The last place within three frames from the end at which a frame like the first begins.
    std::optional<u64> LastFrame(u64 start) const {
        const u64 from = end_ - std::min(end_ - start, 3 * step_);
        const std::vector<u8> tail = bytes_.Get(from, end_ - from);
        for (u64 at = tail.size() < size_ ? 0 : tail.size() - size_ + 1; at-- > 0;) {
            if (probe_.Begins(std::span(tail).subspan(at, size_), smallest_)) return from + at;
        }
        return {};
    }
    /// The frames of the grid from `start` on that stand in their places, before one that is known to leave it: the
    /// last of them is found by halving, where a single damaged frame does not count.
    u64 FramesInPlace(u64 start, u64 last) const {
        const auto alive = [&](u64 k) { return PassesAt(start + k * step_) || PassesAt(start + (k + 1) * step_); };
        u64 good = 0;
        u64 bad = (last - start) / step_ + 1;
        if (!alive(0)) return 0;
        while (bad - good > 1) {
            const u64 middle = good + (bad - good) / 2;
            (alive(middle) ? good : bad) = middle;
        }
        return PassesAt(start + (good + 1) * step_) ? good + 2 : good + 1;
    }
    /// The next frame behind a torn place; the last one when none is near.
    u64 FrameBehind(u64 torn, u64 last) const {
        const u64 most = std::min(last - torn + 1, 2 * step_ + CFrameProbe::kMostTail);
        const std::vector<u8> window = bytes_.Get(torn, most + size_);
        return torn + NextFrame(probe_, window, 0, most, size_, smallest_).value_or(last - torn);
    }

  private:
    const IBytes& bytes_;
    const CFrameProbe& probe_;
    u64 step_, size_, smallest_, end_;
};

}  // namespace

std::optional<u64> NextFrame(const CFrameProbe& probe, std::span<const u8> bytes, u64 from, u64 to, u64 size,
                             u64 smallest) {
    for (u64 at = from; at < to && at + size <= bytes.size(); ++at) {
        if (probe.Begins(bytes.subspan(at, size), smallest)) return at;
    }
    return {};
}

CEqualFrames::CEqualFrames(const IBytes& bytes, u64 start, u64 step, u64 size)
    : bytes_(bytes), step_(step), size_(size), end_(std::max(start, bytes.Size())), stretches_{{0, start}} {}

std::optional<SExtent> CEqualFrames::Find(u64 frame) const {
    if (frame >= Count()) return {};
    const auto behind = std::upper_bound(stretches_.begin(), stretches_.end(), frame,
                                         [](u64 number, const SStretch& stretch) { return number < stretch.first; });
    const SStretch& stretch = behind[-1];
    return SExtent{stretch.offset + (frame - stretch.first) * step_, size_};
}

std::vector<u64> CEqualFrames::FirstsBehindTears() const {
    std::vector<u64> firsts;
    for (std::size_t i = 1; i < stretches_.size(); ++i) firsts.push_back(stretches_[i].first);
    return firsts;
}

void CEqualFrames::ReportCut(const Report& report) const {
    if (!CutBytes()) return;
    report({.id = EFinding::FrameCut,
            .weight = EWeight::Damage,
            .frame = Count(),
            .offset = end_ - CutBytes(),
            .what = "the last frame is cut",
            .expected = Say(step_, " bytes"),
            .found = Say(CutBytes())});
}

void CEqualFrames::FindTears(const CFrameProbe& probe, const Report& report) {
    u64 start = stretches_.back().offset;
    const std::vector<u8> first = bytes_.Get(start, size_);
    if (!Count() || !probe.Passes(first) || !probe.TellsFrames(size_)) return;  // nothing to go by
    const CTearSearch search(bytes_, probe, step_, first, end_);
    if (search.PassesAt(start + (Count() - 1) * step_)) return;
    const std::optional<u64> last = search.LastFrame(start);
    while (last && (*last - start) % step_ != 0 && stretches_.size() < kMostTears) {
        const u64 whole = search.FramesInPlace(start, *last);
        const u64 torn = start + whole * step_;
        if (torn > *last) break;
        start = search.FrameBehind(torn, *last);
        const u64 number = stretches_.back().first + whole;
        stretches_.push_back({number, start});
        report({.id = EFinding::BytesPassedOver,
                .weight = EWeight::Damage,
                .frame = number,
                .offset = torn,
                .what = "bytes were lost or inserted: no frame begins where the next one should",
                .expected = Say("frame ", number, " at ", torn),
                .found = Say("the next frame at ", start, "; ", start - torn, " bytes passed over")});
    }
}

}  // namespace ovix::measure
