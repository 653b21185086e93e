#include <algorithm>

#include "measure/sources/frame_layout.h"
#include "measure/text.h"

namespace ovix::measure {

namespace {

constexpr u64 kPaddingOfLast = 4096;  // of a frame that has no other behind it

/// What stands behind a frame is less than another frame, so that one that is damaged is not taken for it.
u64 MostTail(u64 smallest) { return std::min(CFrameProbe::kMostTail, smallest - 1); }

/// The size that divides the file into frames, 0 when none does.
u64 DividingSize(const IBytes& bytes, const CFrameProbe& probe, u64 smallest) {
    const auto passesAt = [&](u64 offset) {
        const std::vector<u8> frame = bytes.Get(offset, smallest);
        return frame.size() == smallest && probe.Passes(frame);
    };
    for (u64 count = bytes.Size() / smallest; count > 1; --count) {
        const u64 size = bytes.Size() / count;
        if (size > smallest + MostTail(smallest)) break;
        // One of the two may be damaged.
        if (bytes.Size() % count == 0 && (passesAt(size) || passesAt(bytes.Size() - size))) return size;
    }
    return 0;
}

u64 FindFrameSize(const IBytes& bytes, CFrameProbe& probe, u64 smallest, bool tells) {
    if (!tells) return smallest;
    if (const u64 size = DividingSize(bytes, probe, smallest)) return size;
    const u64 tail = MostTail(smallest);
    const std::vector<u8> behind = bytes.Get(smallest, smallest + tail);
    if (const auto distance = NextFrame(probe, behind, 0, tail + 1, smallest, smallest)) return smallest + *distance;
    return bytes.Size() - smallest <= kPaddingOfLast ? bytes.Size() : smallest;
}

CError NoFrames(const IBytes& bytes, u64 size) {
    return CError({.id = EError::NoFrames,
                   .file = bytes.Name(),
                   .expected = size ? Say("frames of ", size, " bytes") : "frames",
                   .found = bytes.Size() ? Say(bytes.Size(), " bytes") : "an empty file"});
}

}  // namespace

SFirstFrame LookAtFirst(CFrameProbe& probe, std::span<const u8> bytes) {
    const u64 smallest = probe.SmallestSize(bytes);
    if (probe.TellsFrames(smallest)) return {smallest, true};
    const std::vector<u8> zeros(smallest);
    const bool marked = !probe.HasSignature(zeros) && probe.HasSignature(bytes.first(smallest));
    if (marked) probe.AskForSignature();
    return {smallest, marked};
}

std::unique_ptr<IFrameLayout> FindLayout(const IBytes& bytes, const SFrameFormat& format, u32 frameSize,
                                         const Report& report) {
    if (!bytes.Size()) throw NoFrames(bytes, frameSize);
    CFrameProbe probe(format);
    if (!frameSize && FormOf(format).ownLength) {
        auto frames = std::make_unique<COwnLengthFrames>(bytes);
        if (!frames->Find(0)) throw NoFrames(bytes, 0);
        CheckEnds(bytes, *frames, probe, report);
        return frames;
    }
    u64 size = frameSize;
    if (!size && format.filter.empty()) size = PlainBytes(format);
    try {
        const std::vector<u8> first = bytes.Get(0, size ? size : probe.MostBytes());
        if (!size || probe.Passes(first)) {
            const auto [smallest, tells] = LookAtFirst(probe, first);
            if (!size) size = FindFrameSize(bytes, probe, smallest, tells);
            if (size > smallest)
                report({.id = EFinding::Padding,
                        .weight = EWeight::Note,
                        .offset = smallest,
                        .what = "bytes behind each frame that its decoder does not read",
                        .found = Say(size - smallest, " of ", size)});
        }
    } catch (const CError& error) {
        throw error.Of(bytes.Name(), 0);
    }
    auto frames = std::make_unique<CEqualFrames>(bytes, 0, size, size);
    if (!frames->Count()) throw NoFrames(bytes, size);
    frames->FindTears(probe, report);
    frames->ReportCut(report);
    CheckEnds(bytes, *frames, probe, report);
    return frames;
}

}  // namespace ovix::measure
