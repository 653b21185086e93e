#include "core/typed_data.h"

#include <Eigen/QR>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <tuple>
#include <utility>

#ifdef __x86_64__
#include <immintrin.h>
#endif

#include "core/temperature_scale.h"
#include "core/visit.h"

namespace ovix {

namespace reduce {

namespace {

/// Widths of selections wrap in 16 bits.
u16 WidthOf(u16 left, u16 right) { return static_cast<u16>(right - left + 1); }

}  // namespace

const wchar_t* UnitToString(EUnit unit) {
    static constexpr const wchar_t* kWords[] = {
        L"Counts",        L"Radiance (User)",    L"Temperature (User)",
        L"Object Signal", L"Radiance (Factory)", L"Temperature (Factory)",
        L"RGB (24-bit)",  L"RGB (48-bit)",       L"Red Channel",
        L"Green Channel", L"Blue Channel",       L"RGB Average",
    };
    return unit < std::size(kWords) ? kWords[unit] : L"Error";
}

void IndiciesToPoints(SArea area, const TArray<u32>& indices, TArray<SPoint>& points) {
    const u32 width = WidthOf(area.left, area.right);
    for (u32 j = 0; j < indices.size(); ++j) {
        points[j] = {static_cast<i32>(indices[j] % width + area.left), static_cast<i32>(indices[j] / width + area.top)};
    }
}

void IndiciesToPoints(u16 width, u16, const TArray<u32>& indices, TArray<SPoint>& points) {
    for (u32 j = 0; j < indices.size(); ++j) {
        points[j] = {static_cast<i32>(indices[j] % width), static_cast<i32>(indices[j] / width)};
    }
}

void IndiciesToPoints(const TArray<SScanLine>& lines, const TArray<u32>& indices, TArray<SPoint>& points) {
    u32 first = 0;
    for (const SScanLine& line : lines) {
        const u32 end = first + WidthOf(line.left, line.right);
        for (u32 j = 0; j < indices.size(); ++j) {
            if (indices[j] >= first && indices[j] < end) {
                points[j] = {static_cast<i32>(line.left + (indices[j] - first)), line.row};
            }
        }
        first = end;
    }
}

}  // namespace reduce

namespace {

/// In the order of `EDataType`.
using Elements = std::tuple<i8, u8, i16, u16, i32, u32, i64, u64, float, double>;
constexpr std::size_t kTypes = std::tuple_size_v<Elements>;

/// Values that are looked at together for whether 32 bits hold them.
constexpr std::size_t kFitBlock = 256;

template <class S>
bool AllFit32(const S* values, std::size_t count) {
    constexpr S kLimit = static_cast<S>(2147483648.0);
    int fit = 1;
    for (std::size_t i = 0; i < count; ++i)
        fit &= static_cast<int>(values[i] > -kLimit) & static_cast<int>(values[i] < kLimit);
    return fit != 0;
}

/// A block whose values 32 bits hold; false, with anything in `to`, for any other.
template <class S, class D>
bool TruncateBlock(const S* from, D* to, std::size_t count) {
    if (!AllFit32(from, count)) return false;
    for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<D>(static_cast<i32>(from[i]));
    return true;
}

#ifdef __x86_64__
/// Frames of floats to counts in one pass, in the registers that nearly all processors have: what does not fit comes
/// out as the least integer, which is left to the long way itself.
[[gnu::target("avx2")]] bool TruncateInOnePass(const float* from, u16* to, std::size_t count) {
    const __m256i low = _mm256_set1_epi32(0xFFFF), least = _mm256_set1_epi32(INT32_MIN);
    __m256i unfit = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + 16 <= count; i += 16) {
        const __m256i a = _mm256_cvttps_epi32(_mm256_loadu_ps(from + i));
        const __m256i b = _mm256_cvttps_epi32(_mm256_loadu_ps(from + i + 8));
        unfit = _mm256_or_si256(unfit, _mm256_or_si256(_mm256_cmpeq_epi32(a, least), _mm256_cmpeq_epi32(b, least)));
        const __m256i packed = _mm256_packus_epi32(_mm256_and_si256(a, low), _mm256_and_si256(b, low));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + i), _mm256_permute4x64_epi64(packed, 0xD8));
    }
    return _mm256_testz_si256(unfit, unfit) && TruncateBlock<float, u16>(from + i, to + i, count - i);
}
bool TruncateBlock(const float* from, u16* to, std::size_t count) {
    static const bool wide = __builtin_cpu_supports("avx2");
    return wide ? TruncateInOnePass(from, to, count) : TruncateBlock<float, u16>(from, to, count);
}
#endif

/// Floating values to 32 bits or fewer. The rule goes through 64 bits, one value at a time; where 32 hold them they
/// give the same low bits, in vectors.
template <class S, class D>
void TruncateSpan(const S* from, D* to, std::size_t count) {
    for (std::size_t at = 0; at < count; at += kFitBlock) {
        const std::size_t n = std::min(count - at, kFitBlock);
        if (TruncateBlock(from + at, to + at, n)) continue;
        for (std::size_t i = at; i < at + n; ++i) to[i] = NumericCast<D>(from[i]);
    }
}

