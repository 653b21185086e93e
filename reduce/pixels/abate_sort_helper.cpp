#include "reduce/pixels/abate_sort_helper.h"

namespace ovix::reduce {

void SAbateSortHelper::Sort(TArray<SAbateSortHelper>& elements) {
    elements.Sort([](const SAbateSortHelper* a, const SAbateSortHelper* b) {
        if (a->key1 > b->key1) return 1;
        if (a->key1 < b->key1) return -1;
        if (a->key2 > b->key2) return -1;
        return a->key2 < b->key2 ? 1 : 0;
    });
}

}  // namespace ovix::reduce
