#pragma once

#include <algorithm>

#include "core/bytes.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/frame_images.h"
#include "reduce/filters/frame_probe.h"
#include "reduce/filters/frame_table.h"
#include "reduce/filters/frame_types.h"

/// The compressed pixels, as CharLS decodes them.
namespace ovix::reduce {

/// Whether the `size` bytes at `offset`, which must be held, begin as a JPEG-LS stream of exactly this picture: the
/// given width and height, one component of 9 to 16 bits, lossless, default coding parameters.
///
/// All segments up to the first scan are read. The decoder believes a stream's declared sizes and parameters, so what
/// differs is refused here, and so is a stream that does not end in its end mark. The rest of the scan is not judged: a
/// damaged one gives a wrong picture. The decoder may look at one byte behind the stream, so one must be held.
bool CheckJpegLsStream(const CFrameProbe& probe, u64 offset, u64 size, u16 width, u16 height);

/// Decodes to pixels of 16 bits. A stream that will not do leaves some or all of `dest` as it was.
void DecodeJpegLs(void* dest, u64 destSize, const void* stream, u64 size);

}  // namespace ovix::reduce

/// The frames of the K410 camera family and of the R7X camera: their types, and what stands beside the pixels of an
/// infrared frame. `docs/formats/k410.md` shows it whole. Nothing here tests a length unless it is given one: the
/// family's check answers for the bytes.
namespace ovix::reduce::k410 {

enum class ELayout {
    Uncompressed,  ///< 16-bit pixels, then the tail
    JpegLs,        ///< length, JPEG-LS stream, container
    UYVY,
    YUY2,
    BGR,
};

struct SType {
    GUID id;
    const wchar_t* name;
    GUID base;
    ELayout layout;
    bool hasFrameCounter = false;  ///< frames are numbered by the camera, and the light operations read the number
    bool hasTime = false;          ///< `ParseTime` reads the time from the frame
    bool overGigE = false;         ///< offers trigger fields
    bool flipped = false;          ///< the picture is turned by 180 degrees
};

/// In their order at the factory.
inline constexpr SType kTypes[] = {
    {.id = frame_types::kK410F7M0,
     .name = L"K410 IR (F7M0)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .hasTime = true},
    {.id = frame_types::kK410FNM0,
     .name = L"K410 IR (FNM0)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed},
    {.id = frame_types::kK410GigE,
     .name = L"K410 IR (GigE)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true},
    {.id = frame_types::kK410GigEFlipped,
     .name = L"K410 IR (GigE, Flipped)",
     .base = frame_types::kF7M0,
     .layout = ELayout::Uncompressed,
     .hasFrameCounter = true,
     .overGigE = true,
     .flipped = true},
    {.id = frame_types::kK410UYVY, .name = L"K410 YUV (UYVY)", .base = frame_types::kUYVY, .layout = ELayout::UYVY},
    {.id = frame_types::kK410YUY2, .name = L"K410 YUV (YUY2)", .base = frame_types::kYUY2, .layout = ELayout::YUY2},
    {.id = frame_types::kK410BGR, .name = L"K410 BGR (24-bit)", .base = frame_types::kBGR8, .layout = ELayout::BGR},
    {.id = frame_types::kK410MJLS, .name = L"R7X IR (MJLS)", .base = frame_types::kF7M0, .layout = ELayout::JpegLs},
};

/// Null for a type of another family.
constexpr const SType* FindType(const GUID& id) {
    for (const SType& type : kTypes) {
        if (type.id == id) return &type;
    }
    return nullptr;
}

constexpr bool IsUncompressed(const SType* type) { return type && type->layout == ELayout::Uncompressed; }
constexpr bool HasFrameCounter(const SType* type) { return type && type->hasFrameCounter; }

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

/// The family's flags are shown as numbers.
inline constexpr SValueKind kFlagNumber{L"Flag", L"int"};
/// The digital header: the flags in the order in which they are shown beside a frame, and the frame counter.
inline constexpr STableField kDigitalHeaderFields[] = {
    {kDigitalIn1, 1, L"DigitalIn1", kFlagNumber, DecimalText<LoadLittle<u8>>},
    {kDigitalIn2, 1, L"DigitalIn2", kFlagNumber, DecimalText<LoadLittle<u8>>},
    {kMark, 1, L"Mark", kFlagNumber, DecimalText<LoadLittle<u8>>},
    {kDigitalCounter, 2, L"FrameCounter", kDescribedOnly, DecimalText<LoadBig<u16>>},
};

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

/// What the family answers about its frames.
extern const SFrameAnswers kAnswers;

}  // namespace ovix::reduce::k410
