#pragma once

#include "reduce/filters/dunlin_trailer.h"

/// The native trailer of Wren cameras: the signature "PRUV", and a record of 109 bytes for each image of the buffer.
/// `docs/formats/wren.md` shows it whole.
namespace ovix::reduce::pruv {

constexpr u32 kSignatureSize = 4;
constexpr u32 kRecordSize = 109;
constexpr u32 kSize = kSignatureSize + kRecordSize;  ///< of the trailer of one image

// Offsets in the record.
constexpr u32 kDataDisable = 64;   ///< u8, not 0: the image is not to be kept
constexpr u32 kTriggerInput = 68;  ///< u8, not 0: it fired

/// The layout of a record, which starts behind the signature.
extern const DunlinLayout kRecord;

bool HasSignature(const u8* trailer);
void PutSignature(u8* trailer);

}  // namespace ovix::reduce::pruv
