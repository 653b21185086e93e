#pragma once

#include "core/array.h"
#include "core/typed_data.h"
#include "reduce/api.h"
#include "reduce/objects/reduce_object.h"

namespace ovix::reduce {

/// The direction in which the presets are tried. Every number but 0 means `AbateFromLast`; the number is stored in
/// files.
enum EAbateMode : u32 {
    AbateFromFirst = 0,  ///< from the first: the first preset whose value is not above its high threshold
    AbateFromLast = 1,   ///< from the last: the first preset whose value is not below its low threshold
};

/// Merges one frame of each preset into one, pixel by pixel: the presets are tried in the given order, each pixel takes
/// the first whose corrected value is inside the threshold, or the last tried one when none is. `status` takes the
/// number of the chosen preset: it is the preset map that the per-preset forms of the other kernels read.
///
/// `sources`, the thresholds and the tables have eight entries, by preset number; an entry of a table may be null.
/// `presetValid` says which presets have a frame at hand; a number in `order` that is not valid is passed over, one
/// that stands twice is tried twice. All frames and the destination are of one type, `UInt16` or `Flt32`, and hold
/// `count` pixels.
///
/// The correction is that of `ApplyNUC`, but for `UInt16` frames the results are rounded half away from zero and the
/// clip is done in single precision, before the rounding:
///
///     tables            without clip            with clip
///     gain and offset   round(g * x) + o        limit or round(g * x + o)
///     gain only         round(g * x)            limit or round(g * x)
///     offset only       x + o                   limit or x + o
///     neither           x                       limit or x
///
/// each then truncated and cut to 16 bits; a limit itself is never rounded. `Flt32` frames are not rounded.
///
/// False, with nothing written, for another type and when no preset is usable. A null status is legal. The kernel keeps
/// no state, takes no memory and runs on the caller's thread.
OVIX_REDUCE_API bool Abate(EDataType type, void* const sources[], u32 count, void* destination, u8* status,
                           const bool presetValid[8], const u8 order[8], const u16 low[8], const u16 high[8],
                           EAbateMode mode, float* const gains[], i16* const offsets[], u32* const replaces[],
                           bool clip, double minimum, double maximum);

/// How the frames of several presets are merged into one. One object serves the whole source.
class OVIX_REDUCE_API CAbateCfgReduceObject : public TReduceObject<CAbateCfgReduceObject> {
  public:
    static constexpr GUID typeID = "{12C99632-E051-4922-B9A3-A7259271C94D}"_guid;
    static constexpr const wchar_t* kName = L"AbateCfg";
    static constexpr u16 kDefaultLow = 1000;
    static constexpr u16 kDefaultHigh = 15000;

    bool enabled = false;
    u16 low[8];                        ///< thresholds, by preset number
    u16 high[8];                       ///< likewise
    u8 order[8];                       ///< preset numbers in the order in which they are tried
    EAbateMode mode = AbateFromFirst;  ///< from which end

    CAbateCfgReduceObject();

    bool Load(TSharedPtr<IFile> file, u32 blockVersion, u32 flags) override;
    bool Save(TSharedPtr<IFile> file, u32 flags) override;

  private:
    bool LoadOldStream(IFile& file);
};

/// Helps an application to work out the order of the presets; the library itself does not use it.
struct OVIX_REDUCE_API SAbateSortHelper {
    u32 tag;      ///< carried along
    float key1;   ///< ascending
    double key2;  ///< descending among equal first keys

    /// In place; elements that are equal in both keys end up in any order.
    static void Sort(TArray<SAbateSortHelper>& elements);
};
static_assert(sizeof(SAbateSortHelper) == 16);

}  // namespace ovix::reduce
