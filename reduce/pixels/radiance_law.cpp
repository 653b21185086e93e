#include "reduce/pixels/radiance_law.h"

#include <cmath>

#include "reduce/pixels/simd/model_simd.h"

namespace ovix::reduce {

namespace {

/// Powers of the counts of a block, in double.
struct SDoublePowers {
    const double* counts;

    double Square(u32 i) const { return counts[i] * counts[i]; }
    double Cube(u32 i) const { return counts[i] * counts[i] * counts[i]; }
    double Fourth(u32 i) const { return counts[i] * counts[i] * counts[i] * counts[i]; }
};

/// The same in wrapping 32 bits: unsigned products have the bits of the signed ones, and a meaning for every value.
struct SWrappingPowers {
    const i32* counts;

    double Square(u32 i) const { return Signed(Low(i) * Low(i)); }
    double Cube(u32 i) const { return Signed(Low(i) * Low(i) * Low(i)); }
    double Fourth(u32 i) const { return Signed(Low(i) * Low(i) * Low(i) * Low(i)); }

  private:
    u32 Low(u32 i) const { return static_cast<u32>(counts[i]); }
    static double Signed(u32 power) { return static_cast<i32>(power); }
};

template <class Radiance>
bool Fill(double* radiances, u32 count, const Radiance& radiance) {
    for (u32 i = 0; i < count; ++i) radiances[i] = radiance(i);
    return true;
}

template <class Powers>
bool ApplyPolynomial(const SRadianceLaw& law, const Powers& powers, const double* c, u32 n, double* out) {
    const double* a = law.coefficients;
    const double s = law.scale;
    const double a0 = a[0], a1 = a[1], a2 = law.order > 1 ? a[2] : 0, a3 = law.order > 2 ? a[3] : 0,
                 a4 = law.order > 3 ? a[4] : 0;
    switch (law.order) {
        case 1:
            return Fill(out, n, [=](u32 i) { return (a0 + a1 * c[i]) * s; });
        case 2:
            return Fill(out, n, [=](u32 i) { return (a0 + a1 * c[i] + a2 * powers.Square(i)) * s; });
        case 3:
            return Fill(out, n,
                        [=](u32 i) { return (a0 + a1 * c[i] + a2 * powers.Square(i) + a3 * powers.Cube(i)) * s; });
        default:
            return Fill(out, n, [=](u32 i) {
                return (a0 + a1 * c[i] + a2 * powers.Square(i) + a3 * powers.Cube(i) + a4 * powers.Fourth(i)) * s;
            });
    }
}

double PowerSum(const double* a, i32 order, double c) {
    double sum = 0;
    for (i32 k = 0; k <= order; ++k) sum += a[k] * std::pow(c, k);
    return sum;
}

bool ApplyDifference(const SRadianceLaw& law, const double* c, const double* backgrounds, u32 n, double* out) {
    const double a0 = law.coefficients[0], a1 = law.coefficients[1], s = law.scale, single = law.background.value();
    const auto fill = [&](const auto& background) {
        if (law.order == -1) {  // the constant stands outside the scale
            return Fill(out, n, [=](u32 i) { return (c[i] - background(i)) * a1 * s + a0; });
        }
        return Fill(out, n, [=](u32 i) { return ((c[i] - background(i)) * a1 + a0) * s; });
    };
    return backgrounds ? fill([=](u32 i) { return backgrounds[i]; }) : fill([=](u32) { return single; });
}

/// Held against the limits as it is in the destination's type.
template <class D>
void StoreChecked(D* to, u8* status, const double* radiances, u32 count, const SLimitRule& limits) {
    for (u32 i = 0; i < count; ++i) {
        double value = static_cast<D>(radiances[i]);
        const u8 flags = Limit(value, limits);
        to[i] = static_cast<D>(value);
        if (status) status[i] |= flags;
    }
}

}  // namespace

void SCounts::Load(STypedData pixels, u32 pixelCount, EPowers powers) {
    count = pixelCount;
    LoadBlock(pixels, count, values);
    Visit(pixels.type, [&]<class T>(TElement<T>) {
        const T* from = static_cast<const T*>(pixels.data);
        wraps = std::is_integral_v<T> && powers == EPowers::Wrapping;
        if constexpr (std::is_integral_v<T>) {
            if (!wraps) return;
            for (u32 i = 0; i < count; ++i) narrow[i] = static_cast<i32>(static_cast<u32>(from[i]));
        }
    });
}

bool ApplyLaw(const SRadianceLaw& law, const SCounts& counts, const double* backgrounds, double* radiances) {
    const double* c = counts.values;
    const u32 n = counts.count;
    if (law.order < -2) return false;
    if (law.order < 0) return ApplyDifference(law, c, backgrounds, n, radiances);
    const double s = law.scale;
    if (law.order == 0) return Fill(radiances, n, [=](u32 i) { return c[i] * s; });
    if (law.order > 4) {
        return Fill(radiances, n, [&](u32 i) { return PowerSum(law.coefficients, law.order, c[i]) * s; });
    }
    return counts.wraps ? ApplyPolynomial(law, SWrappingPowers{counts.narrow}, c, n, radiances)
                        : ApplyPolynomial(law, SDoublePowers{c}, c, n, radiances);
}

bool RadiancesOf(const u16* counts, u32 count, const SRadianceLaw& law, double* radiances) {
    if (law.background.pixels()) return false;
    SCounts block;
    block.Load({const_cast<u16*>(counts), UInt16}, count, EPowers::Double);
    return ApplyLaw(law, block, nullptr, radiances);
}

void StoreRadiances(STypedData destination, u8* status, std::size_t at, const double* radiances, u32 count,
                    const std::optional<SLimitRule>& limits) {
    if (!limits) return StoreBlock(destination, at, radiances, count);
    u8* flags = status ? status + at : nullptr;
    if (destination.type == Flt32) {
        StoreChecked(static_cast<float*>(destination.data) + at, flags, radiances, count, *limits);
    } else {
        StoreChecked(static_cast<double*>(destination.data) + at, flags, radiances, count, *limits);
    }
}

}  // namespace ovix::reduce
