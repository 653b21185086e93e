#pragma once

#include <string>

#include "apps/ovix/json.h"
#include "core/core.h"

namespace ovix::app {

/// The flags of the status byte that stands beside each converted pixel, as they are named in tables and in JSON.
struct SStatusFlag {
    u8 bit;
    const char* key;   ///< in JSON
    const char* text;  ///< for a reader
};

inline constexpr u8 kStatusOutside = 1;
inline constexpr u8 kStatusUnder = 2;
inline constexpr u8 kStatusOver = 4;
inline constexpr u8 kStatusNoData = 32;

inline constexpr SStatusFlag kStatusFlags[] = {
    {kStatusOutside, "outsideCalibration", "outside the calibrated range"},
    {kStatusUnder, "underflow", "below the range"},
    {kStatusOver, "overflow", "above the range"},
    {8, "excluded8", "not counted (8)"},
    {16, "excluded16", "not counted (16)"},
    {kStatusNoData, "noData", "no data"},
};

/// The same for files: bit, name and meaning of each.
Json StatusLegend();
/// For a reader, a line a bit.
std::string StatusLegendText();

}  // namespace ovix::app
