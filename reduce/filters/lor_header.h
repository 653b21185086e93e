#pragma once

#include "reduce/filters/day_clock.h"
#include "reduce/filters/frame_table.h"

/// The header of the LOR camera family: 96 bytes, little-endian, and behind them the lens block of one of the two
/// models. `docs/formats/lor-ra.md` and `docs/formats/lor-sb.md` show it whole.
namespace ovix::reduce::lor {

constexpr u16 kHeaderWords = 48;
constexpr u32 kHeaderSize = 2 * kHeaderWords;
constexpr u32 kLensBlockEnd = 120;

// What operations read in place.
constexpr u32 kTime = 2;
constexpr u32 kSwitches = 10;
constexpr u32 kFrameCounter = 20;
constexpr u32 kCameraType = 60;
constexpr u32 kCameraSubType = 61;
constexpr u32 kLensState = 96;
constexpr u32 kFocalLength = 98;

// Of the word at `kSwitches`.
constexpr u32 Preset(const u8* header) { return WordBits<0, 1>(header + kSwitches); }
constexpr bool Trigger(const u8* header) { return WordBits<15>(header + kSwitches) != 0; }
constexpr bool RecordStart(const u8* header) { return WordBits<14>(header + kSwitches) != 0; }

/// Whose values a field belongs to.
enum EModel : u8 {
    RA = 1,
    SB = 2,
    /// Cameras of type 3 with the sub-types 4 and 5, which show their detector's temperature in degrees Celsius; all
    /// others show it in kelvin.
    CelsiusSB = 4,
};
EModel ModelOfSB(const u8* header);

SDayClock Clock(const u8* header);

bool HasLensBlock(const u8* header);
/// Instantaneous field of view, the same in both directions; infinite for a focal length of 0.
double LensIFOV(const u8* header);

/// The values of the 96 bytes in their order.
void AddValues(CFrameInfoExtra& extra, EModel model, const u8* header);
/// The values of the lens block in their order.
void AddLensValues(CFrameInfoExtra& extra, const u8* header);
/// All fields of a frame; of the lens block when the model has one and it is there.
void Describe(TArray<SFrameField>& fields, EModel model, const u8* header);

}  // namespace ovix::reduce::lor
