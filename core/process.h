#pragma once

#include <atomic>
#include <shared_mutex>

#include "core/types.h"

namespace ovix {

namespace Private {

/// Has `deleter(object)` called at process exit; higher priorities go first.
OVIX_API void DeleteAtExit(void* object, int priority, void (*deleter)(void*));
/// Lets another thread run.
OVIX_API void YieldThread();

}  // namespace Private

struct TSingletonPtrPostCreateDoNothing {
    static void PostCreate() {}
};

/// A holder without data of one process-wide `T`, made when first asked for.
///
/// The instance is published and marked done before `PostCreateT::PostCreate` runs: what that loads may ask for the
/// instance on the same thread and must not wait. So another thread may get the instance while it is still going on.
/// Instantiations that cross module borders are declared `extern template` and exported by one module.
template <class T, int kPriority, int kReserved, class PostCreateT>
class TSingletonPtr {
  public:
    static T* GetInstance() {
        if (T* instance = m_pInst.load(std::memory_order_acquire)) return instance;
        if (m_InstFirst.exchange(1) == 0) {
            T* instance = new T();
            m_pInst.store(instance, std::memory_order_release);
            Private::DeleteAtExit(instance, kPriority, [](void* object) { Delete(static_cast<T*>(object)); });
            m_InstDone.store(1);
            PostCreateT::PostCreate();
        } else {
            while (m_InstDone.load() != 1) Private::YieldThread();
        }
        return m_pInst.load(std::memory_order_acquire);
    }

    T* operator->() const { return GetInstance(); }
    T& operator*() const { return *GetInstance(); }
    operator T*() const { return GetInstance(); }

    static std::atomic<T*> m_pInst;
    static std::atomic<i32> m_InstFirst;
    static std::atomic<i32> m_InstDone;

  private:
    static void Delete(T* object) { delete object; }
};

template <class T, int kPriority, int kReserved, class PostCreateT>
constinit std::atomic<T*> TSingletonPtr<T, kPriority, kReserved, PostCreateT>::m_pInst = nullptr;
template <class T, int kPriority, int kReserved, class PostCreateT>
constinit std::atomic<i32> TSingletonPtr<T, kPriority, kReserved, PostCreateT>::m_InstFirst = 0;
template <class T, int kPriority, int kReserved, class PostCreateT>
constinit std::atomic<i32> TSingletonPtr<T, kPriority, kReserved, PostCreateT>::m_InstDone = 0;

/// The allocator of reference counts and array storage. All modules share it, so that one may free what another
/// allocated. Answers null when memory fails.
OVIX_API void* Alloc(std::size_t size);
OVIX_API void* Realloc(void* pointer, std::size_t size);
/// Null is allowed.
OVIX_API void Free(void* pointer);

/// Text for a developer's eyes: to standard error when the environment variable `OVIX_DEBUG_OUTPUT` is set, else
/// dropped.
OVIX_API void DebugOutput(const wchar_t* text);

/// A number that names the calling thread.
OVIX_API unsigned CurrentThreadId();

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
