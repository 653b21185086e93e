#pragma once

#include "reduce/filters/camera_record.h"
#include "reduce/objects/typed_reduce_object.h"

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
