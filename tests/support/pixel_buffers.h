#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "core/visit.h"

/// Buffers of any numeric type for tests of pixel kernels.
namespace ovix::test {

/// `count` elements, `shift` elements behind an aligned address, at the very end of their memory, with canaries before
/// and behind them. Without canaries behind, so that a sanitizer sees a read beyond the end.
template <class T>
class TGuarded {
  public:
    explicit TGuarded(std::size_t count, std::size_t shift = 0, bool behind = true)
        : count_(count), shift_(kRoom + shift), size_(shift_ + count + (behind ? kRoom : 0)), all_(new T[size_]) {
        std::memset(static_cast<void*>(all_.get()), kCanary, size_ * sizeof(T));
    }

    T* data() { return all_.get() + shift_; }
    T& operator[](std::size_t i) { return data()[i]; }
    std::size_t size() const { return count_; }
    T* begin() { return data(); }
    T* end() { return data() + count_; }
    STypedData Typed() { return {data(), DataTypeOf<T>()}; }

    /// Whether nothing but the first `written` elements has changed.
    bool Untouched(std::size_t written) const {
        const auto* bytes = reinterpret_cast<const u8*>(all_.get());
        for (std::size_t i = 0; i < size_ * sizeof(T); ++i) {
            const bool inside = i >= shift_ * sizeof(T) && i < (shift_ + written) * sizeof(T);
            if (!inside && bytes[i] != kCanary) return false;
        }
        return true;
    }

  private:
    static constexpr std::size_t kRoom = 16;
    static constexpr u8 kCanary = 0x5A;

    std::size_t count_, shift_, size_;
    std::unique_ptr<T[]> all_;
};

/// 32 random bits at a time.
class CRandom {
  public:
    explicit CRandom(u32 seed) : engine_(seed) {}
    u32 operator()() { return static_cast<u32>(engine_()); }
    u8 Below(u8 end) { return static_cast<u8>((*this)() % end); }

  private:
    std::mt19937 engine_;
};

/// Values that sit at the edges of casts, roundings and limits, among random ones. Integers take their low bits.
template <class T>
T EdgeValue(CRandom& random) {
    static constexpr double kEdges[] = {
        0,       0.5,         1.5,     2.5,   -0.5,    -1.5,    2.4999, 99.99,    -3.99,     255.5,    300,
        16382.5, 16383.5,     32767.5, 40000, 65534.5, 65535.5, 65536,  -65536.5, 4194303.5, 16777217, 0x1p31 - 1,
        0x1p31,  -0x1p31 - 1, 1e10,    -1e10, 0x1p39,  0x1p62,  0x1p63, 1.2e19,   -1.2e19,   3e38,     -3e38};
    const u32 kind = random() % 8;
    if constexpr (std::is_floating_point_v<T>) {
        if (kind == 0) return std::numeric_limits<T>::quiet_NaN();
        if (kind == 1) return random() % 2 ? std::numeric_limits<T>::infinity() : -std::numeric_limits<T>::infinity();
        if (kind < 5) return static_cast<T>(kEdges[random() % std::size(kEdges)]);
        return static_cast<T>(random() % 20000) / T{4} - T{100};
    } else {
        const u64 bits = u64{random()} << 32 | random();
        if (kind == 0) return std::numeric_limits<T>::min();
        if (kind == 1) return std::numeric_limits<T>::max();
        return static_cast<T>(kind < 5 ? bits : bits % 20000);
    }
}

template <class T>
void FillEdges(TGuarded<T>& buffer, u32 seed) {
    CRandom random(seed);
    for (T& value : buffer) value = EdgeValue<T>(random);
}

/// The same value, or both NaN; zeros of both signs are the same.
template <class T>
bool Same(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) return a == b || (std::isnan(a) && std::isnan(b));
    return a == b;
}

/// The correction tables of one preset: gain, offset and map for the bits 1, 2 and 4 of `given`. In the first half few
/// pixels are replaced, in the second every other.
struct SCorrection {
    std::vector<float> gain;
    std::vector<i16> offset;
    std::vector<u32> replace;

    SCorrection(u32 count, u32 given, u32 seed) {
        CRandom random(seed);
        for (u32 i = 0; i < count; ++i) {
            const float wild = random() % 50 ? random() % 10 ? 1.0F : -1.0F : random() % 2 ? 3e6F : -3e6F;
            if (given & 1) gain.push_back(wild * (0.5F + 0.001F * static_cast<float>(random() % 2000)));
            if (given & 2) offset.push_back(EdgeValue<i16>(random));
            if (given & 4) replace.push_back(random() % (i < count / 2 ? 40 : 2) ? i : random() % count);
        }
    }
    float* Gain() { return gain.empty() ? nullptr : gain.data(); }
    i16* Offset() { return offset.empty() ? nullptr : offset.data(); }
    u32* Replace() { return replace.empty() ? nullptr : replace.data(); }
};

/// Calls f(TElement<S>, TElement<D>) for all hundred pairs of numeric types.
template <class F>
void ForEachPair(F&& f) {
    for (u32 source = Int8; source <= Flt64; ++source) {
        for (u32 dest = Int8; dest <= Flt64; ++dest) {
            Visit(static_cast<EDataType>(source), [&]<class S>(TElement<S> s) {
                Visit(static_cast<EDataType>(dest), [&]<class D>(TElement<D> d) { f(s, d); });
            });
        }
    }
}

}  // namespace ovix::test
