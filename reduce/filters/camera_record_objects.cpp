#include "reduce/filters/camera_record_objects.h"

#include <cstring>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CParameters = CObjectParametersReduceObject;
constexpr TRecordField<CParameters> kParameters[] = {
    Field<&CParameters::emissivity>(camera_record::kEmissivity),
    Field<&CParameters::distance>(camera_record::kDistance),
    Field<&CParameters::reflectedTemp>(camera_record::kReflectedTemp),
    Field<&CParameters::atmosphereTemp>(camera_record::kAtmosphereTemp),
    Field<&CParameters::extOpticsTemp>(camera_record::kExtOpticsTemp),
    Field<&CParameters::extOpticsTrans>(camera_record::kExtOpticsTrans),
    Field<&CParameters::atmosphereTrans>(camera_record::kAtmosphereTrans),
    Field<&CParameters::relativeHumidity>(camera_record::kRelativeHumidity),
};

using CCal = CCurlewFactoryCalReduceObject;
constexpr TRecordField<CCal> kFactoryCal[] = {
    Field<&CCal::nonlinearGain>(camera_record::kNonlinearGain),
    Field<&CCal::nonlinearOffset>(camera_record::kNonlinearOffset),
    Field<&CCal::offset>(camera_record::kOffset),
    Field<&CCal::gain>(camera_record::kGain),
    Field<&CCal::nonlinearOn>(camera_record::kNonlinearOn),
    Field<&CCal::imgMin>(camera_record::kImgMin),
    Field<&CCal::imgMax>(camera_record::kImgMax),
    Field<&CCal::planckR>(camera_record::kPlanckR),
    Field<&CCal::planckB>(camera_record::kPlanckB),
    Field<&CCal::planckF>(camera_record::kPlanckF),
    Field<&CCal::atmAlpha1>(camera_record::kAtmAlpha1),
    Field<&CCal::atmAlpha2>(camera_record::kAtmAlpha2),
    Field<&CCal::atmBeta1>(camera_record::kAtmBeta1),
    Field<&CCal::atmBeta2>(camera_record::kAtmBeta2),
    Field<&CCal::atmX>(camera_record::kAtmX),
    Field<&CCal::overflowTemp>(camera_record::kOverflowTemp),
    Field<&CCal::upperTemp>(camera_record::kUpperTemp),
    Field<&CCal::lowerTemp>(camera_record::kLowerTemp),
    Field<&CCal::underflowTemp>(camera_record::kUnderflowTemp),
    Field<&CCal::radFitHighTemp>(camera_record::kRadFitHighTemp),
    Field<&CCal::radFitLowTemp>(camera_record::kRadFitLowTemp),
};
static_assert(RecordEnd(kParameters) <= camera_record::kShortSize);
static_assert(RecordEnd(kFactoryCal) <= camera_record::kShortSize);

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
    LoadRecord(*parameters, kParameters, record);
    parameters->fromSource = true;
    parameters->parameterMask = 255;

    LoadRecord(*factoryCal, kFactoryCal, record);
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
