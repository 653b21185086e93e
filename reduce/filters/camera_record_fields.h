#pragma once

#include "reduce/convert/factory_calibrations.h"
#include "reduce/filters/frame_questions.h"
#include "reduce/objects/object_parameters_reduce_object.h"

/// The fields of the camera record, each told once: where it stands, what it is called, its unit, and where its value
/// goes.
namespace ovix::reduce::camera_record {

// From a record of at least the short size in the native order; all other members stay.
void Load(CObjectParametersReduceObject& parameters, const u8* record);
void Load(CCurlewFactoryCalReduceObject& factoryCal, const u8* record);

/// Tells the fields that lie within the first `size` bytes of a record in either byte order. It stands `offset` bytes
/// behind the frame's start.
void Describe(TArray<SFrameField>& fields, const u8* record, u32 size, u64 offset);

/// Of a record in either byte order of which `size` bytes are there: its byte-order marker, the only mark that it has,
/// and its width and height.
void GetEvidence(SFrameEvidence& evidence, const u8* record, u32 size);

}  // namespace ovix::reduce::camera_record
