#pragma once

#include "core/shared_ptr.h"
#include "core/typed_data.h"
#include "reduce/api.h"

namespace ovix::reduce {

class CAbateCfgReduceObject;
class CCorrectionCfgReduceObject;
class CCorrectionReduceObject;
class CObjectParametersReduceObject;
class CReduceObjectArray;
struct CStats;
class IConverter;

/// The front of the conversion pipeline, one for each stream of frames.
///
///     CConvertContext context;
///     context.setReduceObjs(&array);                   // borrowed: the array outlives the context
///     context.SetUnit(TemperatureFactory, Celsius);    // picks a converter
///     context.Update(presets, 1, 0);                   // takes in calibration and correction; false: not usable
///     context.ApplyNUC(frame, buffer, pixels, frame);  // or Abate, for the frames of several presets
///     context.Convert(frame, out, status, pixels);
///
/// It computes nothing and keeps no cache: it picks and forwards, and each step is a call of the application.
/// After a change of the array's contents or of the presets call `Update`; after another array pointer call `SetUnit`
/// and `Update`. A context is for one thread at a time. Copies share converter and correction objects.
class OVIX_REDUCE_API CConvertContext {
  public:
    static constexpr u32 PresetCount = 8;

    CConvertContext();
    CConvertContext(const CConvertContext&);
    CConvertContext& operator=(const CConvertContext&);
    ~CConvertContext();

    void setReduceObjs(CReduceObjectArray* objs);
    CReduceObjectArray* reduceObjs() const;
    /// Empty when the wanted unit is the base unit.
    TSharedPtr<IConverter> converter() const;

    /// The units that the source can give.
    bool GetUnits(TArray<EUnit>& units) const;
    /// Chooses the unit, and its scale for temperatures. The unit alone decides between factory and user calibration.
    ///
    /// A converter chosen here is new and wants an `Update`. When no converter gives the unit the result is false, unit
    /// and scale stay, and the former converter is gone all the same.
    bool SetUnit(EUnit unit, ETempType tempType);
    /// Brings context and converter into line with the array: one flag for each of `count` presets, true enabling it.
    /// `flags` goes to the converter as it is. The array gets a correction and an abatement configuration if it has
    /// none.
    ///
    /// False without array or source info, for a count above 8, when the converter's `Update` is false, and when no
    /// preset is enabled. A count below 8 never leaves preset 1 enabled, and leaves the flags from `count` on (but for
    /// that one) as earlier calls set them.
    bool Update(bool* const presets, u8 count, u32 flags);

    /// Whether there is a converter.
    bool needToConvert() const;
    /// Whether correction is switched on and any enabled preset has tables for it.
    bool needToApplyNUC() const;
    /// Corrects `count` pixels with the tables of the active preset. `result` is `out`, or `in` where there was nothing
    /// to do: then no pixel was copied. False before the first `Update`.
    bool ApplyNUC(STypedData in, STypedData out, u32 count, STypedData& result);
    /// The same, except that `out` always holds the frame afterwards.
    bool ApplyNUC(STypedData in, STypedData out, u32 count);
    /// Corrects and merges the frames of several presets, one for each preset of the last `Update`, and writes to
    /// `presetMap` which preset each pixel came from. `count` is the pixels of a frame. Frames of the enabled presets
    /// and target are of one type, `UInt16` or `Flt32`; otherwise false.
    bool Abate(const STypedData* const frames, u32 count, STypedData target, u8* presetMap);

    /// A frame of one preset all the way in one pass: corrected where it has to be, converted, and counted. Each block
    /// of pixels takes all three steps while it lies in the first-level cache, so this needs no frame in between and
    /// takes about a fifth less time than
    ///
    ///     context.ApplyNUC(in, corrected, pixels, corrected);      // a buffer of the type of `in`
    ///     context.Convert(corrected, out, status, pixels);
    ///     GetStats(stats, out, width, height, nullptr, 0, status);
    ///
    /// with the same bits in `out`, `status` (null where nobody wants it) and `stats`. `out` must not overlap `in`.
    /// False before the first `Update`, for an empty frame, where a step cannot take the types, and when a frame in
    /// memory is wanted between the steps (a conversion without a table) and there is none.
    bool MeasureFrame(STypedData in, u16 width, u16 height, STypedData out, u8* status, CStats& stats);

    // Conversion of the selected pixels; arguments and buffers as for `IConverter::BaseToOutput`. Without a converter
    // the pixels are moved to `out` with a change of numeric type, and their status is 0.

    bool Convert(STypedData in, STypedData out, u8* status, u32 count);
    bool Convert(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count);
    bool Convert(STypedData in, const u32* indices, u32 count, STypedData out, u8* status);
    bool Convert(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out, u8* status);
    bool Convert(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status);
    bool Convert(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out, u8* status);
    bool Convert(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out, u8* status);
    bool Convert(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                 u8* status);
    bool Convert(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride, STypedData out, u8* status);
    bool Convert(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                 STypedData out, u8* status);
    /// One value, by the formula where a buffer goes through a table. 255 means the active preset.
    bool Convert(float in, float& out, u8& status, u8 preset);
    /// From the wanted unit back to the base.
    bool ConvertBack(float in, float& out, u8& status, u8 preset);

    /// The calibrated range in the unit and scale of the last `Update`, see `IConverter::GetCalibratedRange`; false
    /// without a converter. 255 means the active preset.
    bool GetCalibratedRange(float& lower, float& upper, u8 preset) const;

    bool canChangeObjectParameters() const;
    /// Hands a changed scene to the converter without an `Update`.
    bool ChangeObjectParameters(CObjectParametersReduceObject* params);

    /// Puts the eight scene values of `wanted` into the array's object parameters (made if absent). When those were the
    /// source's own, `saved` keeps them for `RestoreObjectParameters`; so of nested overrides only the first saves, and
    /// one restore brings the source's values back. Takes effect at the next `Update` or `ChangeObjectParameters`.
    static void OverrideObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& wanted,
                                         CObjectParametersReduceObject& saved);
    /// Does nothing when there is nothing to go back to.
    static void RestoreObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& saved);

  private:
    bool WantsNUC() const;
    bool MeasureInSteps(STypedData in, u16 width, u16 height, STypedData out, u8* status, CStats& stats);
    /// False, with nothing touched, when there is nothing to correct.
    bool Correct(STypedData in, STypedData out, u32 count);

    TSharedPtr<IConverter> converter_;
    TSharedPtr<CAbateCfgReduceObject> abateCfg_;
    TSharedPtr<CCorrectionCfgReduceObject> correctionCfg_;
    TSharedPtr<CCorrectionReduceObject> corrections_[PresetCount];
    EUnit unit_ = Counts;
    ETempType tempType_ = Celsius;
    CReduceObjectArray* reduceObjs_ = nullptr;
    bool presets_[PresetCount] = {};
    u8 activePreset_ = 0;
    u8 presetCount_ = 0;
};

}  // namespace ovix::reduce
