#include "apps/ovix/input/own_length_layout.h"

#include <algorithm>

#include "core/core.h"

namespace ovix::app {

namespace {

constexpr GUID kStreamType = "{ADA2658E-40C0-4C31-9C44-7667B8169FF6}"_guid;  // "R7X IR (MJLS)"

// The stream's own layout: a length ahead of the image, and the container's fields that say where it ends.
constexpr u64 kLengthBytes = 4;
constexpr u64 kContainerBytes = 100;
constexpr u32 kContainerMark = 0x4D4B4D;
constexpr std::size_t kRecordOffsetAt = 76;
constexpr std::size_t kRecordSizeAt = 80;

constexpr std::size_t kMostKept = 1 << 16;
constexpr u64 kFarthestStart = u64{16} << 20;

}  // namespace

std::unique_ptr<IDumpLayout> COwnLengthLayout::Make(const CInputFile& file, const SFrameFormat& format) {
    if (format.pixelType != kStreamType) return nullptr;
    return std::make_unique<COwnLengthLayout>(file);
}

COwnLengthLayout::COwnLengthLayout(const CInputFile& file) : file_(file) {
    for (SExtent frame = FrameAt(0); frame.size; frame = FrameAt(frame.offset + frame.size))
        Keep(count_++, frame.offset);
    last_ = FrameAt(0);
}

void COwnLengthLayout::Keep(u64 frame, u64 offset) {
    if (frame % stride_ != 0) return;
    if (kept_.size() == kMostKept) {
        for (std::size_t i = 0; i < kMostKept / 2; ++i) kept_[i] = kept_[2 * i];
        kept_.resize(kMostKept / 2);
        stride_ *= 2;
    }
    kept_.push_back(offset);
}

SExtent COwnLengthLayout::Of(u64 frame) {
    if (frame < lastFrame_ || frame - lastFrame_ > stride_) {
        lastFrame_ = frame - frame % stride_;
        last_ = FrameAt(kept_[frame / stride_]);
    }
    for (; lastFrame_ < frame; ++lastFrame_) last_ = FrameAt(last_.offset + last_.size);
    return last_;
}

u64 COwnLengthLayout::LengthAt(u64 offset) const {
    u8 length[kLengthBytes];
    if (file_.ReadAt(offset, length) != sizeof length) return 0;
    const u64 container = kLengthBytes + LoadBig<u32>(length);
    u8 fields[kContainerBytes];
    if (offset + container + kContainerBytes > file_.Size()) return 0;
    if (file_.ReadAt(offset + container, fields) != sizeof fields || LoadLittle<u32>(fields) != kContainerMark)
        return 0;
    const u64 recordEnd = u64{LoadLittle<u32>(fields + kRecordOffsetAt)} + LoadLittle<u32>(fields + kRecordSizeAt);
    const u64 end = container + std::max(recordEnd, kContainerBytes);
    return offset + end <= file_.Size() ? end : 0;
}

SExtent COwnLengthLayout::FrameAt(u64 offset) const {
    if (const u64 size = LengthAt(offset)) return {offset, size};
    const u64 next = NextStart(offset);
    std::vector<u8> between(std::min(next - offset, kFarthestStart));
    file_.ReadAt(offset, between);
    const bool padding = std::all_of(between.begin(), between.end(), [](u8 byte) { return byte == 0; });
    if (!padding || offset == 0) return {offset, next - offset};
    return {next, next < file_.Size() ? LengthAt(next) : 0};
}

u64 COwnLengthLayout::NextStart(u64 offset) const {
    std::vector<u8> window(std::min(kFarthestStart, file_.Size() - std::min(offset, file_.Size())));
    window.resize(file_.ReadAt(offset, window));
    for (std::size_t i = 1; i + kLengthBytes + kContainerBytes <= window.size(); ++i) {
        const u64 container = i + kLengthBytes + LoadBig<u32>(window.data() + i);
        // What lies in the window need not be asked of the file; most places are turned down here.
        if (container + 4 <= window.size() && LoadLittle<u32>(window.data() + container) != kContainerMark) continue;
        if (LengthAt(offset + i)) return offset + i;
    }
    return file_.Size();
}

}  // namespace ovix::app
