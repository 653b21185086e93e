#pragma once

namespace ovix::reduce {

/// Copies the calibration that the models with an object signal share, between records that have it under the same
/// names.
template <class To, class From>
void CopySignalCalibration(To& to, const From& from) {
    to.planckR = from.planckR;
    to.planckB = from.planckB;
    to.planckF = from.planckF;
    to.atmAlpha1 = from.atmAlpha1;
    to.atmAlpha2 = from.atmAlpha2;
    to.atmBeta1 = from.atmBeta1;
    to.atmBeta2 = from.atmBeta2;
    to.atmX = from.atmX;
    to.overflowTemp = from.overflowTemp;
    to.upperTemp = from.upperTemp;
    to.lowerTemp = from.lowerTemp;
    to.underflowTemp = from.underflowTemp;
    to.radFitHighTemp = from.radFitHighTemp;
    to.radFitLowTemp = from.radFitLowTemp;
}

}  // namespace ovix::reduce
