#pragma once

#include <array>

#include "measure/frame/measurement.h"
#include "reduce/reduce.h"

namespace ovix::measure {

/// Who said each of the eight scene values, in the order of `reduce::ObjectParameters()`.
using SceneOrigins = std::array<EOrigin, 8>;

/// Follows the scene of one frame from what its source says to what the conversion uses.
class CSceneTrail {
  public:
    /// Before the frame's metadata go to the array, which is as its source describes it.
    explicit CSceneTrail(reduce::CReduceObjectArray& objects);
    /// After they went there: the source has its say again, and the caller the last word.
    SceneOrigins Finish(const CSource& source, const SSceneValues& values);

  private:
    reduce::CReduceObjectArray& objects_;
    bool recorded_ = false;
};

/// Replaces the values that the caller says.
void PutCallersValues(reduce::CObjectParametersReduceObject& scene, const SSceneValues& values);

/// The scene values that go into a unit, with who said them. `used` is the scene as the conversion left it, null where
/// none was used.
std::vector<SParameter> SceneParameters(const reduce::CObjectParametersReduceObject& scene, const SceneOrigins& origins,
                                        const reduce::CObjectParametersReduceObject* used, bool byUser);

/// The double whose shortest text is that of the float: 0.95 for 0.95f, not 0.949999988079071.
double ShortestDouble(float value);

}  // namespace ovix::measure
