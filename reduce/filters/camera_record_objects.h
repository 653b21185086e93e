#pragma once

#include "core/date_time.h"
#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/camera_record.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/objects/frame_info_reduce_object.h"
#include "reduce/objects/object_parameters_reduce_object.h"
#include "reduce/objects/reduce_object_array.h"

namespace ovix::reduce {

/// The objects that frames with a camera record fill, for all families that carry one.
struct SCameraRecordObjects {
    /// Fetches the four in this order and makes those that are missing, so that they exist after any parsing.
    explicit SCameraRecordObjects(CReduceObjectArray& objects);

    /// False when a plug-in owns one of the names with a class of its own: there is nothing to fill then.
    explicit operator bool() const { return parameters && factoryCal && frameInfo && cameraInfo; }

    /// Object parameters, factory calibration, and of the frame info all but number, time and values, from a record of
    /// at least the short size in the native order.
    void FillFromRecord(const u8* record) const;
    /// Keeps `size` bytes of the record in the camera info, with zeros up to its full size. `digitalHeader` is 32 bytes
    /// or null.
    void KeepRecord(const u8* record, u32 size, const u8* digitalHeader) const;
    /// A video frame brings no record: its number, the present time, and no calibration.
    void FillForVideo(u64 frameNumber) const;

    TSharedPtr<CObjectParametersReduceObject> parameters;
    TSharedPtr<CCurlewFactoryCalReduceObject> factoryCal;
    TSharedPtr<CFrameInfoReduceObject> frameInfo;
    TSharedPtr<CCurlewCameraInfoReduceObject> cameraInfo;
};

namespace camera_record {

/// The time of a record in the native order.
inline void SetTime(CDateTime& time, const u8* record) {
    time.SetTimestamp(UnixTimestamp(LoadLittle<u32>(record + kSeconds), LoadLittle<u32>(record + kMilliseconds)));
}

// Of a record in either byte order of which `size` bytes are there.
/// Describes its fields; it stands `offset` bytes behind the frame's start.
void Describe(TArray<SFrameField>& fields, const u8* record, u32 size, u64 offset);
/// Its byte-order marker, the only mark that it has, and its width and height.
void GetEvidence(SFrameEvidence& evidence, const u8* record, u32 size);

}  // namespace camera_record

}  // namespace ovix::reduce
