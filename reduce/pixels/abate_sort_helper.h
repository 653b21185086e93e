#pragma once

#include "core/array.h"
#include "reduce/api.h"

namespace ovix::reduce {

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
