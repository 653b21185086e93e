#include "apps/ovix/pipeline/scene_override.h"

namespace ovix::app {

void OverrideScene(reduce::CReduceObjectArray& objects, const SSceneValues& values) {
    if (values == SSceneValues{}) return;
    const auto present = objects.GetObjectParameters(true);
    reduce::CObjectParametersReduceObject wanted;
    reduce::CObjectParametersReduceObject unused;
    present->CopyTo(&wanted);
    const auto replace = [](float& value, std::optional<float> by) { value = by.value_or(value); };
    replace(wanted.emissivity, values.emissivity);
    replace(wanted.distance, values.distance);
    replace(wanted.reflectedTemp, values.reflectedTemp);
    replace(wanted.atmosphereTemp, values.atmosphereTemp);
    replace(wanted.atmosphereTrans, values.atmosphereTrans);
    replace(wanted.relativeHumidity, values.relativeHumidity);
    replace(wanted.extOpticsTemp, values.extOpticsTemp);
    replace(wanted.extOpticsTrans, values.extOpticsTrans);
    reduce::CConvertContext::OverrideObjectParameters(objects, wanted, unused);
}

}  // namespace ovix::app
