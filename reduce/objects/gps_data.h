#pragma once

#include "core/types.h"
#include "reduce/api.h"

namespace ovix {

/// A position fix as devices and applications exchange it: 184 bytes, in the byte order of whoever filled it. The
/// library keeps, invalidates and turns it around; what the fields beside `status`, `datum` and `byteOrderMark` hold is
/// the business of the device, so they are named by kind and offset.
struct OVIX_REDUCE_API SGPSData {
    static constexpr u16 kByteOrderMark = 53;

    u32 status;  ///< 0 means no fix
    u8 bytes4[12];
    double double16;
    double double24;
    float single32;
    u32 uint36;
    u8 bytes40[24];
    float single64;
    u8 bytes68[6];
    u16 uint74;
    float single76;
    float single80;
    float single84;
    char datum[28];  ///< zero-terminated
    u32 uint116;
    double double120;
    double double128;
    float single136;
    float single140;
    u8 bytes144[32];
    u16 uint176;
    u16 byteOrderMark;
    u32 uint180;

    SGPSData() { invalidate(); }

    /// No fix: zeros, -1 in every floating field, the datum "WGS84", the mark of this machine's order.
    void invalidate();
    bool isValid() const { return status != 0; }
    /// Whether the record came from a machine of the other byte order.
    bool isSwapped() const { return byteOrderMark == 0x3500; }
    /// Turns the bytes of every numeric field around, unasked: a second call turns them back.
    void swap();
};
static_assert(sizeof(SGPSData) == 184);

}  // namespace ovix
