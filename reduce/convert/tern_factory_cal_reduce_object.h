#pragma once

#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

/// The factory calibration of one preset (its number is `preset`) of a Tern-family camera, for the records that
/// `CTrnMeasConv` is initialised with. A source has up to four. Temperatures in kelvin.
class OVIX_REDUCE_API CTernFactoryCalReduceObject : public TReduceObject<CTernFactoryCalReduceObject> {
  public:
    static constexpr GUID typeID = "{A2E5AE0D-AB11-489B-96C6-2B1C1A62F451}"_guid;
    static constexpr const wchar_t* kName = L"TernFactoryCal";

    // Constants of the atmosphere's transmission.
    float atmAlpha1 = 0;
    float atmAlpha2 = 0;
    float atmBeta1 = 0;
    float atmBeta2 = 0;
    float atmX = 0;
    // Compensation of the camera's own warmth.
    u32 tdriftMode = 0;
    float tdriftReserved1 = 0;
    float driftR = 0;
    float driftB = 0;
    float driftF = 0;
    float drift3 = 0;
    float drift4 = 0;
    float drift5 = 0;
    float drift6 = 0;
    float drift7 = 0;
    float drift8 = 0;
    float drift9 = 0;
    float tdriftReserved2 = 0;
    u16 reserved16 = 0;
    // From count to pow.
    float adjustGain = 0;
    float adjustOffset = 0;
    // Constants of the Planck law.
    float planckR = 0;
    float planckB = 0;
    float planckF = 0;
    // The gain's dependence on the temperature of the front panel.
    float gainDrift0 = 0;
    float gainDrift1 = 0;
    float gainDrift2 = 0;
    float gainDrift3 = 0;
    // Limits of the calibration.
    float overflowTemp = 0;
    float upperTemp = 0;
    float lowerTemp = 0;
    float underflowTemp = 0;
    float radFitHighTemp = 0;
    float radFitLowTemp = 0;
    // The instrument's temperatures, which the decoder renews with every frame.
    float frontPanelTemp = 0;
    float airGapTemp = 0;
    float dewarTemp = 0;
    // Kept for applications; no conversion reads them.
    float unused[7] = {};
    i16 reservedSigned16 = 0;
    char text1[32] = {};
    char text2[16] = {};
    char text3[16] = {};
    char text4[10] = {};
    char text5[10] = {};
    char text6[10] = {};
    char text7[10] = {};
    char text8[10] = {};
    char text9[10] = {};
    char text10[32] = {};
    float lastFloat = 0;

    CTernFactoryCalReduceObject();

    bool IsCalObj() const override;

    /// A block of 512 bytes, before version 0x10001 the bare fields. `valid` is the caller's to set.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;
};

}  // namespace ovix::reduce
