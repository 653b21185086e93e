#include "reduce/convert/user_converter.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "reduce/convert/radiometry.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/correction_objects.h"
#include "reduce/pixels/radiance.h"
#include "reduce/pixels/radiance_law.h"
#include "reduce/pixels/temperature.h"

namespace ovix::reduce {

namespace {

/// As the records of parameters take it, though nobody writes to it.
double* Lent(const TArray<double>& values) { return const_cast<double*>(values.data()); }
double* DataOrNull(const TArray<double>& values) { return values.size() ? Lent(values) : nullptr; }

}  // namespace

void CUserConverter::SPreset::Read(const CRCalFile& cal, int preset, const CSourceInfoReduceObject* source) {
    SPreset former = std::exchange(*this, {});
    pixelBackgrounds = std::move(former.pixelBackgrounds);
    backgroundCRC = former.backgroundCRC;
    cal.GetPolyOrder(preset, order);
    cal.GetCoefficients(preset, coefficients);
    cal.GetTempPolyOrder(preset, tempOrder);
    cal.GetTempCoefficients(preset, tempCoefficients);
    cal.GetLookup(preset, radiances, temperatures);
    cal.GetBackgroundValue(preset, background);
    if (order == former.order &&
        std::equal(coefficients.begin(), coefficients.end(), former.coefficients.begin(), former.coefficients.end())) {
        unscaled = former.unscaled;
    }
    if (!ReadPixelBackgrounds(cal, preset, source)) {
        pixelBackgrounds.Destroy();
        backgroundCRC.reset();
    }
}

/// False when there are none. What was read from the same file before is not read again.
bool CUserConverter::SPreset::ReadPixelBackgrounds(const CRCalFile& cal, int preset,
                                                   const CSourceInfoReduceObject* source) {
    u32 crc = 0;
    if (!source || !cal.GetBackgroundFileCRC(preset, source->width, source->height, crc)) return false;
    const u64 pixels = u64{source->width} * source->height;
    if (backgroundCRC == crc && pixelBackgrounds.size() == pixels) return true;
    backgroundCRC = crc;
    return cal.GetBackgroundFile(preset, source->width, source->height, pixelBackgrounds);
}

SRadianceParams CUserConverter::SPreset::ToRadiance() const {
    return {Lent(coefficients), order, background, DataOrNull(pixelBackgrounds)};
}

STemperatureParams CUserConverter::SPreset::ToTemperature() const {
    return {Lent(radiances), Lent(temperatures), static_cast<i32>(radiances.size()), Lent(tempCoefficients), tempOrder};
}

struct CUserConverter::SRecords {
    SRadianceParams radiance[PresetCount];
    STemperatureParams temperature[PresetCount];

    explicit SRecords(const SPreset (&calibration)[PresetCount]) {
        for (u32 p = 0; p < PresetCount; ++p) {
            radiance[p] = calibration[p].ToRadiance();
            temperature[p] = calibration[p].ToTemperature();
        }
    }
};

CUserConverter::CUserConverter() : TConverter(u16{65535}, u8{PresetCount}) {}

bool CUserConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray& objs) {
    if (base > RadianceUser || !objs.HasObjectOfType(CRCalReduceObject::typeID, true)) return false;
    const auto calibration = objs.Get<CRCalReduceObject>(-1, false);
    if (!calibration || !calibration->cal.HasCoefficients()) return false;
    if (base == Counts) units.Add(Counts);
    units.Add(RadianceUser);
    units.Add(TemperatureUser);
    return true;
}

bool CUserConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output,
                            ETempType outputType, bool* const presetFlags, u8 count, u32 flags) {
    if (!IConverter::Update(base, baseType, objs, output, outputType, presetFlags, count, flags)) return false;
    const auto params = objs.GetObjectParameters(false);
    const auto calibration = objs.Get<CRCalReduceObject>(-1, false);
    const auto source = objs.GetSourceInfo(false);
    if (!calibration) return false;

    const CRCalFile& cal = calibration->cal;
    useLookup_ = useCoefficients_ = true;
    needIndices_ = false;
    for (u8 p = 0; p < PresetCount; ++p) {
        if (!presets[p]) continue;
        SPreset& preset = calibration_[p];
        preset.Read(cal, p, source.ptr());
        BACKGROUND_TYPE type = NoBackground;
        cal.GetBackgroundType(p, type);
        if (type == BackgroundFile) needIndices_ = true;  // whether or not there is one for frames of this size
        if (preset.radiances.size() == 0) useLookup_ = false;
        if (preset.tempOrder == 0) useCoefficients_ = false;
    }
    common_ = {};
    cal.GetBandpass(common_.lowWave, common_.highWave);
    common_.tempType = outputTempType;
    if (params) TakeScene(*params);
    return true;
}

