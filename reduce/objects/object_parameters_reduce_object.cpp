#include "reduce/objects/object_parameters_reduce_object.h"

#include <cmath>

#include "core/record.h"

namespace ovix::reduce {

namespace {

using CParameters = CObjectParametersReduceObject;

constexpr u32 kRecordSize = 96;
constexpr u32 kFromSource = 8;

constexpr TRecordField<CParameters> kFields[] = {
    Field<&CParameters::fromSource>(kFromSource),
    Field<&CParameters::emissivity>(9),
    Field<&CParameters::distance>(13),
    Field<&CParameters::reflectedTemp>(17),
    Field<&CParameters::atmosphereTemp>(21),
    Field<&CParameters::extOpticsTemp>(25),
    Field<&CParameters::extOpticsTrans>(29),
    Field<&CParameters::atmosphereTrans>(33),
    Field<&CParameters::estimatedAtmosphereTrans>(37),
    Field<&CParameters::relativeHumidity>(41),
    Field<&CParameters::parameterMask>(45),
};
static_assert(RecordEnd(kFields) == 49 && RecordEnd(kFields) <= kRecordSize);

/// The form older than 0x10001.
using OldStream =
    TMemberStream<&CParameters::fromSource, &CParameters::emissivity, &CParameters::distance,
                  &CParameters::reflectedTemp, &CParameters::atmosphereTemp, &CParameters::extOpticsTemp,
                  &CParameters::extOpticsTrans, &CParameters::atmosphereTrans, &CParameters::estimatedAtmosphereTrans,
                  &CParameters::relativeHumidity, &CParameters::parameterMask>;

}  // namespace

CObjectParametersReduceObject::CObjectParametersReduceObject() {
    valid = true;
    version = 0x10001;
}

bool CObjectParametersReduceObject::Load(TSharedPtr<IFile> file, u32 blockVersion, u32) {
    if (blockVersion < 0x10001) return OldStream::Read(*file, *this);
    u8 record[kRecordSize];
    if (!ReadRecord(*file, record, 0x20000)) return false;
    LoadRecord(*this, kFields, record);
    return true;
}

bool CObjectParametersReduceObject::Save(TSharedPtr<IFile> file, u32 flags) {
    u8 record[kRecordSize];
    StartRecord(record, version);
    SaveRecord(*this, kFields, record);
    if (flags & PersistInitialState) record[kFromSource] = 1;
    return file->WriteBytes(record, sizeof record);
}

bool CObjectParametersReduceObject::Equals(const CObjectParametersReduceObject* other) const {
    const auto same = [&](float CParameters::*value) {
        return static_cast<double>(std::fabs(this->*value - other->*value)) < 1e-8;
    };
    return same(&CParameters::emissivity) && same(&CParameters::distance) && same(&CParameters::reflectedTemp) &&
           same(&CParameters::atmosphereTemp) && same(&CParameters::extOpticsTemp) &&
           same(&CParameters::extOpticsTrans) && same(&CParameters::atmosphereTrans) &&
           same(&CParameters::relativeHumidity);
}

}  // namespace ovix::reduce
