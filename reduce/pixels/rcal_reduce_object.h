#pragma once

#include "core/rcal_file.h"
#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// A calibration that the user made himself, for all presets of a source: counts to radiance, radiance to temperature,
/// backgrounds and the band. `CUserConverter` applies it.
///
/// Whoever fills `cal` sets `valid`. The stored record is that of `CRCalFile`, whatever the block's version says.
class OVIX_REDUCE_API CRCalReduceObject : public TReduceObject<CRCalReduceObject> {
  public:
    static constexpr GUID typeID = "{E5D7371A-BD64-448F-8240-6FDFA6FC0110}"_guid;
    static constexpr const wchar_t* kName = L"RCal";

    CRCalFile cal;

    CRCalReduceObject();

    /// A damaged record leaves the calibration as it was.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
