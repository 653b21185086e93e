#include "reduce/filters/osprey_frame_info_reduce_object.h"

#include <algorithm>
#include <cstring>

namespace ovix::reduce {

COspreyFrameInfoReduceObject::COspreyFrameInfoReduceObject() { persist = false; }

TSharedPtr<IReduceObject> COspreyFrameInfoReduceObject::Duplicate() const {
    TSharedPtr<IReduceObject> made = TReduceObject::Duplicate();
    if (const auto copy = made.Cast<COspreyFrameInfoReduceObject>()) {
        u8* bytes = reinterpret_cast<u8*>(copy->header);
        const u32 kept = std::min(headerWords, kWords);  // words taken for bytes, deliberately
        std::memset(bytes + kept, 0, sizeof copy->header - kept);
    }
    return made;
}

}  // namespace ovix::reduce
