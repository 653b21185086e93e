#include "reduce/convert/converter.h"

#include <algorithm>
#include <cstring>

#include "core/typed_data.h"
#include "core/visit.h"
#include "reduce/pixels/selection.h"

namespace ovix::reduce {

namespace {

/// The frame indices of a selection. When memory fails, pixels are missing from it.
TArray<u32> IndicesOf(const auto& selection) {
    TArray<u32> indices;
    indices.Dimension(static_cast<u32>(CountPixels(selection)));
    ForEachRun(selection, [&](const auto& run) {
        for (u32 i = 0; i < run.count; ++i) indices.Add(static_cast<u32>(run.IndexAt(i)));
    });
    return indices;
}

/// A value of the unit on both sides, temperatures from scale to scale.
float SameUnit(float value, EUnit unit, ETempType from, ETempType to) {
    return IsTemperature(unit) ? static_cast<float>(CMath::ConvertTemperature(value, from, to)) : value;
}

}  // namespace

IConverter::IConverter() = default;
IConverter::IConverter(const IConverter&) = default;
IConverter& IConverter::operator=(const IConverter&) = default;
IConverter::~IConverter() = default;

bool IConverter::Update(EUnit base, ETempType baseType, CReduceObjectArray&, EUnit output, ETempType outputType,
                        bool* const presetFlags, u8 count, u32) {
    if (count > PresetCount) return false;
    baseUnit = base;
    baseTempType = baseType;
    outputUnit = output;
    outputTempType = outputType;
    std::fill(std::copy_n(presetFlags, count, presets), std::end(presets), false);
    const bool* first = std::find(std::begin(presets), std::end(presets), true);
    activePreset = first == std::end(presets) ? u8{0} : static_cast<u8>(first - presets);
    return true;
}

bool IConverter::canChangeObjectParameters() const { return false; }
bool IConverter::canUseLUT() const { return false; }
bool IConverter::isReversable() const { return false; }
bool IConverter::ChangeObjectParameters(CObjectParametersReduceObject*) { return false; }

bool IConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8) {
    if (baseUnit != Counts || outputUnit != Counts) return false;
    const int count = last - first + 1;
    for (int i = 0; i < count; ++i) {
        out[i] = static_cast<float>(first + i);
        if (status) status[i] = 0;
    }
    return true;
}

bool IConverter::SignalToOutput(u16 signal, float& out, u8& status, u8) {
    if (baseUnit != Counts || outputUnit != Counts) return false;
    out = signal;
    status = 0;
    return true;
}

bool IConverter::OutputToSignal(float value, u16& signal, u8& status, u8) {
    if (baseUnit != Counts || outputUnit != Counts) return false;
    signal = NumericCast<u16>(value);
    status = 0;
    return true;
}

bool IConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16, SArea area, const u8* areaMask,
                              u32 stride, STypedData out, u8* status) {
    const auto indices = IndicesOf(SMasked{w, area, areaMask, stride});
    return BaseToOutput(in, presetMap, indices.data(), indices.size(), out, status);
}
bool IConverter::BaseToOutput(STypedData in, u16 w, u16, SArea area, const u8* areaMask, u32 stride, STypedData out,
                              u8* status) {
    const auto indices = IndicesOf(SMasked{w, area, areaMask, stride});
    return BaseToOutput(in, indices.data(), indices.size(), out, status);
}
bool IConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16, const TArray<SScanLine>& lines,
                              STypedData out, u8* status) {
    const auto indices = IndicesOf(SLines{w, lines});
    return BaseToOutput(in, presetMap, indices.data(), indices.size(), out, status);
}
bool IConverter::BaseToOutput(STypedData in, u16 w, u16, const TArray<SScanLine>& lines, STypedData out, u8* status) {
    const auto indices = IndicesOf(SLines{w, lines});
    return BaseToOutput(in, indices.data(), indices.size(), out, status);
}
bool IConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16, SArea area, STypedData out, u8* status) {
    const auto indices = IndicesOf(SRectangle{w, area});
    return BaseToOutput(in, presetMap, indices.data(), indices.size(), out, status);
}
bool IConverter::BaseToOutput(STypedData in, u16 w, u16, SArea area, STypedData out, u8* status) {
    const auto indices = IndicesOf(SRectangle{w, area});
    return BaseToOutput(in, indices.data(), indices.size(), out, status);
}

// From here down map and indices are ignored: the Curlew family has one model for all presets, and its callers get
// this.
bool IConverter::BaseToOutput(STypedData in, const u8* presetMap, const u32*, u32 count, STypedData out, u8* status) {
    return BaseToOutput(in, presetMap, out, status, count);
}
bool IConverter::BaseToOutput(STypedData in, const u32*, u32 count, STypedData out, u8* status) {
    return BaseToOutput(in, out, status, count);
}
bool IConverter::BaseToOutput(STypedData in, const u8*, STypedData out, u8* status, u32 count) {
    return BaseToOutput(in, out, status, count);
}
bool IConverter::BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) {
    if (baseUnit != outputUnit) return false;
    if (status) std::memset(status, 0, count);
    return IsTemperature(outputUnit) ? CMath::ConvertTemperature(out, in, count, baseTempType, outputTempType)
                                     : ConvertArray(out, in, count);
}

bool IConverter::BaseToOutput(float in, float& out, u8& status, u8) {
    if (baseUnit != outputUnit) return false;
    out = SameUnit(in, baseUnit, baseTempType, outputTempType);
    status = 0;
    return true;
}
bool IConverter::OutputToBase(float in, float& out, u8& status, u8) {
    if (baseUnit != outputUnit) return false;
    out = SameUnit(in, baseUnit, outputTempType, baseTempType);
    status = 0;
    return true;
}

bool IConverter::GetCalibratedRange(float&, float&, u8) const { return false; }

u32 IConverter::CalcNumPixels(u16 w, u16, SArea area) { return static_cast<u32>(CountPixels(SRectangle{w, area})); }
u32 IConverter::CalcNumPixels(u16 w, u16, const TArray<SScanLine>& lines) {
    return static_cast<u32>(CountPixels(SLines{w, lines}));
}
u32 IConverter::CalcNumPixels(u16 w, u16, SArea area, const u8* areaMask, u32 stride) {
    return static_cast<u32>(CountPixels(SMasked{w, area, areaMask, stride}));
}

}  // namespace ovix::reduce
