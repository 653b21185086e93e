#include "reduce/objects/fov_reduce_object.h"

#include "core/record.h"

namespace ovix::reduce {

namespace {

constexpr u32 kRecordSize = 64;
/// One more than other records allow, deliberately: a record of version 0x20000 itself is accepted.
constexpr u32 kVersionLimit = 0x20001;

/// The record behind its size and its version; the form older than 0x10001 is nothing but these.
constexpr TRecordField<CFOVReduceObject> kFields[] = {
    Field<&CFOVReduceObject::IHFOV>(8),
    Field<&CFOVReduceObject::IVFOV>(16),
};
static_assert(RecordEnd(kFields) == 24 && RecordEnd(kFields) <= kRecordSize && IsGapless(kFields));

}  // namespace

CFOVReduceObject::CFOVReduceObject() { version = 0x10001; }

bool CFOVReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return ReadFields<kFields>(*file, *this);
    u8 record[kRecordSize];
    if (!ReadRecord(*file, record, kVersionLimit)) return false;
    LoadRecord(*this, kFields, record);
    return true;
}

bool CFOVReduceObject::Save(TSharedPtr<IFile> file, u32) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    return file->WriteBytes(record, sizeof record);
}

}  // namespace ovix::reduce
