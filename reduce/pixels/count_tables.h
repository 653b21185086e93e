#pragma once

#include <memory>
#include <new>

#include "reduce/pixels/parts.h"
#include "reduce/pixels/simd/lut_simd.h"

namespace ovix::reduce {

/// Formulas of 16-bit counts go through tables where a call has more pixels than their counts have values: a formula
/// gives every pixel of a preset with one count the same bits, and takes many times as long as a look into a table.
class CCountTables {
  public:
    /// Makes the tables that pay. `formula(preset, counts, n, values)` computes n counts, at most `kRunBlock`; false
    /// where that is not all a pixel depends on, or it has no result.
    template <class Selection, class Formula>
    CCountTables(const Selection& selection, STypedData source, EDataType destination, const u8* presets,
                 const Formula& formula) {
        if (source.type != UInt16) return;
        Survey(selection, source, presets);
        for (u32 preset = 0; preset < kPresets; ++preset) {
            STable& table = tables_[preset];
            if (table.pixels == 0 || table.pixels < kTimes * (table.greatest + 1 - table.least)) continue;
            if (!Fill(table, destination, [&](const u16* counts, u32 n, double* values) {
                    return formula(static_cast<u8>(preset), counts, n, values);
                })) {
                table.entries.reset();
            }
        }
    }

    bool Has(u8 preset) const { return tables_[preset].entries != nullptr; }

    /// The entries of `count` pixels to the destination, from element `at` on.
    void Look(u8 preset, const u16* counts, u32 count, STypedData destination, std::size_t at) const {
        const void* entries = tables_[preset].entries.get();
        if (destination.type == Flt32) {
            float* to = static_cast<float*>(destination.data) + at;
            return simd::FetchValues(static_cast<const float*>(entries), counts, to, count);
        }
        double* to = static_cast<double*>(destination.data) + at;
        for (u32 i = 0; i < count; ++i) to[i] = static_cast<const double*>(entries)[counts[i]];
    }

  private:
    static constexpr u32 kPresets = 256;  ///< whatever a map may name
    /// Pixels for each entry that a table must serve.
    static constexpr u64 kTimes = 2;

    struct STable {
        u16 least = 65535;
        u32 greatest = 0;
        u64 pixels = 0;
        std::unique_ptr<u8[]> entries;  ///< by count; those below the least are not set
    };

    template <class Selection>
    void Survey(const Selection& selection, STypedData source, const u8* presets) {
        ForEachPart(selection, presets, [&](const auto& part, u8 preset) {
            SElementScratch gathered;
            const auto range = simd::RangeOf(static_cast<const u16*>(ViewOf(part, source, gathered).data), part.count);
            STable& table = tables_[preset];
            table.least = std::min(table.least, range.least);
            table.greatest = std::max<u32>(table.greatest, range.greatest);
            table.pixels += part.count;
        });
    }

    /// False, too, where there is no memory: then the formula serves.
    template <class Formula>
    static bool Fill(STable& table, EDataType destination, const Formula& formula) {
        table.entries.reset(new (std::nothrow) u8[(table.greatest + 1) * ElementSize(destination)]);
        if (!table.entries) return false;
        u16 counts[kRunBlock];
        double values[kRunBlock];
        for (u32 first = table.least, n = 0; first <= table.greatest; first += n) {
            n = std::min(kRunBlock, table.greatest + 1 - first);
            for (u32 i = 0; i < n; ++i) counts[i] = static_cast<u16>(first + i);
            if (!formula(counts, n, values)) return false;
            StoreBlock({table.entries.get(), destination}, first, values, n);
        }
        return true;
    }

    STable tables_[kPresets];
};

/// Converts a selection of counts. `convert(part, preset)` does the pixels of a part one by one, of any type; `formula`
/// is that of `CCountTables`.
template <class Selection, class Formula, class Convert>
void ConvertThroughTables(STypedData source, STypedData destination, const u8* presets, const Selection& selection,
                          const Formula& formula, const Convert& convert) {
    const CCountTables tables(selection, source, destination.type, presets, formula);
    ForEachPart(selection, presets, [&](const auto& part, u8 preset) {
        if (!tables.Has(preset)) return convert(part, preset);
        SElementScratch gathered;
        const void* counts = ViewOf(part, source, gathered).data;
        tables.Look(preset, static_cast<const u16*>(counts), part.count, destination, part.out);
    });
}

}  // namespace ovix::reduce
