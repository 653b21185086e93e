#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "core/exception.h"
#include "core/process.h"

namespace ovix {

/// A dynamic array with 32-bit counts.
///
/// Elements are moved bytewise when the array grows or shifts, so an element type must not hold pointers into itself
/// (`std::string` does; `CString` and `TArray` do not). New elements are value-initialised.
///
/// Reading through a const array tests the index and raises `CException` "Index out of bounds."; reading through a
/// non-const array grows it to hold the index instead. Operations that answer bool are false only when memory fails,
/// and leave the array as it was; those that cannot answer throw `std::bad_alloc` then.
template <class T>
class TArray {
  public:
    TArray() = default;
    /// An array of `n` new elements.
    explicit TArray(u32 n) : TArray() { Require(SetSize(n)); }
    TArray(std::initializer_list<T> elements) : TArray() {
        Require(CopyOf(elements.begin(), static_cast<u32>(elements.size())));
    }
    TArray(const TArray& other) : TArray() {
        growth_ = other.growth_;
        Require(Copy(other));
    }
    TArray(TArray&& other) noexcept { Exchange(other); }
    virtual ~TArray() { Destroy(); }

    TArray& operator=(const TArray& other) {
        Require(Copy(other));
        return *this;
    }
    TArray& operator=(TArray&& other) noexcept {
        if (this != &other) {
            Destroy();
            Exchange(other);
        }
        return *this;
    }
    /// Replaces the content by a copy of the other's elements.
    bool Copy(const TArray& other) { return this == &other || CopyOf(other.data_, other.count_); }
    bool MakeDuplicate(const TArray& other) { return Copy(other); }
    /// An array of the first n of the arguments.
    template <class... Args>
    static TArray MakeArray(u32 n, const Args&... elements) {
        TArray result;
        ((result.count_ < n ? Require(result.Add(elements)) : void()), ...);
        return result;
    }

    /// Makes room for n elements. With a growth rate g below 65535 the new capacity is (n / g + 1) * g, always beyond
    /// n; otherwise it doubles. A rate of 0 is not supported.
    bool Dimension(u32 n) {
        static_assert(alignof(T) <= alignof(std::max_align_t), "the process heap aligns no further");
        if (n <= capacity_) return true;
        u64 capacity = capacity_ == 0 ? 1 : capacity_;
        if (growth_ >= 65535) {
            while (capacity < n) capacity *= 2;
        } else {
            capacity = (u64{n} / growth_ + 1) * growth_;
        }
        if (capacity > kMost || capacity > ~std::size_t{0} / sizeof(T)) return false;
        void* data = Realloc(static_cast<void*>(data_), static_cast<std::size_t>(capacity) * sizeof(T));
        if (!data) return false;
        data_ = static_cast<T*>(data);
        capacity_ = static_cast<u32>(capacity);
        return true;
    }
    bool reserve(u32 n) { return Dimension(n); }
    bool SetCapacity(u32 n) { return Dimension(n); }
    /// Sets the step of growing and answers the old one.
    u16 SetGrowthRate(u16 rate) { return std::exchange(growth_, rate); }

    /// Exactly n elements afterwards: new ones are constructed, surplus ones destroyed.
    bool SetSize(u32 n) {
        if (!ImplicitAddition(n)) return false;
        Truncate(n);
        return true;
    }
    /// At least n elements afterwards.
    bool ImplicitAddition(u32 n) {
        if (!Dimension(n)) return false;
        for (; count_ < n; ++count_) std::construct_at(data_ + count_);
        return true;
    }

    bool Add(const T& element) {
        if (count_ == capacity_) {
            T copy(element);  // the element may live in this very array
            if (count_ == kMost || !Dimension(count_ + 1)) return false;
            std::construct_at(data_ + count_, std::move(copy));
        } else {
            std::construct_at(data_ + count_, element);
        }
        ++count_;
        return true;
    }
    bool push_back(const T& element) { return Add(element); }

    bool Insert(const T& element, u32 index) { return Insert(element, index, 1); }
    /// Puts n copies before the element at index; an index past the end grows the array as far as needed.
    bool Insert(const T& element, u32 index, u32 n) {
        TArray copies;
        if (!copies.Dimension(n)) return false;
        for (u32 i = 0; i < n; ++i) copies.Add(element);
        return Splice(copies, index);
    }
    bool Insert(u32 index) {
        TArray fresh;
        return fresh.SetSize(1) && Splice(fresh, index);
    }

    bool Remove(u32 index) { return Remove(index, 1); }
    /// Removes up to n elements from index on; an index past the end does nothing. Always true.
    bool Remove(u32 index, u32 n) {
        if (index >= count_) return true;
        if (n > count_ - index) n = count_ - index;
        std::destroy_n(data_ + index, n);
        MoveBytes(index, index + n, count_ - index - n);
        count_ -= n;
        return true;
    }

