#pragma once

#include "apps/ovix/synth/synth.h"

namespace ovix::app {

/// The Osprey family: "header-line" frames, whose header the library's own writer makes. They bring no calibration; the
/// counts follow Planck's law at 4 micrometres, where B = h c / (wavelength k) = 3597 K:
///
///     count = 500 + 3e8 / (exp(3597 / T) - 1)        T in kelvin
///
/// That is 1412 counts at 10 degrees Celsius and 15,478 at 90, with 41 and 409 counts a kelvin. Black bodies can
/// calibrate it, and a Tern factory calibration fits that has planckR 3e8, planckB 3597, planckF 1, adjustGain 1 and
/// adjustOffset 500.
SSynthFamily OspreySynthFamily();

}  // namespace ovix::app
