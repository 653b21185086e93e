#include "core/convert_array.h"

#include <cstring>

#include "core/numeric_cast.h"
#include "core/visit.h"

namespace ovix {

bool ConvertArray(STypedData dest, STypedData source, u32 count) {
    return Visit(source.type, [&]<class S>(TElement<S>) {
        return Visit(dest.type, [&]<class D>(TElement<D>) {
            const S* from = static_cast<const S*>(source.data);
            D* to = static_cast<D*>(dest.data);
            if constexpr (std::is_same_v<S, D>) {
                if (count) std::memmove(to, from, count * sizeof(D));
            } else {
                for (u32 i = 0; i < count; ++i) to[i] = NumericCast<D>(from[i]);
            }
        });
    });
}

}  // namespace ovix
