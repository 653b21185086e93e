#include "reduce/objects/gps_data.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "core/byte_swap.h"

namespace ovix {

namespace {

/// The numeric fields; texts and bytes between them stay.
constexpr SSwapRun kNumbers[] = {
    {0, 1, 4},   {16, 2, 8},  {32, 2, 4},  {64, 1, 4},  {74, 1, 2},  {76, 3, 4},
    {116, 1, 4}, {120, 2, 8}, {136, 2, 4}, {176, 2, 2}, {180, 1, 4},
};
static_assert(offsetof(SGPSData, double16) == 16 && offsetof(SGPSData, single64) == 64 &&
              offsetof(SGPSData, datum) == 88 && offsetof(SGPSData, double120) == 120 &&
              offsetof(SGPSData, byteOrderMark) == 178);
static_assert(std::is_trivially_copyable_v<SGPSData>);

}  // namespace

void SGPSData::invalidate() {
    std::memset(static_cast<void*>(this), 0, sizeof *this);
    double16 = double24 = double120 = double128 = -1.0;
    single32 = single64 = single76 = single80 = single84 = single136 = single140 = -1.0f;
    std::memcpy(datum, "WGS84", 5);
    byteOrderMark = kByteOrderMark;
}

void SGPSData::swap() { SwapFields(reinterpret_cast<u8*>(this), kNumbers); }

}  // namespace ovix
