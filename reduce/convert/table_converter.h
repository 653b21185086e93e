#pragma once

#include <optional>

#include "core/shared_ptr.h"
#include "core/visit.h"
#include "reduce/convert/converter.h"
#include "reduce/pixels/apply_lut.h"
#include "reduce/pixels/selection.h"

namespace ovix::reduce {

/// The body of the converters that run buffers through a table: one entry, and its status, for each signal from 0 to a
/// top signal. A family adds its model.
///
/// Buffers always go through the table, which is built when it is first needed and again after a change; single values
/// and ranges of signals go through the formula. There is one table for all presets or one for each. A table's memory
/// stays until the converter goes, and copies of a converter share it.
class OVIX_REDUCE_API CTableConverter : public IConverter {
  public:
    bool canChangeObjectParameters() const override;
    bool canUseLUT() const override;

    using IConverter::SignalToOutput;
    bool SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) override;

    using IConverter::BaseToOutput;
    bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, STypedData out, u8* status, u32 count) override;

    /// One value, truncated to a signal of 16 bits (a buffer rounds it).
    bool BaseToOutput(float in, float& out, u8& status, u8 preset) override;
    bool OutputToBase(float in, float& out, u8& status, u8 preset) override;

    /// A table as it stands: the results of the signals from 0 to `top`, and their status.
    struct STableView {
        const float* values;
        const u8* status;
        u16 top;
    };
    /// The table that buffers without a preset map go through, brought up to date. It is the converter's, and holds
    /// until that changes. Empty where such buffers take another way, and for a unit that the model does not know.
    virtual std::optional<STableView> TableInForce();

  protected:
    /// `tableCount` is 1, for all presets, or the number of presets that have one of their own.
    CTableConverter(u16 topSignal, u8 tableCount);

    struct STable {
        TSharedTable<float> values;
        TSharedTable<u8> status;
        bool valid = false;  ///< matches the model and the output unit
    };

    /// The range form of the preset's model, `first` to `last` inclusive, in the output unit and scale; false for a
    /// unit that it does not know. `status` may be null.
    virtual bool RangeToOutput(u16 first, u16 last, float* out, u8* status, u8 preset) = 0;

    /// Before a table is filled: the place to make what serves many scenes.
    virtual void PrepareTable(u8 preset);

    /// Puts the active preset in the place of 255; false when the preset meant is not enabled, and
    /// when the family does not have it.
    bool ResolvePreset(u8& preset) const;
    /// Brings the preset's table up to date. False for a preset without one and for a unit that the model does not
    /// know.
    bool UpdateTable(u8 preset);
    /// Takes a range from the preset's table if that is up to date, or if it spans more than `span` and so pays for the
    /// building. False, with nothing written, otherwise.
    bool RangeFromTable(u16 first, u16 last, float* out, u8* status, u8 preset, int span);
    void InvalidateTables();
    /// Calls `f(preset)` for each enabled preset of the family, until one gives false.
    template <class F>
    bool ForEachEnabled(const F& f) const {
        for (u8 p = 0; p < tableCount_; ++p) {
            if (presets[p] && !f(p)) return false;
        }
        return true;
    }

    /// The pixels of a form through the table of the active preset.
    template <class... Form>
    bool ThroughTable(STypedData in, STypedData out, u8* status, const Form&... form) {
        if (!IsNumeric(in.type) || !IsNumeric(out.type) || !UpdateTable(activePreset)) return false;
        const STable& table = tables_[TableOf(activePreset)];
        return ApplyLUT(in, out, status, form..., table.values, table.status, 0, topSignal_);
    }
    /// Each pixel through the table of its own preset, where presets have tables of their own; `needed(preset)` says
    /// which are brought up to date before. False, with no pixel touched, for a map that names a preset without table.
    template <class Needed, class... Form>
    bool ThroughTables(const Needed& needed, STypedData in, const u8* presetMap, STypedData out, u8* status,
                       const Form&... form) {
        if (!IsNumeric(in.type) || !IsNumeric(out.type)) return false;
        float* values[PresetCount] = {};
        u8* flags[PresetCount] = {};
        bool present[PresetCount] = {};
        for (u8 p = 0; p < tableCount_; ++p) {
            if (needed(p) && !UpdateTable(p)) return false;
            values[p] = tables_[p].values;
            flags[p] = tables_[p].status;
            present[p] = values[p] && flags[p];
        }
        return HoldsOnly(SelectionOf(form...), presetMap, present) &&
               ApplyLUT(in, presetMap, out, status, form..., values, flags, 0, topSignal_);
    }

    u8 TableOf(u8 preset) const { return tableCount_ == 1 ? 0 : preset; }

    STable tables_[PresetCount];
    u16 topSignal_;
    u8 tableCount_;
};

/// The body of the converters of a family whose presets have a model, and a table, each.
///
/// With a preset map each pixel goes through the table of its own preset, whatever the active one is. A preset that is
/// not enabled has the table of a model without calibration. A map that names a preset beyond the family's gives false,
/// with no pixel touched.
class OVIX_REDUCE_API CPresetTableConverter : public CTableConverter {
  public:
    using CTableConverter::BaseToOutput;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride,
                      STypedData out, u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                      u8* status) override;
    bool BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count) override;

    /// Builds the preset's table if it is not up to date. False for a preset that the family does not have, and for a
    /// unit that its model does not know.
    bool UpdateLUT(u8 preset);

  protected:
    CPresetTableConverter(u16 topSignal, u8 presetCount);

  private:
    template <class... Form>
    bool ByMap(STypedData in, const u8* presetMap, STypedData out, u8* status, const Form&... form);
};

}  // namespace ovix::reduce
