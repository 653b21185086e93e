#pragma once

#include <algorithm>
#include <memory>

#include "core/types.h"

namespace ovix {

/// A table of numbers that copies share: the last one frees it. It serves as the plain pointer that kernels take, null
/// until there is a table. It does not know its length; its owner does.
template <class T>
class TSharedTable {
  public:
    operator T*() const { return table_.get(); }
    T* get() const { return table_.get(); }

    /// A new table of n elements, not filled. Failure raises the allocator's exception and keeps the old one.
    void Allocate(u64 n) { table_.reset(new T[n]); }
    void Reset() { table_.reset(); }
    /// A copy of the n elements that nobody else holds.
    void Unshare(u64 n) {
        if (!table_) return;
        TSharedTable own;
        own.Allocate(n);
        std::copy_n(get(), n, own.get());
        table_.swap(own.table_);
    }

  private:
    std::shared_ptr<T[]> table_;
};

}  // namespace ovix
