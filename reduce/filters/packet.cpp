#include "reduce/filters/packet.h"

#include <cstring>

namespace ovix::reduce {

bool SPacket::Store(u16 index, void* dest, u64 destSize) const {
    const u64 tail = TailSize();
    if (index >= images || ImagesSize() > size || imageSize + tail > destSize) return false;
    u8* to = static_cast<u8*>(dest);
    if (imageSize) std::memcpy(to, bytes + index * imageSize, imageSize);
    if (tail) std::memcpy(to + imageSize, bytes + ImagesSize(), tail);
    return true;
}

}  // namespace ovix::reduce