template <class S, class D>
void ConvertSpan(const void* source, void* dest, std::size_t count) {
    if constexpr (std::is_same_v<S, D>) {
        if (count) std::memmove(dest, source, count * sizeof(D));
    } else {
        const S* from = static_cast<const S*>(source);
        D* to = static_cast<D*>(dest);
        if constexpr (std::is_floating_point_v<S> && std::is_integral_v<D> && sizeof(D) <= 4) {
            return TruncateSpan(from, to, count);
        }
        for (std::size_t i = 0; i < count; ++i) to[i] = NumericCast<D>(from[i]);
    }
}

template <std::size_t... I>
constexpr std::array<FConvertSpan, kTypes * kTypes> MakeTable(std::index_sequence<I...>) {
    return {&ConvertSpan<std::tuple_element_t<I / kTypes, Elements>, std::tuple_element_t<I % kTypes, Elements>>...};
}

/// At source type times ten plus destination type.
constexpr auto kTable = MakeTable(std::make_index_sequence<kTypes * kTypes>());

}  // namespace

FConvertSpan ConvertSpanFunction(EDataType source, EDataType dest) {
    return IsNumeric(source) && IsNumeric(dest) ? kTable[source * kTypes + dest] : nullptr;
}

bool ConvertArray(STypedData dest, STypedData source, u32 count) {
    const FConvertSpan convert = ConvertSpanFunction(source.type, dest.type);
    if (convert) convert(source.data, dest.data, count);
    return convert != nullptr;
}

namespace {

/// The element at `index` and those behind it.
STypedData From(STypedData data, u32 index) {
    return {static_cast<u8*>(data.data) + index * ElementSize(data.type), data.type};
}

}  // namespace

double CMath::ConvertTemperature(double temperature, ETempType from, ETempType to) {
    const STemperatureScale source = TemperatureScale(from), dest = TemperatureScale(to);
    if (from == to || !source.known || !dest.known) return temperature;
    if (from == Celsius) return dest.FromCelsius(temperature);
    if (from == Fahrenheit && to == Celsius) return (temperature - 32.0) / 1.8;
    return dest.FromKelvin(source.ToKelvin(temperature));
}

bool CMath::ConvertTemperature(STypedData dest, STypedData source, u32 count, ETempType from, ETempType to) {
    if (!IsNumeric(dest.type) || !IsNumeric(source.type)) return false;
    if (from == to || !TemperatureScale(from).known || !TemperatureScale(to).known)
        return ConvertArray(dest, source, count);
    double block[512];  // stays in the first-level cache, and lets source and destination be one buffer
    const STypedData temperatures{block, Flt64};
    u32 n = 0;
    for (u32 at = 0; at < count; at += n) {
        n = std::min<u32>(count - at, std::size(block));
        ConvertArray(temperatures, From(source, at), n);
        for (u32 i = 0; i < n; ++i) block[i] = ConvertTemperature(block[i], from, to);
        ConvertArray(From(dest, at), temperatures, n);
    }
    return true;
}

namespace {

using Vector = Eigen::VectorXd;

/// Beyond it the powers of the points are one another's multiples in double precision.
constexpr int kHighestDegree = 32;

/// Where the points are centred and how far they reach, so that the fit runs over -1 to 1.
struct SSpread {
    explicit SSpread(const Vector& x)
        : centre(x.minCoeff() + (x.maxCoeff() - x.minCoeff()) / 2), reach((x.array() - centre).abs().maxCoeff()) {}

    double centre;
    double reach;
};

/// The coefficients in x of a polynomial whose coefficients are in (x - centre) / reach.
Vector Unscaled(Vector a, const SSpread& spread) {
    double power = 1;
    for (Eigen::Index k = 0; k < a.size(); ++k, power *= spread.reach) a[k] /= power;
    for (Eigen::Index first = 0; first + 1 < a.size(); ++first) {
        for (Eigen::Index k = a.size() - 2; k >= first; --k) a[k] -= spread.centre * a[k + 1];
    }
    return a;
}

}  // namespace

bool LinearLeastSquareFit(TArray<double>& x, TArray<double>& y, int degree, TArray<double>& coefficients) {
    if (degree < 0 || degree > kHighestDegree || x.size() != y.size() || x.size() <= static_cast<u32>(degree)) {
        return false;
    }
    const Vector points = Eigen::Map<const Vector>(x.data(), x.size());
    const Eigen::Map<const Vector> values(y.data(), y.size());
    if (!points.allFinite() || !values.allFinite()) return false;

    const SSpread spread(points);
    if (!std::isfinite(spread.reach) || (spread.reach == 0 && degree > 0)) return false;
    Eigen::MatrixXd powers(points.size(), degree + 1);
    powers.col(0).setOnes();
    for (int k = 1; k <= degree; ++k) {
        powers.col(k) = powers.col(k - 1).array() * (points.array() - spread.centre) / spread.reach;
    }
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> factors(powers);
    if (factors.rank() <= degree) return false;
    const Vector fitted = Unscaled(factors.solve(values), spread);
    if (!fitted.allFinite() || !coefficients.SetSize(static_cast<u32>(fitted.size()))) return false;
    Vector::Map(coefficients.data(), fitted.size()) = fitted;
    return true;
}

}  // namespace ovix
