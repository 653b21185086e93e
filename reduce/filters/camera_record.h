#pragma once

#include "core/bytes.h"
#include "reduce/objects/reduce_object.h"

/// The record that cameras of the K410 family and its older relatives deliver with each frame: 2428 bytes in the byte
/// order of the camera, of which some families send the first 1148 only. The fields named here are read by decoders one
/// by one; object parameters and calibration go to their objects by the table in `camera_record_objects.cpp`. All
/// others are the camera's own, carried unread, and still turned by the swap.
namespace ovix::reduce::camera_record {

constexpr u32 kSize = 2428;
constexpr u32 kShortSize = 1148;

constexpr u32 kByteOrder = 0;  ///< u16: reads `kNativeOrder` when the record is little-endian
constexpr u16 kNativeOrder = 2;

constexpr u32 kWidth = 2;             ///< u16
constexpr u32 kHeight = 4;            ///< u16
constexpr u32 kLastColumn = 12;       ///< u16, width minus 1
constexpr u32 kLastRow = 16;          ///< u16, height minus 1
constexpr u32 kClearedByPlover = 22;  ///< u16
constexpr u32 kFrameCounter = 24;     ///< u16

constexpr u32 kSeconds = 900;        ///< u32, since 1970
constexpr u32 kMilliseconds = 904;   ///< u32
constexpr u32 kMarkCounter = 968;    ///< u32
constexpr u32 kInvalidFrame = 1130;  ///< u16, 0 marks a valid frame

/// Whether the record came in the other byte order.
inline bool IsSwapped(const u8* record) { return LoadLittle<u16>(record + kByteOrder) != kNativeOrder; }

/// Turn every field around in place, asked or not; a second call turns them back.
OVIX_REDUCE_API void Swap(u8* record);
/// The first 1148 bytes, for families that send no more.
OVIX_REDUCE_API void SwapShort(u8* record);

}  // namespace ovix::reduce::camera_record

namespace ovix::reduce {

/// The archive of the camera record that K410, MV310 and Plover frames carry, byte for byte, once per source. Decoders
/// take what they need from the record itself.
class OVIX_REDUCE_API CCurlewCameraInfoReduceObject : public TReduceObject<CCurlewCameraInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{6471D16E-323A-4B50-92F9-5A76FAAA64FC}"_guid;
    static constexpr const wchar_t* kName = L"CurlewCameraInfo";

    u8 record[camera_record::kSize] = {};  ///< in the native byte order
    bool recordPresent = false;            ///< the whole record came, not only its first part
    u8 digitalHeader[32] = {};             ///< that of a digital link, or zeros
    bool digitalHeaderPresent = false;

    /// Takes a block of exactly version 0x10000; another one leaves the object at its defaults.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
