#include "core/convert_array.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>
#include <utility>

#include "core/numeric_cast.h"
#include "core/visit.h"

namespace ovix {

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

/// Floating values to 32 bits or fewer. The rule goes through 64 bits, one value at a time; where 32 hold them they
/// give the same low bits, in vectors.
template <class S, class D>
void TruncateSpan(const S* from, D* to, std::size_t count) {
    for (std::size_t at = 0; at < count; at += kFitBlock) {
        const std::size_t end = std::min(count, at + kFitBlock);
        if (AllFit32(from + at, end - at)) {
            for (std::size_t i = at; i < end; ++i) to[i] = static_cast<D>(static_cast<i32>(from[i]));
        } else {
            for (std::size_t i = at; i < end; ++i) to[i] = NumericCast<D>(from[i]);
        }
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

}  // namespace ovix
