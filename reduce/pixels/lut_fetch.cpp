#include "reduce/pixels/lut_fetch.h"

#include <cstring>

namespace ovix::reduce {

namespace {

/// Single loads of entries and few, wide stores go faster than the gather instructions: one load holds four places, and
/// one store takes all that is written here for sixteen.
template <class T>
void Fetch(const T* table, const u16* places, T* entries, std::size_t count) {
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        T block[16];
        for (int j = 0; j < 16; j += 4) {
            u64 four;
            std::memcpy(&four, places + i + j, sizeof four);
            block[j] = table[four & 0xFFFF];
            block[j + 1] = table[four >> 16 & 0xFFFF];
            block[j + 2] = table[four >> 32 & 0xFFFF];
            block[j + 3] = table[four >> 48];
        }
        std::memcpy(entries + i, block, sizeof block);
    }
    for (; i < count; ++i) entries[i] = table[places[i]];
}

}  // namespace

void FetchValues(const float* table, const u16* places, float* values, std::size_t count) {
    Fetch(table, places, values, count);
}

void FetchStatus(const u8* table, const u16* places, u8* status, std::size_t count) {
    Fetch(table, places, status, count);
}

}  // namespace ovix::reduce
