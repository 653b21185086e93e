#include "apps/ovix/input/dump_layout.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "apps/ovix/fault.h"
#include "apps/ovix/input/own_length_layout.h"
#include "reduce/reduce.h"

namespace ovix::app {

namespace {

constexpr u64 kMostTail = 64 << 10;   // bytes that may stand behind what a decoder reads of a frame
constexpr u64 kPaddingOfLast = 4096;  // of a frame that has no other behind it

class CEqualFrames final : public IDumpLayout {
  public:
    CEqualFrames(u64 fileSize, u64 frameSize) : fileSize_(fileSize), frameSize_(frameSize) {}
    u64 Count() const override { return (fileSize_ - 1) / frameSize_ + 1; }
    SExtent Of(u64 frame) override {
        const u64 offset = frame * frameSize_;
        return {offset, std::min(frameSize_, fileSize_ - offset)};
    }
    u64 FrameSize() const override { return frameSize_; }

  private:
    u64 fileSize_;
    u64 frameSize_;
};

/// `CheckFrame` on the frames of one file.
class CFrameProbe {
  public:
    CFrameProbe(const CInputFile& file, const SFrameFormat& format)
        : file_(file),
          format_(format),
          filterName_(format.filter.c_str()),
          filter_(reduce::filterFactory()->Create(filterName_)) {}

    /// Three bytes a pixel are the most that a format has.
    u64 MostBytes() const { return u64{format_.PixelCount()} * 3 + kMostTail; }

    std::vector<u8> Read(u64 offset, u64 most) const {
        std::vector<u8> bytes(std::min(most, file_.Size() - std::min(offset, file_.Size())));
        bytes.resize(file_.ReadAt(offset, bytes));
        return bytes;
    }
    bool Passes(u8* frame, u64 size, reduce::SFrameFault* fault = nullptr) const {
        return reduce::CheckFrame(filterName_, frame, format_.pixelType, format_.width, format_.height,
                                  static_cast<u32>(size), fault) &&
               (!asksForSignature_ || HasSignature(frame, size));
    }
    bool PassesAt(u64 offset, u64 size) const {
        std::vector<u8> frame = Read(offset, size);
        return frame.size() == size && Passes(frame.data(), size);
    }
    /// Whether a frame that passed tells its number and time; some decoders want to see a signature before they do.
    bool HasSignature(u8* frame, u64 size) const {
        u8 preset = 0;
        u64 counter = 0;
        CDateTime time;
        return filter_->ParseBasicInfo(frame, format_.pixelType, format_.width, format_.height, static_cast<u32>(size),
                                       preset, counter, time);
    }
    /// From now on only frames with a signature pass.
    void AskForSignature() { asksForSignature_ = true; }
    /// The smallest size with which the frame passes.
    u64 SmallestSize(std::vector<u8>& frame) const {
        reduce::SFrameFault fault;
        if (!Passes(frame.data(), frame.size(), &fault))
            throw CFault({.file = file_.Name(),
                          .frame = 0,
                          .offset = fault.offset,
                          .problem = fmt::format("no frame of \"{}\" with {} x {} pixels", format_.pixelTypeName,
                                                 format_.width, format_.height),
                          .expected = fault.expected.GetUTF8(),
                          .found = fault.found.GetUTF8()});
        u64 fails = 0;
        u64 passes = frame.size();
        while (passes - fails > 1) {
            const u64 middle = fails + (passes - fails) / 2;
            (Passes(frame.data(), middle) ? passes : fails) = middle;
        }
        return passes;
    }

  private:
    const CInputFile& file_;
    const SFrameFormat& format_;
    CString filterName_;
    TSharedPtr<reduce::IFilter> filter_;
    bool asksForSignature_ = false;
};

/// What stands behind a frame is less than another frame, so that one that is damaged is not taken for it.
u64 MostTail(u64 smallest) { return std::min(kMostTail, smallest - 1); }

/// The size that divides the file into frames, 0 when none does.
u64 DividingSize(const CFrameProbe& probe, u64 fileSize, u64 smallest) {
    for (u64 count = fileSize / smallest; count > 1; --count) {
        const u64 size = fileSize / count;
        if (size > smallest + MostTail(smallest)) break;
        // One of the two may be damaged.
        if (fileSize % count == 0 && (probe.PassesAt(size, smallest) || probe.PassesAt(fileSize - size, smallest)))
            return size;
    }
    return 0;
}

/// The distance to the next place at which a frame passes, 0 when there is none.
u64 DistanceToNext(const CFrameProbe& probe, u64 smallest) {
    std::vector<u8> behind = probe.Read(smallest, smallest + MostTail(smallest));
    for (u64 tail = 0; tail + smallest <= behind.size(); ++tail) {
        if (probe.Passes(behind.data() + tail, smallest)) return smallest + tail;
    }
    return 0;
}

u64 FindFrameSize(const CInputFile& file, const SFrameFormat& format) {
    CFrameProbe probe(file, format);
    std::vector<u8> first = probe.Read(0, probe.MostBytes());
    const u64 smallest = probe.SmallestSize(first);
    std::vector<u8> zeros(smallest);
    if (probe.Passes(zeros.data(), smallest)) {
        if (probe.HasSignature(zeros.data(), smallest) || !probe.HasSignature(first.data(), smallest)) return smallest;
        probe.AskForSignature();
    }
    if (const u64 size = DividingSize(probe, file.Size(), smallest)) return size;
    if (const u64 size = DistanceToNext(probe, smallest)) return size;
    return file.Size() - smallest <= kPaddingOfLast ? file.Size() : smallest;
}

}  // namespace

std::unique_ptr<IDumpLayout> FindLayout(const CInputFile& file, const SFrameFormat& format, u32 frameSize) {
    if (!file.Size()) throw CFault({.file = file.Name(), .expected = "frames", .found = "an empty file"});
    if (frameSize) return std::make_unique<CEqualFrames>(file.Size(), frameSize);
    if (auto layout = COwnLengthLayout::Make(file, format)) return layout;
    return std::make_unique<CEqualFrames>(file.Size(), FindFrameSize(file, format));
}

}  // namespace ovix::app
