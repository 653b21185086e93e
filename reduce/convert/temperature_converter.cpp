#include "reduce/convert/temperature_converter.h"

#include <cstring>

#include "core/math.h"
#include "reduce/pixels/parts.h"

namespace ovix::reduce {

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
