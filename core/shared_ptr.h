#pragma once

#include <algorithm>
#include <atomic>
#include <concepts>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "core/process.h"
#include "core/types.h"

namespace ovix {

/// A reference-counted pointer whose disposal travels with it, so that an object made in one module dies in that
/// module.
///
/// The deleter decides what happens when the last owner goes: null deletes through the virtual destructor,
/// `DoNotDelete()` (all ones) leaves the object alone, anything else is called with the object.
/// Copies may be made and dropped on any thread; the object itself is as safe as its class.
///
/// Casts between related classes hand the deleter on as it is. It is called with the pointer at hand, so the classes
/// must stand at one address: no base behind a second base.
template <class T>
class TSharedPtr {
  public:
    using Deleter = void (*)(T*);

    static Deleter DoNotDelete() { return reinterpret_cast<Deleter>(~std::uintptr_t{0}); }

    TSharedPtr() = default;
    TSharedPtr(std::nullptr_t) {}
    /// Takes the object over. A null object allocates no count, and the deleter is remembered all the same.
    explicit TSharedPtr(T* object, Deleter deleter = nullptr) : deleter_(deleter) {
        if (!object) return;
        count_ = static_cast<i32*>(Alloc(sizeof(i32)));
        if (!count_) {
            object_ = object;
            Dispose();
            throw std::bad_alloc();
        }
        object_ = object;
        *count_ = 1;
    }
    TSharedPtr(const TSharedPtr& other) : object_(other.object_), count_(other.count_), deleter_(other.deleter_) {
        refAdd();
    }
    TSharedPtr(TSharedPtr&& other) noexcept { Swap(other); }
    /// A pointer to a derived class serves where one to its base is wanted.
    template <class U>
        requires(!std::same_as<U, T> && std::convertible_to<U*, T*>)
    TSharedPtr(const TSharedPtr<U>& other) : TSharedPtr(other, static_cast<T*>(other.object_)) {}
    ~TSharedPtr() { Destroy(); }

    TSharedPtr& operator=(const TSharedPtr& other) {
        TSharedPtr(other).Swap(*this);
        return *this;
    }
    TSharedPtr& operator=(TSharedPtr&& other) noexcept {
        TSharedPtr(std::move(other)).Swap(*this);
        return *this;
    }
    TSharedPtr& operator=(T* object) {
        TSharedPtr(object).Swap(*this);
        return *this;
    }
    /// `pointer = 0` empties.
    TSharedPtr& operator=(int) {
        TSharedPtr().Swap(*this);
        return *this;
    }

    friend bool operator==(const TSharedPtr& a, const TSharedPtr& b) { return a.object_ == b.object_; }
    friend bool operator==(const TSharedPtr& a, const T* b) { return a.object_ == b; }
    friend bool operator==(const TSharedPtr& a, int b) { return reinterpret_cast<std::intptr_t>(a.object_) == b; }
    friend bool operator==(const TSharedPtr& a, std::nullptr_t) { return !a.object_; }

    /// To bool and, by way of it, to no other number.
    template <std::same_as<bool> Bool>
    operator Bool() const {
        return object_ != nullptr;
    }
    T* operator->() const { return object_; }
    T& operator*() const { return *object_; }
    T* ptr() const { return object_; }

    i32 RefCount() const { return count_ ? std::atomic_ref<i32>(*count_).load(std::memory_order_relaxed) : 0; }

    /// Gives the object up without deleting it; meant for a pointer that is not shared.
    T* Detach() {
        T* object = object_;
        if (refDecr()) Free(count_);
        object_ = nullptr;
        count_ = nullptr;
        return object;
    }

    /// A run-time cast: shares count and deleter, or answers an empty pointer when the object is of another class.
    template <class U>
    TSharedPtr<U> Cast() const {
        U* object = dynamic_cast<U*>(object_);
        return object ? TSharedPtr<U>(*this, object) : TSharedPtr<U>();
    }

  private:
    template <class U>
    friend class TSharedPtr;

    template <class U>
    TSharedPtr(const TSharedPtr<U>& owner, T* object)
        : object_(object), count_(owner.count_), deleter_(reinterpret_cast<Deleter>(owner.deleter_)) {
        refAdd();
    }

    void refAdd() {
        if (count_) std::atomic_ref<i32>(*count_).fetch_add(1, std::memory_order_relaxed);
    }
    /// True when this was the last owner.
    bool refDecr() { return count_ && std::atomic_ref<i32>(*count_).fetch_sub(1, std::memory_order_acq_rel) <= 1; }
    void refDestroy() {
        Free(count_);
        Dispose();
    }
    void Destroy() {
        if (refDecr()) refDestroy();
        object_ = nullptr;
        count_ = nullptr;
    }
#if defined(__clang__)
    __attribute__((no_sanitize("function")))  // after a cast the deleter's parameter is the related class
#else
    __attribute__((noinline))  // inlined, g++ 12 warns of a `delete` of borrowed objects that cannot happen
#endif
    void
    Dispose() {
        if (deleter_ == nullptr) {
            delete object_;
        } else if (deleter_ != DoNotDelete()) {
            deleter_(object_);
        }
    }
    void Swap(TSharedPtr& other) noexcept {
        std::swap(object_, other.object_);
        std::swap(count_, other.count_);
        std::swap(deleter_, other.deleter_);
    }

    T* object_ = nullptr;
    i32* count_ = nullptr;
    Deleter deleter_ = nullptr;
};

/// A new object on the heap in its shared pointer.
template <class T, class... Args>
TSharedPtr<T> MakeShared(Args&&... args) {
    return TSharedPtr<T>(new T(std::forward<Args>(args)...));
}

/// A pointer to an object that lives elsewhere and outlives all copies.
template <class T>
TSharedPtr<T> BorrowShared(T& object) {
    return TSharedPtr<T>(&object, TSharedPtr<T>::DoNotDelete());
}

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