void CUserConverter::TakeScene(CObjectParametersReduceObject& params) {
    if (params.atmosphereTrans == 0) {
        common_.radianceScale = 1.0;
        params.estimatedAtmosphereTrans = 1.0f;
    } else {
        common_.radianceScale = 1.0 / double{params.atmosphereTrans};
        params.estimatedAtmosphereTrans = params.atmosphereTrans;
    }
    common_.signalScale = params.emissivity;
}

bool CUserConverter::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    TakeScene(*params);
    InvalidateTables();
    return true;
}

bool CUserConverter::canChangeObjectParameters() const { return false; }  // applications then go by `Update`
bool CUserConverter::canUseLUT() const { return !needIndices_; }
bool CUserConverter::needIndicies() const { return needIndices_; }
std::optional<CUserConverter::STableView> CUserConverter::TableInForce() {
    return GoesThroughTables() ? CTableConverter::TableInForce() : std::nullopt;
}
bool CUserConverter::UpdateLUT(u8 preset) { return UpdateTable(preset); }

/// By the model that serves all enabled presets.
template <class... Form>
bool CUserConverter::ToTemperature(STypedData out, STypedData in, const SPreset& preset, const Form&... form) const {
    const double scale = common_.signalScale;
    if (useLookup_) {
        return ToTemperatureLookup(out, in, form..., preset.radiances.data(), preset.temperatures.data(),
                                   static_cast<i32>(preset.radiances.size()), true, scale, common_.tempType);
    }
    if (useCoefficients_) {
        return ToTemperatureCoeffs(out, in, form..., preset.tempCoefficients.data(), preset.tempOrder, scale,
                                   common_.tempType);
    }
    return ToTemperaturePlanck(out, in, form..., common_.highWave, common_.lowWave, scale, common_.tempType);
}

void CUserConverter::PrepareTable(u8 p) {
    SPreset& preset = calibration_[p];
    const SRadianceLaw law = RecordLaw(preset.ToRadiance(), false, common_);
    if (!preset.unscaled && TakesPowers(law)) preset.unscaled = UnscaledRadiances(law, 65536);
}

bool CUserConverter::RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 p) {
    if (last < first) return true;
    const SPreset& preset = calibration_[p];
    const u32 count = u32{last} - first + 1;
    if (preset.unscaled) {
        const double* unscaled = preset.unscaled.get() + first;
        std::transform(unscaled, unscaled + count, out,
                       [scale = common_.radianceScale](double r) { return static_cast<float>(r * scale); });
        if (status) std::memset(status, 0, count);
    } else {
        CountsToRadiance(first, last, out, status, false, 0, 0, 0, 0, preset.coefficients.data(), preset.order,
                         preset.background, common_.radianceScale);
    }
    const STypedData table{out, Flt32};
    if (outputUnit == TemperatureUser) ToTemperature(table, table, preset, count);
    return true;
}

bool CUserConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    if (!ResolvePreset(preset) || (calibration_[preset].order < 0 && needIndices_)) return false;
    return RangeToOutput(first, last, out, status, preset);
}
bool CUserConverter::SignalToOutput(u16, float&, u8&, u8 preset) { return ResolvePreset(preset); }
bool CUserConverter::OutputToSignal(float, u16&, u8&, u8 preset) { return ResolvePreset(preset); }

/// Whether the formula takes the types, and the backgrounds of each pixel cover the selection.
template <class... Form>
bool CUserConverter::Takes(STypedData in, STypedData out, const Form&... form) const {
    if (!IsNumeric(in.type) || !IsNumeric(out.type)) return false;
    if (!needIndices_) return true;
    const std::size_t end = FrameEnd(SelectionOf(form...));
    for (u32 p = 0; p < PresetCount; ++p) {
        const u32 pixels = calibration_[p].pixelBackgrounds.size();
        if (presets[p] && pixels && pixels < end) return false;
    }
    return true;
}

