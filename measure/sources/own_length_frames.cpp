#include <algorithm>

#include "measure/sources/frame_layout.h"

namespace ovix::measure {

namespace {

// The stream's own layout: a length ahead of the image, and the container's fields that say where it ends.
constexpr u64 kLengthBytes = 4;
constexpr u64 kContainerBytes = 100;
constexpr u32 kContainerMark = 0x4D4B4D;
constexpr std::size_t kRecordOffsetAt = 76;
constexpr std::size_t kRecordSizeAt = 80;

constexpr std::size_t kMostKept = 1 << 16;
constexpr u64 kFarthestStart = u64{16} << 20;

u64 ContainerAt(const u8* length) { return kLengthBytes + LoadBig<u32>(length); }

/// Where the frame ends that has this container; 0 when it is none.
u64 EndOf(u64 container, const u8* fields) {
    if (LoadLittle<u32>(fields) != kContainerMark) return 0;
    const u64 recordEnd = u64{LoadLittle<u32>(fields + kRecordOffsetAt)} + LoadLittle<u32>(fields + kRecordSizeAt);
    return container + std::max(recordEnd, kContainerBytes);
}

}  // namespace

u64 COwnLengthFrames::BytesToTell(std::span<const u8> bytes) {
    const u64 container = ContainerAt(bytes.data());
    if (container + kContainerBytes > bytes.size()) return container + kContainerBytes;
    return EndOf(container, bytes.data() + container);
}

u64 COwnLengthFrames::LengthAt(u64 offset) const {
    u8 length[kLengthBytes];
    if (bytes_.ReadAt(offset, length) != sizeof length) return 0;
    const u64 container = ContainerAt(length);
    u8 fields[kContainerBytes];
    if (offset + container + kContainerBytes > bytes_.Size()) return 0;
    if (bytes_.ReadAt(offset + container, fields) != sizeof fields) return 0;
    const u64 end = EndOf(container, fields);
    return offset + end <= bytes_.Size() ? end : 0;
}

/// The frame at or behind a place; of size 0 when only padding is left.
SExtent COwnLengthFrames::FrameAt(u64 offset) const {
    if (const u64 size = LengthAt(offset)) return {offset, size};
    const u64 next = NextStart(offset);
    const std::vector<u8> between = bytes_.Get(offset, std::min(next - offset, kFarthestStart));
    const bool padding = std::all_of(between.begin(), between.end(), [](u8 byte) { return byte == 0; });
    if (!padding || offset == 0) return {offset, next - offset};
    return {next, next < bytes_.Size() ? LengthAt(next) : 0};
}

/// The next place behind `offset` at which a frame makes sense; the end of the file when there is none near.
u64 COwnLengthFrames::NextStart(u64 offset) const {
    const std::vector<u8> window = bytes_.Get(offset, kFarthestStart);
    for (std::size_t i = 1; i + kLengthBytes + kContainerBytes <= window.size(); ++i) {
        const u64 container = i + ContainerAt(window.data() + i);
        // What lies in the window need not be asked of the file; most places are turned down here.
        if (container + 4 <= window.size() && LoadLittle<u32>(window.data() + container) != kContainerMark) continue;
        if (LengthAt(offset + i)) return offset + i;
    }
    return bytes_.Size();
}

bool COwnLengthFrames::WalkTo(u64 frame) const {
    while (!ended_ && walked_ <= frame) {
        const SExtent next = FrameAt(walkedTo_);
        ended_ = next.size == 0;
        if (ended_) break;
        if (walked_ % stride_ == 0) {
            if (kept_.size() == kMostKept) {
                for (std::size_t i = 0; i < kMostKept / 2; ++i) kept_[i] = kept_[2 * i];
                kept_.resize(kMostKept / 2);
                stride_ *= 2;
            }
            if (walked_ % stride_ == 0) kept_.push_back(next.offset);
        }
        lastFrame_ = walked_++;
        last_ = next;
        walkedTo_ = next.offset + next.size;
    }
    return frame < walked_;
}

u64 COwnLengthFrames::Count() const {
    const std::lock_guard lock(mutex_);
    WalkTo(~u64{0} - 1);
    return walked_;
}

std::optional<SExtent> COwnLengthFrames::Find(u64 frame) const {
    const std::lock_guard lock(mutex_);
    if (!WalkTo(frame)) return {};
    if (frame < lastFrame_ || frame - lastFrame_ > stride_) {
        lastFrame_ = frame - frame % stride_;
        last_ = FrameAt(kept_[frame / stride_]);
    }
    for (; lastFrame_ < frame; ++lastFrame_) last_ = FrameAt(last_.offset + last_.size);
    return last_;
}

}  // namespace ovix::measure
