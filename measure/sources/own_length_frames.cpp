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

bool COwnLengthFrames::WalkTo(u64 frame, SWalk& walk) const {
    while (!walk.ended && walk.walked <= frame) {
        const SExtent next = FrameAt(walk.walkedTo);
        walk.ended = next.size == 0;
        if (walk.ended) break;
        if (walk.walked % walk.stride == 0) {
            if (walk.kept.size() == kMostKept) {
                for (std::size_t i = 0; i < kMostKept / 2; ++i) walk.kept[i] = walk.kept[2 * i];
                walk.kept.resize(kMostKept / 2);
                walk.stride *= 2;
            }
            if (walk.walked % walk.stride == 0) walk.kept.push_back(next.offset);
        }
        walk.lastFrame = walk.walked++;
        walk.last = next;
        walk.walkedTo = next.offset + next.size;
    }
    return frame < walk.walked;
}

u64 COwnLengthFrames::Count() const {
    return walk_.With([&](SWalk& walk) {
        WalkTo(~u64{0} - 1, walk);
        return walk.walked;
    });
}

std::optional<SExtent> COwnLengthFrames::Find(u64 frame) const {
    return walk_.With([&](SWalk& walk) -> std::optional<SExtent> {
        if (!WalkTo(frame, walk)) return {};
        if (frame < walk.lastFrame || frame - walk.lastFrame > walk.stride) {
            walk.lastFrame = frame - frame % walk.stride;
            walk.last = FrameAt(walk.kept[frame / walk.stride]);
        }
        for (; walk.lastFrame < frame; ++walk.lastFrame) walk.last = FrameAt(walk.last.offset + walk.last.size);
        return walk.last;
    });
}

}  // namespace ovix::measure
