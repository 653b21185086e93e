#pragma once

#include "core/shared_table.h"
#include "reduce/objects/typed_reduce_object.h"

namespace ovix::reduce {

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
