#include "reduce/convert/table_converter.h"

#include <algorithm>

#include "core/visit.h"
#include "reduce/convert/parallel_for.h"

namespace ovix::reduce {

CTableConverter::CTableConverter(u16 topSignal, u8 tableCount) : topSignal_(topSignal), tableCount_(tableCount) {}

bool CTableConverter::canChangeObjectParameters() const { return true; }
bool CTableConverter::canUseLUT() const { return true; }

void CTableConverter::PrepareTable(u8) {}

std::optional<CTableConverter::STableView> CTableConverter::TableInForce() {
    if (!UpdateTable(activePreset)) return {};
    const STable& table = tables_[TableOf(activePreset)];
    return STableView{table.values, table.status, topSignal_};
}

bool CTableConverter::ResolvePreset(u8& preset) const {
    if (preset == 255) preset = activePreset;
    return preset < PresetCount && presets[preset] && TableOf(preset) < tableCount_;
}

bool CTableConverter::UpdateTable(u8 preset) {
    const u8 number = TableOf(preset);
    if (number >= tableCount_) return false;
    STable& table = tables_[number];
    if (table.valid) return true;
    const u32 size = u32{topSignal_} + 1;
    if (!table.values) {
        table.values.Allocate(size);
        std::fill_n(table.values.get(), size, 0.0f);  // a scale that is none of the four leaves them alone
    }
    if (!table.status) table.status.Allocate(size);
    PrepareTable(preset);
    // The first entry says for all whether the model knows the unit.
    table.valid = RangeToOutput(0, 0, table.values, table.status, preset);
    if (!table.valid) return false;
    ParallelFor(size, [&](u32 first, u32 last) {
        RangeToOutput(static_cast<u16>(first), static_cast<u16>(last - 1), table.values + first, table.status + first,
                      preset);
    });
    return true;
}

bool CTableConverter::RangeFromTable(u16 first, u16 last, float* out, u8* status, u8 preset, int span) {
    const u8 number = TableOf(preset);
    if (number >= tableCount_) return false;
    const STable& table = tables_[number];
    if (!table.valid && last - first > span) UpdateTable(preset);
    if (!table.valid) return false;
    // This path leaves the entry at `last` out, one fewer than the formula writes: callers count on it.
    const int count = std::max(last - first, 0);
    std::copy_n(table.values + first, count, out);
    if (status) std::copy_n(table.status + first, count, status);
    return true;
}

void CTableConverter::InvalidateTables() {
    for (STable& table : tables_) table.valid = false;
}

bool CTableConverter::SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) {
    return ResolvePreset(preset) && RangeToOutput(first, last, out, status, preset);
}

bool CTableConverter::BaseToOutput(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                                   STypedData out, u8* status) {
    return ThroughTable(in, out, status, w, h, area, areaMask, stride);
}
bool CTableConverter::BaseToOutput(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                                   u8* status) {
    return ThroughTable(in, out, status, w, h, lines);
}
bool CTableConverter::BaseToOutput(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status) {
    return ThroughTable(in, out, status, w, h, area);
}
bool CTableConverter::BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) {
    return ThroughTable(in, out, status, indices, count);
}
bool CTableConverter::BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) {
    return ThroughTable(in, out, status, count);
}

bool CTableConverter::BaseToOutput(float in, float& out, u8& status, u8 preset) {
    return SignalToOutput(NumericCast<u16>(in), out, status, preset);
}

bool CTableConverter::OutputToBase(float in, float& out, u8& status, u8 preset) {
    u16 signal = 0;
    if (!OutputToSignal(in, signal, status, preset)) return false;
    out = signal;
    return true;
}

CPresetTableConverter::CPresetTableConverter(u16 topSignal, u8 presetCount) : CTableConverter(topSignal, presetCount) {}

bool CPresetTableConverter::UpdateLUT(u8 preset) { return UpdateTable(preset); }

template <class... Form>
bool CPresetTableConverter::ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, const Form&... form) {
    return ThroughTables([](u8) { return true; }, in, presetMap, out, status, form...);
}

bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area,
                                         const u8* areaMask, u32 stride, STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, w, h, area, areaMask, stride);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h,
                                         const TArray<SScanLine>& lines, STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, w, h, lines);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                                         u8* status) {
    return ByMap(in, presetMap, out, status, w, h, area);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count,
                                         STypedData out, u8* status) {
    return ByMap(in, presetMap, out, status, indices, count);
}
bool CPresetTableConverter::BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) {
    return ByMap(in, presetMap, out, status, count);
}

}  // namespace ovix::reduce