template <class... Form>
bool CUserConverter::InTwoSteps(STypedData in, STypedData out, u8* status, u32 count, const Form&... form) {
    if (GoesThroughTables()) return ThroughTable(in, out, status, form...);
    if (!Takes(in, out, form...)) return false;
    if (status) std::memset(status, 0, count);
    const SPreset& preset = calibration_[activePreset];
    const bool wantsTemperature = outputUnit == TemperatureUser;
    if (baseUnit != Counts) {
        if (wantsTemperature) ToTemperature(out, in, preset, form...);
        return true;
    }
    // A preset without a background for each pixel counts as one of 0 here, even if it has a single value,
    // which the other forms subtract: callers compare with results that were made so.
    const bool done = reduce::ToRadiance(out, in, form..., preset.coefficients.data(), preset.order,
                                         DataOrNull(preset.pixelBackgrounds), common_.radianceScale);
    if (done && wantsTemperature) ToTemperature(out, out, preset, count);
    return true;
}

template <class... Form>
bool CUserConverter::InOneStep(STypedData in, STypedData out, u8* status, const Form&... form) {
    if (GoesThroughTables()) return ThroughTable(in, out, status, form...);
    if (!Takes(in, out, form...)) return false;
    const SPreset& preset = calibration_[activePreset];
    if (baseUnit != Counts) {
        RadianceToTemperature(in, out, form..., preset.ToTemperature(), common_);
    } else if (outputUnit != TemperatureUser) {
        CountsToRadiance(in, out, form..., preset.ToRadiance(), common_);
    } else {
        CountsToTemperature(in, out, form..., preset.ToRadiance(), preset.ToTemperature(), common_);
    }
    return true;
}

template <class... Form>
bool CUserConverter::ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 clearedStatus,
                           const Form&... form) {
    if (GoesThroughTables()) {
        return ThroughTables([this](u8 p) { return presets[p]; }, in, presetMap, out, status, form...);
    }
    constexpr bool kAll[kMapPresets] = {true, true, true, true, true, true, true, true};
    if (!Takes(in, out, form...) || !HoldsOnly(SelectionOf(form...), presetMap, kAll)) return false;
    if (status) std::memset(status, 0, clearedStatus);
    const SRecords records(calibration_);
    if (baseUnit != Counts) {
        RadianceToTemperature(in, out, presetMap, form..., presets, records.temperature, common_);
    } else if (outputUnit != TemperatureUser) {
        CountsToRadiance(in, out, presetMap, form..., presets, records.radiance, common_);
    } else {
        CountsToTemperature(in, out, presetMap, form..., presets, records.radiance, records.temperature, common_);
    }
    return true;
}

bool CUserConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask,
                                  u32 stride, STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, 0, w, h, area, areaMask, stride);
}
bool CUserConverter::BaseToOutput(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                                  STypedData out, u8* status) {
    return InOneStep(in, out, status, w, h, area, areaMask, stride);
}
bool CUserConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines,
                                  STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, 0, w, h, lines);
}
bool CUserConverter::BaseToOutput(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                                  u8* status) {
    return InOneStep(in, out, status, w, h, lines);
}
bool CUserConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                                  u8* status) {
    return ByMap(in, presetMap, out, status, 0, w, h, area);
}
bool CUserConverter::BaseToOutput(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status) {
    return InOneStep(in, out, status, w, h, area);
}
bool CUserConverter::BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                                  u8* status) {
    return ByMap(in, presetMap, out, status, count, indices, count);
}
bool CUserConverter::BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) {
    return InTwoSteps(in, out, status, count, indices, count);
}
bool CUserConverter::BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) {
    return ByMap(in, presetMap, out, status, count, count);
}
bool CUserConverter::BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) {
    return InTwoSteps(in, out, status, count, count);
}

bool CUserConverter::BaseToOutput(float in, float& out, u8& status, u8 preset) {
    return IConverter::BaseToOutput(in, out, status, preset);
}
bool CUserConverter::OutputToBase(float in, float& out, u8& status, u8 preset) {
    return IConverter::OutputToBase(in, out, status, preset);
}

}  // namespace ovix::reduce
