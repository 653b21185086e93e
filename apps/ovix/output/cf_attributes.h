#pragma once

#include "apps/ovix/output/frame_writer.h"

namespace ovix::app {

// What stores of many frames (Zarr, HDF5) say of their arrays, by the CF conventions.

/// "temperature", "object_signal": the name of the array of values; "values" while the unit is not known.
std::string VariableName(const SUnitText& unit);
/// Of the whole: what `DescribeSeries` says, as texts.
Json GroupAttributes(const SSeries& series);
/// Dimensions, unit, and with steps their size.
Json ValueAttributes(const SSeries& series, double step);
Json StatusAttributes();
Json TimeAttributes(bool timed);
Json ColumnAttributes(const char* meaning);

/// Since 1970; the smallest number for a time that is beyond 64 bits of them.
i64 NanosecondsOf(measure::Time time);

}  // namespace ovix::app
