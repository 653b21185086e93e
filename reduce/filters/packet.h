#pragma once

#include "core/types.h"

namespace ovix::reduce {

/// A camera buffer of several images, one behind the other, and one tail for all behind them. Stored frames consist of
/// one of the images and the tail.
struct SPacket {
    const u8* bytes;
    u64 size;
    u64 imageSize;
    u16 images;

    u64 ImagesSize() const { return images * imageSize; }
    /// Zero also when not even the images are there.
    u64 TailSize() const { return size > ImagesSize() ? size - ImagesSize() : 0; }

    /// Puts image `index` and the tail into `dest`. False, with nothing written, when there is no such image, when the
    /// buffer does not hold all images, and when `dest` has no room.
    bool Store(u16 index, void* dest, u64 destSize) const;
};

}  // namespace ovix::reduce
