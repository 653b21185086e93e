#pragma once

#include <shared_mutex>

#include "core/api.h"

namespace ovix {

/// Many readers or one writer. Copies share nothing: a copy is a new, free lock.
class CRWLock {
  public:
    CRWLock() = default;
    CRWLock(const CRWLock&) {}
    CRWLock& operator=(const CRWLock&) { return *this; }

    void ReadLock() { mutex_.lock_shared(); }
    void ReadUnlock() { mutex_.unlock_shared(); }
    void WriteLock() { mutex_.lock(); }
    void WriteUnlock() { mutex_.unlock(); }

  private:
    std::shared_mutex mutex_;
};

}  // namespace ovix
