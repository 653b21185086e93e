#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// The factory calibration of a Curlew-family camera, for the records that `CMeasConv` is initialised with. Decoders
/// fill it from what the camera delivers and set `valid`.
class OVIX_REDUCE_API CCurlewFactoryCalReduceObject : public TReduceObject<CCurlewFactoryCalReduceObject> {
  public:
    static constexpr GUID typeID = "{245A5CD5-2F58-4D08-90AC-FB6E78C7EC41}"_guid;
    static constexpr const wchar_t* kName = L"CurlewFactoryCal";

    // From image value to signal.
    float nonlinearGain = 0;
    i32 nonlinearOffset = 0;
    i32 offset = 0;
    float gain = 0;
    u16 nonlinearOn = 0;
    u16 imgMin = 0;
    u16 imgMax = 0;
    // Constants of the Planck law.
    float planckR = 0;
    float planckB = 0;
    float planckF = 0;
    // Constants of the atmosphere's transmission.
    float atmAlpha1 = 0;
    float atmAlpha2 = 0;
    float atmBeta1 = 0;
    float atmBeta2 = 0;
    float atmX = 0;
    // Limits of the calibration, temperatures.
    float overflowTemp = 0;
    float upperTemp = 0;
    float lowerTemp = 0;
    float underflowTemp = 0;
    float radFitHighTemp = 0;
    float radFitLowTemp = 0;

    /// Takes a block of exactly version 0x10000; another one leaves the object at its defaults. `valid` is the
    /// caller's to set.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
