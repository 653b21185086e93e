#include "reduce/convert/uncalibrated_converters.h"

#include <cstring>

#include "core/typed_data.h"
#include "reduce/pixels/parts.h"
#include "reduce/pixels/selection.h"

namespace ovix::reduce {

namespace {

/// `value(pixel)` of each selected pixel, a pixel being a pointer to its three channels.
template <class Channel>
void Pick(const auto& selection, const void* image, float* out, auto value) {
    const auto* channels = static_cast<const Channel*>(image);
    ForEachRun(selection, [&](const auto& run) {
        for (u32 i = 0; i < run.count; ++i) out[run.out + i] = value(channels + run.IndexAt(i) * 3);
    });
}

template <class Channel>
void PickUnit(EUnit unit, const auto& selection, const void* image, float* out) {
    switch (unit) {
        case RedChannel:
        case GreenChannel:
        case BlueChannel:
            return Pick<Channel>(selection, image, out, [channel = unit - RedChannel](const Channel* pixel) {
                return static_cast<float>(pixel[channel]);
            });
        case RGBAverage:
            return Pick<Channel>(selection, image, out, [](const Channel* pixel) {
                return static_cast<float>(pixel[0] + pixel[1] + pixel[2]) / 3.0f;
            });
        default:
            return;  // nothing is written, and that is a success
    }
}

bool Convert(EUnit unit, const auto& selection, STypedData in, STypedData out, u8* status) {
    const bool wide = in.type == OpaqueWide;
    if ((in.type != Opaque && !wide) || out.type != Flt32) return false;
    if (status) std::memset(status, 0, selection.count);
    auto* dest = static_cast<float*>(out.data);
    wide ? PickUnit<u16>(unit, selection, in.data, dest) : PickUnit<u8>(unit, selection, in.data, dest);
    return true;
}

}  // namespace

bool CRGBConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray&) {
    if (base != RGB24 && base != RGB48) return false;
    for (const EUnit unit : {RedChannel, GreenChannel, BlueChannel, RGBAverage}) units.Add(unit);
    return true;
}

bool CRGBConverter::BaseToOutput(STypedData in, const u8*, const u32* indices, u32 count, STypedData out, u8* status) {
    return BaseToOutput(in, indices, count, out, status);
}
bool CRGBConverter::BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) {
    return Convert(outputUnit, SIndexList{indices, count}, in, out, status);
}
bool CRGBConverter::BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) {
    return Convert(outputUnit, SWhole{count}, in, out, status);
}
bool CRGBConverter::BaseToOutput(float, float&, u8&, u8) { return false; }
bool CRGBConverter::OutputToBase(float, float&, u8&, u8) { return false; }

bool CTemperatureConverter::SupportedUnits(TArray<EUnit>& units, EUnit base, CReduceObjectArray&) {
    if (!IsTemperature(base)) return false;
    units.Add(base);
    return true;
}

bool CTemperatureConverter::BaseToOutput(STypedData in, const u8*, const u32* indices, u32 count, STypedData out,
                                         u8* status) {
    return BaseToOutput(in, indices, count, out, status);
}

bool CTemperatureConverter::BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) {
    if (!IsNumeric(in.type) || !IsNumeric(out.type)) return false;
    if (status) std::memset(status, 0, count);
    ForEachRun(SIndexList{indices, count}, [&](const SList& run) {
        SElementScratch gathered;
        const STypedData dest{static_cast<u8*>(out.data) + run.out * ElementSize(out.type), out.type};
        CMath::ConvertTemperature(dest, ViewOf(run, in, gathered), run.count, baseTempType, outputTempType);
    });
    return true;
}

bool CTemperatureConverter::BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) {
    if (status) std::memset(status, 0, count);
    CMath::ConvertTemperature(out, in, count, baseTempType, outputTempType);
    return true;
}

bool CTemperatureConverter::BaseToOutput(float, float&, u8& status, u8) {
    status = 0;
    return true;
}
bool CTemperatureConverter::OutputToBase(float in, float& out, u8& status, u8 preset) {
    return BaseToOutput(in, out, status, preset);
}

}  // namespace ovix::reduce
