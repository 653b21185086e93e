#pragma once

namespace ovix::reduce {

/// Copies the eight values of a scene between records that have them under the same names.
template <class To, class From>
void CopyScene(To& to, const From& from) {
    to.emissivity = from.emissivity;
    to.distance = from.distance;
    to.reflectedTemp = from.reflectedTemp;
    to.atmosphereTemp = from.atmosphereTemp;
    to.extOpticsTemp = from.extOpticsTemp;
    to.extOpticsTrans = from.extOpticsTrans;
    to.atmosphereTrans = from.atmosphereTrans;
    to.relativeHumidity = from.relativeHumidity;
}

}  // namespace ovix::reduce
