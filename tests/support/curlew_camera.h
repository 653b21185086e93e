#pragma once

#include "support/signal_reference.h"

/// A camera of the Curlew family that never existed, and its formulas written down once more: how a count becomes a
/// temperature.
namespace ovix::test {

/// Black bodies from 240 to 480 K give counts from 3,600 to 49,000.
struct SCurlewConstants {
    i32 offset = -1000;
    float gain = 0.02f;
    u16 imgMin = 1, imgMax = 65534;
    float planckR = 18000.0f, planckB = 1450.0f, planckF = 1.0f;
    float atmAlpha1 = 0.0071f, atmAlpha2 = 0.0123f, atmBeta1 = -0.0024f, atmBeta2 = -0.0064f, atmX = 1.85f;
    float overflowTemp = 483.15f, upperTemp = 473.15f, lowerTemp = 253.15f, underflowTemp = 243.15f;
    float radFitHighTemp = 493.15f, radFitLowTemp = 233.15f;

    template <class Record>
    void CopyAdjustTo(Record& record) const {
        record.offset = offset, record.gain = gain;
        record.imgMin = imgMin, record.imgMax = imgMax;
    }
    template <class Record>
    void CopyCalibTo(Record& r) const {
        r.planckR = planckR, r.planckB = planckB, r.planckF = planckF;
        r.atmAlpha1 = atmAlpha1, r.atmAlpha2 = atmAlpha2, r.atmBeta1 = atmBeta1, r.atmBeta2 = atmBeta2, r.atmX = atmX;
        r.overflowTemp = overflowTemp, r.upperTemp = upperTemp, r.lowerTemp = lowerTemp;
        r.underflowTemp = underflowTemp, r.radFitHighTemp = radFitHighTemp, r.radFitLowTemp = radFitLowTemp;
    }
};

class CCurlewReference : public TSignalReference<SCurlewConstants> {
  public:
    CCurlewReference(const SCurlewConstants& camera, const SScene& scene)
        : TSignalReference(camera, scene, static_cast<float>(scene.atmosphereTemp - 273.15)) {  // narrowed
        SetLimits(PowOfCount(c.imgMax));
    }

    Real PowOfCount(int count) const { return (count + c.offset) * Real{c.gain}; }
    /// The object signal of a count, limited, and its status as in a single value.
    Real ObjectSignal(int count, int& status) const { return Limited(count ? PowOfCount(count) : 0, status); }
};

}  // namespace ovix::test
