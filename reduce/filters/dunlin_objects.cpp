#include "reduce/filters/dunlin_objects.h"

#include "core/numeric_cast.h"

namespace ovix::reduce {

SDunlinObjects::SDunlinObjects(CReduceObjectArray& objects, u8 ofPreset)
    : preset(ofPreset),
      frameInfo(objects.Get<CFrameInfoReduceObject>(preset, true)),
      factoryCal(objects.Get<CDunlinFactoryCalReduceObject>(preset, true)),
      dunlinInfo(objects.Get<CDunlinFrameInfoReduceObject>(preset, true)) {}

void SDunlinObjects::FillFactoryCal(const SDunlinTrailer& values) const {
    factoryCal->detectorTemp = values.detectorTemp;
    factoryCal->integrationTime = values.integrationExactTime;
}

void SDunlinObjects::FillFrame(const SDunlinTrailer& values, DunlinLayout shown) const {
    CFrameInfoReduceObject& info = *frameInfo;
    frame_values::StartFrame(info, preset, static_cast<u32>(values.frameCounter));
    SetTrailerTime(info.time, values);
    for (const DunlinFields part : shown) {
        for (const SDunlinField& field : part) {
            if (field.kind) frame_values::Add(info.extra, field.name, *field.kind, field.text(values, field.kind));
        }
    }
    static_cast<SDunlinFrame&>(*dunlinInfo) = static_cast<const SDunlinFrame&>(values);
    dunlinInfo->integrationTime = TruncateTo<i32>(values.integrationExactTime);
}

}  // namespace ovix::reduce
