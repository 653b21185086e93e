#pragma once

#include "support/signal_reference.h"

/// A camera of the Tern family that never existed, and its formulas written down once more.
namespace ovix::test {

/// Black bodies from 255 to 350 K give counts from 800 to 16,300.
struct STernConstants {
    float adjustGain = 1.1f, adjustOffset = 300.0f;
    float planckR = 2.2e8f, planckB = 3300.0f, planckF = 1.0f;
    float atmAlpha1 = 0.0071f, atmAlpha2 = 0.0123f, atmBeta1 = -0.0024f, atmBeta2 = -0.0064f, atmX = 1.85f;
    float overflowTemp = 348.15f, upperTemp = 343.15f, lowerTemp = 263.15f, underflowTemp = 258.15f;
    float radFitHighTemp = 353.15f, radFitLowTemp = 253.15f;
    // A housing that warms up: the count is 0.6 percent too small, and 11 counts too great.
    u32 tdriftMode = 1;
    float driftR = 2e8f, driftB = 3300.0f, driftF = 1.0f;
    float drift3 = 20.0f, drift4 = 0.01f, drift5 = 5.0f, drift6 = 0.02f, drift7 = 70.0f, drift8 = 0.5f, drift9 = 77.0f;
    float gainDrift0 = 1.0f, gainDrift1 = 0.1f, gainDrift2 = 0.02f, gainDrift3 = 300.0f;
    float frontPanelTemp = 303.0f, airGapTemp = 300.0f, dewarTemp = 80.0f;

    template <class Record>
    void CopyAdjustTo(Record& r) const {
        r.gain = adjustGain;
        r.offset = adjustOffset;
    }
    template <class Record>
    void CopyDriftTo(Record& r) const {
        r.driftR = driftR, r.driftB = driftB, r.driftF = driftF;
        r.drift3 = drift3, r.drift4 = drift4, r.drift5 = drift5, r.drift6 = drift6, r.drift7 = drift7;
        r.drift8 = drift8, r.drift9 = drift9;
    }
    template <class Record>
    void CopyCalibTo(Record& r) const {
        r.planckR = planckR, r.planckB = planckB, r.planckF = planckF;
        r.atmAlpha1 = atmAlpha1, r.atmAlpha2 = atmAlpha2, r.atmBeta1 = atmBeta1, r.atmBeta2 = atmBeta2, r.atmX = atmX;
        r.overflowTemp = overflowTemp, r.upperTemp = upperTemp, r.lowerTemp = lowerTemp;
        r.underflowTemp = underflowTemp, r.radFitHighTemp = radFitHighTemp, r.radFitLowTemp = radFitLowTemp;
        r.gainDrift0 = gainDrift0, r.gainDrift1 = gainDrift1, r.gainDrift2 = gainDrift2, r.gainDrift3 = gainDrift3;
    }
};

class CTernReference : public TSignalReference<STernConstants> {
  public:
    /// Without the drift's correction unless `compensated`.
    CTernReference(const STernConstants& camera, const SScene& scene, bool compensated = false)
        : TSignalReference(camera, scene, scene.atmosphereTemp - 273.15) {
        if (compensated) SetDrift();
        // The limits stay those before the compensation came.
        SetLimits((65535.0L - c.adjustOffset) * c.adjustGain);
    }

    Real PowOfCount(int count) const { return (count * driftGain + driftOffset - c.adjustOffset) * c.adjustGain; }
    Real ObjectSignal(int count, int& status) const {
        const Real signal = Limited(count ? PowOfCount(count) : -1, status);
        status |= count ? 0 : 32;
        return signal;
    }

    Real driftGain = 1, driftOffset = 0;

  private:
    void SetDrift() {  // in single precision
        const float g = (1 - std::exp((c.frontPanelTemp - c.gainDrift3) * c.gainDrift2)) * c.gainDrift1 + c.gainDrift0;
        const float gap = c.driftR / (std::exp(c.driftB / c.airGapTemp) - c.driftF) * c.drift4;
        const float panel = c.driftR / (std::exp(c.driftB / c.frontPanelTemp) - c.driftF) * c.drift6;
        const float v = c.drift3 - gap + c.drift5 - panel + c.drift7;
        driftGain = 1.0 / g;
        driftOffset = v + (c.dewarTemp - c.drift9) * c.drift8;
    }
};

}  // namespace ovix::test