    bool Replace(const T& element, u32 index) {
        T copy(element);
        if (!Hold(index)) return false;
        data_[index] = std::move(copy);
        return true;
    }
    bool Swap(u32 i, u32 j) {
        if (!Hold(std::max(i, j))) return false;
        if (i != j) std::swap(data_[i], data_[j]);
        return true;
    }
    /// Takes the element at `from` out and puts it back so that it stands at `to`.
    bool Move(u32 from, u32 to) {
        if (!Hold(std::max(from, to))) return false;
        alignas(T) unsigned char element[sizeof(T)];
        std::memcpy(element, static_cast<const void*>(data_ + from), sizeof(T));
        if (from < to) MoveBytes(from, from + 1, to - from);
        if (from > to) MoveBytes(to + 1, to, from - to);
        std::memcpy(static_cast<void*>(data_ + to), element, sizeof(T));
        return true;
    }

    /// Destroys all elements; the capacity stays.
    void Empty() { Truncate(0); }
    void clear() { Empty(); }
    /// Empties the array and gives its memory back.
    void Destroy() {
        Empty();
        Free(data_);
        data_ = nullptr;
        capacity_ = 0;
    }

    const T& GetAt(u32 index) const { return ConstGetItem(index); }
    const T& ConstGetItem(u32 index) const {
        if (index >= count_) ThrowIndexOutOfBounds();
        return data_[index];
    }
    const T& operator[](u32 index) const { return ConstGetItem(index); }
    T& GetItem(u32 index) {
        if (index >= count_) Require(Hold(index));
        return data_[index];
    }
    T& operator[](u32 index) { return GetItem(index); }

    u32 GetSize() const { return count_; }
    u32 size() const { return count_; }
    u32 nItems() const { return count_; }
    u32 GetCapacity() const { return capacity_; }
    u32 capacity() const { return capacity_; }
    T* GetData() { return data_; }
    const T* GetData() const { return data_; }
    T* data() { return data_; }
    const T* data() const { return data_; }
    T* begin() { return data_; }
    T* end() { return data_ + count_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + count_; }

    /// Takes over n elements in memory from `Alloc`.
    void Attach(T* elements, u32 n) {
        Destroy();
        data_ = elements;
        count_ = capacity_ = n;
    }
    /// Gives the memory up: the caller frees it with `Free`.
    T* Detach() {
        count_ = capacity_ = 0;
        return std::exchange(data_, nullptr);
    }

    /// Sorts as `qsort` does: not stable, elements moved bytewise.
    void Sort(int (*compare)(const T*, const T*)) {
        Sort([](void* function, const T* a, const T* b) { return (*static_cast<decltype(compare)*>(function))(a, b); },
             &compare);
    }
    /// As above with a context, which goes first as in `qsort_s`.
    void Sort(int (*compare)(void*, const T*, const T*), void* context) {
        struct SCall {
            int (*compare)(void*, const T*, const T*);
            void* context;
        } call{compare, context};
        if (count_ < 2) return;
        ::qsort_r(
            data_, count_, sizeof(T),
            [](const void* a, const void* b, void* opaque) {
                const SCall& c = *static_cast<SCall*>(opaque);
                return c.compare(c.context, static_cast<const T*>(a), static_cast<const T*>(b));
            },
            &call);
    }

  private:
    static constexpr u32 kMost = ~u32{0};

    static void Require(bool done) {
        if (!done) throw std::bad_alloc();
    }
    bool CopyOf(const T* elements, u32 n) {
        if (!Dimension(n)) return false;
        Empty();
        std::uninitialized_copy_n(elements, n, data_);
        count_ = n;
        return true;
    }
    /// Grows the array so that there is an element at `index`.
    bool Hold(u32 index) { return index < count_ || (index < kMost && ImplicitAddition(index + 1)); }
    void Truncate(u32 n) {
        if (n >= count_) return;
        std::destroy(data_ + n, data_ + count_);
        count_ = n;
    }
    void MoveBytes(u32 to, u32 from, u32 n) {
        if (n) std::memmove(static_cast<void*>(data_ + to), static_cast<const void*>(data_ + from), n * sizeof(T));
    }
    /// Moves all elements of another array in before the element at index.
    bool Splice(TArray& other, u32 index) {
        const u32 n = other.count_;
        const u32 behind = index < count_ ? count_ - index : 0;
        const u64 total = u64{index} + behind + n;
        if (total > kMost || !Dimension(static_cast<u32>(total))) return false;
        ImplicitAddition(index);
        MoveBytes(index + n, index, behind);
        if (n) std::memcpy(static_cast<void*>(data_ + index), static_cast<const void*>(other.data_), n * sizeof(T));
        other.count_ = 0;
        count_ = static_cast<u32>(total);
        return true;
    }
    void Exchange(TArray& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(capacity_, other.capacity_);
        std::swap(count_, other.count_);
        std::swap(growth_, other.growth_);
    }

    T* data_ = nullptr;
    u32 capacity_ = 0;
    u32 count_ = 0;
    u16 growth_ = 5;
};

}  // namespace ovix
