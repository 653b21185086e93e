#pragma once

#include "core/array.h"
#include "core/types.h"

namespace ovix {

/// The element type of a buffer. The order is a contract: kernels are chosen by the first ten.
enum EDataType : u32 {
    Int8 = 0,
    UInt8 = 1,
    Int16 = 2,
    UInt16 = 3,  ///< the form of raw counts
    Int32 = 4,
    UInt32 = 5,
    Int64 = 6,
    UInt64 = 7,
    Flt32 = 8,
    Flt64 = 9,
    Opaque = 10,      ///< no numeric element; as a buffer, three 8-bit colour channels
    OpaqueWide = 11,  ///< three unsigned 16-bit colour channels
    NoPixels = 12,    ///< a destination without data: metadata only
};

/// A buffer and the type of its elements. It owns nothing; the callee never frees it.
struct STypedData {
    void* data = nullptr;
    EDataType type = NoPixels;
};

/// The physical meaning of a buffer. The numbers are stored in files.
enum EUnit : u32 {
    Counts = 0,              ///< raw digital counts
    RadianceUser = 1,        ///< radiance through a user calibration
    TemperatureUser = 2,     ///< temperature through a user calibration
    ObjectSignal = 3,        ///< counts compensated for the object parameters
    RadianceFactory = 4,     ///< radiance through the factory calibration
    TemperatureFactory = 5,  ///< temperature through the factory calibration
    RGB24 = 6,               ///< three 8-bit channels
    RGB48 = 7,               ///< three 16-bit channels
    RedChannel = 8,
    GreenChannel = 9,
    BlueChannel = 10,
    RGBAverage = 11,  ///< mean of the three channels
};

/// Only temperatures carry a scale: for other units it is not looked at.
constexpr bool IsTemperature(EUnit unit) { return unit == TemperatureUser || unit == TemperatureFactory; }

enum ETempType : u32 {
    Celsius = 0,
    Fahrenheit = 1,
    Kelvin = 2,
    Rankine = 3,
};

struct SPoint {
    i32 x = 0;
    i32 y = 0;

    friend constexpr bool operator==(const SPoint&, const SPoint&) = default;
};

namespace reduce {

/// An inclusive rectangle of pixels; top above bottom, or left beyond right, holds none.
struct SArea {
    u16 top = 0;
    u16 left = 0;
    u16 bottom = 0;
    u16 right = 0;
};
static_assert(sizeof(SArea) == 8);

/// One horizontal run of pixels, both ends included. A region of any shape is an array of them, in the order in which
/// its pixels are numbered.
struct SScanLine {
    u16 row = 0;
    u16 left = 0;
    u16 right = 0;
};

/// The unit's name in words, "Error" for a value that is none.
OVIX_API const wchar_t* UnitToString(EUnit unit);

/// Turn indices into a selection's pixels, in the order in which it visits them, into image coordinates.
/// A width of 0 is the caller's fault.
OVIX_API void IndiciesToPoints(SArea area, const TArray<u32>& indices, TArray<SPoint>& points);
OVIX_API void IndiciesToPoints(u16 width, u16 height, const TArray<u32>& indices, TArray<SPoint>& points);
/// Written by position: an index that no line covers leaves its point as it was, and a longer array keeps its rest.
OVIX_API void IndiciesToPoints(const TArray<SScanLine>& lines, const TArray<u32>& indices, TArray<SPoint>& points);

}  // namespace reduce

/// Element-wise conversion by `NumericCast` between any two numeric types. False, with nothing touched, when either is
/// not numeric. The buffers may be one when their elements have one width, and must not overlap otherwise.
OVIX_API bool ConvertArray(STypedData dest, STypedData source, u32 count);

/// Converts `count` elements; the rules are those of `ConvertArray`.
using FConvertSpan = void (*)(const void* source, void* dest, std::size_t count);

/// The conversion between two types, for callers that choose once and convert many short spans. Null when either type
/// is not numeric.
OVIX_API FConvertSpan ConvertSpanFunction(EDataType source, EDataType dest);

struct OVIX_API CMath {
    /// A temperature in another scale, in double: kelvin = Celsius + 273.15, Fahrenheit = Celsius * 1.8 + 32 =
    /// kelvin * 1.8 - 459.67, Rankine = kelvin * 1.8, and the reverse. A scale outside the four leaves the number.
    static double ConvertTemperature(double temperature, ETempType from, ETempType to);

    /// The same for each element of a buffer: widened to double, converted, stored by `NumericCast`. Where the scales
    /// ask for no change, the elements move as in `ConvertArray`. False, with nothing touched, when a type is not
    /// numeric. The buffers may be one when their elements have one width, and must not overlap otherwise.
    static bool ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to);
};

/// A rectangle of an image or of its margins; each use says whether its ends are inclusive.
struct RECT {
    i32 left = 0;
    i32 top = 0;
    i32 right = 0;
    i32 bottom = 0;

    friend constexpr bool operator==(const RECT&, const RECT&) = default;
};

/// Polynomial least squares: the `degree + 1` coefficients in ascending order that bring the polynomial of `x` closest
/// to `y`.
///
/// False, with the coefficients as they were, when the arrays differ in length or hold numbers that are not finite,
/// when there are fewer different points than coefficients, and when the points do not determine them in double
/// precision.
OVIX_API bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients);

}  // namespace ovix
