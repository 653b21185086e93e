#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// What the application, or a file, says of a camera of the Lapwing and Wren families, once per source. The library
/// itself looks at `useCameraClock` alone; all else is kept and stored under plain labels.
class OVIX_REDUCE_API CDunlinCameraInfoReduceObject : public TReduceObject<CDunlinCameraInfoReduceObject> {
  public:
    static constexpr GUID typeID = "{B5C2E5E6-34B3-4171-9039-2270CEFEDB14}"_guid;
    static constexpr const wchar_t* kName = L"DunlinCameraInfo";

    // Zero-terminated.
    char text0[20] = {};
    char text1[20] = {};
    char text2[20] = {};
    char text3[20] = {};
    char text4[11] = {};
    float value0 = 0, value1 = 0, value2 = 0, value3 = 0;
    u8 byte0 = 0;
    i32 number0 = 0;
    u8 byte1 = 0, byte2 = 0, byte3 = 0, byte4 = 0;
    bool useCameraClock = false;  ///< Lapwing frames take their time from the camera's time code, not its time stamp

    CDunlinCameraInfoReduceObject();

    /// Copies the texts up to their terminators only.
    TSharedPtr<IReduceObject> Duplicate() const override;
    /// The five texts and `number0` stay.
    void Default() override;
    /// The form 0x10000 ends before `useCameraClock`.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
