#pragma once

#include "core/guid.h"
#include "core/string.h"
#include "core/typed_data.h"
#include "reduce/api.h"

namespace ovix::reduce {

class CObjectParametersReduceObject;
class CReduceObjectArray;

/// Turns the stored pixels of one source into another physical unit.
///
/// Four words go through all converters. *Base* is the unit of the stored pixels, as the source info names it. *Signal*
/// is one raw detector value of 16 bits. *Output* is the unit asked for. A *preset* is one of up to eight acquisition
/// settings, each of which may have a calibration of its own; a preset argument of 255 means `activePreset`.
/// For cameras the base is always `Counts`, so base and signal are the same values, in any numeric type and in 16 bits.
///
/// The buffer forms of `BaseToOutput` write output and status contiguously, one element for each selected pixel in the
/// order of selection. `out` and `status` hold as many elements as the selection has pixels; `status` may be null.
/// A status byte is 0 for a good value, otherwise a sum of 1 (outside the calibrated range, value kept), 2 (underflow),
/// 4 (overflow) and 32 (no data).
///
/// All operations answer false when they cannot do what is asked; out-arguments are undefined then. A converter is
/// unusable until `Update` has been true. It has no lock: it serves one stream on one thread at a time.
class OVIX_REDUCE_API IConverter {
  public:
    static constexpr u32 PresetCount = 8;

    EUnit baseUnit = Counts;
    ETempType baseTempType = Celsius;  ///< looked at only when the base is a temperature
    EUnit outputUnit = Counts;
    ETempType outputTempType = Celsius;  ///< looked at only when the output is a temperature
    bool presets[PresetCount] = {};      ///< which are enabled
    u8 activePreset = 0;                 ///< the first enabled one; 0 if none is

    IConverter();
    IConverter(const IConverter&);
    IConverter& operator=(const IConverter&);
    virtual ~IConverter();

    virtual CString name() const = 0;
    virtual GUID id() const = 0;

    /// Takes over units, scales and `count` preset flags (the others are cleared), and whatever the array says of the
    /// calibration. False, with nothing changed, for a count above 8. `flags` is for converters of plug-ins.
    virtual bool Update(EUnit base, ETempType baseType, CReduceObjectArray& objs, EUnit output, ETempType outputType,
                        bool* const presets, u8 count, u32 flags);

    virtual bool canChangeObjectParameters() const;
    virtual bool canUseLUT() const;
    virtual bool isReversable() const;

    /// The quick path for a change of scene without a new `Update`. Which of the values it takes is the family's.
    virtual bool ChangeObjectParameters(CObjectParametersReduceObject* params);

    // Signals. By default only `Counts` to `Counts`, as they are.

    /// All signals from `first` to `last` inclusive. `status` may be null.
    virtual bool SignalToOutput(u16 first, u16 last, float* out, u8* status, u8 preset);
    virtual bool SignalToOutput(u16 signal, float& out, u8& status, u8 preset);
    virtual bool OutputToSignal(float value, u16& signal, u8& status, u8 preset);

    // Buffers: the shapes M, S, A, L, W, each first with a preset map: one byte per pixel of the frame that names the
    // preset by whose calibration the pixel is converted, as `Abate` writes it.
    //
    // The defaults come down to form W, which converts only a base to itself. A and S and M build an index list for
    // form L. Form L ignores its indices and converts the first `count` pixels, and the forms with a map ignore the
    // map: a converter of a plug-in that overrides neither gets just that, and callers of the Curlew family, which has
    // one model for all presets, depend on it.

    virtual bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, const u8* areaMask,
                              u32 stride, STypedData out, u8* status);
    /// The pixels of `area` whose byte areaMask[row * stride + column] is not 0.
    virtual bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, const u8* areaMask, u32 stride, STypedData out,
                              u8* status);
    virtual bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, const TArray<SScanLine>& lines,
                              STypedData out, u8* status);
    virtual bool BaseToOutput(STypedData in, u16 w, u16 h, const TArray<SScanLine>& lines, STypedData out, u8* status);
    virtual bool BaseToOutput(STypedData in, const u8* presetMap, u16 w, u16 h, SArea area, STypedData out, u8* status);
    virtual bool BaseToOutput(STypedData in, u16 w, u16 h, SArea area, STypedData out, u8* status);
    virtual bool BaseToOutput(STypedData in, const u8* presetMap, const u32* indices, u32 count, STypedData out,
                              u8* status);
    virtual bool BaseToOutput(STypedData in, const u32* indices, u32 count, STypedData out, u8* status);
    virtual bool BaseToOutput(STypedData in, const u8* presetMap, STypedData out, u8* status, u32 count);
    virtual bool BaseToOutput(STypedData in, STypedData out, u8* status, u32 count);

    // Single values. By default only a base to itself, temperatures from scale to scale.

    virtual bool BaseToOutput(float in, float& out, u8& status, u8 preset);
    virtual bool OutputToBase(float in, float& out, u8& status, u8 preset);

    /// The calibrated range in the output unit and scale, as the scene and the detector let it be seen: the results
    /// that lie strictly between have the status 0. False, with nothing written, where there is none, which is the
    /// default: a base converted to itself, colour channels, a user's calibration, limits switched off.
    virtual bool GetCalibratedRange(float& lower, float& upper, u8 preset) const;

    /// The number of pixels that a selection visits. Width and height are not used.
    static u32 CalcNumPixels(u16 w, u16 h, SArea area);
    static u32 CalcNumPixels(u16 w, u16 h, const TArray<SScanLine>& lines);
    static u32 CalcNumPixels(u16 w, u16 h, SArea area, const u8* areaMask, u32 stride);
};

}  // namespace ovix::reduce
