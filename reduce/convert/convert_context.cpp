#include "reduce/convert/convert_context.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "core/typed_data.h"
#include "reduce/convert/converter_factory.h"
#include "reduce/convert/radiometry.h"
#include "reduce/convert/table_converter.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"
#include "reduce/objects/source_info_reduce_object.h"
#include "reduce/pixels/abate.h"
#include "reduce/pixels/apply_nuc.h"
#include "reduce/pixels/corrected_lut.h"
#include "reduce/pixels/correction_objects.h"
#include "reduce/pixels/get_image_data.h"
#include "reduce/pixels/stats.h"
#include "reduce/pixels/stats_route.h"

namespace ovix::reduce {

namespace {

/// The tables of a correction as the kernels take them: null for what is absent or switched off.
struct SEnabledTables {
    float* gain = nullptr;
    i16* offset = nullptr;
    u32* map = nullptr;

    SEnabledTables(const CCorrectionReduceObject* correction, const CCorrectionCfgReduceObject& cfg) {
        if (!correction) return;
        if (cfg.applyNUC) {
            gain = correction->gain;
            offset = correction->offset;
        }
        if (cfg.applyBadPixels) map = correction->map;
    }
};

}  // namespace

CConvertContext::CConvertContext() = default;
CConvertContext::CConvertContext(const CConvertContext&) = default;
CConvertContext& CConvertContext::operator=(const CConvertContext&) = default;
CConvertContext::~CConvertContext() = default;

void CConvertContext::setReduceObjs(CReduceObjectArray* objs) { reduceObjs_ = objs; }
CReduceObjectArray* CConvertContext::reduceObjs() const { return reduceObjs_; }
TSharedPtr<IConverter> CConvertContext::converter() const { return converter_; }

bool CConvertContext::GetUnits(TArray<EUnit>& units) const {
    return reduceObjs_ && converterFactory()->GetSupportedUnits(units, *reduceObjs_);
}

bool CConvertContext::SetUnit(EUnit unit, ETempType tempType) {
    if (!reduceObjs_) return false;
    const auto source = reduceObjs_->GetSourceInfo(false);
    if (!source) return false;
    const bool isBase = unit == source->baseUnit && (!IsTemperature(unit) || tempType == source->baseTempType);
    converter_ = isBase ? TSharedPtr<IConverter>() : converterFactory()->ConverterForUnit(*reduceObjs_, unit);
    if (!isBase && !converter_) return false;
    unit_ = unit;
    tempType_ = tempType;
    return true;
}

bool CConvertContext::Update(bool* const presets, u8 count, u32 flags) {
    if (!reduceObjs_ || count > PresetCount) return false;
    const auto source = reduceObjs_->GetSourceInfo(false);
    if (!source) return false;
    std::copy_n(presets, count, presets_);
    // This one flag alone is cleared, whatever the count is; those from `count` on keep what earlier calls set.
    if (count < PresetCount) presets_[1] = false;
    presetCount_ = count;

    abateCfg_ = reduceObjs_->GetAbateCfg(true);
    correctionCfg_ = reduceObjs_->GetCorrectionCfg(true);
    for (u8 preset = 0; preset < PresetCount; ++preset)
        corrections_[preset] = reduceObjs_->GetCorrection(preset, false);

    if (converter_ && !converter_->Update(source->baseUnit, source->baseTempType, *reduceObjs_, unit_, tempType_,
                                          presets_, count, flags)) {
        return false;
    }
    const bool* first = std::find(std::begin(presets_), std::end(presets_), true);
    const bool any = first != std::end(presets_);
    activePreset_ = any ? static_cast<u8>(first - presets_) : u8{0};
    return any;
}

bool CConvertContext::needToConvert() const { return static_cast<bool>(converter_); }

bool CConvertContext::WantsNUC() const {
    return correctionCfg_ && (correctionCfg_->applyNUC || correctionCfg_->applyBadPixels);
}

/// Looks at all presets, where `ApplyNUC` uses the active one alone.
bool CConvertContext::needToApplyNUC() const {
    if (!WantsNUC()) return false;
    for (u32 i = 0; i < PresetCount; ++i) {
        if (presets_[i] && corrections_[i]) return true;
    }
    return false;
}

bool CConvertContext::Correct(STypedData in, STypedData out, u32 count) {
    const CCorrectionReduceObject* correction = corrections_[activePreset_].ptr();
    if (!WantsNUC() || !correction) return false;
    const CCorrectionCfgReduceObject& cfg = *correctionCfg_;
    const SEnabledTables tables(correction, cfg);
    reduce::ApplyNUC(out, in, count, tables.gain, tables.offset, tables.map, cfg.clip, cfg.minimum, cfg.maximum);
    return true;
}

bool CConvertContext::ApplyNUC(STypedData in, STypedData out, u32 count, STypedData& result) {
    if (!correctionCfg_) return false;
    result = Correct(in, out, count) ? out : in;
    return true;
}

bool CConvertContext::ApplyNUC(STypedData in, STypedData out, u32 count) {
    if (!correctionCfg_) return false;
    if (!Correct(in, out, count)) ConvertArray(out, in, count);
    return true;
}

bool CConvertContext::Abate(const STypedData* const frames, u32 count, STypedData target, u8* presetMap) {
    // A flag can have survived from an earlier call with more presets: there is no frame for it.
    bool given[PresetCount] = {};
    void* sources[PresetCount] = {};
    for (u32 i = 0; i < presetCount_; ++i) {
        given[i] = presets_[i];
        sources[i] = frames[i].data;
        if (given[i] && frames[i].type != target.type) return false;
    }
    if (!abateCfg_ || !correctionCfg_) return false;

    const CCorrectionCfgReduceObject& cfg = *correctionCfg_;
    float* gains[PresetCount];
    i16* offsets[PresetCount];
    u32* maps[PresetCount];
    for (u32 i = 0; i < PresetCount; ++i) {
        const SEnabledTables tables(corrections_[i].ptr(), cfg);
        gains[i] = tables.gain;
        offsets[i] = tables.offset;
        maps[i] = tables.map;
    }
    return reduce::Abate(target.type, sources, count, target.data, presetMap, given, abateCfg_->order, abateCfg_->low,
                         abateCfg_->high, abateCfg_->mode, gains, offsets, maps, cfg.clip, cfg.minimum, cfg.maximum);
}

/// Through a frame in memory, where the conversion knows no table.
bool CConvertContext::MeasureInSteps(STypedData in, u16 width, u16 height, STypedData out, u8* status, CStats& stats) {
    const u32 count = u32{width} * height;
    const std::unique_ptr<u8[]> room(new (std::nothrow) u8[std::size_t{count} * ElementSize(in.type)]);
    STypedData corrected = in;
    if (!room || !ApplyNUC(in, {room.get(), in.type}, count, corrected) || !Convert(corrected, out, status, count)) {
        return false;
    }
    GetStats(stats, out, width, height, nullptr, 0, status);
    return true;
}

bool CConvertContext::MeasureFrame(STypedData in, u16 width, u16 height, STypedData out, u8* status, CStats& stats) {
    const u32 count = u32{width} * height;
    if (!correctionCfg_ || static_cast<i32>(count) <= 0) return false;
    if (!IsNumeric(in.type) || !IsNumeric(out.type) || out.type == UInt64) return false;
    const CCorrectionCfgReduceObject& cfg = *correctionCfg_;
    const CCorrectionReduceObject* correction = WantsNUC() ? corrections_[activePreset_].ptr() : nullptr;
    const CNucCorrector correct(in.type, in.type, cfg.clip != 0, cfg.minimum, cfg.maximum);
    if (correction && !correct.IsValid()) return false;
    auto* tableConverter = dynamic_cast<CTableConverter*>(converter_.ptr());
    const auto table = tableConverter ? tableConverter->TableInForce() : std::nullopt;
    if (!table) return MeasureInSteps(in, width, height, out, status, stats);

    const SEnabledTables enabled(correction, cfg);
    const SCorrectionTables tables{enabled.gain, enabled.offset, enabled.map};
    const std::size_t to = ElementSize(out.type);
    CCorrectedLut convert(correct, correction ? &tables : nullptr, in, out.type, table->values,
                          status ? table->status : nullptr, table->top);
    CFrameTally tally(out.type, width, height, status != nullptr);
    for (u32 at = 0, n = 0; at < count; at += n) {
        n = std::min(kLutBlock, count - at);
        u8* results = static_cast<u8*>(out.data) + at * to;
        u8* flags = status ? status + at : nullptr;
        convert(at, n, results, flags);
        tally.Add(results, flags, n);
    }
    tally.Finish(stats);
    return true;
}

bool CConvertContext::Convert(STypedData in, STypedData out, u8* status, u32 count) {
    if (converter_) return converter_->BaseToOutput(in, out, status, count);
    ConvertArray(out, in, count);
    if (status) std::memset(status, 0, count);
    return true;
}
bool CConvertContext::Convert(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) {
    if (converter_) return converter_->BaseToOutput(in, presetMap, out, status, count);
    return Convert(in, out, status, count);
}
bool CConvertContext::Convert(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) {
    if (converter_) return converter_->BaseToOutput(in, indices, count, out, status);
    return GetImageData(in, nullptr, out, status, indices, count);
}
bool CConvertContext::Convert(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                              u8* status) {
    if (converter_) return converter_->BaseToOutput(in, presetMap, indices, count, out, status);
    return Convert(in, indices, count, out, status);
}
bool CConvertContext::Convert(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status) {
    if (converter_) return converter_->BaseToOutput(in, w, h, area, out, status);
    return GetImageData(in, nullptr, out, status, w, h, area);
}
bool CConvertContext::Convert(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                              u8* status) {
    if (converter_) return converter_->BaseToOutput(in, presetMap, w, h, area, out, status);
    return Convert(in, w, h, area, out, status);
}
bool CConvertContext::Convert(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out, u8* status) {
    if (converter_) return converter_->BaseToOutput(in, w, h, lines, out, status);
    return GetImageData(in, nullptr, out, status, w, h, lines);
}
bool CConvertContext::Convert(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines,
                              STypedData out, u8* status) {
    if (converter_) return converter_->BaseToOutput(in, presetMap, w, h, lines, out, status);
    return Convert(in, w, h, lines, out, status);
}
bool CConvertContext::Convert(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride, STypedData out,
                              u8* status) {
    if (converter_) return converter_->BaseToOutput(in, w, h, area, areaMask, stride, out, status);
    return GetImageData(in, nullptr, out, status, w, h, area, areaMask, stride);
}
bool CConvertContext::Convert(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask,
                              u32 stride, STypedData out, u8* status) {
    if (converter_) return converter_->BaseToOutput(in, presetMap, w, h, area, areaMask, stride, out, status);
    return Convert(in, w, h, area, areaMask, stride, out, status);
}
bool CConvertContext::Convert(float in, float& out, u8& status, u8 preset) {
    if (converter_) return converter_->BaseToOutput(in, out, status, preset);
    out = in;
    status = 0;
    return true;
}
bool CConvertContext::ConvertBack(float in, float& out, u8& status, u8 preset) {
    if (converter_) return converter_->OutputToBase(in, out, status, preset);
    out = in;
    status = 0;
    return true;
}

bool CConvertContext::GetCalibratedRange(float& lower, float& upper, u8 preset) const {
    return converter_ && converter_->GetCalibratedRange(lower, upper, preset);
}

bool CConvertContext::canChangeObjectParameters() const {
    return converter_ && converter_->canChangeObjectParameters();
}
bool CConvertContext::ChangeObjectParameters(CObjectParametersReduceObject* params) {
    return converter_ && converter_->ChangeObjectParameters(params);
}

void CConvertContext::OverrideObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& wanted,
                                               CObjectParametersReduceObject& saved) {
    const auto object = objs.GetObjectParameters(true);
    if (!object) return;
    if (object->fromSource) {
        saved.fromSource = true;
        CopyScene(saved, *object);
    }
    object->fromSource = false;
    CopyScene(*object, wanted);
}

void CConvertContext::RestoreObjectParameters(CReduceObjectArray& objs, CObjectParametersReduceObject& saved) {
    const auto object = objs.GetObjectParameters(true);
    if (!object || !saved.fromSource || object->fromSource) return;
    object->fromSource = true;
    CopyScene(*object, saved);
}

}  // namespace ovix::reduce
