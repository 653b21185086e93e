#include "core/convert_array.h"

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

template <class S, class D>
void ConvertSpan(const void* source, void* dest, std::size_t count) {
    if constexpr (std::is_same_v<S, D>) {
        if (count) std::memmove(dest, source, count * sizeof(D));
    } else {
        const S* from = static_cast<const S*>(source);
        D* to = static_cast<D*>(dest);
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
