#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// The factory's data of one preset of a Lapwing or Wren camera. Decoders set the two last fields from each frame, and
/// leave `valid` alone; all else is kept and stored under plain labels.
class OVIX_REDUCE_API CDunlinFactoryCalReduceObject : public TReduceObject<CDunlinFactoryCalReduceObject> {
  public:
    static constexpr GUID typeID = "{82ECA642-C98D-4083-8965-E92E386BA005}"_guid;
    static constexpr const wchar_t* kName = L"DunlinFactoryCal";

    u32 calWord0 = 0;
    float calValue0 = 0, calValue1 = 0, calValue2 = 0, calValue3 = 0, calValue4 = 0, calValue5 = 0, calValue6 = 0;
    u32 calWord1 = 0, calWord2 = 0;
    float calValue7 = 0, calValue8 = 0;
    float detectorTemp = 0;
    float integrationTime = 0;  ///< in microseconds

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
