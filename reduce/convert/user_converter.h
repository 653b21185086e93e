#pragma once

#include <memory>
#include <optional>

#include "core/rcal_file.h"
#include "reduce/convert/converter_factory.h"
#include "reduce/convert/table_converter.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/temperature.h"

namespace ovix::reduce {

class CSourceInfoReduceObject;

/// Counts or radiance to radiance or temperature by the user's own calibration (`CRCalReduceObject`), each of eight
/// presets by its own.
///
/// Counts go through a table of 65,536 entries for each preset as long as a pixel's result depends on nothing but its
/// count and preset. With a background for each pixel on any enabled preset, and from radiance, they go through the
/// formula kernels instead. There, in the forms W and L, one model serves all presets: the table of radiance and
/// temperature if all enabled presets have one, else their polynomial if all have one, else Planck's law. In the other
/// forms and with a preset map each preset chooses for itself. Destinations then are `Flt32` or `Flt64`: with another
/// one the result is true, and no pixel is written.
///
/// Single values convert only to their own unit, and `SignalToOutput` and `OutputToSignal` of one answer only whether
/// the preset is enabled, with their outputs as they were: the calibration has no inverse.
class OVIX_REDUCE_API CUserConverter : public TConverter<CUserConverter, CTableConverter> {
  public:
    static constexpr const wchar_t* kName = L"UserConverter";
    static constexpr GUID kID = "{10A4C062-25D2-4EEF-A11C-BA8F7CA00B35}"_guid;
    /// Bases are `Counts` and `RadianceUser`; the array must hold a valid calibration with a polynomial.
    static bool SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs);

    CUserConverter();

    /// Reads the calibration and the scene; false without a calibration. Tables that were built stay as they are until
    /// `ChangeObjectParameters`, even if the calibration is another one: callers that update often keep their
    /// tables.
    bool Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output, ETempType outputType,
                bool* const presets, u8 count, u32 flags) override;
    /// False, although `ChangeObjectParameters` serves.
    bool canChangeObjectParameters() const override;
    /// Whether no enabled preset has a background for each pixel.
    bool canUseLUT() const override;
    /// Takes emissivity and transmission of the atmosphere, and writes the transmission in force back to `params`: a
    /// transmission of 0 counts as 1.
    bool ChangeObjectParameters(CObjectParametersReduceObject* params) override;

    /// Always by the formula. False for a preset that is not enabled, and where a background for each pixel would be
    /// subtracted.
    bool SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;
    bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset) override;
    bool OutputToSignal(float value, u16& signal, u8& status, u8 preset) override;

    // By the formula, the forms W and L (with a map or without) clear the status, and A, S and M leave it as it was.
    // From radiance, A, S, M and the forms with a map give temperature, whatever the output unit is; W and L with
    // radiance on both sides write nothing.

    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                      STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) override;
    bool BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) override;
    bool BaseToOutput(float in, float& out, u8& status, u8 preset) override;
    bool OutputToBase(float in, float& out, u8& status, u8 preset) override;

    /// Whether some enabled preset has a background for each pixel, so that a pixel's place matters.
    bool needIndicies() const;
    std::optional<STableView> TableInForce() override;
    /// Builds the preset's table if it is not up to date. False for a preset beyond 7.
    bool UpdateLUT(u8 preset);

  protected:
    bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

  private:
    /// Where the polynomial takes powers: what it says of all counts, whatever the scene is.
    void PrepareTable(u8 preset) override;

    /// What the calibration says of one preset.
    struct SPreset {
        i32 order = 0;
        TArray<double> coefficients;
        double background = 0;
        TArray<double> pixelBackgrounds;   ///< of the source's frames; empty where there are none: they count as 0
        std::optional<u32> backgroundCRC;  ///< of the file that they come from
        i32 tempOrder = 0;
        TArray<double> tempCoefficients;
        TArray<double> radiances;
        TArray<double> temperatures;
        std::shared_ptr<const double[]> unscaled;  ///< see `PrepareTable`

        void Read(const CRCalFile& cal, int preset, const CSourceInfoReduceObject* source);
        bool ReadPixelBackgrounds(const CRCalFile& cal, int preset, const CSourceInfoReduceObject* source);
        SRadianceParams ToRadiance() const;
        STemperatureParams ToTemperature() const;
    };
    /// The records of all presets, as kernels take them.
    struct SRecords;

    void TakeScene(CObjectParametersReduceObject& params);
    bool GoesThroughTables() const { return baseUnit == Counts && canUseLUT(); }
    template <class... Form>
    bool Takes(STypedData in, STypedData out, const Form&... form) const;
    template <class... Form>
    bool ToTemperature(STypedData out, STypedData in, const SPreset& preset, const Form&... form) const;
    template <class... Form>
    bool InTwoSteps(STypedData in, STypedData out, u8* status, u32 count, const Form&... form);
    template <class... Form>
    bool InOneStep(STypedData in, STypedData out, u8* status, const Form&... form);
    template <class... Form>
    bool ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 clearedStatus, const Form&... form);

    SPreset calibration_[PresetCount];
    SCommonParams common_;
    bool needIndices_ = false;
    bool useLookup_ = false;        ///< all enabled presets have a table
    bool useCoefficients_ = false;  ///< all enabled presets have a polynomial to temperature
};

}  // namespace ovix::reduce
