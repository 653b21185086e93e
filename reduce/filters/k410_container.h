#pragma once

#include <algorithm>

#include "core/bytes.h"
#include "reduce/filters/camera_record.h"

/// What stands beside the pixels of an infrared frame of the K410 family. `docs/formats/k410.md` shows it whole.
/// Nothing here tests a length unless it is given one: `CheckK410Frame` answers for the bytes.
namespace ovix::reduce::k410 {

constexpr u32 kSignature = 0x004D4B4D;  ///< "MKM" and a zero byte

// The digital header, which a digital link puts ahead of the container.
constexpr u32 kDigitalHeaderSize = 32;
constexpr u32 kMark = 2;             ///< u8; bits 0 and 1 are the trigger
constexpr u32 kDigitalIn1 = 10;      ///< u8
constexpr u32 kDigitalIn2 = 11;      ///< u8
constexpr u32 kDigitalCounter = 12;  ///< u16, big-endian

// The container: a signature and an index of which two entries are relied on.
constexpr u32 kFirstEntry = 64;     ///< u16, `kRecordEntry`
constexpr u32 kRecordOffset = 76;   ///< u32, from the container's start
constexpr u32 kRecordSize = 80;     ///< u32
constexpr u32 kSecondEntry = 96;    ///< u16, `kPixelsEntry`
constexpr u32 kPixelsSwapped = 98;  ///< u16; 1 means that the bytes of each pixel are exchanged
constexpr u32 kContainerSize = 100;
constexpr u16 kRecordEntry = 32;
constexpr u16 kPixelsEntry = 1;

// A compressed frame: the length of the picture, big-endian, the picture, the container.
constexpr u32 kLengthSize = 4;

/// Bytes of a picture of 16-bit pixels, which is also where the tail of an uncompressed frame begins.
constexpr u64 ImageSize(u16 width, u16 height) { return u64{2} * width * height; }

inline bool HasSignature(const u8* container) { return LoadLittle<u32>(container) == kSignature; }
inline bool HasIndex(const u8* container) {
    return LoadLittle<u16>(container + kFirstEntry) == kRecordEntry &&
           LoadLittle<u16>(container + kSecondEntry) == kPixelsEntry;
}
inline bool HasSwappedPixels(const u8* container) { return LoadLittle<u16>(container + kPixelsSwapped) == 1; }
/// Bytes of the record that the frame gives: no more than a record has.
inline u32 RecordHeld(const u8* container) {
    return std::min(camera_record::kSize, LoadLittle<u32>(container + kRecordSize));
}
/// The record as it stands in the frame, in whatever byte order.
inline const u8* RecordInPlace(const u8* container) { return container + LoadLittle<u32>(container + kRecordOffset); }

/// What follows the pixels of an uncompressed frame: the container, in the digital form with the header ahead of it.
/// Without a container there is no tail.
struct STail {
    const u8* digitalHeader = nullptr;
    const u8* container = nullptr;

    explicit operator bool() const { return container != nullptr; }
    bool IsPlain() const { return container && !digitalHeader; }
    bool IsDigital() const { return digitalHeader != nullptr; }
};
/// Looks at up to 36 bytes, and at no more than `size`.
STail FindTail(const u8* bytes, u64 size = ~u64{0});

/// A copy of the camera record in the native byte order, zeros behind what the frame gives. Its own height gives way to
/// that of the caller.
struct SRecord {
    u8 bytes[camera_record::kSize];
};
/// False when the index does not lead to a record; `record` is then as it was.
bool CopyRecord(SRecord& record, const u8* container, u16 height);

}  // namespace ovix::reduce::k410
