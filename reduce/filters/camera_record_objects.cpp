#include "reduce/filters/camera_record_objects.h"

#include <cstring>

#include "reduce/filters/camera_record_fields.h"

namespace ovix::reduce {

namespace {

void StartFrame(CFrameInfoReduceObject& info, bool filled) {
    info.preset = 0;
    info.frameFilled = filled;
    info.extra.Clear();
}

}  // namespace

SCameraRecordObjects::SCameraRecordObjects(CReduceObjectArray& objects)
    : parameters(objects.Get<CObjectParametersReduceObject>(-1, true)),
      factoryCal(objects.Get<CCurlewFactoryCalReduceObject>(0, true)),
      frameInfo(objects.Get<CFrameInfoReduceObject>(0, true)),
      cameraInfo(objects.Get<CCurlewCameraInfoReduceObject>(-1, true)) {}

void SCameraRecordObjects::FillFromRecord(const u8* record) const {
    camera_record::Load(*parameters, record);
    parameters->fromSource = true;
    parameters->parameterMask = 255;

    camera_record::Load(*factoryCal, record);
    factoryCal->valid = true;

    StartFrame(*frameInfo, LoadLittle<u16>(record + camera_record::kInvalidFrame) == 0);
}

void SCameraRecordObjects::KeepRecord(const u8* record, u32 size, const u8* digitalHeader) const {
    CCurlewCameraInfoReduceObject& info = *cameraInfo;
    info.valid = true;
    info.recordPresent = size == sizeof info.record;
    std::memcpy(info.record, record, size);
    std::memset(info.record + size, 0, sizeof info.record - size);
    info.digitalHeaderPresent = digitalHeader != nullptr;
    if (digitalHeader) {
        std::memcpy(info.digitalHeader, digitalHeader, sizeof info.digitalHeader);
    } else {
        std::memset(info.digitalHeader, 0, sizeof info.digitalHeader);
    }
}

void SCameraRecordObjects::FillForVideo(u64 frameNumber) const {
    factoryCal->valid = false;
    cameraInfo->valid = false;
    StartFrame(*frameInfo, true);
    frameInfo->frameNumber = frameNumber;
    frameInfo->time.Now();
}

void SetTimeFromRecord(CDateTime& time, const u8* record) {
    time.SetTimestamp(UnixTimestamp(LoadLittle<u32>(record + camera_record::kSeconds),
                                    LoadLittle<u32>(record + camera_record::kMilliseconds)));
}

}  // namespace ovix::reduce
