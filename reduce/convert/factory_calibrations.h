#pragma once

#include "core/shared_ptr.h"
#include "reduce/objects/reduce_object.h"

/// The calibrations that cameras bring from the factory, as they are stored.
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

/// The factory calibration of one preset (its number is `preset`) of a Merlin-family camera, for `CMrlConv`. A source
/// has up to four.
///
/// Copies share the two tables, and the last one frees them; `Duplicate` makes tables of its own.
class OVIX_REDUCE_API CMerlinFactoryCalReduceObject : public TReduceObject<CMerlinFactoryCalReduceObject> {
  public:
    static constexpr GUID typeID = "{7ED232C7-2ECF-4552-BB67-D406D5E87E61}"_guid;
    static constexpr const wchar_t* kName = L"MerlinFactoryCal";

    // From signal to radiance.
    i32 degree = 0;           ///< of the polynomial, 0 to 6; -1 and -2 mark the two linear forms around `signalOffset`
    double c[7] = {};         ///< the polynomial's coefficients, c[0] first
    double signalOffset = 0;  ///< subtracted in the linear forms
    // Constants of the Planck law.
    double planckR = 0;
    double planckB = 0;
    double planckF = 0;
    // Constants of the atmosphere's transmission.
    double atmX = 0;
    double atmAlpha1 = 0;
    double atmAlpha2 = 0;
    double atmBeta1 = 0;
    double atmBeta2 = 0;
    // Ends of the calibrated range, degrees Celsius.
    float lowTemp = 0;
    float highTemp = 0;
    // Ends of the fit from radiance back to signal.
    u16 fitLowSignal = 0;
    u16 fitHighSignal = 0;
    // Kept for applications; no conversion reads them.
    i32 reserved32 = 0;
    double reservedDoubles[9] = {};
    float reservedFloats[2] = {};
    i32 tableCount = 0;  ///< entries of each table, set by `CreateLUT`
    TSharedTable<double> table1;
    TSharedTable<double> table2;

    CMerlinFactoryCalReduceObject();

    bool IsCalObj() const override;
    TSharedPtr<IReduceObject> Duplicate() const override;

    /// Drops both tables and makes new ones of `count` zeros each, or none for a count below 1. Always true; failure
    /// raises the allocator's exception.
    bool CreateLUT(i32 count);

    /// A block of 512 bytes and the tables, before version 0x10001 the bare fields with the tables among them. The
    /// tables' size is held against what remains in the file before memory is taken. `valid` is the caller's to set.
    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

  private:
    bool ReadTables(IFile& file);
};

}  // namespace ovix::reduce
