#include "measure/frame/additions.h"

#include "measure/frame/frame_objects.h"
#include "measure/frame/scene.h"

namespace ovix::measure {

void AddToSource(reduce::CReduceObjectArray& objects, const SMeasureOptions& options, const SFrameFormat& format) {
    for (const SCorrectionFiles& files : options.corrections) LoadCorrectionTables(objects, files, format);
    PutUserCalibration(objects, options);
    if (options.scene == SSceneValues{}) return;
    const auto scene = objects.GetObjectParameters(true);
    scene->fromSource = false;
    PutCallersValues(*scene, options.scene);
}

}  // namespace ovix::measure
