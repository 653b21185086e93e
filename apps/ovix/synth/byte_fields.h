#pragma once

#include <initializer_list>
#include <vector>

#include "core/core.h"

namespace ovix::app {

/// Numbers at fixed places of a header or record, in the camera's byte order.
class CFields {
  public:
    CFields(u8* bytes, bool swapped) : bytes_(bytes), swapped_(swapped) {}
    template <Number T>
    void Put(u32 offset, T value) {
        swapped_ ? StoreBig(bytes_ + offset, value) : StoreLittle(bytes_ + offset, value);
    }
    template <Number T>
    void PutRow(u32 offset, std::initializer_list<T> values) {
        for (T value : values) {
            Put(offset, value);
            offset += sizeof(T);
        }
    }

  private:
    u8* bytes_;
    bool swapped_;
};

/// Counts of 16 bits, one behind the other.
inline std::vector<u8> CountBytes(const std::vector<u16>& counts, bool swapped) {
    std::vector<u8> bytes(counts.size() * 2);
    CFields fields(bytes.data(), swapped);
    for (u32 i = 0; i < counts.size(); ++i) fields.Put(2 * i, counts[i]);
    return bytes;
}

}  // namespace ovix::app
